#include "import/clang/join_reader.h"

#include "common/message.h"
#include "common/remedy.h"
#include "import/clang/archive.h"
#include "import/clang/file_kind.h"

#include <algorithm>

static constexpr const char* kBuildAgain = "build the program again, and run the tests";
static constexpr const char* kRunAgain = "run the tests again";

[[noreturn]] static void refuse(const std::string& path, const input_error& error, const char* remedy) {
    end_with_error("%s %s", printable(path).c_str(), with_remedy(error.what(), remedy).c_str());
}

/// All bytes of a file, valid until the next one is read.
std::string_view join_reader::whole(file_bytes* file) {
    profile_.clear();
    file->append(0, file->size(), &profile_);
    return profile_.view();
}

void join_reader::read_profile(const std::string& path) {
    try {
        file_bytes file(path);
        if (file.size() == 0)
            print_warning("%s is empty: its process was killed or still runs; it is passed over",
                          printable(path).c_str());
        else
            join_.add_profile(whole(&file));
    } catch (const input_error& error) {
        refuse(path, error, kRunAgain);
    }
}

void join_reader::read_names(const std::string& path) {
    try {
        file_bytes file(path);
        if (file.size() != 0)
            join_.add_names(whole(&file));
    } catch (const input_error& error) {
        refuse(path, error, kRunAgain);
    }
}

void join_reader::read_archive(file_bytes* file, const std::string& path) {
    bool any = false;
    const auto on_member = [&](const file_part& part, const std::string& name) {
        if (!is_elf(part.at(0, std::min<std::uint64_t>(part.size(), 4))))
            return;
        try {
            read_mapped_sections(part, &sections_);
            if (!any)
                join_.begin_input(path);
            any = true;
            join_.add_object(sections_);
        } catch (const not_of_interest&) { // members may be
            return;
        } catch (const input_error& error) {
            refuse(path + "(" + name + ")", error, kBuildAgain);
        }
    };
    for_each_member(file, path, on_member);
    if (!any)
        throw not_of_interest("has no member with coverage mapping: none was compiled with "
                              "-fprofile-instr-generate -fcoverage-mapping");
}

void join_reader::read_object(const file_part& file, const std::string& path, bool named) {
    try {
        read_mapped_sections(file, &sections_);
    } catch (const not_of_interest&) {
        throw;
    } catch (const file_failure&) {
        throw;
    } catch (const input_error& error) {
        if (named)
            throw;
        print_warning("%s %s; it is passed over", printable(path).c_str(), error.what());
        return;
    }
    join_.begin_input(path);
    join_.add_object(sections_);
}

void join_reader::read_program(const std::string& path, bool named) {
    try {
        file_bytes file(path);
        if (kind_of(&file) == file_kind::archive)
            read_archive(&file, path);
        else
            read_object(file_part(&file, 0, file.size()), path, named);
    } catch (const not_of_interest& error) {
        if (named)
            refuse(path, error, "build it so, or leave it out");
        if (passed_over_.empty())
            passed_over_ = printable(path) + " " + error.what();
    } catch (const input_error& error) {
        refuse(path, error, kBuildAgain);
    }
}

static std::string hexadecimal(std::string_view bytes) {
    static const char digits[] = "0123456789abcdef";
    std::string text;
    for (const char c : bytes) {
        text += digits[static_cast<unsigned char>(c) >> 4];
        text += digits[static_cast<unsigned char>(c) & 15];
    }
    return text;
}

/// The build ID of a file that may be anything.
static std::string build_id_of(const std::string& path) {
    try {
        file_bytes file(path);
        return kind_of(&file) == file_kind::program ? read_build_id(file_part(&file, 0, file.size()))
                                                    : std::string();
    } catch (const file_failure& failure) {
        refuse(path, failure, kBuildAgain);
    } catch (const input_error&) {
        return {};
    }
}

void join_reader::find_programs(const std::vector<std::string>& files) {
    std::set<std::string> missing = join_.profiled_ids();
    if (missing.empty())
        end_with_error("no program given, and the profiles do not say which wrote them; name the programs");
    for (const std::string& path : files) {
        const std::string id = build_id_of(path);
        if (missing.erase(id) != 0)
            read_program(path, false);
    }
    for (const std::string& id : missing)
        print_warning(
            "no program with the build ID %s of a profile was found below the working directory; name "
            "the program",
            hexadecimal(id).c_str());
    if (missing.size() == join_.profiled_ids().size())
        end_with_error(
            "no program given, and none of those below the working directory wrote the profiles; name the "
            "programs");
}

void join_reader::check_programs() const {
    if (!join_.without_objects())
        return;
    if (passed_over_.empty())
        end_with_error("no program given; name those that wrote the profiles");
    end_with_error("no program with coverage mapping was found: %s",
                   with_remedy(passed_over_, "build the program so, or name it").c_str());
}
