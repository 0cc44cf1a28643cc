int n20;
