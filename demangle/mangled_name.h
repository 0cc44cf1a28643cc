// Reads a mangled C++ name into the pieces its C++ form is printed from, without printing it.
//
// The grammar is that of the public "Itanium C++ ABI", chapter 5.1 "External Names (a.k.a. Mangling)", as g++
// 12 and clang 14 write it. Where the system's demangler is known to read a name in a way of its own (what
// counts as substitution, `sr` without `E`, arguments after a conversion operator), the name is read that
// way.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

using PieceId = std::uint32_t; ///< index of a piece; 0 is the empty piece

/// How a piece is printed from its parts.
enum class PieceRule : std::uint8_t {
    Sum,        ///< both parts
    Param,      ///< the template argument with the index `left`
    Reference,  ///< a reference to `left`
    Repeat,     ///< `left`, once for each element of the packs it names (pack expansion)
    Fold,       ///< the same, but the packs remain visible outside
    Pack,       ///< an argument pack; `list` holds the elements
    Template,   ///< the name `left` with the arguments `right`, which are also in `list`
    Conversion, ///< conversion operator to `left`, whose parameters are those of the template around it
    Signature,  ///< the types `left`, whose parameters refer to the arguments in `list`
    Closure     ///< the parameters `left` of a lambda, where template parameters are shown as "auto:1"
};

/// Pieces share parts (substitutions); the parts stand before the pieces they belong to.
struct Piece {
    PieceId left;
    PieceId right;
    std::uint32_t list; ///< index in MangledName::lists; 0 if none
    std::uint32_t own;  ///< upper bound of the characters beside the parts; at least 1, as each takes time
    PieceRule rule;
    bool is_open;       ///< refers to template parameters: the size depends on where it is printed
    std::uint64_t size; ///< upper bound of all characters if not open; at most kHugeText
};

/// Where sizes saturate: beyond any limit, and times the elements of a pack still below 2^64.
constexpr std::uint64_t kHugeText = std::uint64_t{1} << 40;

struct MangledName {
    std::vector<Piece> pieces;
    std::vector<std::vector<PieceId>> lists; ///< template arguments and packs; the first is empty
    PieceId whole = 0;
    bool is_ambiguous = false;    ///< holds an unresolved name that can be read in two ways
    bool failed_in_scope = false; ///< is broken within the scope of an unresolved name
};

/// What a function is called, without parameters and without the arguments of templates.
struct NameOutline {
    std::string text;         ///< such as "ns::list<>::insert<>"; without blanks
    bool is_template = false; ///< some part has arguments: an instance of a template, or something in one
    std::size_t variant =
        0; ///< where the name tells the variant of a constructor or destructor; 0: it is none
};

/// Reads `text` (null-terminated, beginning with "_Z") in time linear in its length. `old_unresolved`: the
/// second way to read ambiguous names. Returns false if the name is not understood.
bool read_mangled_name(const char* text, bool old_unresolved, MangledName& result);

/// Reads `text` in the same way up to the parameters of the function. Conversion operators are "operator_T",
/// as the name does not tell their types from the arguments of templates; closures and what is unnamed have
/// no numbers, which differ among instances. Returns false if the name is not understood.
bool read_name_outline(const char* text, NameOutline& outline);
