int n3;
