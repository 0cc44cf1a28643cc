// One name for all functions that the compiler makes of one in the source.
#pragma once

#include <string>
#include <string_view>

/// Sets `*shared` to the name under which all functions are one that a compiler makes of one in the source,
/// whatever the arguments of its template; it depends on `name` alone. Returns true for an instance of a
/// template and for a function inside one, such as a member or a lambda: the name is qualified then, with
/// "<>" for all arguments and without parameters and blanks, as "ns::list<>::insert<>". Else the name stays
/// as it is, mangled, but for the variants of a constructor or destructor: they have that of the base object.
/// Names that are not mangled as C++ or not understood stay, too.
bool find_shared_name(std::string_view name, std::string* shared);

/// The qualified name of a mangled one in the same form, whether it is that of a template or not, such as
/// "ns::operator=="; the name itself where it is not mangled as C++ or not understood.
std::string name_without_parameters(const std::string& name);
