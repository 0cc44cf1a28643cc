#include "run/own_children.h"

#include "common/file_ptr.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

/// Reads "number (name) state parent group session ..."; the name may hold anything.
static bool is_own_child(const fs::path& process) {
    const file_ptr stream(std::fopen((process / "stat").c_str(), "r"));
    char text[512];
    if (!stream)
        return false;
    text[std::fread(text, 1, sizeof text - 1, stream.get())] = '\0';
    const char* const behind_name = std::strrchr(text, ')');
    int parent = 0;
    int session = 0;
    return behind_name && std::sscanf(behind_name, ") %*c %d %*d %d", &parent, &session) == 2 &&
           parent == getpid() && session == getsid(0);
}

std::vector<pid_t> own_children() {
    std::vector<pid_t> children;
    std::error_code error;
    for (fs::directory_iterator entry("/proc", error), end; !error && entry != end; entry.increment(error)) {
        const int number = std::atoi(entry->path().filename().c_str());
        if (number > 0 && is_own_child(entry->path()))
            children.push_back(number);
    }
    return children;
}
