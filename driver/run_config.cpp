#include "driver/run_config.h"

#include <cstdlib>

char* g_lpszSPIFileName = nullptr;
char* g_lpszDPIFileName = nullptr;
char* g_lpszRefDPIFileName = nullptr;
bool compWithRef = false;
char* g_lpszProjName = nullptr;
const char* moduleListName = nullptr;
char* g_lpszMailName = nullptr;
char* g_lpszMailAddr = nullptr;

const char* g_lpszTextOut = nullptr;
const char* g_lpszXMLOut = nullptr;
const char* g_lpszbfullTextOut = nullptr;
const char* g_lpszbfullXMLOut = nullptr;

bool html_output = true;
bool bProgressMeter = true;
bool g_bXCOUNTS = false;
bool g_bNoPartial = false;
int g_iDemangFlag = 0;
char* g_lpszOutFileExt = nullptr;
long double scale = 1.0L;
int sortType = 0;

std::vector<std::string> one_line_disable;
std::vector<std::string> start_disable_block;
std::vector<std::string> end_disable_block;
bool Infeasible_markers_specified = false;

void release_setting(char*& setting) {
    std::free(setting);
    setting = nullptr;
}
