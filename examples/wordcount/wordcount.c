/* Counts the lines, words and bytes of its input: wordcount [-l | -w | -c] [FILE] */
#include <ctype.h>
#include <stdio.h>
#include <string.h>

struct counts {
    unsigned long lines;
    unsigned long words;
    unsigned long bytes;
};

static void count(FILE *in, struct counts *counts)
{
    int c;
    int in_word = 0;

    while ((c = getc(in)) != EOF) {
        counts->bytes++;
        if (c == '\n')
            counts->lines++;
        if (isspace(c))
            in_word = 0;
        else if (!in_word) {
            in_word = 1;
            counts->words++;
        }
    }
}

static void usage(void)
{
    puts("usage: wordcount [-l | -w | -c] [FILE]");
}

static unsigned long chosen(const struct counts *counts, char option)
{
    switch (option) {
    case 'l':
        return counts->lines;
    case 'w':
        return counts->words;
    case 'c':
        return counts->bytes;
    }
    return 0; // not reachable
}

int main(int argc, char **argv)
{
    struct counts counts = {0, 0, 0};
    char option = 0;
    FILE *in = stdin;

    if (argc > 1 && argv[1][0] == '-') {
        option = argv[1][1];
        if (option == '\0' || strchr("lwc", option) == NULL) {
            usage();
            return 2;
        }
        argc--;
        argv++;
    }
    if (argc > 1) {
        in = fopen(argv[1], "r");
        if (in == NULL) {
            perror(argv[1]);
            return 1;
        }
    }
    count(in, &counts);
    if (option)
        printf("%lu\n", chosen(&counts, option));
    else
        printf("%lu %lu %lu\n", counts.lines, counts.words, counts.bytes);
    return 0;
}
