int colon;
