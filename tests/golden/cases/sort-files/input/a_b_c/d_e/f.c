int n26;
