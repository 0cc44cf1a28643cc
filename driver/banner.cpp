#include "driver/banner.h"

#include <cstdlib>
#include <cstring>
#include <unistd.h>

// Deliberate: the same in every release. Build scripts recognise the tool, and what it accepts, by this line.
const char* VERSION_Get_Info_String() {
    return "Vexal(R) C++/Fortran Compiler code-coverage tool for 32-bit applications, "
           "Version 8.1    Build 20050207Z %s\n";
}

const char* VERSION_Get_Protection_String() {
    return "vexcov is free software under the Apache License, Version 2.0; there is no warranty.\n";
}

std::string banner_Concat(const char* a, const char* b) {
    std::string joined = a ? a : "";
    return joined += b ? b : "";
}

bool banner_Binary_Exists(const char* path) {
    return access(path, X_OK) == 0;
}

std::string banner_Dirname(const char* path) {
    const std::string text = path;
    const std::size_t separator = text.find_last_of("\\/:");
    return separator == std::string::npos ? std::string() : text.substr(0, separator);
}

std::string banner_Exec_Dir(const char* program) {
    if (std::strpbrk(program, "\\/:"))
        return banner_Dirname(program);
    const char* path = std::getenv("PATH");
    while (path) {
        const char* end = std::strchr(path, ':');
        std::string directory = end ? std::string(path, end) : std::string(path);
        if (directory.empty())
            directory.assign(1, '.');
        if (banner_Binary_Exists((directory + "/" + program).c_str()))
            return directory;
        path = end ? end + 1 : nullptr;
    }
    return std::string();
}

/// The identifier on a line of the support file, without the line's last character.
static std::string package_id_of(const char* line) {
    line += std::strlen("Package ID:");
    line += std::strspn(line, " \t");
    std::string identifier = line;
    if (!identifier.empty())
        identifier.pop_back();
    return identifier;
}

std::string banner_Version_Package_Id(banner_language language) {
    const bool fortran = language == banner_fortran;
    std::string path = banner_Exec_Dir(fortran ? "zrq" : "zcq");
    path = banner_Concat(path.c_str(), "/..");
    path = banner_Concat(path.c_str(), "/doc/");
    path = banner_Concat(path.c_str(), fortran ? "fsupport" : "csupport");
    std::FILE* file = std::fopen(path.c_str(), "r");
    if (!file)
        return std::string();
    std::string identifier;
    char line[1024];
    while (std::fgets(line, sizeof line, file))
        if (std::strncmp(line, "Package ID:", std::strlen("Package ID:")) == 0)
            identifier = package_id_of(line);
    std::fclose(file);
    return identifier;
}

void BANNER_Print(std::FILE* stream) {
    const std::string info = VERSION_Get_Info_String();
    // Deliberate: the text names both languages and Fortran is looked for first, so the package shown is that
    // of the Fortran compiler, whose support file every edition of the package has.
    banner_language language = banner_cpp;
    if (info.find("Fortran") != std::string::npos)
        language = banner_fortran;
    else if (info.find("C++") != std::string::npos)
        language = banner_cpp;
    std::string package = banner_Version_Package_Id(language);
    if (!package.empty())
        package = banner_Concat("Package ID: ", package.c_str());
    const std::size_t place = info.find("%s");
    std::fputs((info.substr(0, place) + package + info.substr(place + 2)).c_str(), stream);
    std::fputs(VERSION_Get_Protection_String(), stream);
    std::fflush(stream);
}

void PrintVersion() {
    BANNER_Print(stderr);
    std::fputc('\n', stderr);
    std::fflush(stderr);
}
