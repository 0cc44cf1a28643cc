int n24;
