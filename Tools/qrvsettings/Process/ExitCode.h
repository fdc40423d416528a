// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <string_view>

#include "Reporting/Failure.h"

namespace Tool {

/// What the program answers to its caller.
enum class ExitCode : int {
    Done = 0,
    NotSet = 1,
    WrongUsage = 2,
    UnreadableFile = 3,
    NotWritten = 4,
    WrongValue = 5,
    TimedOut = 6,
};

struct ExitCodeMeaning {
    ExitCode code;
    std::string_view text;  ///< for the help; the manual page repeats it
};
inline constexpr std::array exitCodes = {
    ExitCodeMeaning{ExitCode::Done, "done"},
    ExitCodeMeaning{ExitCode::NotSet,
                    "not set, not found; something differs (diff), would change (--check), is in "
                    "conflict (merge), was changed since (undo), or needs a person (doctor)"},
    ExitCodeMeaning{ExitCode::WrongUsage, "wrong usage"},
    ExitCodeMeaning{ExitCode::UnreadableFile,
                    "the settings file or the history exists but cannot be read or parsed"},
    ExitCodeMeaning{ExitCode::NotWritten,
                    "the change did not reach the file, or the output could not be written"},
    ExitCodeMeaning{ExitCode::WrongValue,
                    "a value, or a file that was named, is not what was asked for, or "
                    "the site has locked the setting"},
    ExitCodeMeaning{ExitCode::TimedOut, "timed out"},
};

constexpr ExitCode exitCodeOf(Fault fault) {
    switch (fault) {
        case Fault::NotSet:
            return ExitCode::NotSet;
        case Fault::UnreadableFile:
            return ExitCode::UnreadableFile;
        case Fault::NotWritten:
            return ExitCode::NotWritten;
        case Fault::TimedOut:
            return ExitCode::TimedOut;
        case Fault::WrongValue:
            break;
    }
    return ExitCode::WrongValue;
}

}  // namespace Tool
