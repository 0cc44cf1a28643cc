int r;
