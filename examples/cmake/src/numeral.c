#include "numeral.h"

#include <string.h>

static const struct {
    int value;
    const char* digits;
} steps[] = {{1000, "M"}, {900, "CM"}, {500, "D"}, {400, "CD"}, {100, "C"}, {90, "XC"}, {50, "L"},
             {40, "XL"},  {10, "X"},   {9, "IX"},  {5, "V"},    {4, "IV"},  {1, "I"}};
enum { STEPS = sizeof steps / sizeof steps[0] };

int to_numeral(int number, char text[NUMERAL_SIZE]) {
    text[0] = '\0';
    if (number < 1 || number > 3999)
        return 0;
    for (int i = 0; i < STEPS; ++i) {
        while (number >= steps[i].value) {
            strcat(text, steps[i].digits);
            number -= steps[i].value;
        }
    }
    return 1;
}

int from_numeral(const char* text) {
    const char* rest = text;
    char canonical[NUMERAL_SIZE];
    int number = 0;
    for (int i = 0; i < STEPS; ++i) {
        const size_t size = strlen(steps[i].digits);
        for (; strncmp(rest, steps[i].digits, size) == 0 && number < 4000; rest += size)
            number += steps[i].value;
    }
    /* IIII is none, though its value could be told. */
    if (!to_numeral(number, canonical) || strcmp(canonical, text) != 0)
        return 0;
    return number;
}
