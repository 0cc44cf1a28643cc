// Sorting of functions and files: keys, ties, and input that misleads the methods.
#include "common/hoare_sort.h"
#include "coverage/coverage_list.h"
#include "coverage/function_table.h"
#include "report/file_sort.h"
#include "report/function_sort.h"
#include "report/sort_order.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

static const double kNan = std::numeric_limits<double>::quiet_NaN();

/// Sorts copies of `functions` and tells their lines in the new order.
static std::vector<int> lines_in_order(std::vector<func> functions, int order) {
    std::vector<func*> list;
    for (func& function : functions)
        list.push_back(&function);
    SortFunctions(static_cast<int>(list.size()), list.data(), order);
    std::vector<int> lines;
    for (const func* function : list)
        lines.push_back(function->line);
    return lines;
}

/// The order of files with these paths and figures.
static std::vector<int> file_order(std::vector<std::string> paths, const std::vector<double>& figures,
                                   int order) {
    std::vector<filename_list_node> files(paths.size());
    std::vector<filename_list_node*> list;
    for (std::size_t i = 0; i < paths.size(); ++i) {
        files[i].name = paths[i].data();
        files[i].funcCoverage = figures.empty() ? 0 : figures[i];
        files[i].blockCoverage = figures.empty() ? 0 : 100 - figures[i];
        list.push_back(&files[i]);
    }
    const int count = static_cast<int>(paths.size());
    int* index = CreateIndex(count);
    SortFiles(index, count, order, list.data());
    const std::vector<int> result(index, index + count);
    std::free(index);
    return result;
}

TEST(FunctionSort, KeysAndTieBreaks) {
    const std::vector<func> functions = {
        {"b", 1, 4, 2, 50.0}, {"B", 2, 2, 1, 50.0}, {"\xff", 3, 4, 4, 100.0},
        {"b", 4, 4, 2, 50.0}, {"a", 5, 4, 2, 50.0}, {"z", 6, 9, 0, 0.0},
    };
    EXPECT_EQ(lines_in_order(functions, 1), (std::vector<int>{2, 5, 1, 4, 6, 3})) << "bytes are unsigned";
    EXPECT_EQ(lines_in_order(functions, -1), (std::vector<int>{3, 6, 4, 1, 5, 2}));
    EXPECT_EQ(lines_in_order(functions, 2), (std::vector<int>{6, 2, 5, 1, 4, 3}));
    EXPECT_EQ(lines_in_order(functions, -2), (std::vector<int>{3, 4, 1, 5, 2, 6}));
    EXPECT_EQ(lines_in_order(functions, 3), (std::vector<int>{2, 5, 1, 4, 3, 6}));
    EXPECT_EQ(lines_in_order(functions, -3), (std::vector<int>{6, 3, 4, 1, 5, 2}));
}

TEST(FunctionSort, BothMethodsAgreeWithoutTies) {
    std::vector<func> functions;
    for (int i = 0; i < 31; ++i)
        functions.push_back({"f", i * 7 % 31 - 3, 1, 0, 0.0}); // lines are signed
    for (const int last : {27, 28}) {                          // 31 functions, then 32
        std::vector<int> ascending(functions.size());
        std::iota(ascending.begin(), ascending.end(), -3);
        const std::vector<int> descending(ascending.rbegin(), ascending.rend());
        for (const int key : {1, 2, 3}) {
            EXPECT_EQ(lines_in_order(functions, key), ascending) << last << " by " << key;
            EXPECT_EQ(lines_in_order(functions, -key), descending) << last << " by " << key;
        }
        functions.push_back({"f", 28, 1, 0, 0.0});
    }
}

TEST(FunctionSort, NotANumberIsHarmless) {
    const func number = {"f", 1, 1, 1, 100.0}, none = {"f", 1, 1, 1, kNan};
    EXPECT_EQ(compare2(&number, &none), 1);
    EXPECT_EQ(compare2(&none, &number), 1);
    for (const int count : {31, 32, 1000})
        for (const int order : {2, -2}) {
            std::vector<func> functions;
            std::vector<int> all(static_cast<std::size_t>(count));
            std::iota(all.begin(), all.end(), 0);
            for (const int i : all)
                functions.push_back({"f", i, 1, 1, i % 3 == 0 ? 1.0 * i : kNan});
            std::vector<int> lines = lines_in_order(functions, order);
            std::sort(lines.begin(), lines.end());
            EXPECT_EQ(lines, all) << "no function is lost";
        }
}

TEST(FunctionSort, OrdersWithoutKeyEndTheRun) {
    func function = {"f", 1, 1, 1, 100.0};
    std::vector<func*> list(32, &function);
    EXPECT_EXIT(SortFunctions(0, nullptr, 0), testing::ExitedWithCode(1),
                "Internal error: invalid sort oder: 0\n");
    EXPECT_EXIT(SortFunctions(32, list.data(), -4), testing::ExitedWithCode(1), "invalid sort oder: -4\n");
    EXPECT_EXIT(SortFiles(nullptr, 0, 4, nullptr), testing::ExitedWithCode(1), "invalid sort oder: 4\n");
}

TEST(FileSort, LastComponentThenNothing) {
    const std::vector<std::string> paths = {"a/x.c", "b/x.c", "z/a.c"};
    EXPECT_EQ(file_order(paths, {}, 1), (std::vector<int>{2, 1, 0})) << "z/a.c changes places with a/x.c";
    EXPECT_EQ(file_order(paths, {}, -1), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(file_order({"z/b.c", "c\\a.c"}, {}, 1), (std::vector<int>{0, 1})) << "no separator";
    EXPECT_EQ(file_order({}, {}, 1), (std::vector<int>{}));
}

TEST(FileSort, FiguresThenNames) {
    const std::vector<std::string> paths = {"c", "b", "a", "d"};
    const std::vector<double> figures = {50, 100, 50, 0}; // of the functions; blocks: 50, 0, 50, 100
    EXPECT_EQ(file_order(paths, figures, 2), (std::vector<int>{3, 2, 0, 1}));
    EXPECT_EQ(file_order(paths, figures, -2), (std::vector<int>{1, 0, 2, 3}));
    EXPECT_EQ(file_order(paths, figures, 3), (std::vector<int>{1, 2, 0, 3}));
    EXPECT_EQ(file_order(paths, figures, -3), (std::vector<int>{3, 0, 2, 1}));
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
