// What a user can do about a failure. The messages of the programs beside vexcov say it behind a semicolon:
// "vexcov-check: error: cannot open old.json: No such file or directory; correct the name".
#pragma once

#include <string>
#include <string_view>
#include <system_error>

/// The system's words for a value of errno, and what to do about it. In vexcov, the words alone: scripts have
/// been matching its messages.
std::string reason_of(int error);
std::string reason_of(const std::error_code& error);

/// The text with the remedy behind it, unless it says by itself what to do: behind a semicolon, or
/// with "(made with: ...)".
std::string with_remedy(std::string text, std::string_view remedy);

/// What the programs beside vexcov add to a message that they share with vexcov, whose words are not theirs
/// to change: found by the format of the message, null for others. Asks for no memory.
const char* remedy_of_shared(std::string_view format);
