// Names of files in a unified diff: quotes, and the prefixes of the two sides.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

/// Takes a name in double quotes with the escapes of C from the front of `text`. Nothing when it is damaged.
std::optional<std::string> take_quoted_name(std::string_view* text);

/// The name in a header line behind "--- ", "+++ ", "rename from " and the like: quoted or up to a tab.
/// Nothing when the quotes are damaged; empty for "/dev/null".
std::optional<std::string> header_name(std::string_view text);

/// The two names behind "diff --git ". Two names without quotes can only be told apart when they are of one
/// length, as they are with git's prefixes, or without blanks; otherwise both are empty.
std::pair<std::string, std::string> both_names(std::string_view text);

/// What two names have in common at their ends, in whole folders; the second name when that is nothing.
std::string without_prefixes(const std::string& old_name, const std::string& new_name);

/// The name without its first `folders` folders; nothing when it does not have as many.
std::optional<std::string> without_folders(std::string_view name, int folders);
