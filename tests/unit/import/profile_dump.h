// A dynamic profile as text, decoded by hand-counted offsets and sharing nothing with the product.
#pragma once

#include <string>

/// One line for the header ("runs N") and one for each record:
/// "FILE'NAME' ROUTINE: LINE:COLUMN=COUNT LINE:COLUMN=COUNT .. entry INDEX". Throws std::out_of_range for a
/// file that is too short.
std::string dump_profile(const std::string& bytes);
