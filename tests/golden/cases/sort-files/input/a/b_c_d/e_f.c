int n13;
