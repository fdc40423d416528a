// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace QRVWindow {

/// What the command line asks the window for.
struct StartOptions {
    std::string keyPath;  ///< to begin with; empty for none
    std::string profile;  ///< the scope to begin with; empty for the application's settings
    std::string file;     ///< in place of the user's settings file; empty for that
};

/// What is to be printed in place of a window.
struct StartAnswer {
    std::string text;      ///< with its end of line
    bool isFault = false;  ///< for standard error, with exit code 2
};

struct Start {
    StartOptions options;
    std::optional<StartAnswer> answer;  ///< then there is no window
};

/// `arguments` are those behind the name of the program. Options of the toolkit are none of these:
/// they are faults.
Start startOf(const std::vector<std::string>& arguments);

}  // namespace QRVWindow
