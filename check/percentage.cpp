#include "check/percentage.h"

#include <algorithm>
#include <boost/multiprecision/cpp_int.hpp>
#include <charconv>

using wide = boost::multiprecision::int128_t; // products of two figures

constexpr int kMostDecimals = 9;
constexpr std::int64_t kUnits = 1'000'000'000; ///< of one percent

static std::int64_t power_of_ten(int exponent) {
    std::int64_t power = 1;
    for (; exponent > 0; --exponent)
        power *= 10;
    return power;
}

/// Reads a number of decimal digits.
static bool read_digits(std::string_view digits, std::int64_t* number) {
    const char* const end = digits.data() + digits.size();
    const auto [last, error] = std::from_chars(digits.data(), end, *number);
    return error == std::errc() && last == end && digits.front() != '-';
}

int percentage::decimals() const {
    const std::size_t dot = text.find('.');
    return dot == std::string::npos ? 0 : static_cast<int>(text.size() - dot - 1);
}

std::optional<percentage> read_percentage(std::string_view text) {
    const std::size_t dot = std::min(text.find('.'), text.size());
    const std::string_view decimals = text.substr(std::min(dot + 1, text.size()));
    std::int64_t whole = 0;
    std::int64_t fraction = 0;
    if (dot == 0 || !read_digits(text.substr(0, dot), &whole) || whole > 100)
        return std::nullopt;
    if (dot != text.size() &&
        (decimals.empty() || decimals.size() > kMostDecimals || !read_digits(decimals, &fraction)))
        return std::nullopt;
    fraction *= power_of_ten(kMostDecimals - static_cast<int>(decimals.size()));
    if (whole == 100 && fraction != 0)
        return std::nullopt;
    return percentage{whole * kUnits + fraction, std::string(text)};
}

/// The covered part as units of a percentage, and what is left of the division.
static std::int64_t units_of(const covered_count& count, std::int64_t* rest) {
    const wide dividend = wide{count.covered} * 100 * kUnits;
    *rest = static_cast<std::int64_t>(dividend % count.total);
    // More than 100 % comes of the block that a called function is credited with, but never more than this.
    return static_cast<std::int64_t>(std::min<wide>(dividend / count.total, wide{1} << 62));
}

bool reaches(const covered_count& count, const percentage& least) {
    return count.total <= 0 || wide{count.covered} * 100 * kUnits >= wide{least.units} * count.total;
}

bool has_fallen(const covered_count& now, const covered_count& before, const percentage& tolerance) {
    if (now.total <= 0 || before.total <= 0)
        return false;
    std::int64_t rest_now = 0;
    std::int64_t rest_before = 0;
    const std::int64_t units_now = units_of(now, &rest_now);
    const std::int64_t least = units_of(before, &rest_before) - tolerance.units;
    if (units_now != least)
        return units_now < least;
    return wide{rest_now} * before.total < wide{rest_before} * now.total;
}

bool is_lower(const covered_count& a, const covered_count& b) {
    if (a.total <= 0 || b.total <= 0)
        return a.total > 0 && b.total <= 0;
    return wide{a.covered} * b.total < wide{b.covered} * a.total;
}

std::int64_t uncovered_of(const covered_count& count) {
    return std::max<std::int64_t>(count.total - count.covered, 0);
}

std::string shown_part(const covered_count& count, int decimals) {
    if (count.total <= 0)
        return "-";
    const std::int64_t scale = power_of_ten(decimals);
    const auto scaled = static_cast<std::int64_t>(
        std::min<wide>(wide{count.covered} * 100 * scale / count.total, wide{1} << 62));
    const std::string fraction = std::to_string(scaled % scale);
    std::string text = std::to_string(scaled / scale) + ".";
    text.append(static_cast<std::size_t>(decimals) - fraction.size(), '0');
    return text + fraction + "%";
}

std::string shown_count(const covered_count& count, int decimals) {
    return shown_part(count, decimals) + " (" + std::to_string(count.covered) + " of " +
           std::to_string(std::max<std::int64_t>(count.total, 0)) + ")";
}
