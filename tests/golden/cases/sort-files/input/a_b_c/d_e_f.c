int n27;
