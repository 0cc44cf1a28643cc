// Types and template arguments of mangled names.

#include "demangle/mangled_name_reader.h"

#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

/// <template-param>; looking an argument up takes time with its index.
PieceId MangledNameReader::template_param() {
    expect('T');
    const std::uint32_t index = compact_number();
    return piece(PieceRule::Param, 8 + index / 16, index);
}

/// A template name with the arguments that follow; sets `last_list_`.
PieceId MangledNameReader::with_args(Id name) {
    if (is_shown())
        outline_->is_template = true;
    show("<>");
    ++hidden_;
    const Id args = template_args();
    --hidden_;
    return piece(PieceRule::Template, 3, name, args, last_list_);
}

/// <template-args>; sets `last_list_`.
PieceId MangledNameReader::template_args() {
    expect('I');
    std::vector<Id> list;
    Id id = join(2);
    while (!failed_ && !take('E')) {
        const Id arg = template_arg();
        if (!outline_)
            list.push_back(arg);
        id = join(2, id, arg);
    }
    last_list_ = outline_ ? 1 : keep_list(std::move(list));
    return id;
}

PieceId MangledNameReader::template_arg() {
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

PieceId MangledNameReader::pack() {
    if (!enter())
        return 0;
    ++at_;
    std::vector<Id> elements;
    while (!failed_ && !take('E')) {
        const Id element = template_arg();
        if (!outline_)
            elements.push_back(element);
    }
    const std::uint32_t own = 2 * static_cast<std::uint32_t>(elements.size()) + 1;
    const Id id = piece(PieceRule::Pack, own, 0, 0, keep_list(std::move(elements)));
    --depth_;
    return id;
}

/// <type>
PieceId MangledNameReader::type() {
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
PieceId MangledNameReader::plain_type() {
    constexpr std::uint32_t builtin = letter_set("abcdefghijlmnostvwxyz");
    constexpr std::uint32_t shorter = letter_set("bcdefilsvwxz");
    const char c = peek();
    if (is_in(builtin, c)) {
        ++at_;
        return join(is_in(shorter, c) ? 11 : 18); // "long double" or "unsigned long long"
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

PieceId MangledNameReader::reference_type() {
    ++at_;
    return piece(PieceRule::Reference, 2, type());
}

PieceId MangledNameReader::vendor_qualified_type() {
    expect('U');
    Id id = source_name();
    if (peek() == 'I')
        id = with_args(id);
    return join(2, id, type());
}

/// Types that begin with 'D'.
PieceId MangledNameReader::extended_type() {
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
    if (!is_strict_ && take("DF")) {
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
PieceId MangledNameReader::param_type() {
    const Id param = template_param();
    if (peek() != 'I')
        return candidate(param);
    if (!in_conversion_) {
        candidate(param);
        return candidate(with_args(param));
    }
    const char* const start = at_;
    const std::size_t known = known_;
    const Id applied = with_args(param);
    if (peek() == 'I') {
        candidate(param);
        return candidate(applied);
    }
    if (failed_)
        return 0;
    at_ = start;
    candidates_.resize(outline_ ? 0 : known);
    known_ = known;
    return candidate(param);
}

PieceId MangledNameReader::std_or_substituted_type() {
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
PieceId MangledNameReader::function_type() {
    expect('F');
    take('Y');
    const Id result = type();
    const Id id = join(1, result, types());
    if (peek() == 'R' || peek() == 'O')
        ++at_;
    expect('E');
    return join(8, id);
}

PieceId MangledNameReader::array_type() {
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

PieceId MangledNameReader::some_qualifiers() {
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
PieceId MangledNameReader::types() {
    Id id = join(1);
    do {
        id = join(2, id, type());
    } while (!failed_ && peek() != '\0' && peek() != 'E' && peek() != '.' && !sees("RE") && !sees("OE"));
    return id;
}
