int n14;
