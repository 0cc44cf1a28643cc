#include "driver/run_state.h"

DPI_FILE* pgofDPIFile = nullptr;
DPI_FILE* pgofRefDPIFile = nullptr;
COMP* componentList = nullptr;
int numComponents = 0;
parser* pars = nullptr;
std::FILE* outtxt = nullptr;
std::FILE* outxml = nullptr;
const block_sink* block_exports = nullptr;
