// The function coverage exports: the covered functions of the dynamic profile, in the order of its records.
//
//   text: Covered Functions in File: "FILE"
//         "NAME"<tab>FREQ<tab>BLOCKS<tab>COVERED<tab>PERCENT
//         ...
//         (an empty line before each further file)
//
//   XML:  <MODULE name = "FILE">
//         <FUNCTION name="NAME" freq="FREQ">
//         <BLOCKS total="BLOCKS" covered="COVERED" coverage="PERCENT%"></BLOCKS>
//         </FUNCTION>
//         ...
//         </MODULE>
//
// Names are written as they are.
#pragma once

#include <cstdio>

/// Write the export to an open stream and return true. A profile without records ends the run with "%s is
/// corrupt!" on standard error and exit status 1.
bool bOutputFunctionCoverageTxt(std::FILE* stream);
bool bOutputFunctionCoverageXML(std::FILE* stream);
