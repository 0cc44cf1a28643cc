#include "site/rectangle.h"

#include <algorithm>

/// The worst ratio of sides in a row of parts along a side, the largest and smallest area of which are given.
static double worst_ratio(double largest, double smallest, double sum, double side) {
    const double sides = side * side;
    const double sums = sum * sum;
    return std::max(sides * largest / sums, sums / (sides * smallest));
}

void divide_rectangle(rectangle whole, std::span<const double> weights,
                      const std::function<void(std::size_t, const rectangle&)>& place) {
    double rest = 0;
    for (const double weight : weights)
        rest += weight;
    for (std::size_t first = 0; first < weights.size();) {
        // Parts join the row along the shorter side as long as that makes it squarer.
        const double scale = whole.area() / rest;
        const double side = std::min(whole.width, whole.height);
        double sum = weights[first];
        std::size_t last = first + 1;
        double worst = worst_ratio(weights[first] * scale, weights[first] * scale, sum * scale, side);
        for (; last < weights.size(); ++last) {
            const double wider = sum + weights[last];
            const double next =
                worst_ratio(weights[first] * scale, weights[last] * scale, wider * scale, side);
            if (next > worst)
                break;
            worst = next;
            sum = wider;
        }
        const bool upright = whole.width >= whole.height;
        const double depth = side > 0 ? sum * scale / side : 0;
        double along = 0;
        for (std::size_t i = first; i < last; ++i) {
            const double length = sum > 0 ? side * weights[i] / sum : 0;
            place(i, upright ? rectangle{whole.x, whole.y + along, depth, length}
                             : rectangle{whole.x + along, whole.y, length, depth});
            along += length;
        }
        (upright ? whole.x : whole.y) += depth;
        double& shrunk = upright ? whole.width : whole.height;
        shrunk = std::max(shrunk - depth, 0.0);
        rest = std::max(rest - sum, 1e-9);
        first = last;
    }
}
