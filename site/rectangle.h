// Dividing a rectangle into rectangles of given areas that are as square as possible.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

struct rectangle {
    double x;
    double y;
    double width;
    double height;

    double area() const { return width * height; }
};

/// Calls `place(i, part)` for every weight, which must be greater than 0 and in descending order.
void divide_rectangle(rectangle whole, std::span<const double> weights,
                      const std::function<void(std::size_t, const rectangle&)>& place);
