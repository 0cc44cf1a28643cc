int n5;
