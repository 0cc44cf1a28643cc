int n9;
