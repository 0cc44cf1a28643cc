// Input: a byte that says where to cut, and notes or counters of an object. A part of a file that is not
// called cut short has no functions that the whole has not.
#include "fuzz/harness.h"
#include "import/gcc/notes_sources.h"
#include "import/gcc/object_files.h"
#include "import/gcc/object_records.h"

#include <algorithm>
#include <optional>

static const std::string kFile = "a.gcno";

namespace {

/// What the readers make of a file.
struct file_facts {
    object_records notes, counters;
    std::string sources; ///< one after the other
};

} // namespace

static compiler_version version_of_file() {
    std::optional<object_head> head = read_notes_head(kFile);
    if (!head)
        head = read_counters_head(kFile);
    return head ? head->version : compiler_version{12, 2};
}

static file_facts facts_of(std::string_view bytes, const compiler_version& version) {
    scratch().put(kFile, bytes);
    file_facts facts;
    const outcome end = run_in_scratch([&] {
        facts.notes = read_notes_records(kFile, version);
        facts.counters = read_counters_records(kFile, version);
        find_sources(kFile, [&](std::string_view name) {
            require(name.starts_with('/') && bytes.find(name) != std::string_view::npos,
                    "a source is an absolute name in the file");
            facts.sources += name;
        });
    });
    require(!end.ended, "nothing in a file that can be read ends a run");
    require(facts.sources.size() <= bytes.size(), "the names of sources are no longer than the file");
    return facts;
}

static void check_part(const object_records& part, const object_records& whole) {
    require(!part.cut_short || !part.functions, "of a file that is cut short the functions are not known");
    if (part.functions && whole.functions)
        require(*part.functions <= *whole.functions, "a part has no more functions");
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    byte_script script(data, size);
    const std::size_t lost = script.byte() + 1;
    const std::string_view bytes = script.rest();
    scratch().put(kFile, bytes);
    compiler_version version;
    run_in_scratch([&] { version = version_of_file(); });
    const file_facts whole = facts_of(bytes, version);
    const file_facts part = facts_of(bytes.substr(0, bytes.size() - std::min(lost, bytes.size())), version);
    check_part(part.notes, whole.notes);
    check_part(part.counters, whole.counters);
    if (whole.notes.functions && !bytes.empty())
        require(facts_of(bytes.substr(0, bytes.size() - 1), version).notes.cut_short,
                "notes that lack a byte are cut short");
    return 0;
}
