int nothing; /* no function that counts */
int none(void) { return nothing; } /* not here */
