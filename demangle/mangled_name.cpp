// Names within mangled names: of functions, scopes, operators and closures; substitutions.

#include "demangle/mangled_name_reader.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

/// "std::basic_string<char, std::char_traits<char>, ...>" and the like.
static constexpr std::uint32_t kStdName = 75;
/// "construction vtable for ... -in-", "covariant return thunk to".
static constexpr std::uint32_t kPhrase = 48;

/// <encoding>: the template arguments that end its name are those its types refer to.
PieceId MangledNameReader::encoding() {
    if (!enter())
        return 0;
    Id id;
    if (peek() == 'T' || peek() == 'G') {
        id = is_shown() ? fail() : special_name();
    } else {
        id = name();
        const std::uint32_t args = last_list_;
        if (peek() != '\0' && peek() != 'E' && peek() != '.') {
            ++hidden_;
            const Id signature = types();
            --hidden_;
            id = join(12, id, args == 0 ? signature : piece(PieceRule::Signature, 1, signature, 0, args));
        }
    }
    --depth_;
    return id;
}

/// <special-name>: T or G, then what it is.
PieceId MangledNameReader::special_name() {
    if (peek_next() == '\0')
        return fail();
    return *at_++ == 'T' ? special_table() : special_other();
}

PieceId MangledNameReader::special_table() {
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

PieceId MangledNameReader::special_other() {
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

void MangledNameReader::call_offset() {
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
PieceId MangledNameReader::name() {
    if (peek() == 'N')
        return nested_name();
    if (peek() == 'Z')
        return local_name();
    Id id;
    bool add = true;
    if (take("St")) {
        show("std::");
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

PieceId MangledNameReader::nested_name() {
    expect('N');
    Id id = qualifiers();
    if (peek() == 'R' || peek() == 'O')
        ++at_;
    id = join(4, id);
    for (bool first = true; !take('E'); first = false) {
        if (failed_ || peek() == '\0')
            return fail();
        if (!first && peek() != 'I' && peek() != 'M')
            show("::");
        bool add = true;
        id = prefix_part(id, add);
        if (add && peek() != 'E')
            candidate(id);
    }
    return id;
}

/// The next part of a <prefix>, joined to those before; clears `add` if it is no candidate for substitution.
PieceId MangledNameReader::prefix_part(Id before, bool& add) {
    const char c = peek();
    if (c == 'I')
        return with_args(before);
    Id part;
    if (is_digit(c)) { // mostly
        part = abi_tags(source_name());
        last_list_ = 0;
        return join(2, before, part);
    }
    if (c == 'M') { // the initialiser a closure belongs to: not shown
        ++at_;
        add = false;
        return before;
    }
    if (take("St")) {
        show("std::");
        part = join(5, unqualified_name());
    } else if (c == 'S') {
        part = substitution();
        add = false;
    } else if (is_shown() && (c == 'T' || sees("Dt") || sees("DT"))) { // of types only
        return fail();
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

PieceId MangledNameReader::local_name() {
    expect('Z');
    const Id function = encoding();
    expect('E');
    last_list_ = 0;
    if (take('s')) {
        discriminator();
        return join(18, function);
    }
    show("::");
    if (is_shown())
        outline_->variant = 0; // that of the function around it
    std::uint32_t own = 2;
    if (take('d')) {
        compact_number();
        own = kPhrase;
    }
    const Id entity = name();
    discriminator();
    return join(own, function, entity);
}

PieceId MangledNameReader::unqualified_name() {
    return abi_tags(plain_unqualified_name());
}

PieceId MangledNameReader::some_abi_tags(Id id) {
    ++hidden_;
    while (take('B'))
        id = join(8, id, source_name());
    --hidden_;
    return id;
}

PieceId MangledNameReader::plain_unqualified_name() {
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
    if (!is_strict_ && take("DC")) { // structured binding
        Id id = join(4);
        while (!failed_ && !take('E'))
            id = join(2, id, source_name());
        return id;
    }
    return c == 'C' || c == 'D' ? constructor_name() : fail();
}

PieceId MangledNameReader::source_name() {
    const std::uint32_t length = is_digit(peek()) ? number() : 0;
    if (length == 0 || length > static_cast<std::size_t>(end_ - at_))
        return fail();
    if (is_shown())
        show_source_name({at_, length});
    at_ += length;
    const std::uint32_t own = std::max<std::uint32_t>(length, 21); // "(anonymous namespace)"
    longest_name_ = std::max(longest_name_, own);
    return join(at_[-static_cast<std::ptrdiff_t>(length)] == '_' ? own : length);
}

PieceId MangledNameReader::operator_name() {
    take("on");
    if (take("cv")) {
        const bool outer = in_conversion_;
        in_conversion_ = !in_expression_;
        show("operator_T");
        ++hidden_;
        const Id target = type();
        --hidden_;
        in_conversion_ = outer;
        return in_expression_ ? join(kOperator, target) : piece(PieceRule::Conversion, kOperator, target);
    }
    const bool is_named = sees("li") || (peek() == 'v' && is_digit(peek_next()));
    if (!is_named && !is_any_of(at_, kOperators))
        return fail();
    show_operator(at_);
    if (failed_)
        return 0;
    at_ += 2;
    return is_named ? join(kOperator, source_name()) : join(kOperator);
}

PieceId MangledNameReader::constructor_name() {
    const bool is_constructor = *at_++ == 'C';
    const bool is_inherited = is_constructor && take('I');
    if (peek() == '\0' || !std::strchr(is_constructor ? "12345" : "01245", peek()))
        return fail();
    show_constructor(is_constructor);
    if (failed_)
        return 0;
    ++at_;
    ++hidden_;
    const Id inherited = is_inherited ? type() : 0;
    --hidden_;
    return join(longest_name_ + 1, inherited);
}

/// Closure types and unnamed types; only the latter are candidates for substitution on their own.
PieceId MangledNameReader::closure_or_unnamed() {
    if (is_strict_)
        return fail();
    if (take("Ul")) {
        show_class("{lambda}");
        ++hidden_;
        while (outline_ && peek() == 'T' && is_lower(peek_next()))
            template_param_decl();
        const Id params = types();
        --hidden_;
        expect('E');
        compact_number();
        return piece(PieceRule::Closure, kOperator, params);
    }
    if (!take("Ut"))
        return fail();
    show_class("{unnamed}");
    compact_number();
    return candidate(join(kOperator));
}

/// <template-param-decl> of a lambda that names its parameters. The system's demangler knows none.
void MangledNameReader::template_param_decl() {
    if (!enter())
        return;
    if (take("Tn")) {
        type();
    } else if (take("Tp")) {
        template_param_decl();
    } else if (take("Tt")) {
        while (!failed_ && !take('E'))
            template_param_decl();
    } else if (!take("Ty")) {
        fail();
    }
    --depth_;
}

PieceId MangledNameReader::substitution() {
    expect('S');
    const char c = peek();
    if (c != '_' && !is_sequence_char(c))
        return std_substitution();
    if (is_shown()) // only types and arguments refer back
        return fail();
    std::size_t index = 0;
    for (; is_sequence_char(peek()); ++at_) {
        const int digit = is_digit(peek()) ? peek() - '0' : peek() - 'A' + 10;
        index = std::min<std::size_t>(index * 36 + static_cast<std::size_t>(digit), 1U << 24);
    }
    if (c != '_')
        ++index;
    expect('_');
    if (index >= known_)
        return fail();
    return outline_ ? 1 : candidates_[index];
}

/// Abbreviations; with ABI tags they are candidates for substitution.
PieceId MangledNameReader::std_substitution() {
    if (peek() == '\0' || !std::strchr("tabsiod", peek()))
        return fail();
    show_std(peek());
    ++at_;
    longest_name_ = std::max(longest_name_, kStdName);
    const Id id = join(peek() == 'C' || peek() == 'D' ? kStdName : 17);
    return peek() == 'B' ? candidate(abi_tags(id)) : id;
}
