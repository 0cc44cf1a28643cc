int n4;
