#include "demangle/mangled_name_reader.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

MangledNameReader::MangledNameReader(const char* text, bool old_unresolved, MangledName& result)
    : text_(text), at_(text), end_(text + std::strlen(text)), result_(result),
      old_unresolved_(old_unresolved) {
    const std::size_t length = static_cast<std::size_t>(end_ - text);
    most_pieces_ = 8 * length + 64;
}

PieceId MangledNameReader::fail() {
    result_.failed_in_scope = result_.failed_in_scope || (is_strict_ && !failed_);
    failed_ = true;
    at_ = end_;
    return 0;
}

/// The number of pieces is bounded because demanglers read arguments twice after conversion operators,
/// which nested takes exponential time; the walk does the same and gives up.
PieceId MangledNameReader::make_piece(PieceRule rule, std::uint32_t own, Id left, Id right,
                                      std::uint32_t list) {
    if (pieces_made_ >= most_pieces_)
        return fail();
    ++pieces_made_;
    Piece made{left, right, list, own, rule, rule == PieceRule::Param, own};
    const auto include = [&](Id part) {
        made.is_open = made.is_open || result_.pieces[part].is_open;
        made.size = std::min(made.size + result_.pieces[part].size, kHugeText);
    };
    if (rule != PieceRule::Param) {
        include(left);
        include(right);
    }
    if (rule == PieceRule::Pack) {
        for (const Id element : result_.lists[list])
            include(element);
    }
    result_.pieces.push_back(made);
    return static_cast<Id>(result_.pieces.size() - 1);
}

std::uint32_t MangledNameReader::keep_list(std::vector<Id> list) {
    if (outline_)
        return 1;
    result_.lists.push_back(std::move(list));
    return static_cast<std::uint32_t>(result_.lists.size() - 1);
}

/// [<number>] _, where nothing is 0 and 0 is 1.
std::uint32_t MangledNameReader::compact_number() {
    if (take('_'))
        return 0;
    if (!is_digit(peek()))
        return fail();
    const std::uint32_t value = number() + 1;
    expect('_');
    return value;
}

void MangledNameReader::discriminator() {
    if (!take('_'))
        return;
    const bool is_long = take('_');
    number();
    if (is_long)
        take('_');
}

/// The whole name, with the suffixes of clones.
bool MangledNameReader::read() {
    result_.pieces.reserve(2 * static_cast<std::size_t>(end_ - at_));
    result_.pieces.push_back({0, 0, 0, 0, PieceRule::Sum, false, 0});
    result_.lists.emplace_back();
    at_ += 2;
    Id id = encoding();
    if (peek() == '.') { // " [clone .part.0]"
        id = join(12 * static_cast<std::uint32_t>(end_ - at_), id);
        at_ = end_;
    }
    if (at_ != end_)
        fail();
    result_.whole = id;
    return !failed_;
}

bool MangledNameReader::read_outline(NameOutline& outline) {
    outline_ = &outline;
    at_ += 2;
    name();
    return !failed_;
}

bool read_name_outline(const char* text, NameOutline& outline) {
    for (const bool old_unresolved : {false, true}) {
        MangledName pieces;
        outline.text.clear();
        outline.is_template = false;
        outline.variant = 0;
        MangledNameReader reader(text, old_unresolved, pieces);
        if (reader.read_outline(outline))
            return true;
        if (!pieces.is_ambiguous)
            break;
    }
    return false;
}

bool read_mangled_name(const char* text, bool old_unresolved, MangledName& result) {
    return MangledNameReader(text, old_unresolved, result).read();
}
