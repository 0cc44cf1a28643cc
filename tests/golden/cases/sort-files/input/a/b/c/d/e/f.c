int n0;
