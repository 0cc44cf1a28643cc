int p;
