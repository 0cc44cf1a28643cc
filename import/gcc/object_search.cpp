#include "import/gcc/object_search.h"

#include "common/message.h"
#include "common/remedy.h"
#include "import/build_folders.h"
#include "import/gcc/object_records.h"
#include "import/source_names.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <unordered_map>
#include <utility>

namespace fs = std::filesystem;

constexpr std::string_view kNotes = ".gcno";
constexpr std::string_view kCounters = ".gcda";

static std::string absolute_name(const fs::path& path) {
    return absolute_path(path.string()).lexically_normal().string();
}

std::string shown_path(const std::string& path) {
    std::error_code error;
    const std::string here = (fs::current_path(error) / "").string();
    const bool below = !error && path.size() > here.size() && path.starts_with(here);
    return printable(below ? path.substr(here.size()) : path);
}

void object_search::add_directory(const std::string& path) {
    std::error_code error;
    std::vector<fs::path> open = {path};
    while (!open.empty()) {
        const fs::path directory = std::move(open.back());
        open.pop_back();
        for (fs::directory_iterator entry(directory, error), end; !error && entry != end;
             entry.increment(error)) {
            const fs::path& name = entry->path();
            std::error_code ignored; // what cannot be examined is no directory
            if (!entry->is_symlink(ignored) && entry->is_directory(ignored)) {
                if (!is_compiler_test(name))
                    open.push_back(name);
            } else if (!entry->is_regular_file(ignored)) // gcov would wait for the other end of a FIFO
                continue;
            else if (name.native().ends_with(kNotes))
                notes_.push_back(absolute_name(name));
            else if (name.native().ends_with(kCounters))
                counters_.push_back(absolute_name(name));
        }
        if (error && error != std::errc::permission_denied && error != std::errc::no_such_file_or_directory)
            end_with_error("cannot read %s: %s", shown_path(absolute_name(directory)).c_str(),
                           reason_of(error).c_str());
        if (error == std::errc::permission_denied)
            closed_.push_back(absolute_name(directory));
    }
}

void object_search::add(const std::string& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (error || !fs::exists(status))
        end_with_error(
            "cannot open %s: %s", printable(path).c_str(),
            reason_of(error ? error : std::make_error_code(std::errc::no_such_file_or_directory)).c_str());
    if (fs::is_directory(status))
        return add_directory(path);
    if (!fs::is_regular_file(status))
        end_with_error("%s is no regular file; name a file or a directory", printable(path).c_str());
    if (path.ends_with(kNotes)) {
        notes_.push_back(absolute_name(path));
    } else if (path.ends_with(kCounters)) {
        counters_.push_back(absolute_name(path));
        const std::string beside = counters_.back().substr(0, counters_.back().size() - kCounters.size());
        if (fs::is_regular_file(beside + std::string(kNotes), error))
            notes_.push_back(beside + std::string(kNotes));
    } else {
        end_with_error("%s is no directory and no file of gcov (.gcda, .gcno, .json, .json.gz); name one",
                       printable(path).c_str());
    }
}

void object_search::add_notes(const std::string& path) {
    const std::size_t counters = counters_.size();
    add(path);
    counters_.resize(counters);
}

namespace {

/// A notes file while counters are being paired.
struct notes_entry {
    std::string path;
    std::string reversed; ///< the path without its ending, backwards
    object_head head;
    std::optional<std::uint32_t> functions; ///< that they tell of
    bool run = false;                       ///< some counter file belongs to it
    bool damaged = false;                   ///< functions of such a file are missing
};

/// Notes in the order of their reversed paths: those with the longest end in common stand side by side.
class notes_index {
  public:
    explicit notes_index(std::vector<notes_entry>* notes) : notes_(*notes) {
        for (std::size_t i = 0; i < notes_.size(); ++i)
            by_stamp_.emplace(notes_[i].head.stamp, i);
    }

    /// The notes for a counter file; null when there are none of its name.
    notes_entry* find(const std::string& counters, const std::optional<object_head>& head);

  private:
    notes_entry* first_with_end(std::size_t place, std::string_view end);

    std::vector<notes_entry>& notes_;
    std::unordered_multimap<std::uint32_t, std::size_t> by_stamp_; ///< indices into notes_
};

std::string reversed_stem(const std::string& path) {
    return {path.rbegin() + static_cast<std::ptrdiff_t>(kNotes.size()), path.rend()};
}

/// Length of what two reversed paths have in common, in whole components.
std::size_t common_end(std::string_view a, std::string_view b) {
    const std::size_t shorter = std::min(a.size(), b.size());
    const std::size_t same = static_cast<std::size_t>(
        std::mismatch(a.begin(), a.begin() + static_cast<std::ptrdiff_t>(shorter), b.begin()).first -
        a.begin());
    const bool whole = (same == a.size() || a[same] == '/') && (same == b.size() || b[same] == '/');
    if (whole)
        return same;
    const std::size_t slash = a.substr(0, same).rfind('/');
    return slash == std::string_view::npos ? 0 : slash;
}

notes_entry* notes_index::find(const std::string& counters, const std::optional<object_head>& head) {
    const std::string reversed = reversed_stem(counters);
    const auto next = std::lower_bound(
        notes_.begin(), notes_.end(), reversed,
        [](const notes_entry& entry, const std::string& path) { return entry.reversed < path; });
    const std::size_t place = static_cast<std::size_t>(next - notes_.begin());
    std::size_t longest = 0;
    if (place < notes_.size())
        longest = common_end(notes_[place].reversed, reversed);
    if (place > 0)
        longest = std::max(longest, common_end(notes_[place - 1].reversed, reversed));
    if (longest == 0)
        return nullptr;
    if (place < notes_.size() && notes_[place].reversed == reversed)
        return &notes_[place];
    // Of several that share this end, the one of the same compilation.
    notes_entry* const found = first_with_end(place, std::string_view(reversed).substr(0, longest));
    if (!head)
        return found;
    const auto [first, behind] = by_stamp_.equal_range(head->stamp);
    for (auto candidate = first; candidate != behind; ++candidate) {
        if (common_end(notes_[candidate->second].reversed, reversed) == longest)
            return &notes_[candidate->second];
    }
    return found;
}

/// One of the notes that share the end; they stand together, at or in front of `place`.
notes_entry* notes_index::first_with_end(std::size_t place, std::string_view end) {
    const bool here = place < notes_.size() && common_end(notes_[place].reversed, end) == end.size();
    return &notes_[here ? place : place - 1];
}

} // namespace

static void sort_paths(std::vector<std::string>* paths) {
    std::sort(paths->begin(), paths->end());
    paths->erase(std::unique(paths->begin(), paths->end()), paths->end());
}

static std::vector<notes_entry> read_notes(const std::vector<std::string>& paths, object_list* list) {
    std::vector<notes_entry> notes;
    for (const std::string& path : paths) {
        const std::optional<object_head> head = read_notes_head(path);
        const object_records records = head ? read_notes_records(path, head->version) : object_records{};
        if (head && !records.cut_short)
            notes.push_back({path, reversed_stem(path), *head, records.functions});
        else
            list->damaged_notes.push_back(path);
    }
    std::sort(notes.begin(), notes.end(),
              [](const notes_entry& a, const notes_entry& b) { return a.reversed < b.reversed; });
    return notes;
}

/// Whether the notes beside a counter file are among the damaged ones, which are in order.
static bool has_damaged_notes(const object_list& list, const std::string& counters) {
    const std::string notes = counters.substr(0, counters.size() - kCounters.size()) + std::string(kNotes);
    return std::binary_search(list.damaged_notes.begin(), list.damaged_notes.end(), notes);
}

/// What a counter file that belongs to the notes tells of both.
static void judge_counters(const std::string& counters, const std::optional<object_head>& head,
                           notes_entry* notes, object_list* list) {
    notes->run = true;
    const object_records records =
        head ? read_counters_records(counters, head->version) : object_records{true, std::nullopt};
    if (records.cut_short)
        list->damaged_counters.push_back(counters);
    else if (head->stamp != notes->head.stamp)
        list->rebuilt.push_back(counters);
    else if (records.functions > notes->functions) // no value is less than all others
        notes->damaged = notes->functions.has_value();
}

object_list object_search::pair() {
    object_list list;
    sort_paths(&notes_);
    sort_paths(&counters_);
    list.closed = std::move(closed_);
    std::vector<notes_entry> notes = read_notes(notes_, &list);
    notes_index index(&notes);
    std::vector<std::pair<const notes_entry*, std::string>> objects;
    for (const std::string& counters : counters_) {
        const std::optional<object_head> head = read_counters_head(counters);
        notes_entry* const own = index.find(counters, head);
        if (!own) {
            if (!has_damaged_notes(list, counters)) // of which it is said
                list.without_notes.push_back(counters);
            continue;
        }
        judge_counters(counters, head, own, &list);
        objects.emplace_back(own, counters);
    }
    for (const notes_entry& entry : notes) {
        if (!entry.run)
            objects.emplace_back(&entry, "");
        if (entry.damaged)
            list.damaged_notes.push_back(entry.path);
    }
    for (auto& [own, counters] : objects) {
        if (!own->damaged)
            list.objects.push_back({own->path, std::move(counters), own->head.version});
    }
    std::sort(list.objects.begin(), list.objects.end(), [](const gcc_object& a, const gcc_object& b) {
        return a.notes != b.notes ? a.notes < b.notes : a.counters < b.counters;
    });
    return list;
}
