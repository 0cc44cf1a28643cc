// Input: a routine name. Its C++ form is bounded, and short names are what the C++ library makes of them. So
// is the name that instances share, which can be written to a profile if the routine's own can.
#include "demangle/demangle.h"
#include "demangle/shared_name.h"
#include "fuzz/harness.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <cxxabi.h>

/// The longest C++ form, and the length below which nothing may be changed.
constexpr std::size_t kLongest = 65536;
constexpr std::size_t kUntouched = 16384;

/// True when the text of a name cannot be long, whatever the name means: it is short itself and refers to few
/// of its pieces. Of others the library's own answer might take all memory, and for some that hold "sr" it
/// does not come at all.
static bool is_harmless(const std::string& name) {
    int references = 0;
    for (const char c : name)
        references += c == 'S' || c == 'C' || c == 'D' ? 1 : 0;
    return name.size() <= 40 && name.find("sr") == std::string::npos && references <= 6 &&
           name.find('T') == std::string::npos;
}

/// The static profile can hold the name as it is.
static bool can_be_written(const std::string& name) {
    return std::none_of(name.begin(), name.end(),
                        [](unsigned char byte) { return byte <= 0x20 || byte == 0x7f; });
}

static void check_shared_name(const std::string& name) {
    std::string shared;
    const bool is_template = find_shared_name(name, &shared);
    require(is_template || shared.size() == name.size(), "only instances of templates get another name");
    require(shared.size() <= 16 * name.size(),
            "the shared name is bounded"); // "So": "std::basic_ostream<>::"
    require(!can_be_written(name) || can_be_written(shared), "the shared name can be written");
    const std::string again = shared;
    require(is_template || (!find_shared_name(again, &shared) && shared == again), "variants have one name");
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string name(std::string(reinterpret_cast<const char*>(data), size).c_str());
    check_shared_name(name);
    std::size_t length = ~std::size_t{0};
    const char* shown = demangleName(name.c_str(), 0, &length);
    require(length == 0 ? shown == name.c_str() : std::strlen(shown) + 1 == length, "length of the C++ form");
    require(length <= kLongest + 1, "the C++ form is bounded");
    require(length == 0 || name.starts_with("_Z"), "only C++ names have a C++ form");
    if (length == 0 ? !is_harmless(name) : length > kUntouched)
        return 0;
    int status = 0;
    char* expected =
        name.starts_with("_Z") ? abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status) : nullptr;
    if (!expected || status != 0)
        require(length == 0, "a name without a C++ form stays");
    else if (std::strlen(expected) < kUntouched)
        require(length != 0 && std::strcmp(shown, expected) == 0, "an ordinary name has its C++ form");
    std::free(expected);
    return 0;
}
