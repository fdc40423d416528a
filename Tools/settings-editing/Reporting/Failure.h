// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace Tool {

/// Why something could not be done.
enum class Fault {
    NotSet,          ///< there is no such setting, or nothing that matches
    UnreadableFile,  ///< the settings file exists, but is no settings file or cannot be read
    NotWritten,      ///< settings or output did not reach their place
    TimedOut,        ///< another process kept the settings file locked for too long
    WrongValue,      ///< a value, a name or a file is not what it should be
};

/// The text of one line that says why, for people.
class Failure : public std::runtime_error {
  public:
    Failure(Fault fault, const std::string& text) : std::runtime_error(text), fault_(fault) {}
    [[nodiscard]] Fault fault() const noexcept { return fault_; }

  private:
    Fault fault_;
};

/// A text that a message quotes: all of it, or its beginning when it is long.
std::string shortened(std::string_view text);

}  // namespace Tool
