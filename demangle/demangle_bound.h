// A bound on the work of turning a mangled C++ name into its C++ form.
//
// Mangled names refer back to earlier pieces (S_, S0_, ..., T_, T0_, ...), so the text can double with every
// few characters: 200 bytes can stand for gigabytes, and the system's demangler has no limit. The bound is
// found without producing the text: in time linear in the length of the name where pieces do not depend on
// template parameters; where they do, in at most `limit` / 8 steps.
#pragma once

#include <cstddef>

/// Whether the name (null-terminated, beginning with "_Z") surely has a demangled text of at most `limit`
/// characters, which the demangler finds in time proportional to `limit`. The bound is generous (mostly less
/// than twice the real text, rarely over four times), so ordinary names whose text is well below `limit`
/// pass. A name that is not understood passes only if even doubling at each of its references would stay
/// within `limit`.
bool demangles_within(const char* name, std::size_t limit);
