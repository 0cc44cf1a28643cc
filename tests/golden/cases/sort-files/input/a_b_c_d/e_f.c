int n29;
