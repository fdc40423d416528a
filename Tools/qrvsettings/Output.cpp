// SPDX-License-Identifier: MIT
#include "Output.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "Failure.h"

namespace Tool {

void print(std::string_view text) {
    const bool isWritten =
        std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
    if (isWritten) return;
    const std::error_code error(errno, std::generic_category());
    throw Failure(ExitCode::NotWritten, "cannot write: " + error.message() + ", standard output");
}

}  // namespace Tool
