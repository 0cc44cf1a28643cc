#include "changes/unified_diff.h"

#include "changes/diff_names.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <unordered_set>
#include <utility>

namespace {

constexpr std::size_t kLongestHeader = std::size_t{1} << 16; ///< more of a line means nothing
constexpr std::uint32_t kLargestLine = 0x7fffffff;

/// Lines that one side of a hunk has.
struct hunk_side {
    std::uint32_t first = 0;
    std::uint32_t count = 0;
};

/// The file whose headers or hunks are being read.
struct open_file {
    changed_file file;
    std::string git_names; ///< what stands behind "diff --git "
    std::string old_name;  ///< of the line "---", with its prefix; empty for /dev/null, as the next
    std::string new_name;
    std::string target;           ///< of a rename or copy
    bool in_headers = false;      ///< git's own headers may follow
    bool has_names = false;       ///< there was a line "+++"
    bool has_hunk = false;        ///< some hunk has begun
    bool content_differs = false; ///< there was a line "index"
    bool explained = false;       ///< headers say what has changed
    std::uint32_t next_line = 1;  ///< first line of the new file that the next hunk may have

    const std::string& own_name() const { return new_name.empty() ? old_name : new_name; }
    std::pair<std::string, std::string> names() const;
};

/// The names of both sides, with their prefixes. Those of a new or deleted file are in git's own line only.
std::pair<std::string, std::string> open_file::names() const {
    if (!old_name.empty() && !new_name.empty())
        return {old_name, new_name};
    std::pair<std::string, std::string> names = both_names(git_names);
    if (names.second.empty()) {
        const std::string& name = has_names ? own_name() : git_names;
        const std::string_view prefix = new_name.empty() ? "a/" : "b/";
        names = {name.starts_with(prefix) ? name.substr(prefix.size()) : name, name};
    }
    return names;
}

bool take_prefix(std::string_view* text, std::string_view prefix) {
    if (!text->starts_with(prefix))
        return false;
    text->remove_prefix(prefix.size());
    return true;
}

bool take_number(std::string_view* text, std::uint32_t* number) {
    const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), *number);
    text->remove_prefix(static_cast<std::size_t>(end - text->data()));
    return error == std::errc() && *number <= kLargestLine;
}

/// "3,2", or "3" for one line.
bool take_side(std::string_view* text, hunk_side* side) {
    side->count = 1;
    if (!take_number(text, &side->first) || (take_prefix(text, ",") && !take_number(text, &side->count)))
        return false;
    return side->count == 0 || (side->first != 0 && side->first <= kLargestLine - side->count + 1);
}

} // namespace

void add_line(std::vector<line_range>* ranges, std::uint32_t line) {
    if (!ranges->empty() && ranges->back().last + 1 == line)
        ranges->back().last = line;
    else
        ranges->push_back({line, line});
}

class unified_diff_reader::state {
  public:
    explicit state(int strip) : strip_(strip) {}

    bool take_line(std::string_view line);
    bool finish();

    std::string cut;     ///< begin of a line whose end is in the next piece
    bool is_cut = false; ///< there is such a line
    std::string fault;
    std::vector<changed_file> files;

  private:
    bool fail(const std::string& what);
    bool take_hunk_line(char kind);
    bool take_other_line(std::string_view line);
    bool take_structure(std::string_view line, bool* taken);
    bool take_git_header(std::string_view line);
    bool take_name(std::string_view text, std::string* name);
    bool begin_git_file(std::string_view names);
    bool begin_names(std::string_view line);
    bool begin_hunk(std::string_view line);
    bool end_file();
    bool name_file();
    std::optional<std::string> stripped(const std::string& name, int folders) const;

    const int strip_;
    std::uint64_t line_ = 0;
    bool any_text_ = false;
    std::optional<open_file> open_;
    std::optional<std::string> old_line_; ///< a line "---" that is waiting for its "+++"
    bool behind_hunk_ = false;            ///< the line before was one of a hunk
    std::uint32_t old_left_ = 0;          ///< lines that the hunk still has
    std::uint32_t new_left_ = 0;
    std::unordered_set<std::string> names_; ///< of files that are there behind the change
};

bool unified_diff_reader::state::fail(const std::string& what) {
    fault = ", line " + std::to_string(line_) + ": " + what;
    return false;
}

bool unified_diff_reader::state::take_hunk_line(char kind) {
    if (kind == '\\') // "\ No newline at end of file", in any language
        return true;
    const bool in_old = kind != '+';
    const bool in_new = kind != '-';
    if ((kind != ' ' && kind != '+' && kind != '-') || (in_old && old_left_ == 0) ||
        (in_new && new_left_ == 0))
        return fail("the hunk does not hold the lines that its head counts");
    if (in_old)
        --old_left_;
    if (in_new)
        --new_left_;
    if (kind == '+')
        add_line(&open_->file.lines, open_->next_line);
    if (in_new)
        ++open_->next_line;
    behind_hunk_ = true;
    return true;
}

bool unified_diff_reader::state::begin_hunk(std::string_view line) {
    hunk_side before;
    hunk_side after;
    if (!take_side(&line, &before) || !take_prefix(&line, " +") || !take_side(&line, &after) ||
        !line.starts_with(" @@"))
        return fail("the head of a hunk is damaged");
    if (!open_ || !open_->has_names)
        return fail("a hunk comes without the name of its file");
    // A side without lines names the line in front of it.
    const std::uint32_t first = after.first + (after.count == 0 ? 1 : 0);
    if (first < open_->next_line)
        return fail("the hunks of a file are not in order");
    open_->next_line = first;
    open_->has_hunk = true;
    open_->in_headers = false;
    old_left_ = before.count;
    new_left_ = after.count;
    return true;
}

bool unified_diff_reader::state::take_name(std::string_view text, std::string* name) {
    std::optional<std::string> found = header_name(text);
    if (!found)
        return fail("the quotes of a file's name are damaged");
    *name = std::move(*found);
    return true;
}

bool unified_diff_reader::state::begin_git_file(std::string_view names) {
    if (!end_file())
        return false;
    open_.emplace();
    open_->git_names = names;
    open_->in_headers = true;
    return true;
}

/// Takes the line "+++" behind a line "---".
bool unified_diff_reader::state::begin_names(std::string_view line) {
    if (!open_ || open_->has_names) {
        if (!end_file())
            return false;
        open_.emplace();
    }
    if (!take_name(*old_line_, &open_->old_name) || !take_name(line, &open_->new_name))
        return false;
    old_line_.reset();
    open_->has_names = true;
    open_->in_headers = false;
    if (open_->old_name.empty() && open_->new_name.empty())
        return fail("a file has no name");
    if (open_->new_name.empty())
        open_->file.change = file_change::deleted;
    else if (open_->old_name.empty())
        open_->file.change = file_change::added;
    return true;
}

/// Takes one of git's own headers; text that is none ends them.
bool unified_diff_reader::state::take_git_header(std::string_view line) {
    changed_file& file = open_->file;
    const auto change = [this, &file](file_change kind) {
        file.change = kind;
        open_->explained = true;
        return true;
    };
    if (take_prefix(&line, "index "))
        return open_->content_differs = true;
    if (take_prefix(&line, "old mode ") || take_prefix(&line, "new mode "))
        return open_->explained = true;
    if (take_prefix(&line, "new file mode "))
        return change(file_change::added);
    if (take_prefix(&line, "deleted file mode "))
        return change(file_change::deleted);
    if (take_prefix(&line, "rename from "))
        return change(file_change::renamed) && take_name(line, &file.old_name);
    if (take_prefix(&line, "copy from "))
        return change(file_change::copied) && take_name(line, &file.old_name);
    if (take_prefix(&line, "rename to ") || take_prefix(&line, "copy to "))
        return take_name(line, &open_->target);
    if (take_prefix(&line, "Binary files ") || take_prefix(&line, "GIT binary patch"))
        return file.binary = open_->explained = true;
    if (!take_prefix(&line, "similarity index ") && !take_prefix(&line, "dissimilarity index "))
        open_->in_headers = false;
    return true;
}

/// Takes a line that begins something. `*taken` says whether it was one.
bool unified_diff_reader::state::take_structure(std::string_view line, bool* taken) {
    *taken = true;
    if (take_prefix(&line, "diff --git "))
        return begin_git_file(line);
    if (line.starts_with("diff --cc ") || line.starts_with("diff --combined ") || line.starts_with("@@@ "))
        return fail("this is a diff of a merge against several parents, which cannot be used; name the two "
                    "commits to compare");
    if (line.starts_with("\x1b["))
        return fail("this diff is coloured (git diff --no-color writes one that is not)");
    if (line.starts_with("diff ")) // of another program than git
        return end_file();
    if (take_prefix(&line, "@@ -"))
        return begin_hunk(line);
    *taken = false;
    return true;
}

bool unified_diff_reader::state::take_other_line(std::string_view line) {
    if (old_line_ && take_prefix(&line, "+++ "))
        return begin_names(line);
    // In a commit's message such a line may stand alone.
    if (old_line_ && open_)
        return fail("a line \"---\" comes without its \"+++\"");
    old_line_.reset();
    const bool behind_hunk = std::exchange(behind_hunk_, false);
    if (take_prefix(&line, "--- ")) {
        old_line_ = line;
        return true;
    }
    bool taken = false;
    if (!take_structure(line, &taken))
        return false;
    if (taken)
        return true;
    const char first = line.empty() ? '\n' : line.front();
    behind_hunk_ = behind_hunk && first == '\\';
    // Mails of git end with "-- " and its version.
    if (behind_hunk && (first == '+' || first == ' ' || (first == '-' && line != "-- " && line != "--")))
        return fail("the hunk holds more lines than its head counts");
    return !open_ || !open_->in_headers || take_git_header(line);
}

bool unified_diff_reader::state::take_line(std::string_view line) {
    ++line_;
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    if (old_left_ != 0 || new_left_ != 0)
        return take_hunk_line(line.empty() ? ' ' : line.front()); // mailers strip the blank of an empty line
    if (line.size() >= kLongestHeader)
        return fail("a line is longer than can be");
    any_text_ = any_text_ || line.find_first_not_of(" \t\f\v") != std::string_view::npos;
    return take_other_line(line);
}

std::optional<std::string> unified_diff_reader::state::stripped(const std::string& name, int folders) const {
    return strip_ == kDetectPrefix ? name : without_folders(name, folders);
}

/// Works out the name of the open file.
bool unified_diff_reader::state::name_file() {
    changed_file& file = open_->file;
    std::optional<std::string> name;
    if (!open_->target.empty()) {
        name = stripped(open_->target, strip_ - 1);
        file.old_name = stripped(file.old_name, strip_ - 1).value_or(file.old_name);
    } else {
        auto [old_name, new_name] = open_->names();
        name = strip_ == kDetectPrefix ? without_prefixes(old_name, new_name)
                                       : stripped(open_->has_names ? open_->own_name() : new_name, strip_);
    }
    if (!name)
        return fail("a name has fewer than " + std::to_string(strip_) +
                    " folders that could be stripped; give a smaller -strip");
    if (name->empty())
        return fail("a file has no name");
    file.name = std::move(*name);
    return true;
}

bool unified_diff_reader::state::end_file() {
    if (!open_)
        return true;
    if (!open_->has_names && open_->git_names.empty())
        return fail("a file has no name");
    if ((open_->has_names && !open_->has_hunk) ||
        (open_->content_differs && !open_->has_names && !open_->explained))
        return fail("the changes of a file are missing");
    if (!name_file())
        return false;
    changed_file& file = open_->file;
    if (file.change == file_change::deleted)
        file.lines.clear();
    else if (!names_.insert(file.name).second)
        return fail("\"" + file.name +
                    "\" comes twice, as in diffs of several commits in a row; make one of all of them");
    files.push_back(std::move(file));
    open_.reset();
    return true;
}

bool unified_diff_reader::state::finish() {
    if (old_left_ != 0 || new_left_ != 0)
        return fail("the diff ends in the middle of a hunk");
    if (old_line_ && open_)
        return fail("a line \"---\" comes without its \"+++\"");
    if (!end_file())
        return false;
    if (!files.empty() || !any_text_)
        return true;
    fault = " is no unified diff (made with: git diff, diff -u)";
    return false;
}

unified_diff_reader::unified_diff_reader(int strip) : state_(std::make_unique<state>(strip)) {}

unified_diff_reader::~unified_diff_reader() = default;

bool unified_diff_reader::feed(std::string_view piece) {
    state& s = *state_;
    for (std::size_t newline = piece.find('\n'); newline != std::string_view::npos;
         newline = piece.find('\n')) {
        const std::string_view line = piece.substr(0, newline);
        if (s.is_cut)
            s.cut += line.substr(0, kLongestHeader - std::min(kLongestHeader, s.cut.size()));
        if (!s.take_line(s.is_cut ? std::string_view(s.cut) : line))
            return false;
        s.cut.clear();
        s.is_cut = false;
        piece.remove_prefix(newline + 1);
    }
    s.cut += piece.substr(0, kLongestHeader - std::min(kLongestHeader, s.cut.size()));
    s.is_cut = s.is_cut || !piece.empty();
    return true;
}

bool unified_diff_reader::finish() {
    return (!state_->is_cut || state_->take_line(state_->cut)) && state_->finish();
}

const std::string& unified_diff_reader::fault() const {
    return state_->fault;
}

std::vector<changed_file> unified_diff_reader::take_files() {
    return std::move(state_->files);
}
