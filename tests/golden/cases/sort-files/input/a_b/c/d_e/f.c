int n18;
