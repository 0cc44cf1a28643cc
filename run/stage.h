// A stage of a run as a process of its own: what it needs goes away with it, however it ends.
#pragma once

#include "run/signal_watch.h"

#include <functional>
#include <string>

/// Runs `body` as a program of its own would run (fatal.h), in a child process, and returns its exit status.
/// What it writes to its standard streams goes to standard error; where there is a `banner`, without that,
/// and when the stage has ended. A signal that asks the run to end ends the stage and then the run, with 128
/// and its number. A stage that was ended by a signal itself has status 1, after a message with `name`.
int run_stage(const char* name, const std::string& banner, const std::function<void()>& body,
              signal_watch* signals);
