// SPDX-License-Identifier: MIT
#pragma once

/// What is wrong with the settings file, as lines for people: its state, what the application
/// changes at its start, and what doctor has found.

#include <QString>
#include <optional>
#include <vector>

#include "Panes/Findings.h"
#include "Session/Session.h"

namespace QRVWindow {

struct Trouble {
    enum class Kind {
        Other,
        Damaged,     ///< it can be replaced, and its folder opened
        Unreadable,  ///< its folder can be opened
        ReadOnly,    ///< likewise
    };
    Kind kind = Kind::Other;
    Tool::Finding::Level level = Tool::Finding::Level::Note;
    QString message;
    QString advice{};   ///< what to do, a line for each way; empty when that is said already
    QString command{};  ///< of the advice, for a shell; empty when there is none
    std::optional<Tool::SettingPlace> place{};  ///< of the setting concerned, if one is

    bool operator==(const Trouble&) const = default;
};

/// The worst first. Empty for a whole file with nothing to look at. What doctor notes for
/// information is left out.
std::vector<Trouble> troublesOf(const Session& session, const Findings& findings);

/// "Error", "Warning", "Note".
QString levelText(Tool::Finding::Level level);

}  // namespace QRVWindow
