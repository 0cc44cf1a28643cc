int v;
