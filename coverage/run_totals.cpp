#include "coverage/run_totals.h"

std::int64_t totalNumberOfFiles = 0;
std::int64_t totalNumberOfFilesCovered = 0;
std::int64_t totalNumberOfProcs = 0;
std::int64_t totalNumberOfProcsCovered = 0;
std::int64_t totalNumberOfBlocks = 0;
std::int64_t totalNumberOfBlocksCovered = 0;

double functionCoverage = 0.0;
double blockCoverage = 0.0;
