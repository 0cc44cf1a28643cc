#include "import/gcc/json_input.h"

#include "common/message.h"
#include "common/remedy.h"
#include "import/gcc/compressed_input.h"
#include "import/gcc/gcov_json.h"

bool is_json_input(const std::string& input) {
    return input == "-" || input.ends_with(".json") || input.ends_with(".json.gz");
}

void read_json_input(const std::string& input, const std::function<void(const gcov_document&)>& on_document) {
    compressed_input stream(input);
    gcov_reader reader(on_document);
    bool fine = true;
    for (std::string_view piece = stream.read(); fine && !piece.empty(); piece = stream.read())
        fine = reader.feed(piece);
    if (!fine || !reader.finish())
        end_with_error("%s %s", stream.shown().c_str(),
                       with_remedy(reader.fault(), "make it again with gcov --json-format").c_str());
}
