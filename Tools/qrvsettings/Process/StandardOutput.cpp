// SPDX-License-Identifier: MIT
#include "Process/StandardOutput.h"

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <string>
#include <system_error>

#include "Process/StandardStreams.h"
#include "Reporting/Failure.h"
#include "Reporting/PrintableText.h"

namespace Tool {

namespace {

void write(const char* text, std::size_t size) {
    if (std::fwrite(text, 1, size, stdout) == size && std::fflush(stdout) == 0) return;
    const std::error_code error(errno, std::generic_category());
    throw Failure(Fault::NotWritten, "cannot write: " + error.message() + ", standard output");
}

}  // namespace

void print(std::string_view text) {
    if (!standardOutputIsTerminal()) return printWithEscapeSequences(text);
    const std::string visible = printable(text, "\n\t");
    write(visible.data(), visible.size());
}

void printWithEscapeSequences(std::string_view text) {
    write(text.data(), text.size());
}

}  // namespace Tool
