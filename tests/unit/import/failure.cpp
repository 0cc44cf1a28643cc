#include "tests/unit/import/failure.h"

#include "common/fatal.h"

#include <gtest/gtest.h>

static void throw_status(int status) {
    throw status;
}

std::string failure_of(const std::function<void()>& call) {
    testing::internal::CaptureStderr();
    pgt_ExitHook = throw_status;
    std::string end = "(no failure)";
    try {
        call();
    } catch (int status) {
        end = status == 1 ? "" : "status " + std::to_string(status);
    }
    pgt_ExitHook = nullptr;
    return testing::internal::GetCapturedStderr() + end;
}
