int n28;
