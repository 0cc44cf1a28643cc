int n11;
