// SPDX-License-Identifier: MIT
#pragma once

/// Brings edits into the settings file, all in one save or none. It is done by a process of its
/// own, which may wait for a lock, fail or be killed while the window stays as it is; both sides
/// speak in lines of JSON.

#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Edits/PendingEdits.h"

namespace Tool {

struct ApplyRequest {
    std::vector<PendingEdit> edits{};  ///< their `base` is compared with the file
    std::string origin{};  ///< what the history calls the save: "edit", "undo", "import"
    bool replacesDamagedFile = false;  ///< by the edits alone, whatever their `base`
    bool replacesReadOnlyFile = false;
};

struct ApplyOutcome {
    enum class State {
        Applied,     ///< the file was read again, and holds the edits but those of `conflicts`
        Conflict,    ///< another process has changed some of the settings: nothing is written
        NotApplied,  ///< nothing is written, see `reason`
    };
    State state = State::NotApplied;
    std::string reason{};  ///< one line for people; empty when applied
    /// Of `Conflict`, all of them. Of `Applied`, edits that were saved, and that another process
    /// has changed before the file was read again.
    std::vector<EditConflict> conflicts{};
    /// Of `Applied`: settings that another process changed between the comparison and the save,
    /// whose value this save has replaced; `theirs` is that value.
    std::vector<EditConflict> overwritten{};
    std::vector<std::string> notices{};  ///< a line each, such as what the save has migrated
};

/// @name The lines, without their ends
/// @{
std::string lineOf(const ApplyRequest& request);
/// Throws Failure (WrongValue).
ApplyRequest requestFromLine(std::string_view line);
std::string lineOf(const ApplyOutcome& outcome);
ApplyOutcome outcomeFromLine(std::string_view line);
/// What the process waits for, while it does.
std::string lineOfWaiting(const std::string& description);
/// Empty when the line is none of these.
std::string waitingFromLine(std::string_view line);
/// @}

/// Does it in this process, which has not used the store before and ends afterwards
/// (`waitForHistory`). `isWaiting` is called on another thread, once it has waited for
/// `timeUntilWaiting` and whenever it waits for something else. Never throws.
ApplyOutcome applyEdits(const ApplyRequest& request,
                        const std::function<void(const std::string& description)>& isWaiting);
inline constexpr std::chrono::milliseconds timeUntilWaiting{300};

/// The whole process: reads the line of a request from standard input, and writes those of what it
/// waits for and of the outcome to standard output. Returns the exit code: 0 also where nothing is
/// applied, 2 for what is no request.
int runApplyProcess();

}  // namespace Tool
