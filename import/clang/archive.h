// Archives of object files, as ar writes them.
//
//   archive   "!<arch>\n" or, thin, "!<thin>\n", then members, each at an even offset
//   member    header of 60 bytes: name at 0 (16 bytes), size in decimal digits at 48 (10 bytes), then its
//             bytes; a thin archive has no bytes of a member, but for those of its own tables
//   name      "NAME/", or "/N": at offset N of the member "//", where it ends in "/\n", or "#1/N": in the
//             first N bytes of the member; in a thin archive it is a path from the archive's directory
//   tables    members "/", "//", "/SYM64/"
#pragma once

#include "import/clang/file_bytes.h"

#include <functional>
#include <string>
#include <string_view>

/// Whether a file that begins with `start` is an archive.
bool is_archive(std::string_view start);

/// Calls `on_member` for each member of the archive `file` at `path` with its bytes and its name. Throws
/// input_error where the archive is damaged or a member of a thin one cannot be opened.
void for_each_member(file_bytes* file, const std::string& path,
                     const std::function<void(const file_part&, const std::string& name)>& on_member);
