#include "import/gcc/object_links.h"

#include "common/message.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <unistd.h>

constexpr std::string_view kNotes = ".gcno";
constexpr std::string_view kCounters = ".gcda";

static object_links* current = nullptr; ///< the one whose directory is there

object_links::object_links() = default;

object_links::~object_links() {
    remove_all();
}

void object_links::remove_at_exit() {
    if (current)
        current->remove_all();
}

void object_links::make_directory() {
    static const bool registered = std::atexit(remove_at_exit) == 0;
    (void)registered;
    const char* const place = std::getenv("TMPDIR");
    std::string name = std::string(place && *place ? place : "/tmp") + "/vexcov-XXXXXX";
    if (!mkdtemp(name.data()))
        end_with_error("cannot create %s: %s; TMPDIR names another place", name.c_str(),
                       std::strerror(errno));
    directory_ = name;
    current = this;
}

void object_links::release(std::size_t number) {
    if (directory_.empty())
        return;
    for (const std::string_view ending : {kNotes, kCounters})
        unlink((stem(number) + std::string(ending)).c_str());
}

void object_links::remove_all() {
    if (directory_.empty())
        return;
    for (std::size_t number = 0; number < numbers_; ++number)
        release(number);
    rmdir(directory_.c_str());
    directory_.clear();
    current = nullptr;
}

std::string object_links::name_for(const gcc_object& object, std::size_t number) {
    if (object.counters.empty())
        return object.notes;
    const std::string_view notes_stem =
        std::string_view(object.notes).substr(0, object.notes.size() - kNotes.size());
    if (object.counters.starts_with(notes_stem) && object.counters.size() == object.notes.size())
        return object.counters;
    if (directory_.empty())
        make_directory();
    numbers_ = std::max(numbers_, number + 1);
    const std::string notes = stem(number) + std::string(kNotes);
    const std::string counters = stem(number) + std::string(kCounters);
    if (symlink(object.notes.c_str(), notes.c_str()) != 0 ||
        symlink(object.counters.c_str(), counters.c_str()) != 0)
        end_with_error("cannot create links in %s: %s; TMPDIR names another place", directory_.c_str(),
                       std::strerror(errno));
    return counters;
}
