// SPDX-License-Identifier: MIT
#include <exception>
#include <string>
#include <vector>

#include "CommandLine.h"
#include "Failure.h"
#include "Platform/System/System.h"

namespace {

Tool::ExitCode run(const std::vector<std::string>& arguments) {
    try {
        return Tool::runCommandLine(arguments);
    } catch (const Tool::Failure& failure) {
        Tool::say(failure.what());
        return failure.code();
    } catch (const std::exception& error) {
        // Out of memory, or of something else that the system has to give.
        Tool::say(error.what());
        return Tool::ExitCode::NotWritten;
    }
}

}  // namespace

int main(int argc, char** argv) {
    // The store logs for a host that has nobody to talk to; here the commands tell what matters.
    setNSLogSink([](const std::string&) {});
    return static_cast<int>(run({argv + (argc > 0 ? 1 : 0), argv + argc}));
}
