// Names from the input in messages.
#pragma once

#include <string>
#include <string_view>

/// A name from the input as it can be shown on a terminal: control characters appear as \x and two digits.
std::string printable(std::string_view name);
