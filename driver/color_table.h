// The coverage classes of source positions and their HTML colours.
#pragma once

/// Coverage class of a source position.
enum Color {
    clrNotFeasible = 1,    ///< line disabled by an infeasible-code marker
    clrUnknown = 2,        ///< no code was generated here; in force at the start of a file
    clrCovered = 3,        ///< all blocks here were executed
    clrPartial = 4,        ///< some blocks here were executed
    clrUncoveredBlock = 5, ///< no block here was executed
    clrUncoveredFunc = 6   ///< the function was never entered, or is absent from the reference run
};

/// HTML colour of each class, indexed by Color (entry 0 is unused and null). The strings are borrowed.
extern const char* BGColor[7];

/// Ends the run with "ERROR: unknown color %d" on standard output and exit status 1 unless 1 <= color <= 6.
void check_color(Color color);

/// Sets the HTML colour of a class; `value` is borrowed and not examined.
void SetBGColor(Color color, const char* value);

/// The HTML colour of clrUnknown, whatever class is asked for: the call is fixed, and nothing asks for
/// another.
const char* takeBGColor(Color color);

/// Shows partially covered code in the colour of covered code.
void SetNoPartialColor();
