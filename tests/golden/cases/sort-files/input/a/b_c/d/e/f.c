int n8;
