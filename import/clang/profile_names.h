// The names of functions, which programs and raw profiles hold compressed.
//
//   section   blocks, one for each translation unit, with zero bytes between them
//   block     LEB size unpacked, LEB size packed (0: is not packed), the text
//   text      names, with a byte 1 between them
//
// A function of internal linkage has the base name of its main source file and a colon in front.
#pragma once

#include "import/clang/byte_buffer.h"
#include "import/clang/byte_reader.h"
#include "import/clang/inflate.h"

#include <string_view>

/// Goes through the blocks of a section. The section is the caller's and stays; `memory` is used to unpack.
/// Functions throw input_error where the section is damaged.
class name_blocks {
  public:
    name_blocks(std::string_view section, byte_buffer* memory) : reader_(section), memory_(*memory) {}

    /// Goes on to the next block; false when there is none.
    bool next();

    /// The block as the section has it. Equal ones have equal names.
    std::string_view stored() const { return stored_; }

    /// The text of the block, valid until the memory is used again. `sum`: that of a compressed one.
    std::string_view text(checksum sum) const;

  private:
    byte_reader reader_;
    byte_buffer& memory_;
    std::string_view stored_;
    std::string_view bytes_;
    std::uint64_t size_ = 0;
    bool packed_ = false;
};

/// Calls `on_name` for each name of a text until it returns false, and returns whether it never did.
template <typename On_name> bool for_each_name(std::string_view text, On_name on_name) {
    while (!text.empty()) {
        const std::string_view name = text.substr(0, text.find('\1'));
        text.remove_prefix(name.size() == text.size() ? name.size() : name.size() + 1);
        if (!on_name(name))
            return false;
    }
    return true;
}
