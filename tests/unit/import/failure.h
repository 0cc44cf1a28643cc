// Messages of calls that end the run.
#pragma once

#include <functional>
#include <string>

/// Runs `call`, which is expected to end the run, and returns what it wrote to standard error, with "status
/// N" behind it when the exit status was not 1. "(no failure)" when it came back.
std::string failure_of(const std::function<void()>& call);
