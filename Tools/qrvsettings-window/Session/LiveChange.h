// SPDX-License-Identifier: MIT
#pragma once

#include <QDateTime>
#include <QString>

#include "Edits/PendingEdits.h"
#include "Platform/Values/PropertyListValue.h"

namespace QRVWindow {

/// A change of one stored setting that the window has seen in the file.
struct LiveChange {
    enum class By { ThisWindow, AnotherProcess };
    quint64 number = 0;  ///< counted from 1
    QDateTime time;      ///< when it was seen
    Tool::SettingPlace place;
    PropertyListValue before;  ///< null when nothing was stored
    PropertyListValue after;   ///< likewise
    By by = By::AnotherProcess;
    /// The program that saved it, as far as the history knows: it may be filled in later.
    QString program;
    bool isRecord = false;  ///< the store's own
};

}  // namespace QRVWindow
