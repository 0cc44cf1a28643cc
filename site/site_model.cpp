#include "site/site_model.h"

#include "site/page_names.h"

#include <algorithm>
#include <unordered_map>

std::string_view directory_of(std::string_view name) {
    const std::size_t slash = name.rfind('/');
    return slash == std::string_view::npos ? std::string_view() : name.substr(0, slash);
}

std::string_view name_within(std::string_view name, std::string_view directory) {
    return directory.empty() ? name : name.substr(std::min(directory.size() + 1, name.size()));
}

site_file_entry& site_model::add_file(const file_coverage& file) {
    site_file_entry entry = {};
    entry.name = file.name;
    entry.page = source_page_name(file.name);
    // Two names of the profile may be of one file: only then the page is named after both.
    if (!pages.insert(entry.page).second) {
        entry.page = source_page_name(file.name + "//" + file.analysis.path);
        pages.insert(entry.page);
    }
    entry.figures = file.figures;
    entry.covered = file.analysis.figures.status == file_status::covered;
    entry.first_function = static_cast<std::uint32_t>(functions.size());
    entry.functions = static_cast<std::uint32_t>(file.analysis.functions.size());
    const auto index = static_cast<std::uint32_t>(files.size());
    for (const source_function& function : file.analysis.functions)
        functions.push_back({function.shown_name,
                             index,
                             function.line,
                             {function.blocks, function.covered},
                             function.entry_count,
                             function.called});
    std::stable_sort(functions.begin() + entry.first_function, functions.end(),
                     [](const site_function& a, const site_function& b) { return a.line < b.line; });
    files.push_back(std::move(entry));
    return files.back();
}

/// Ascending by folders: "/" comes before every other character.
static bool is_before(std::string_view a, std::string_view b) {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        const auto rank = [](char c) { return c == '/' ? 0 : static_cast<unsigned char>(c) + 1; };
        return rank(x) < rank(y);
    });
}

/// The directories that two paths have in common.
static std::string_view common_directory(std::string_view a, std::string_view b) {
    const auto [in_a, in_b] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    const auto is_end = [](std::string_view text, std::string_view::const_iterator at) {
        return at == text.end() || *at == '/';
    };
    const auto length = static_cast<std::size_t>(in_a - a.begin());
    if (is_end(a, in_a) && is_end(b, in_b))
        return a.substr(0, length);
    return directory_of(a.substr(0, length));
}

namespace {

/// Makes the tree of directories from their sorted paths: one node where files are, and one where paths part.
class tree_builder {
  public:
    explicit tree_builder(std::vector<site_directory>& directories) : directories_(directories) { push(""); }

    void add(std::string_view path) {
        const std::string_view shared = common_directory(directories_[open_.back()].path, path);
        const std::string fork(shared);
        close_below(fork);
        if (directories_[open_.back()].path.size() < path.size())
            push(path);
    }

    void finish() { close_below(""); }

  private:
    void push(std::string_view path) {
        open_.push_back(static_cast<std::uint32_t>(directories_.size()));
        directories_.push_back({});
        directories_.back().path = path;
    }

    void attach(std::uint32_t child, std::uint32_t parent) {
        directories_[child].parent = parent;
        directories_[parent].directories.push_back(child);
    }

    /// Closes the directories that do not hold `fork`, which becomes the innermost open one.
    void close_below(const std::string& fork) {
        while (directories_[open_.back()].path.size() > fork.size()) {
            const std::uint32_t closed = open_.back();
            open_.pop_back();
            if (directories_[open_.back()].path.size() < fork.size())
                push(fork);
            attach(closed, open_.back());
        }
    }

    std::vector<site_directory>& directories_;
    std::vector<std::uint32_t> open_; ///< each within the one before
};

} // namespace

static void add_file_to(site_directory& directory, const site_file_entry& file) {
    directory.figures.add(file.figures);
    ++directory.files.total;
    directory.files.covered += file.covered ? 1 : 0;
}

void site_model::find_directories() {
    std::vector<std::string_view> paths;
    for (const site_file_entry& file : files)
        paths.push_back(directory_of(file.name));
    std::sort(paths.begin(), paths.end(), is_before);
    paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
    tree_builder builder(directories);
    for (const std::string_view path : paths)
        builder.add(path);
    builder.finish();

    std::unordered_map<std::string_view, std::uint32_t> by_path;
    std::vector<std::uint32_t> deepest_first;
    for (std::uint32_t i = 0; i < directories.size(); ++i) {
        directories[i].page = directory_page_name(directories[i].path);
        by_path.emplace(directories[i].path, i);
        deepest_first.push_back(i);
    }
    for (std::uint32_t i = 0; i < files.size(); ++i) {
        files[i].directory = by_path.at(directory_of(files[i].name));
        site_directory& directory = directories[files[i].directory];
        directory.own_files.push_back(i);
        add_file_to(directory, files[i]);
    }
    std::sort(deepest_first.begin(), deepest_first.end(), [this](std::uint32_t a, std::uint32_t b) {
        return directories[a].path.size() > directories[b].path.size();
    });
    for (const std::uint32_t i : deepest_first) {
        site_directory& parent = directories[directories[i].parent];
        if (&parent == &directories[i])
            continue;
        parent.figures.add(directories[i].figures);
        parent.files.total += directories[i].files.total;
        parent.files.covered += directories[i].files.covered;
    }
    // The top is where the first thing can be chosen.
    while (directories[top].own_files.empty() && directories[top].directories.size() == 1)
        top = directories[top].directories[0];
    directories[top].parent = top;
}
