#include "demangle/demangle_bound.h"
#include "demangle/mangled_name.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

static constexpr int kDeepest = 2048;                ///< nesting of pieces
static constexpr std::size_t kMostScopes = 64;       ///< ways in which signatures are nested in each other
static constexpr std::size_t kCharactersPerStep = 8; ///< of the limit, to bound the steps
static constexpr int kMostRounds = 4;                ///< rounds until all scopes of references are known
static constexpr std::uint64_t kMostElements = std::uint64_t{1} << 20;

static constexpr std::uint8_t kMostNested = 2; ///< the demangler stops at a piece within itself within itself

namespace {

/// What a piece takes at one place.
struct Extent {
    std::uint64_t size;         ///< characters
    std::uint64_t elements = 0; ///< elements of the longest pack it refers to
};

/// Where a piece is printed.
struct Place {
    std::uint32_t scope;   ///< the signature around it; 0 outside of all
    std::uint32_t current; ///< argument list of the template around it; 0 outside of all
    bool in_closure;
};

/// The arguments of a signature and the scope outside of it, where the arguments themselves are printed.
struct Scope {
    std::uint32_t list;
    std::uint32_t outer;
};

/// Adds up the sizes of the pieces of a name as they would be printed. Pieces without template parameters
/// have their size already; the others are followed like the demangler does, for a limited number of steps.
class Meter {
  public:
    Meter(const MangledName& name, std::size_t steps) : name_(name), steps_left_(steps) {}

    /// Characters of the whole name; kHugeText if that takes too many steps.
    std::uint64_t measure();

  private:
    Extent of(PieceId id, Place place);
    Extent open_piece(PieceId id, Place place);
    Extent parts(const Piece& piece, Place place);
    Extent param(const Piece& piece, Place place);
    Extent reference(PieceId id, Place place);
    Extent referred(const Piece& param, std::uint32_t scope, Place place);
    Extent conversion(const Piece& piece, Place place);
    Extent argument(PieceId id, Place place, bool by_reference);
    Extent pack(const Piece& piece, Place place);
    PieceId look_up(std::uint32_t index, std::uint32_t scope) const;
    std::uint32_t enter(std::uint32_t list, std::uint32_t outer);

    const MangledName& name_;
    std::size_t steps_left_;
    int depth_ = 0;
    std::vector<Scope> scopes_{{0, 0}};
    std::vector<std::vector<std::uint32_t>> seen_; ///< for each parameter, the scopes of references to it
    std::vector<std::uint8_t> active_;             ///< for each piece, how often it is being printed
    bool has_news_ = false;                        ///< a scope was added to `seen_`
};

std::uint64_t Meter::measure() {
    seen_.resize(name_.pieces.size());
    active_.resize(name_.pieces.size());
    for (int round = 0; round < kMostRounds; ++round) {
        has_news_ = false;
        const std::uint64_t size = of(name_.whole, {0, 0, false}).size;
        if (!has_news_ || size >= kHugeText)
            return size;
    }
    return kHugeText;
}

Extent Meter::of(PieceId id, Place place) {
    const Piece& piece = name_.pieces[id];
    if (!piece.is_open)
        return {piece.size};
    if (steps_left_ == 0 || depth_ >= kDeepest) {
        steps_left_ = 0;
        return {kHugeText};
    }
    if (active_[id] >= kMostNested)
        return {piece.own};
    --steps_left_;
    ++depth_;
    ++active_[id];
    Extent result = open_piece(id, place);
    --active_[id];
    --depth_;
    result.size = std::min(result.size, kHugeText);
    return result;
}

Extent Meter::open_piece(PieceId id, Place place) {
    const Piece& piece = name_.pieces[id];
    switch (piece.rule) {
    case PieceRule::Param:
        return param(piece, place);
    case PieceRule::Reference:
        return reference(id, place);
    case PieceRule::Conversion:
        return conversion(piece, place);
    case PieceRule::Pack:
        return pack(piece, place);
    case PieceRule::Repeat:
    case PieceRule::Fold: {
        const Extent pattern = parts(piece, place);
        return {std::max<std::uint64_t>(pattern.elements, 1) * pattern.size,
                piece.rule == PieceRule::Fold ? pattern.elements : 0};
    }
    case PieceRule::Template:
        place.current = piece.list;
        break;
    case PieceRule::Signature:
        place.scope = enter(piece.list, place.scope);
        break;
    case PieceRule::Closure:
        place.in_closure = true;
        break;
    case PieceRule::Sum:
        break;
    }
    return parts(piece, place);
}

Extent Meter::parts(const Piece& piece, Place place) {
    const Extent left = of(piece.left, place);
    const Extent right = of(piece.right, place);
    return {piece.own + left.size + right.size, std::max(left.elements, right.elements)};
}

Extent Meter::param(const Piece& piece, Place place) {
    Extent result = argument(look_up(piece.left, place.scope), place, false);
    if (place.in_closure)
        result.size = 0;
    result.size += piece.own;
    return result;
}

/// The demangler prints all references to one parameter in the scope of the first, except those within
/// another. Which is the first is left open here: any scope may be.
Extent Meter::reference(PieceId id, Place place) {
    const Piece& piece = name_.pieces[id];
    const Piece& target = name_.pieces[piece.left];
    if (place.in_closure || target.rule != PieceRule::Param)
        return parts(piece, place);
    Extent result = referred(target, place.scope, place);
    if (active_[id] < 2 && active_[piece.left] == 0) {
        std::vector<std::uint32_t>& seen = seen_[piece.left];
        if (std::find(seen.begin(), seen.end(), place.scope) == seen.end()) {
            seen.push_back(place.scope);
            has_news_ = has_news_ || seen.size() > 1;
        }
        for (std::size_t i = 0; i < seen.size(); ++i) { // grows meanwhile
            if (seen[i] == place.scope)
                continue;
            const Extent other = referred(target, seen[i], place);
            result = {std::max(result.size, other.size), std::max(result.elements, other.elements)};
        }
    }
    result.size += piece.own;
    return result;
}

/// The argument a reference to a parameter stands for. Parameters in it refer to the scope outside, but if it
/// is a reference itself, to the same scope.
Extent Meter::referred(const Piece& param, std::uint32_t scope, Place place) {
    place.scope = scope;
    Extent result = argument(look_up(param.left, scope), place, true);
    result.size += param.own;
    return result;
}

/// The type refers to the arguments of the template around it, except its own arguments.
Extent Meter::conversion(const Piece& piece, Place place) {
    Place inner = place;
    if (place.current != 0)
        inner.scope = enter(place.current, place.scope);
    Extent result = parts(piece, inner);
    const Piece& target = name_.pieces[piece.left];
    if (target.rule == PieceRule::Template)
        result.size += of(target.right, place).size;
    return result;
}

/// A template argument where a parameter or, if `by_reference`, a reference to one stands for it; of a pack,
/// the largest element.
Extent Meter::argument(PieceId id, Place place, bool by_reference) {
    const Piece& piece = name_.pieces[id];
    if (piece.rule != PieceRule::Pack) {
        if (by_reference && piece.rule == PieceRule::Reference)
            return of(piece.left, place);
        place.scope = scopes_[place.scope].outer;
        return of(id, place);
    }
    const std::vector<PieceId>& elements = name_.lists[piece.list];
    Extent result{2, std::min<std::uint64_t>(elements.size(), kMostElements)};
    for (const PieceId element : elements) {
        const Extent one = argument(element, place, by_reference);
        result.size = std::max(result.size, one.size + 2);
        result.elements = std::max(result.elements, one.elements);
    }
    return result;
}

Extent Meter::pack(const Piece& piece, Place place) {
    Extent result{piece.own};
    for (const PieceId element : name_.lists[piece.list]) {
        const Extent one = of(element, place);
        result.size += one.size;
        result.elements = std::max(result.elements, one.elements);
    }
    return result;
}

/// The template argument with this index; the empty piece if there is none.
PieceId Meter::look_up(std::uint32_t index, std::uint32_t scope) const {
    const std::vector<PieceId>& list = name_.lists[scopes_[scope].list];
    return index < list.size() ? list[index] : 0;
}

std::uint32_t Meter::enter(std::uint32_t list, std::uint32_t outer) {
    for (std::uint32_t i = 1; i < scopes_.size(); ++i) {
        if (scopes_[i].list == list && scopes_[i].outer == outer)
            return i;
    }
    if (scopes_.size() >= kMostScopes) {
        steps_left_ = 0;
        return 0;
    }
    scopes_.push_back({list, outer});
    return static_cast<std::uint32_t>(scopes_.size() - 1);
}

} // namespace

static bool is_sequence_char(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z');
}

/// Whether a back reference, such as S_ or T12_, stands here.
static bool is_reference(const char* at) {
    do
        ++at;
    while (is_sequence_char(*at));
    return *at == '_';
}

/// Whether a name stays within the limit whatever its structure, because every reference at most doubles the
/// text: back references copy earlier text, constructors the name of their class. Not so where pieces may be
/// repeated for each element of a pack (Dp, sp, folds), or parameters be looked up in signatures nested in
/// each other (Z).
static bool is_surely_short(const char* name, std::size_t limit) {
    constexpr std::size_t kMostPerChar = 40; // "Sd" and the like before a constructor
    std::size_t size = std::strlen(name);
    if (size > limit / kMostPerChar)
        return false;
    size *= kMostPerChar;
    bool has_params = false, has_multiples = false;
    for (const char* at = name + 2; *at != '\0'; ++at) {
        const char next = at[1];
        bool doubles = false;
        switch (*at) {
        case 'C':
        case 'D':
            doubles = is_sequence_char(next);
            has_multiples = has_multiples || (*at == 'D' && next == 'p');
            break;
        case 'S':
        case 'T':
            doubles = is_reference(at);
            has_params = has_params || (*at == 'T' && doubles);
            break;
        case 'Z':
            has_multiples = true;
            break;
        case 'f':
            has_multiples = has_multiples || next == 'l' || next == 'r' || next == 'L' || next == 'R';
            break;
        case 's':
            if (next == 'r') // GCC 12's demangler may not return unless the name is valid
                return false;
            has_multiples = has_multiples || next == 'p';
            break;
        default:
            break;
        }
        if (doubles && (size *= 2) > limit)
            return false;
    }
    return !has_params || !has_multiples;
}

/// Whether some part of the name could be taken for a broken constructor, destructor or closure. If the
/// demangler of GCC 12 meets one behind the break of a scope, it never returns.
static bool may_not_end(const char* at) {
    for (; (at = std::strpbrk(at, "CDU")) != nullptr; ++at) {
        if (at[1] == '\0' || !std::strchr(*at == 'C' ? "12345I" : *at == 'D' ? "01245Tt" : "lt", at[1]))
            return true;
    }
    return false;
}

bool demangles_within(const char* name, std::size_t limit) {
    if (is_surely_short(name, limit))
        return true;
    bool is_understood = false;
    for (const bool old_unresolved : {false, true}) {
        MangledName pieces;
        if (read_mangled_name(name, old_unresolved, pieces)) {
            if (Meter(pieces, limit / kCharactersPerStep).measure() > limit)
                return false;
            is_understood = true;
        }
        if (!pieces.is_ambiguous || (pieces.failed_in_scope && may_not_end(name)))
            break;
    }
    return is_understood;
}
