#include "common/option_table.h"

#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

static void put(std::string* seen, const char* value) {
    *seen += value ? value : "set";
}

static const option_row<std::string*> kRows[] = {
    {"-out", put, true, "a file"},
    {"-all", put, false, nullptr},
};

/// What a walk over the words makes of each.
static std::string walked(const std::string& line, argument_style style) {
    std::istringstream input(line);
    std::vector<std::string> words = {"program"};
    for (std::string word; input >> word;)
        words.push_back(word);
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    std::string seen;
    for (argument_reader reader(kRows, static_cast<int>(arguments.size()), arguments.data(), style);
         reader.next(); seen += ' ') {
        const bool is_known =
            reader.kind() == argument_kind::option || reader.kind() == argument_kind::missing_value;
        seen += is_known ? reader.option().name : reader.text();
        seen += "=?+:"[static_cast<int>(reader.kind())];
        if (reader.kind() == argument_kind::option)
            reader.option().apply(&seen, reader.value());
    }
    return seen;
}

TEST(OptionTable, Arguments) {
    EXPECT_EQ(walked("a -all -out -all - -x --all /all -out", {}),
              "a: -all=set -out=-all -: -x+ --all+ /all: -out? ");
    EXPECT_EQ(walked("--all --out - -- ---all --out", {.two_dashes = true}),
              "-all=set -out=- --+ ---all+ -out? ");
    EXPECT_EQ(walked("-out -all -out -", {.dashed_values = false}), "-out? -all=set -out=- ");
}
