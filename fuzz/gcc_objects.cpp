// Input: a byte, then the notes or the counters of an object of GCC. What is found in them lies in them, and
// what has been cut off is missed or makes the file hold less, never more.
#include "fuzz/harness.h"
#include "import/gcc/notes_sources.h"
#include "import/gcc/object_files.h"
#include "import/gcc/object_records.h"

#include <algorithm>

namespace {

using head_reader = std::optional<object_head> (*)(const std::string&);
using records_reader = object_records (*)(const std::string&, const compiler_version&);

} // namespace

static object_records records_of(std::string_view file, records_reader read,
                                 const compiler_version& version) {
    scratch().put("object", file);
    return read("object", version);
}

static void check_records(std::string_view file, head_reader read_head, records_reader read,
                          std::size_t cut) {
    scratch().put("object", file);
    const std::optional<object_head> head = read_head("object");
    require(!head || file.size() >= 12, "a head has its size");
    // The records of a file whose head is of no known version are not asked for.
    const compiler_version version = head ? head->version : compiler_version{12, 2};
    const object_records whole = records_of(file, read, version);
    const object_records part = records_of(file.substr(0, cut), read, version);
    require(!whole.cut_short || !whole.functions, "functions are counted in whole files");
    require(!whole.functions || *whole.functions <= file.size() / 4, "each function has its word");
    require(!whole.functions || !part.functions || *part.functions <= *whole.functions, "a part has no more");
}

static void check_sources(std::string_view file) {
    scratch().put("object", file);
    find_sources("object", [file](std::string_view name) {
        require(name.starts_with('/') && file.find(name) != std::string_view::npos,
                "the notes have the name");
    });
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const std::string_view file(reinterpret_cast<const char*>(data) + 1, size - 1);
    const std::size_t cut = std::min<std::size_t>(file.size(), file.size() * data[0] / 255);
    run_in_scratch([&] {
        check_records(file, read_notes_head, read_notes_records, cut);
        check_records(file, read_counters_head, read_counters_records, cut);
        check_sources(file);
    });
    return 0;
}
