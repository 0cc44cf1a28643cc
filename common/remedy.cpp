#include "common/remedy.h"

#include "common/message.h"

#include <cerrno>
#include <cstring>

static const char* remedy_of(int error) {
    switch (error) {
    case ENOENT:
    case ENOTDIR:
    case ELOOP:
    case ENAMETOOLONG:
        return "correct the name";
    case EACCES:
    case EPERM:
        return "look at the rights";
    case EISDIR:
        return "name a file";
    case EEXIST:
    case ENOTEMPTY:
    case EROFS:
        return "name another";
    case ENOSPC:
    case EDQUOT:
        return "make room";
    case EFBIG:
        return "raise the limit of the size of files";
    case EMFILE:
    case ENFILE:
        return "raise the limit of open files";
    case EAGAIN:
    case ENOMEM:
        return "raise the limit of processes or memory";
    default:
        return "look at the disk and at the limits of the system";
    }
}

std::string reason_of(int error) {
    const std::string words = std::strerror(error);
    return messages_are_named() ? words + "; " + remedy_of(error) : words;
}

std::string reason_of(const std::error_code& error) {
    return reason_of(error.value());
}

std::string with_remedy(std::string text, std::string_view remedy) {
    if (text.find("; ") == std::string::npos && text.find("(made with: ") == std::string::npos)
        text.append("; ").append(remedy);
    return text;
}

const char* remedy_of_shared(std::string_view format) {
    static constexpr struct {
        std::string_view format; ///< how it begins
        const char* remedy;
    } remedies[] = {
        {"cannot write standard", "look at what reads it, and for room"},
        {"cannot write %s", "look for room, and at the rights"},
        {"cannot read %s", "look at the name and the rights"},
        {"cannot open /dev/null", "make that device"},
        {"out of memory", "raise the limit, or take a part of the input"},
        {"unable to allocate", "raise the limit, or take a part of the input"},
        {"corrupt SPI file", "import it again"},
        {"%s lock of %s failed, code", "put the profile on another disk"},
        {"Couldn't open the component file", "-comp names another"},
        {"File %s does not contain any", "write the files of interest into it, a line each"},
        {"File %s does not contain quotas", "put the text between double quotes"},
        {"Component file %s specifies", "give both"},
        {"you specified empty marker", "give the text of the comment"},
        {"same comment %s", "give each a text of its own"},
    };
    if (format.ends_with(": %s")) // the reason brings one
        return nullptr;
    for (const auto& shared : remedies)
        if (format.starts_with(shared.format))
            return shared.remedy;
    return nullptr;
}
