int n15;
