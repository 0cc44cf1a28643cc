int n1;
