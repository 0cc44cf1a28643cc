int n12;
