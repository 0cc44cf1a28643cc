#include "common/mangled_name.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

static constexpr int kDeepest = 512; ///< nesting of types and expressions
static constexpr std::uint32_t kStdName =
    75; ///< "std::basic_string<char, std::char_traits<char>, ...>" and the like
static constexpr std::uint32_t kOperator = 24; ///< "reinterpret_cast<>()", "operator delete[]", ...
static constexpr std::uint32_t kPhrase =
    48; ///< "construction vtable for ... -in-", "covariant return thunk to"

static bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

static bool is_lower(char c) {
    return c >= 'a' && c <= 'z';
}

static bool is_sequence_char(char c) {
    return is_digit(c) || (c >= 'A' && c <= 'Z');
}

static bool is_any_of(const char* code, const char* codes) {
    for (; *codes != '\0'; codes += 3) {
        if (code[0] == codes[0] && code[1] == codes[1])
            return true;
    }
    return false;
}

namespace {

using Id = PieceId;

/// Codes of the operators, other than conversions.
constexpr const char* kOperators =
    "aN aS aa ad an at aw az cc cl cm co dV da dc de dl ds dt dv eO eo eq ge gt ix lS le ls lt mI mL mi ml "
    "mm na ne "
    "ng nt nw nx oR oo or pL pl pm pp ps pt qu rM rS rc rm rs sP sZ sc ss st sz tr tw cp di dX dx te ";

/// The walk over one name. A failure moves to the end of the name, where all loops stop.
class Reader {
  public:
    Reader(const char* text, bool old_unresolved, MangledName& result);
    bool read();

  private:
    char peek() const { return *at_; }
    char peek_next() const { return *at_ == '\0' ? '\0' : at_[1]; }
    bool sees(const char* code) const { return at_[0] == code[0] && at_[0] != '\0' && at_[1] == code[1]; }
    bool take(char c);
    bool take(const char* code);
    void expect(char c);
    bool enter();

    Id fail();
    Id piece(PieceRule rule, std::uint32_t own, Id left, Id right = 0, std::uint32_t list = 0);
    Id join(std::uint32_t own, Id left = 0, Id right = 0) { return piece(PieceRule::Sum, own, left, right); }
    Id candidate(Id id);
    std::uint32_t keep_list(std::vector<Id> list);

    std::uint32_t number(), compact_number();
    void call_offset(), discriminator();

    Id encoding(), special_name(), special_table(), special_other();
    Id name(), nested_name(), prefix_part(Id before, bool&add), local_name();
    Id unqualified_name(), plain_unqualified_name(), source_name(), abi_tags(Id id);
    Id operator_name(), constructor_name(), closure_or_unnamed(), substitution(), std_substitution();
    Id template_param(), with_args(Id name), template_args(), template_arg(), pack();
    Id type(), plain_type(), extended_type(), param_type(), std_or_substituted_type(),
        vendor_qualified_type();
    Id reference_type(), function_type(), array_type(), qualifiers(), types();
    Id literal(), expression(), plain_expression(), operator_expression(), new_expression();
    Id expressions(char end), fold(), function_param(), simple_id(), plain_simple_id(), unresolved_name();

    const char* at_;
    const char* end_;
    MangledName& result_;
    std::vector<Id> candidates_; ///< substitutions, in order
    std::size_t most_pieces_;
    std::uint32_t last_list_ = 0;    ///< arguments that end the name just read; 0 if none do
    std::uint32_t longest_name_ = 0; ///< what a constructor repeats
    int depth_ = 0;
    bool failed_ = false;
    bool old_unresolved_; ///< `sr` is followed by a type even if that is a plain name
    bool in_conversion_ = false;
    bool in_expression_ = false;
    bool is_strict_ = false; ///< within an ambiguous unresolved name
};

// ------------------------------------------------------------------------------------------------ basics

Reader::Reader(const char* text, bool old_unresolved, MangledName& result)
    : at_(text), end_(text + std::strlen(text)), result_(result), old_unresolved_(old_unresolved) {
    const std::size_t length = static_cast<std::size_t>(end_ - text);
    most_pieces_ = 8 * length + 64;
    result_.pieces.reserve(2 * length);
    result_.pieces.push_back({0, 0, 0, 0, PieceRule::Sum, false, 0});
    result_.lists.emplace_back();
}

bool Reader::take(char c) {
    if (peek() != c)
        return false;
    ++at_;
    return true;
}

bool Reader::take(const char* code) {
    if (!sees(code))
        return false;
    at_ += 2;
    return true;
}

void Reader::expect(char c) {
    if (!take(c))
        fail();
}

Id Reader::fail() {
    failed_ = true;
    at_ = end_;
    return 0;
}

bool Reader::enter() {
    if (++depth_ > kDeepest)
        fail();
    return !failed_;
}

/// The number of pieces is bounded because demanglers read arguments twice after conversion operators,
/// which nested takes exponential time; the walk does the same and gives up.
Id Reader::piece(PieceRule rule, std::uint32_t own, Id left, Id right, std::uint32_t list) {
    if (result_.pieces.size() >= most_pieces_)
        return fail();
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

Id Reader::candidate(Id id) {
    candidates_.push_back(id);
    return id;
}

std::uint32_t Reader::keep_list(std::vector<Id> list) {
    result_.lists.push_back(std::move(list));
    return static_cast<std::uint32_t>(result_.lists.size() - 1);
}

/// <number>, saturating; the sign is skipped.
std::uint32_t Reader::number() {
    take('n');
    std::uint32_t value = 0;
    for (; is_digit(peek()); ++at_)
        value = std::min<std::uint32_t>(value * 10 + static_cast<std::uint32_t>(peek() - '0'), 1U << 24);
    return value;
}

/// [<number>] _, where nothing is 0 and 0 is 1.
std::uint32_t Reader::compact_number() {
    if (take('_'))
        return 0;
    if (!is_digit(peek()))
        return fail();
    const std::uint32_t value = number() + 1;
    expect('_');
    return value;
}

void Reader::discriminator() {
    if (!take('_'))
        return;
    const bool is_long = take('_');
    number();
    if (is_long)
        take('_');
}

// ----------------------------------------------------------------------------------------- names

/// <encoding>: the template arguments that end its name are those its types refer to.
Id Reader::encoding() {
    if (!enter())
        return 0;
    Id id;
    if (peek() == 'T' || peek() == 'G') {
        id = special_name();
    } else {
        id = name();
        const std::uint32_t args = last_list_;
        if (peek() != '\0' && peek() != 'E' && peek() != '.') {
            const Id signature = types();
            id = join(12, id, args == 0 ? signature : piece(PieceRule::Signature, 1, signature, 0, args));
        }
    }
    --depth_;
    return id;
}

/// <special-name>: T or G, then what it is.
Id Reader::special_name() {
    if (peek_next() == '\0')
        return fail();
    return *at_++ == 'T' ? special_table() : special_other();
}

Id Reader::special_table() {
    const char c = peek();
    if (c == 'h' || c == 'v' || take('c')) {
        call_offset();
        if (c == 'c')
            call_offset();
        return join(kPhrase, encoding());
    }
    ++at_;
    if (c == 'C') {
        const Id derived = type();
        number();
        expect('_');
        return join(kPhrase, derived, type());
    }
    if (c == 'H' || c == 'W')
        return join(kPhrase, name());
    if (c == 'A')
        return join(kPhrase, template_arg());
    return std::strchr("VTISFJ", c) ? join(kPhrase, type()) : fail();
}

Id Reader::special_other() {
    if (take('V'))
        return join(kPhrase, name());
    if (take('R')) {
        const Id id = name();
        while (is_sequence_char(peek()))
            ++at_;
        take('_');
        return join(kPhrase, id);
    }
    return take('A') || take("Tt") || take("Tn") ? join(kPhrase, encoding()) : fail();
}

void Reader::call_offset() {
    const bool is_virtual = take('v');
    if (!is_virtual)
        expect('h');
    number();
    expect('_');
    if (is_virtual) {
        number();
        expect('_');
    }
}

/// <name>; sets `last_list_`.
Id Reader::name() {
    if (peek() == 'N')
        return nested_name();
    if (peek() == 'Z')
        return local_name();
    Id id;
    bool add = true;
    if (take("St")) {
        id = join(5, unqualified_name());
    } else if (peek() == 'S') {
        id = substitution();
        add = false;
    } else {
        id = unqualified_name();
    }
    last_list_ = 0;
    if (peek() != 'I')
        return id;
    if (add)
        candidate(id);
    return with_args(id);
}

Id Reader::nested_name() {
    expect('N');
    Id id = qualifiers();
    if (peek() == 'R' || peek() == 'O')
        ++at_;
    id = join(4, id);
    while (!take('E')) {
        if (failed_ || peek() == '\0')
            return fail();
        bool add = true;
        id = prefix_part(id, add);
        if (add && peek() != 'E')
            candidate(id);
    }
    return id;
}

/// The next part of a <prefix>, joined to those before; clears `add` if it is no candidate for substitution.
Id Reader::prefix_part(Id before, bool& add) {
    const char c = peek();
    if (c == 'I')
        return with_args(before);
    Id part;
    if (c == 'M') { // the initialiser a closure belongs to: not shown
        ++at_;
        add = false;
        return before;
    }
    if (take("St")) {
        part = join(5, unqualified_name());
    } else if (c == 'S') {
        part = substitution();
        add = false;
    } else if (c == 'T') {
        part = template_param();
    } else if (sees("Dt") || sees("DT")) {
        at_ += 2;
        part = join(12, expression());
        expect('E');
    } else {
        part = unqualified_name();
    }
    last_list_ = 0;
    return join(2, before, part);
}

Id Reader::local_name() {
    expect('Z');
    const Id function = encoding();
    expect('E');
    last_list_ = 0;
    if (take('s')) {
        discriminator();
        return join(18, function);
    }
    std::uint32_t own = 2;
    if (take('d')) {
        compact_number();
        own = kPhrase;
    }
    const Id entity = name();
    discriminator();
    return join(own, function, entity);
}

Id Reader::unqualified_name() {
    return abi_tags(plain_unqualified_name());
}

Id Reader::abi_tags(Id id) {
    while (take('B'))
        id = join(8, id, source_name());
    return id;
}

Id Reader::plain_unqualified_name() {
    const char c = peek();
    if (is_digit(c))
        return source_name();
    if (is_lower(c))
        return operator_name();
    if (c == 'U')
        return closure_or_unnamed();
    if (take('L')) {
        const Id id = source_name();
        discriminator();
        return id;
    }
    if (take("DC")) { // structured binding
        Id id = join(4);
        while (!failed_ && !take('E'))
            id = join(2, id, source_name());
        return id;
    }
    return c == 'C' || c == 'D' ? constructor_name() : fail();
}

Id Reader::source_name() {
    const std::uint32_t length = is_digit(peek()) ? number() : 0;
    if (length == 0 || length > static_cast<std::size_t>(end_ - at_))
        return fail();
    at_ += length;
    const std::uint32_t own = std::max<std::uint32_t>(length, 21); // "(anonymous namespace)"
    longest_name_ = std::max(longest_name_, own);
    return join(at_[-static_cast<std::ptrdiff_t>(length)] == '_' ? own : length);
}

Id Reader::operator_name() {
    take("on");
    if (take("cv")) {
        const bool outer = in_conversion_;
        in_conversion_ = !in_expression_;
        const Id target = type();
        in_conversion_ = outer;
        return in_expression_ ? join(kOperator, target) : piece(PieceRule::Conversion, kOperator, target);
    }
    const bool is_named = sees("li") || (peek() == 'v' && is_digit(peek_next()));
    if (!is_named && !is_any_of(at_, kOperators))
        return fail();
    at_ += 2;
    return is_named ? join(kOperator, source_name()) : join(kOperator);
}

Id Reader::constructor_name() {
    const bool is_constructor = *at_++ == 'C';
    const bool is_inherited = is_constructor && take('I');
    if (peek() == '\0' || !std::strchr(is_constructor ? "12345" : "01245", peek()))
        return fail();
    ++at_;
    return join(longest_name_ + 1, is_inherited ? type() : 0);
}

/// Closure types and unnamed types; only the latter are candidates for substitution on their own.
Id Reader::closure_or_unnamed() {
    if (is_strict_)
        return fail();
    if (take("Ul")) {
        const Id params = types();
        expect('E');
        compact_number();
        return piece(PieceRule::Closure, kOperator, params);
    }
    if (!take("Ut"))
        return fail();
    compact_number();
    return candidate(join(kOperator));
}

Id Reader::substitution() {
    expect('S');
    const char c = peek();
    if (c != '_' && !is_sequence_char(c))
        return std_substitution();
    std::size_t index = 0;
    for (; is_sequence_char(peek()); ++at_) {
        const int digit = is_digit(peek()) ? peek() - '0' : peek() - 'A' + 10;
        index = std::min<std::size_t>(index * 36 + static_cast<std::size_t>(digit), 1U << 24);
    }
    if (c != '_')
        ++index;
    expect('_');
    return index < candidates_.size() ? candidates_[index] : fail();
}

/// Abbreviations; with ABI tags they are candidates for substitution.
Id Reader::std_substitution() {
    if (peek() == '\0' || !std::strchr("tabsiod", peek()))
        return fail();
    ++at_;
    longest_name_ = std::max(longest_name_, kStdName);
    const Id id = join(peek() == 'C' || peek() == 'D' ? kStdName : 17);
    return peek() == 'B' ? candidate(abi_tags(id)) : id;
}

// ------------------------------------------------------------------------------------------ templates

/// <template-param>; looking an argument up takes time with its index.
Id Reader::template_param() {
    expect('T');
    const std::uint32_t index = compact_number();
    return piece(PieceRule::Param, 8 + index / 16, index);
}

/// A template name with the arguments that follow; sets `last_list_`.
Id Reader::with_args(Id name) {
    const Id args = template_args();
    return piece(PieceRule::Template, 3, name, args, last_list_);
}

/// <template-args>; sets `last_list_`.
Id Reader::template_args() {
    expect('I');
    std::vector<Id> list;
    Id id = join(2);
    while (!failed_ && !take('E')) {
        list.push_back(template_arg());
        id = join(2, id, list.back());
    }
    last_list_ = keep_list(std::move(list));
    return id;
}

Id Reader::template_arg() {
    switch (peek()) {
    case '\0':
        return fail();
    case 'X': {
        ++at_;
        const Id id = expression();
        expect('E');
        return id;
    }
    case 'L':
        return literal();
    case 'I':
    case 'J':
        return pack();
    default:
        return type();
    }
}

Id Reader::pack() {
    if (!enter())
        return 0;
    ++at_;
    std::vector<Id> elements;
    while (!failed_ && !take('E'))
        elements.push_back(template_arg());
    const std::uint32_t own = 2 * static_cast<std::uint32_t>(elements.size()) + 1;
    const Id id = piece(PieceRule::Pack, own, 0, 0, keep_list(std::move(elements)));
    --depth_;
    return id;
}

// ---------------------------------------------------------------------------------------------- types

/// <type>
Id Reader::type() {
    if (!enter())
        return 0;
    Id id = qualifiers();
    if (id != 0) {
        id = candidate(join(1, id, peek() == 'F' ? function_type() : type()));
    } else {
        id = plain_type();
    }
    --depth_;
    return id;
}

/// A <type> without qualifiers before it.
Id Reader::plain_type() {
    static constexpr const char* kBuiltin = "abcdefghijlmnostvwxyz";
    const char c = peek();
    if (c != '\0' && std::strchr(kBuiltin, c)) {
        ++at_;
        return join(std::strchr("bcdefilsvwxz", c) ? 11 : 18); // "long double" or "unsigned long long"
    }
    switch (c) {
    case 'u':
        ++at_;
        return candidate(source_name());
    case 'P':
        ++at_;
        return candidate(join(2, type()));
    case 'C':
    case 'G':
        ++at_;
        return candidate(join(11, type())); // " _Imaginary"
    case 'R':
    case 'O':
        return candidate(reference_type());
    case 'F':
        return candidate(function_type());
    case 'A':
        return candidate(array_type());
    case 'M': {
        ++at_;
        const Id owner = type();
        return candidate(join(8, owner, type()));
    }
    case 'U':
        return candidate(peek_next() == 'l' || peek_next() == 't' ? name() : vendor_qualified_type());
    case 'T':
        return param_type();
    case 'S':
        return std_or_substituted_type();
    case 'D':
        return extended_type();
    default:
        return c == 'N' || c == 'Z' || is_digit(c) ? candidate(name()) : fail();
    }
}

Id Reader::reference_type() {
    ++at_;
    return piece(PieceRule::Reference, 2, type());
}

Id Reader::vendor_qualified_type() {
    expect('U');
    Id id = source_name();
    if (peek() == 'I')
        id = with_args(id);
    return join(2, id, type());
}

/// Types that begin with 'D'.
Id Reader::extended_type() {
    if (take("Dp"))
        return candidate(piece(PieceRule::Repeat, 4, type()));
    if (take("Dt") || take("DT")) {
        const Id id = join(12, expression());
        expect('E');
        return candidate(id);
    }
    if (take("Dv")) {
        Id size = 0;
        if (is_digit(peek()))
            number();
        else if (take('_') || peek() != '\0')
            size = expression();
        expect('_');
        return candidate(join(kOperator, size, type()));
    }
    if (take("DF")) {
        number();
        take('_');
        return join(kOperator);
    }
    if (peek_next() == '\0' || !std::strchr("acndefhisu", peek_next()))
        return fail();
    at_ += 2;
    return join(17); // "decltype(nullptr)"
}

/// A template parameter used as type or, with arguments, as template. In the type of a conversion operator
/// the arguments are the operator's own unless others follow.
Id Reader::param_type() {
    const Id param = template_param();
    if (peek() != 'I')
        return candidate(param);
    if (!in_conversion_) {
        candidate(param);
        return candidate(with_args(param));
    }
    const char* const start = at_;
    const std::size_t known = candidates_.size();
    const Id applied = with_args(param);
    if (peek() == 'I') {
        candidate(param);
        return candidate(applied);
    }
    if (failed_)
        return 0;
    at_ = start;
    candidates_.resize(known);
    return candidate(param);
}

Id Reader::std_or_substituted_type() {
    const char* const start = at_;
    const bool is_reference = peek_next() == '_' || is_sequence_char(peek_next());
    if (!is_reference) {
        const Id id = name();
        return at_ == start + 2 ? id : candidate(id);
    }
    const Id id = substitution();
    return peek() == 'I' ? candidate(with_args(id)) : id;
}

/// <function-type>, of which the caller makes a candidate (with the qualifiers before it, if any).
Id Reader::function_type() {
    expect('F');
    take('Y');
    const Id result = type();
    const Id id = join(1, result, types());
    if (peek() == 'R' || peek() == 'O')
        ++at_;
    expect('E');
    return join(8, id);
}

Id Reader::array_type() {
    expect('A');
    Id size = 0;
    const char* const start = at_;
    if (is_digit(peek())) {
        number();
        size = join(static_cast<std::uint32_t>(at_ - start));
    } else if (peek() != '_') {
        size = expression();
    }
    expect('_');
    return join(6, size, type());
}

/// Any number of <CV-qualifiers> and the qualifiers of function types; 0 if there are none.
Id Reader::qualifiers() {
    Id id = 0;
    while (!failed_) {
        if (peek() == 'r' || peek() == 'V' || peek() == 'K') {
            ++at_;
            id = join(9, id); // " restrict", " volatile"
        } else if (take("Dx") || take("Do")) {
            id = join(17, id); // " transaction_safe"
        } else if (take("DO")) {
            id = join(12, id, expression());
            expect('E');
        } else {
            break;
        }
    }
    return id;
}

/// The types up to the end of a signature, one at least.
Id Reader::types() {
    Id id = join(1);
    do {
        id = join(2, id, type());
    } while (!failed_ && peek() != '\0' && peek() != 'E' && peek() != '.' && !sees("RE") && !sees("OE"));
    return id;
}

// ---------------------------------------------------------------------------------------- expressions

/// <expr-primary>
Id Reader::literal() {
    expect('L');
    if (take("_Z") || take('Z')) {
        const Id id = encoding();
        expect('E');
        return join(1, id);
    }
    const Id id = type();
    const char* const start = at_;
    while (peek() != 'E' && peek() != '\0')
        ++at_;
    const auto length = static_cast<std::uint32_t>(at_ - start);
    expect('E');
    return join(length + 6, id);
}

/// <expression>
Id Reader::expression() {
    if (!enter())
        return 0;
    const bool outer = in_expression_;
    in_expression_ = true;
    const Id id = plain_expression();
    in_expression_ = outer;
    --depth_;
    return id;
}

Id Reader::plain_expression() {
    const char c = peek();
    const char next = peek_next();
    if (c == 'L')
        return literal();
    if (c == 'T')
        return template_param();
    if (is_digit(c) || sees("on"))
        return simple_id();
    if (take("sr"))
        return unresolved_name();
    if (take("gs"))
        return join(2, expression());
    if (take("sp"))
        return piece(PieceRule::Repeat, 4, expression());
    if (c == 'f' && (next == 'p' || (next == 'L' && is_digit(at_[2]))))
        return function_param();
    if (c == 'f' && (next == 'l' || next == 'r' || next == 'L' || next == 'R'))
        return fold();
    if (take("il"))
        return join(2, expressions('E'));
    if (take("tl")) {
        const Id id = type();
        return join(2, id, expressions('E'));
    }
    return sees("cv") || is_any_of(at_, kOperators) ? operator_expression() : fail();
}

Id Reader::operator_expression() {
    const char* const code = at_;
    if (is_any_of(code, "nw na "))
        return new_expression();
    at_ += 2;
    if (is_any_of(code, "st ti "))
        return join(kOperator, type());
    if (is_any_of(code, "tr "))
        return join(kOperator);
    if (is_any_of(code, "sP ")) {
        Id id = join(kOperator);
        while (!failed_ && !take('E'))
            id = join(2, id, template_arg());
        return id;
    }
    if (is_any_of(code, "pp mm "))
        take('_');
    if (is_any_of(code, "ps ng ad de co nt pp mm nx te sz az sZ dl da tw aw at "))
        return join(kOperator, expression());
    if (is_any_of(code, "cv dc sc cc rc ")) {
        const Id target = type();
        const bool is_list = is_any_of(code, "cv ") && take('_');
        return join(kOperator, target, is_list ? expressions('E') : expression());
    }
    const Id left = expression();
    if (is_any_of(code, "cl cp "))
        return join(kOperator, left, expressions('E'));
    const Id both = join(kOperator, left, expression());
    return is_any_of(code, "qu dX ") ? join(4, both, expression()) : both;
}

Id Reader::new_expression() {
    at_ += 2;
    const Id placement = expressions('_');
    const Id id = join(kOperator, placement, type());
    if (take('E'))
        return id;
    if (take("pi"))
        return join(2, id, expressions('E'));
    return sees("il") ? join(2, id, expression()) : fail();
}

Id Reader::expressions(char end) {
    Id id = join(1);
    while (!failed_ && !take(end))
        id = join(2, id, expression());
    return id;
}

Id Reader::fold() {
    const bool is_binary = peek_next() == 'L' || peek_next() == 'R';
    at_ += 2;
    if (!is_any_of(at_, kOperators))
        return fail();
    at_ += 2;
    const Id id = expression();
    return piece(PieceRule::Fold, kOperator, join(2, id, is_binary ? expression() : 0));
}

Id Reader::function_param() {
    ++at_;
    if (take('L'))
        number();
    expect('p');
    if (!take('T')) {
        qualifiers();
        compact_number();
    }
    return join(20); // "{parm#16777216}"
}

/// <simple-id> or operator name, with template arguments if any follow.
Id Reader::simple_id() {
    const Id id = unqualified_name();
    return peek() == 'I' ? with_args(id) : id;
}

/// What follows `sr`: a type or, ended by E, names; then the name of the member. The demangler of GCC 12
/// never returns if it meets a broken constructor, destructor or closure after "sr1A", so the walk is strict
/// there.
Id Reader::unresolved_name() {
    if (!is_digit(peek())) {
        if (peek() != 'T' && peek() != 'S' && peek() != 'N' && !sees("Dt") && !sees("DT"))
            return fail();
        const Id scope = type();
        return join(2, scope, simple_id());
    }
    result_.is_ambiguous = true;
    const bool outer = is_strict_;
    is_strict_ = true;
    Id scope = plain_simple_id();
    while (!old_unresolved_ && !failed_ && !take('E'))
        scope = join(2, scope, plain_simple_id());
    const Id id = join(2, old_unresolved_ ? candidate(scope) : scope, plain_simple_id());
    is_strict_ = outer;
    return id;
}

Id Reader::plain_simple_id() {
    return is_digit(peek()) || is_lower(peek()) ? simple_id() : fail();
}

/// The whole name, with the suffixes of clones.
bool Reader::read() {
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

} // namespace

bool read_mangled_name(const char* text, bool old_unresolved, MangledName& result) {
    return Reader(text, old_unresolved, result).read();
}
