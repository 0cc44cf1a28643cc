int n2;
