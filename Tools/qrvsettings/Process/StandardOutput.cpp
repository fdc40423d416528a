// SPDX-License-Identifier: MIT
#include "Process/StandardOutput.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "Process/StandardStreams.h"
#include "Reporting/Failure.h"
#include "Reporting/PrintableText.h"

namespace Tool {

void print(std::string_view text) {
    if (!standardOutputIsTerminal()) return printWithEscapeSequences(text);
    const std::string visible = printable(text, "\n\t");
    printWithEscapeSequences(visible);
}

void printWithEscapeSequences(std::string_view text) {
    const bool isWritten =
        std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
    if (isWritten) return;
    const std::error_code error(errno, std::generic_category());
    throw Failure(Fault::NotWritten, "cannot write: " + error.message() + ", standard output");
}

}  // namespace Tool
