// The banner: the tool's identification, its compiler package and the legal notice, on standard error.
#pragma once

#include <cstdio>
#include <string>

/// Languages of a compiler driver.
enum banner_language { banner_cpp = 0, banner_fortran = 1 };

/// Prints the banner and an empty line to standard error.
void PrintVersion();

/// Writes the identification and the legal notice to a stream and flushes it.
void BANNER_Print(std::FILE* stream);

/// Identification of the tool, a format that takes the package text; ends with a newline.
const char* VERSION_Get_Info_String();

/// The legal notice, one line with its newline.
const char* VERSION_Get_Protection_String();

/// Identifier of the compiler package: the text behind the last "Package ID:" of the support file beside the
/// compiler driver of the language. Empty when there is none.
std::string banner_Version_Package_Id(banner_language language);

/// Directory of a program: the directory part of a name that has one, otherwise the first directory of PATH
/// in which the name is executable (the current directory for an empty entry). Empty when it is not found.
std::string banner_Exec_Dir(const char* program);

/// True when `path` may be executed.
bool banner_Binary_Exists(const char* path);

/// The part of a path before its last separator.
std::string banner_Dirname(const char* path);

/// `a` followed by `b`; null counts as empty.
std::string banner_Concat(const char* a, const char* b);
