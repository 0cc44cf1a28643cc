// Expressions of mangled names.

#include "demangle/mangled_name_reader.h"

#include <cstdint>

/// <expr-primary>
PieceId MangledNameReader::literal() {
    expect('L');
    if (take("_Z") || take('Z')) {
        const Id id = encoding();
        expect('E');
        return join(1, id);
    }
    const Id id = type();
    const bool is_null = at_[-2] == 'D' && at_[-1] == 'n';
    const char* const start = at_;
    take('n');
    if (is_strict_ && peek() == 'E' && !is_null)
        return fail();
    while (peek() != 'E' && peek() != '\0')
        ++at_;
    const auto length = static_cast<std::uint32_t>(at_ - start);
    expect('E');
    return join(length + 6, id);
}

/// <expression>
PieceId MangledNameReader::expression() {
    if (!enter())
        return 0;
    const bool outer = in_expression_;
    in_expression_ = true;
    const Id id = plain_expression();
    in_expression_ = outer;
    --depth_;
    return id;
}

PieceId MangledNameReader::plain_expression() {
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

PieceId MangledNameReader::operator_expression() {
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
    if (is_any_of(code, "pp mm ") && !take('_'))
        return postfix_operand();
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

/// The demangler keeps the operand of a postfix operator twice and may walk both: each nesting doubles its
/// work.
PieceId MangledNameReader::postfix_operand() {
    if (++postfix_depth_ > kDeepestPostfix)
        return fail();
    const Id id = join(kOperator, expression());
    --postfix_depth_;
    return id;
}

PieceId MangledNameReader::new_expression() {
    at_ += 2;
    const Id placement = expressions('_');
    const Id id = join(kOperator, placement, type());
    if (take('E'))
        return id;
    if (take("pi"))
        return join(2, id, expressions('E'));
    return sees("il") ? join(2, id, expression()) : fail();
}

PieceId MangledNameReader::expressions(char end) {
    Id id = join(1);
    while (!failed_ && !take(end))
        id = join(2, id, expression());
    return id;
}

PieceId MangledNameReader::fold() {
    const bool is_binary = peek_next() == 'L' || peek_next() == 'R';
    at_ += 2;
    if (!is_any_of(at_, kOperators))
        return fail();
    at_ += 2;
    const Id id = expression();
    return piece(PieceRule::Fold, kOperator, join(2, id, is_binary ? expression() : 0));
}

PieceId MangledNameReader::function_param() {
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
PieceId MangledNameReader::simple_id() {
    const Id id = unqualified_name();
    return peek() == 'I' ? with_args(id) : id;
}

/// What follows `sr`: a type or, ended by E, names; then the name of the member. Where one of the names
/// before E is broken, the demangler of GCC 12 goes on behind the break, so the walk is strict there.
PieceId MangledNameReader::unresolved_name() {
    if (!is_digit(peek())) {
        if (peek() != 'T' && peek() != 'S' && peek() != 'N' && !sees("Dt") && !sees("DT"))
            return fail();
        const Id scope = type();
        return join(2, scope, simple_id());
    }
    result_.is_ambiguous = true;
    const bool outer = is_strict_;
    is_strict_ = true;
    Id scope = old_unresolved_ ? candidate(name()) : plain_simple_id();
    while (!old_unresolved_ && !failed_ && !take('E'))
        scope = join(2, scope, plain_simple_id());
    is_strict_ = outer;
    return join(2, scope, plain_simple_id());
}

PieceId MangledNameReader::plain_simple_id() {
    return is_digit(peek()) || is_lower(peek()) ? simple_id() : fail();
}
