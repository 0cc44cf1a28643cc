int n10;
