/* Numbers in Roman numerals. */
#ifndef NUMERAL_H
#define NUMERAL_H

/* Room for the longest numeral, MMMDCCCLXXXVIII, and its end. */
enum { NUMERAL_SIZE = 16 };

/* Writes `number` to `text`. Returns 0 when it has no numeral: they go from 1 to 3999. */
int to_numeral(int number, char text[NUMERAL_SIZE]);

/* The number that a numeral stands for, or 0. */
int from_numeral(const char* text);

#endif
