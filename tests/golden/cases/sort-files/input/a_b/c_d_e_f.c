int n23;
