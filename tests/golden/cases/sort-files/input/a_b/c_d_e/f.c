int n22;
