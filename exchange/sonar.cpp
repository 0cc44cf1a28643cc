// Generic test coverage of SonarQube:
//
//   <?xml version="1.0" encoding="UTF-8"?>
//   <coverage version="1">
//   <file path="NAME">                                for each file
//   <lineToCover lineNumber="N" covered="true"/>      for each line that holds code, with
//                                                     branchesToCover="N" coveredBranches="N" where it is
//                                                     shown in several blocks
//   </file>
//   </coverage>
#include "common/text_buffer.h"
#include "exchange/safe_text.h"
#include "exchange/writer.h"

// A line of the output is a line here.
// clang-format off

namespace {

class sonar_writer : public exchange_writer {
  public:
    explicit sonar_writer(const writer_target& target) : out_(target.stream) {
        out_.put(R"(<?xml version="1.0" encoding="UTF-8"?>)" "\n"
                 R"(<coverage version="1">)" "\n");
    }

    void add(const file_coverage& file) override;
    void finish(const coverage_totals& totals) override;

  private:
    void put_line(const line_coverage& line);

    text_buffer out_;
};

} // namespace

void sonar_writer::put_line(const line_coverage& line) {
    out_.put(R"(<lineToCover lineNumber=")");
    out_.put_number(line.number);
    out_.put(line.covered() ? R"(" covered="true")" : R"(" covered="false")");
    if (line.blocks > 1) {
        out_.put(R"( branchesToCover=")");
        out_.put_number(line.blocks);
        out_.put(R"(" coveredBranches=")");
        out_.put_number(line.executed);
        out_.put('"');
    }
    out_.put("/>\n");
}

void sonar_writer::add(const file_coverage& file) {
    out_.put(R"(<file path=")");
    put_xml(out_, file.name);
    out_.put(R"(">)" "\n");
    for (const line_coverage& line : file.lines)
        put_line(line);
    out_.put("</file>\n");
}

void sonar_writer::finish(const coverage_totals&) {
    out_.put("</coverage>\n");
    out_.flush();
}

// clang-format on

std::unique_ptr<exchange_writer> make_sonar_writer(const writer_target& target) {
    return std::make_unique<sonar_writer>(target);
}
