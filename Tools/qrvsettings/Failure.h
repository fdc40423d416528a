// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace Tool {

/// What the program answers to its caller.
enum class ExitCode : int {
    Done = 0,
    NotSet = 1,
    WrongUsage = 2,
    UnreadableFile = 3,  ///< the settings file exists, but is no settings file or cannot be read
    NotWritten = 4,      ///< what was to be written, settings or output, did not get there
    WrongValue = 5,
    TimedOut = 6,
};

/// Ends a command: the text goes to the user, the code to the caller.
class Failure : public std::runtime_error {
  public:
    Failure(ExitCode code, const std::string& text) : std::runtime_error(text), code_(code) {}
    [[nodiscard]] ExitCode code() const noexcept { return code_; }

  private:
    ExitCode code_;
};

/// Writes one line to standard error, after the name of the program. Control characters are written
/// as `\x1b`: they may come from arguments and files.
void say(std::string_view text);

/// The same for what does not make the command fail; writes nothing once the user wants it quiet.
void remark(std::string_view text);
void keepQuiet();
[[nodiscard]] bool isQuiet();

/// Text out of an argument for a message: all of it, or its beginning when it is long.
std::string shortened(std::string_view text);

}  // namespace Tool
