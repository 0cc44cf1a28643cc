// generate_tree FOLDER [-NAME N]...: writes a tree for measuring (tree.h). Each size is one option, so that
// one can grow while the others stay.
#include "bench/tree.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

struct size_option {
    const char* name;
    std::uint64_t tree_sizes::*size;
};

static const size_option OPTIONS[] = {
    {"-files", &tree_sizes::files},
    {"-functions", &tree_sizes::functions},
    {"-blocks", &tree_sizes::blocks},
    {"-lines", &tree_sizes::lines},
    {"-positions", &tree_sizes::positions},
    {"-length", &tree_sizes::length},
    {"-folders", &tree_sizes::folders},
    {"-depth", &tree_sizes::depth},
    {"-patterns", &tree_sizes::patterns},
    {"-flat", &tree_sizes::flat},
    {"-nested", &tree_sizes::nested},
    {"-extra", &tree_sizes::extra},
    {"-highest", &tree_sizes::highest},
    {"-twins", &tree_sizes::twins},
    {"-missed", &tree_sizes::missed},
    {"-order", &tree_sizes::order},
    {"-one-line", &tree_sizes::one_line},
    {"-one-name", &tree_sizes::one_name},
    {"-placing", &tree_sizes::placing},
    {"-reference", &tree_sizes::reference},
    {"-shared-file", &tree_sizes::shared_file},
    {"-shared-function", &tree_sizes::shared_function},
};

[[noreturn]] static void fail(const std::string& what) {
    std::fprintf(stderr, "generate_tree: %s\n", what.c_str());
    std::exit(1);
}

static tree_sizes sizes_of(int argc, char** argv) {
    tree_sizes sizes;
    for (int i = 2; i < argc; i += 2) {
        const auto* option =
            std::find_if(std::begin(OPTIONS), std::end(OPTIONS),
                         [&](const size_option& row) { return std::strcmp(row.name, argv[i]) == 0; });
        if (option == std::end(OPTIONS))
            fail(std::string("no option ") + argv[i]);
        char* end = nullptr;
        errno = 0;
        if (i + 1 < argc)
            sizes.*(option->size) = std::strtoull(argv[i + 1], &end, 10);
        if (end == nullptr || *end != '\0' || errno != 0)
            fail(std::string(argv[i]) + " needs a number");
    }
    if (sizes.files == 0 || sizes.functions == 0 || sizes.blocks == 0 || sizes.lines < 6 ||
        sizes.positions == 0 || sizes.highest == 0 || sizes.twins == 0 || sizes.folders == 0 ||
        sizes.depth == 0)
        fail("a tree needs a file, a folder, a function, a block, a position, a count, a twin and six lines "
             "a function");
    return sizes;
}

int main(int argc, char** argv) {
    if (argc < 2)
        fail("usage: generate_tree FOLDER [-NAME N]...");
    write_tree(argv[1], sizes_of(argc, argv));
    return 0;
}
