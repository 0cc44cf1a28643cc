int n16;
