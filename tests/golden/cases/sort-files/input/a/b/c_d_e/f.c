int n6;
