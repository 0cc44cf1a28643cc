#include "run/figures.h"

#include "common/number_format.h"
#include "coverage/run_totals.h"
#include "driver/run_config.h"

report_figures figures_of_report() {
    return {true,
            compWithRef,
            {totalNumberOfFiles, totalNumberOfFilesCovered},
            {totalNumberOfProcs, totalNumberOfProcsCovered},
            {totalNumberOfBlocks, totalNumberOfBlocksCovered}};
}

static void print_part(std::FILE* stream, const char* name, const part_figures& part) {
    char total[kNumberTextSize];
    char covered[kNumberTextSize];
    i64_to_ascii(total, part.total);
    i64_to_ascii(covered, part.covered);
    std::fprintf(stream, "%-10s %9s %9s %9.2f\n", name, total, covered, percent64(part.covered, part.total));
}

void print_figures(std::FILE* stream, const report_figures& figures) {
    std::fprintf(stream, "%-10s %9s %9s %9s\n", "", "total", figures.differential ? "missed" : "covered",
                 "percent");
    print_part(stream, "files", figures.files);
    print_part(stream, "functions", figures.functions);
    print_part(stream, "blocks", figures.blocks);
}
