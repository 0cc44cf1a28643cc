// Sorting of functions and files: orders that do not exist, and input that misleads the method.
#include "common/hoare_sort.h"
#include "coverage/function_table.h"
#include "report/file_sort.h"
#include "report/function_sort.h"
#include "tests/tools/product.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

TEST(FunctionSort, OrdersWithoutKeyEndTheRun) {
    func function = {"f", 1, 1, 1, 100.0};
    std::vector<func*> list(32, &function);
    const std::string message = "Internal error: invalid sort oder: ";
    EXPECT_EQ(run_product([] { SortFunctions(0, nullptr, 0); }).errors, message + "0\n");
    EXPECT_EQ(run_product([&] { SortFunctions(32, list.data(), -4); }).errors, message + "-4\n");
    EXPECT_EQ(run_product([] { SortFiles(nullptr, 0, 4, nullptr); }).errors, message + "4\n");
}

using entry = std::pair<int, int>; // key, and the place it had

/// Sorts the entries by their keys and returns the comparisons that it took.
static long sort_entries(std::vector<entry>& entries, int patience) {
    long comparisons = 0;
    const auto compare = [&](const entry& a, const entry& b) {
        ++comparisons;
        return (a.first > b.first) - (a.first < b.first);
    };
    const auto swap = [](entry* list, int i, int j) { std::swap(list[i], list[j]); };
    const auto partition = [&](entry* list, int lo, int hi) {
        return hoare_partition(list, lo, hi, -1, compare, swap);
    };
    const auto before = [&](const entry& a, const entry& b) { return compare(a, b) == -1; };
    hoare_quicksort(entries.data(), 0, static_cast<int>(entries.size()) - 1, partition, before, patience);
    return comparisons;
}

TEST(QuickSort, ImpatientSortKeepsTheTies) {
    std::vector<entry> patient;
    for (int i = 0; i < 500; ++i)
        patient.emplace_back((i < 250 ? i : 500 - i) / 3, i);
    std::vector<entry> impatient = patient;
    sort_entries(patient, 1000);
    sort_entries(impatient, 2);
    EXPECT_EQ(impatient, patient);
}

TEST(QuickSort, MisleadingInputStaysFast) {
    constexpr int kCount = 100000;
    int (*const shapes[])(int) = {
        [](int i) { return i; },
        [](int i) { return -i; },
        // Rises to the middle and falls again: the middle is always the highest.
        [](int i) { return i < kCount / 2 ? 2 * i : 2 * (kCount - i) - 1; },
        [](int i) { return std::min(i, kCount - i); },
        [](int) { return 7; },
    };
    for (const auto shape : shapes) {
        std::vector<entry> entries;
        for (int i = 0; i < kCount; ++i)
            entries.emplace_back(shape(i), 0);
        // Quadratic would be 50,000 times the count.
        EXPECT_LT(sort_entries(entries, sort_patience(0, kCount - 1)), 100L * kCount);
        EXPECT_TRUE(std::is_sorted(entries.begin(), entries.end()));
    }
}
