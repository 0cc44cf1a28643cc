int here;
