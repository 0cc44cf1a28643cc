#include "site/strip.h"

#include <algorithm>
#include <array>

constexpr std::uint32_t kSteps = 250; ///< of the strip's height

namespace {

struct step {
    mark kind = mark::none;
    std::uint32_t line = 0; ///< the first one of that kind
};

} // namespace

/// For navigation code that did not run is graver than what a marker takes out.
static int weight_of(mark kind) {
    return kind == mark::infeasible ? 0 : static_cast<int>(kind);
}

static std::array<step, kSteps> steps_of(const code_survey& survey) {
    std::array<step, kSteps> steps;
    for (const code_survey::run& run : survey.runs) {
        const auto step_at = [&](std::uint32_t line) {
            return static_cast<std::uint32_t>(std::uint64_t{line - 1} * kSteps / survey.lines());
        };
        for (std::uint32_t i = step_at(run.first); i <= step_at(run.last); ++i)
            if (steps[i].kind == mark::none || weight_of(run.kind) > weight_of(steps[i].kind))
                steps[i] = {run.kind, run.first};
    }
    return steps;
}

void put_strip(text_buffer& out, const code_survey& survey) {
    if (survey.runs.empty())
        return;
    static const std::string_view classes[] = {"", "p", "u", "f", "x"};
    out.put("<svg class=strip viewBox=\"0 0 10 250\" preserveAspectRatio=none aria-hidden=true>");
    const std::array<step, kSteps> steps = steps_of(survey);
    for (std::uint32_t first = 0; first < kSteps;) {
        std::uint32_t last = first + 1;
        while (last < kSteps && steps[last].kind == steps[first].kind &&
               steps[last].line == steps[first].line)
            ++last;
        if (steps[first].kind != mark::none) {
            out.put("<a tabindex=-1 href=#");
            out.put_number(steps[first].line);
            out.put("><path class=");
            out.put(classes[static_cast<int>(steps[first].kind)]);
            out.put(" d=\"M0 ");
            out.put_number(first);
            out.put("h10v");
            out.put_number(last - first);
            out.put("H0z\"/></a>");
        }
        first = last;
    }
    out.put("</svg>");
}
