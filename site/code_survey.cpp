#include "site/code_survey.h"

#include <utility>

static void add_run(std::vector<code_survey::run>& runs, std::uint32_t line, mark kind) {
    if (!runs.empty() && runs.back().kind == kind && runs.back().last + 1 == line)
        runs.back().last = line;
    else
        runs.push_back({line, line, kind});
}

void code_surveyor::add(const line_walk& walk) {
    const source_line& line = walk.line();
    survey_.infeasible_lines += line.disabled ? 1 : 0;
    marks_.take(walk);
    for (const marked_piece& piece : marks_.pieces()) {
        if (piece.kind != last_ || piece.begins_place)
            survey_.changes.push_back({line_begin_ + piece.offset, piece.kind, piece.begins_place});
        survey_.places += piece.begins_place ? 1 : 0;
        last_ = piece.kind;
    }
    const mark gravest = marks_.gravest(walk);
    if (gravest != mark::none)
        add_run(survey_.runs, line.number, gravest);
    survey_.line_ends.push_back(line_begin_ + line.text.size());
    line_begin_ += line.text.size() + 1;
}

code_survey code_surveyor::finish() {
    marks_.begin();
    line_begin_ = 0;
    last_ = mark::none;
    return std::exchange(survey_, {});
}
