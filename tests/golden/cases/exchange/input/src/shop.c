#include "shop.h"

/* Price of a basket. */
int total(const int* prices, int count) {
    int sum = 0;
    for (int i = 0; i < count; ++i)
        sum += prices[i];
    return sum;
}

int discount(int sum, int member) {
    if (member && sum > 100)
        return sum / 10;
    return 0;
}

int refund(int sum) { return sum < 0 ? -sum : 0; }
