int n30;
