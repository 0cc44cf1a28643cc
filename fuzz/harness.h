// What the fuzz targets share.
//
// A target is one LLVMFuzzerTestOneInput, linked with libFuzzer or with replay_main.cpp. It gives its input
// to the program's own code inside run_in_scratch. A property that does not hold ends the process, which the
// engine reports with the input.
#pragma once

#include "tests/tools/product.h"
#include "tests/tools/scratch.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// run_product in the scratch directory. The end of a run with another status than 0 and 1, or with status 1
/// and without a message, does not hold as a property.
outcome run_in_scratch(const std::function<void()>& call);

/// Reports `property` and aborts unless it holds.
void require(bool holds, const char* property);

/// The directory of this process's files; removed when the process ends normally.
const scratch_directory& scratch();

/// Removes everything in the scratch directory.
void clear_scratch();

/// Reads a file of the scratch directory. A file that is not there reads as empty.
std::string read_scratch(const std::string& name);

/// The words between the separators.
std::vector<std::string_view> split(std::string_view words, char separator = ' ');

/// Text with '<' and '>' as the pages show them.
std::string escaped(std::string_view text);

/// The input as a series of small decisions. Behind the end every decision is 0.
class byte_script {
  public:
    explicit byte_script(std::string_view bytes) : bytes_(bytes) {}
    byte_script(const std::uint8_t* data, std::size_t size)
        : bytes_(reinterpret_cast<const char*>(data), size) {}

    /// A number below `limit`, at most 256; takes one byte.
    unsigned int below(unsigned int limit) { return limit < 2 ? 0 : byte() % limit; }
    unsigned int byte();
    bool flag() { return (byte() & 1) != 0; }
    /// One of the words between the separators.
    std::string_view one_of(std::string_view words, char separator = ' ');
    /// A 32-bit number: mostly small, now and then one that is a limit of something.
    std::uint32_t number();
    std::string_view take(std::size_t count);
    std::string_view rest() { return take(bytes_.size()); }
    bool empty() const { return bytes_.empty(); }

  private:
    std::string_view bytes_;
};
