#include "markers/marker_conflicts.h"

#include "common/message.h"
#include "driver/run_config.h"

#include <cstdio>
#include <string_view>
#include <unordered_set>

unsigned int check_NFmarkers_intersect() {
    const std::unordered_set<std::string_view> begins(start_disable_block.begin(), start_disable_block.end());
    const std::unordered_set<std::string_view> ends(end_disable_block.begin(), end_disable_block.end());
    for (const std::string& mark : one_line_disable) {
        if (begins.count(mark) != 0) {
            print_error("same comment %s specified for one-line infiseable and start infeasible block",
                        mark.c_str());
            return 1;
        }
        if (ends.count(mark) != 0) {
            print_error("same comment %s specified for one-line infiseable and end infeasible block",
                        mark.c_str());
            return 1;
        }
    }
    for (const std::string& mark : end_disable_block) {
        if (begins.count(mark) != 0) {
            print_error("same comment %s specified for end infiseable block and start infeasible block",
                        mark.c_str());
            return 1;
        }
    }
    return 0;
}
