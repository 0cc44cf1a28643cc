int n7;
