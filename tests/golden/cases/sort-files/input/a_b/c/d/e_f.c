int n17;
