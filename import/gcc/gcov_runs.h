// Runs gcov on the objects of a program, several at a time, and reads what it writes.
#pragma once

#include "import/gcc/gcov_document.h"
#include "import/gcc/gcov_program.h"
#include "import/gcc/object_search.h"

#include <chrono>
#include <functional>
#include <string>
#include <vector>

constexpr unsigned kMostJobs = 256;

/// gcov writes all at once, when it has read an object: 0.1 s is much.
constexpr std::chrono::seconds kLongestSilence{300};

/// Objects that gcov had trouble with, which the heads of their files did not show.
struct gcov_troubles {
    std::vector<std::string> unreadable; ///< notes files with the reason: nothing is known of these objects
    std::vector<std::string> damaged;    ///< counter files: their objects count as never run
};

/// Runs gcov on the objects, at most `jobs` at a time, and hands out their documents in no particular order.
/// A run is given several objects, since it takes a while to start; as its exit status does not tell which of
/// them was at fault, they are read again one by one when it is not 0. With a `prefix`, gcov leaves out
/// source files with absolute names outside of this directory, such as system headers, which are most of what
/// it has to do for C++. Ends the run with a message when gcov cannot be started. A gcov that is silent for
/// longer than `patience` is ended.
gcov_troubles run_gcov(const std::vector<gcc_object>& objects, gcov_programs* programs, unsigned jobs,
                       const std::string& prefix,
                       const std::function<void(const gcov_document&)>& on_document,
                       std::chrono::seconds patience = kLongestSilence);

/// The number of processors that this process may use, at most kMostJobs.
unsigned default_jobs();
