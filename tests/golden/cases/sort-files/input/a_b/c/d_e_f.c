int n19;
