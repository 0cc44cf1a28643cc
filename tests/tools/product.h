// Calls of the program's own code inside a test or a fuzz target.
#pragma once

#include <functional>
#include <string>
#include <vector>

/// How a call of the program's code ended, and what it wrote to the two standard streams.
struct outcome {
    bool ended = false; ///< by pgt_Exit; false when the call came back
    int status = 0;     ///< the exit status, when it ended
    std::string output;
    std::string errors;
};

/// Runs `call` from the state of a fresh process and afterwards wipes what it has left in
/// process-wide records. Buffers and caches, which no output shows, stay.
outcome run_product(const std::function<void()>& call);

/// Calls what a program does with its arguments, the program's name first. They are gone when it comes back.
template <typename Body> auto call_main(Body body, std::vector<std::string> arguments) {
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (std::string& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    return body(static_cast<int>(arguments.size()), argv.data());
}
