// SPDX-License-Identifier: MIT
// The program qrvsettings: runs one command, and turns failures into messages and exit codes.

#include <exception>
#include <string>
#include <vector>

#include "History/ToolHistory.h"
#include "Parser/CommandLine.h"
#include "Platform/System/System.h"
#include "Process/ExitCode.h"
#include "Process/StandardError.h"
#include "Process/Waiting.h"
#include "Reporting/Failure.h"
#include "Reporting/Notices.h"

namespace {

Tool::ExitCode run(const std::vector<std::string>& arguments) {
    try {
        return Tool::runCommandLine(arguments);
    } catch (const Tool::Failure& failure) {
        Tool::say(failure.what());
        return Tool::exitCodeOf(failure.fault());
    } catch (const std::exception& error) {
        // The system is out of memory or of another resource.
        Tool::say(error.what());
        return Tool::ExitCode::NotWritten;
    }
}

}  // namespace

int main(int argc, char** argv) {
    // The store logs for hosts without a terminal. Here notices and failures say what matters.
    setNSLogSink([](const std::string&) {});
    Tool::setNoticeHandler(Tool::remark);
    Tool::setWaitHandler([](const auto& description, const auto& work) {
        const Tool::Waiting waiting(description);
        work();
    });
    const Tool::ExitCode code = run({argv + (argc > 0 ? 1 : 0), argv + argc});
    Tool::waitForHistory();
    return static_cast<int>(code);
}
