// The run configuration: process-wide settings, written by bParseCommandLine (and, for the marker lists, by
// getModuleNames) before the first profile record is looked at, read-only afterwards.
//
// "Owned" strings are copies that main releases at the end of the run (that of the static profile lives as
// long as the process); "borrowed" ones point into the argument vector.
#pragma once

#include <string>
#include <vector>

extern char* g_lpszSPIFileName;    ///< static profile; default "pgopti.spi"; owned
extern char* g_lpszDPIFileName;    ///< dynamic profile; default "pgopti.dpi"; owned
extern char* g_lpszRefDPIFileName; ///< reference dynamic profile, or null; owned
extern bool compWithRef;           ///< differential mode: g_lpszRefDPIFileName is set
extern char* g_lpszProjName;       ///< project name, or null; owned
extern const char* moduleListName; ///< component-list file, or null; borrowed
extern char* g_lpszMailName;       ///< owner shown at the foot of the pages; default "Nobody"; owned
extern char* g_lpszMailAddr;       ///< the owner's e-mail address; default "nobody"; owned

extern const char* g_lpszTextOut;      ///< text function export, or null; borrowed
extern const char* g_lpszXMLOut;       ///< XML function export, or null; borrowed
extern const char* g_lpszbfullTextOut; ///< text block export, or null; borrowed
extern const char* g_lpszbfullXMLOut;  ///< XML block export, or null; borrowed

extern bool html_output;       ///< write the HTML report; false when a function export was asked for
extern bool bProgressMeter;    ///< print the progress meter
extern bool g_bXCOUNTS;        ///< show execution counts in the listings
extern bool g_bNoPartial;      ///< treat partially covered code as covered
extern int g_iDemangFlag;      ///< 1 with -demang; handed to demangleName, which shows C++ names either way
extern char* g_lpszOutFileExt; ///< extension of the pages; always "html"; owned

// The names of the settings are fixed. No option sets these two, and nothing reads them.
extern long double scale; ///< always 1.0
extern int sortType;      ///< always 0

extern std::vector<std::string> one_line_disable;    ///< texts of one-line infeasible markers
extern std::vector<std::string> start_disable_block; ///< texts that begin an infeasible block
extern std::vector<std::string> end_disable_block;   ///< texts that end an infeasible block
extern bool Infeasible_markers_specified;            ///< some marker was given, on any way

/// Frees an owned setting and clears it.
void release_setting(char*& setting);
