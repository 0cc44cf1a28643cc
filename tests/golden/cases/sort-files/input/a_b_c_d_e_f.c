int n31;
