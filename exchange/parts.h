// The files of an output in parts: NAME.1.xml, NAME.2.xml, ... for NAME.xml.
#pragma once

#include <cstddef>
#include <string>

/// "out/name.xml" becomes "out/name.1.xml".
std::string part_name(const std::string& name, std::size_t number);

/// Removes the parts behind the first `count` that an earlier run has left, which readers would take for
/// parts of this one: files that are Cobertura's XML by vexcov-export, up to the first that is none. One that
/// cannot be removed ends the run with a message and exit status 1.
void remove_further_parts(const std::string& name, std::size_t count);
