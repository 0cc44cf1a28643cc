// What the site knows of all files once each was walked: their figures, their functions and their
// directories.
#pragma once

#include "inputs/coverage_walk.h"
#include "site/kept_messages.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

/// One source file.
struct site_file_entry {
    std::string name; ///< below the root, or absolute
    std::string page; ///< name of its page
    coverage_figures figures;
    std::uint32_t lines;            ///< of its text
    std::uint32_t uncovered_places; ///< stretches of its code that did not run
    std::uint32_t infeasible_lines; ///< lines that markers take out
    std::uint32_t first_function;   ///< index of its first function, and their number
    std::uint32_t functions;
    bool covered;                ///< as the report counts files
    std::uint32_t directory = 0; ///< index of the directory that it is in

    std::int64_t uncovered() const { return figures.blocks.total - figures.blocks.covered; }
    bool complete() const { return uncovered() == 0 && figures.functions.total == figures.functions.covered; }
};

/// One function.
struct site_function {
    const char* name;   ///< demangled; borrowed from the walk
    std::uint32_t file; ///< index of its file
    std::int32_t line;
    covered_count blocks;
    std::uint64_t calls;
    bool called;

    std::int64_t uncovered() const { return blocks.total - blocks.covered; }
};

/// A directory with files in it, or with several directories; chains of directories in between are one step.
struct site_directory {
    std::string path;                       ///< "" for that of all files
    std::string page;                       ///< name of its first page
    std::uint32_t parent;                   ///< its index; the top is its own
    coverage_figures figures;               ///< of all files below
    covered_count files;                    ///< all below
    std::vector<std::uint32_t> directories; ///< by path
    std::vector<std::uint32_t> own_files;   ///< by name

    std::int64_t uncovered() const { return figures.blocks.total - figures.blocks.covered; }
    bool complete() const { return uncovered() == 0 && figures.functions.total == figures.functions.covered; }
};

struct site_model {
    std::vector<site_file_entry> files;      ///< in the order of the walk
    std::vector<site_function> functions;    ///< file by file, by line
    std::vector<site_directory> directories; ///< by path
    std::uint32_t top = 0;                   ///< index of the directory that holds all
    coverage_totals totals;
    run_warnings warnings;                 ///< what the run said meanwhile
    std::unordered_set<std::string> pages; ///< names that are taken

    /// Appends a file with its functions; its page gets a name. The rest is filled by the caller.
    site_file_entry& add_file(const file_coverage& file);

    /// Finds the directories, once all files are there.
    void find_directories();
};

/// The path of the directory that a file is in: what stands in front of the last "/".
std::string_view directory_of(std::string_view name);

/// A name as seen from a directory that it begins with.
std::string_view name_within(std::string_view name, std::string_view directory);
