// Input: a script of small decisions from which a few source files with functions are made, whose names are
// bytes of the input. vexcov-export writes them in every format. The XML is well-formed, and in the same
// lines as the trace; the JSON can be read; an annotation is a line with the properties of one.
#include "exchange/exchange_run.h"
#include "fuzz/harness.h"
#include "tests/tools/profile_text.h"

#include <algorithm>
#include <boost/json/parse.hpp>
#include <set>

static constexpr std::string_view source_pieces = "{|}|\n|int f() {\n|    |x = 1;|if (a) b; else c;\n|case "
                                                  "1: {|break;|default:|return;\n|// OFF\n|\"|#if A\n|"
                                                  "#else\n|#endif\n|(|)|/*|*/";

/// Bytes of the input as a name that the profiles can hold.
static std::string read_name(byte_script& script, const std::string& number) {
    std::string name;
    for (const char c : script.take(script.below(12)))
        name += c == '\0' || (c >= '\t' && c <= '\r') || c == ' ' || c == '/' || c == '\'' ? '.' : c;
    return name + number;
}

static std::string read_source(byte_script& script) {
    std::string text;
    for (unsigned int pieces = script.below(48); pieces > 0; --pieces)
        text += script.one_of(source_pieces, '|');
    return text;
}

/// Writes the profiles and sources.
static void write_files(byte_script& script) {
    std::string static_profile;
    std::string records = "header runs 1\n";
    std::string last;
    for (unsigned int file = 0; file < 3; ++file) {
        // The keys of the dynamic profile ascend.
        const std::string name = std::to_string(file) + read_name(script, ".c");
        scratch().put(name, read_source(script));
        for (unsigned int function = 0; function < 3; ++function) {
            const std::string routine = std::to_string(function) + read_name(script, "");
            const std::string line = std::to_string(script.below(9));
            static_profile += name + " - " + routine + " " + line + " 2 I\n";
            if (script.below(4) == 0)
                continue;
            records += "record 64\nfile " + name + "\nfunction " + routine + "\nblocks";
            for (unsigned int block = 0; block < 3; ++block)
                records += " " + std::to_string(script.below(12)) + ":" + std::to_string(script.below(20)) +
                           "=" + (script.flag() ? std::to_string(script.below(3)) : "18446744073709551615");
            records += "\n";
        }
    }
    scratch().put("pgopti.spi", static_profile);
    scratch().put("pgopti.dpi", compile_profile_text(records));
}

/// Every tag is closed, and neither markup nor a control character stands in a value.
static void check_xml(std::string_view text) {
    std::vector<std::string_view> open;
    for (std::size_t at = text.find('<'); at != std::string_view::npos; at = text.find('<', at + 1)) {
        const std::size_t end = text.find('>', at);
        require(end != std::string_view::npos, "a tag ends");
        const std::string_view tag = text.substr(at + 1, end - at - 1);
        require(tag.find('<') == std::string_view::npos && std::count(tag.begin(), tag.end(), '"') % 2 == 0,
                "no markup in a value");
        const std::string_view name = tag.substr(0, tag.find(' '));
        if (tag[0] == '/') {
            require(!open.empty() && open.back() == name.substr(1), "tags are nested");
            open.pop_back();
        } else if (tag[0] != '?' && tag[0] != '!' && !tag.ends_with('/')) {
            open.push_back(name);
        }
    }
    require(open.empty(), "every tag is closed");
    for (std::size_t at = text.find('&'); at != std::string_view::npos; at = text.find('&', at + 1))
        require(text.find(';', at) - at <= 5, "& begins a reference");
    require(std::none_of(text.begin(), text.end(), [](unsigned char c) { return c < ' ' && c != '\n'; }),
            "no control characters");
    // The library refuses what is no UTF-8.
    std::string quoted = "\"";
    for (const char c : text)
        quoted += c == '"' || c == '\\' || c == '\n' ? ' ' : c;
    boost::json::parse(quoted + "\"");
}

static std::size_t count_of(std::string_view text, std::string_view wanted) {
    std::size_t count = 0;
    for (std::size_t at = text.find(wanted); at != std::string_view::npos; at = text.find(wanted, at + 1))
        ++count;
    return count;
}

static void check_outputs() {
    const std::string cobertura = read_scratch("out.xml");
    const std::string sonar = read_scratch("out.sonar");
    const std::string trace = read_scratch("out.info");
    check_xml(cobertura);
    check_xml(sonar);
    const std::size_t lines = count_of(trace, "\nDA:");
    require(count_of(sonar, "<lineToCover ") == lines, "as many lines in SonarQube's format");
    require(count_of(cobertura, "<line ") - count_of(cobertura, "<method ") == lines,
            "as many lines in Cobertura's format");
    const boost::json::value document = boost::json::parse(read_scratch("out.json"));
    require(document.at("totals").at("lines").at("total").to_number<std::size_t>() == lines,
            "as many lines in the JSON");
    const std::string annotations = read_scratch("out.github");
    require(count_of(annotations, "\n") == count_of("\n" + annotations, "\n::"), "a command a line");
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    clear_scratch();
    byte_script script(data, size);
    std::vector<std::string> command = {"vexcov-export", "-cobertura", "out.xml", "-sonar",   "out.sonar",
                                        "-lcov",         "out.info",   "-json",   "out.json", "-github",
                                        "out.github",    "-markdown",  "out.md",  "-text",    "out.txt",
                                        "-onelinedsbl",  "OFF"};
    if (script.flag())
        command.push_back("-nopartial");
    if (script.flag())
        command.insert(command.end(), {"-ref", "pgopti.dpi"});
    if (script.flag())
        command.push_back("-functions");
    write_files(script);
    const outcome end = run_in_scratch([&] { call_main(run_exchange, command); });
    require(end.status == 0, "the export succeeds");
    check_outputs();
    return 0;
}
