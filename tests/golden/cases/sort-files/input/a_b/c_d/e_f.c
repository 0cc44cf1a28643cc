int n21;
