// SPDX-License-Identifier: MIT
#pragma once

/// What there is to say of a setting, a level of settings, or several: facts, each with its name,
/// in the order in which people read them. The values are those of `qrvsettings explain`.

#include <QCoreApplication>
#include <QString>
#include <string>
#include <vector>

#include "Session/Session.h"

namespace QRVWindow {

struct SettingFact {
    enum class About {
        Sentence,  ///< what the setting is
        Kind,
        Range,
        Unit,
        Choices,  ///< a line for each, with its sentence
        Scope,
        Marks,      ///< what is special about the row
        Pending,    ///< the value that this window will store
        Effective,  ///< what the application reads
        Layer,      ///< what answers
        LockedBy,
        Stored,
        InProfile,
        Site,
        SiteFile,
        Default,  ///< the built-in one
        KindsDiffer,
        Count,
        Modified,
        CommonValue,
    };
    static constexpr int aboutCount = static_cast<int>(About::CommonValue) + 1;

    About about{};
    QString name;
    QString text;
    /// A value, key path or file: from left to right in any window.
    bool isCode = false;
    PropertyListValue color{};  ///< null for all but colours
};
using SettingFacts = std::vector<SettingFact>;

SettingFacts factsOfSetting(const Session& session, const std::string& keyPath);
/// Of some of the rows, such as all at and below a level.
SettingFacts factsOfRows(const Session& session, const std::vector<std::string>& keyPaths);

/// The key paths of the rows below a level, not shown ones too; empty for a row.
std::vector<std::string> keyPathsBelow(const Session& session, const std::string& level);

/// "built-in default", "profile travel".
QString layerText(const Tool::SettingAnswer& answer, const std::string& profile);

}  // namespace QRVWindow
