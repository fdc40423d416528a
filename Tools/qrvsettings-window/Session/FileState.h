// SPDX-License-Identifier: MIT
#pragma once

#include <QDateTime>
#include <QString>

namespace QRVWindow {

/// The settings file as it was last read.
struct FileState {
    enum class Kind {
        NotRead,     ///< no reading has ended yet
        Present,     ///< it was read
        Missing,     ///< there is none: everything is as the defaults say
        Damaged,     ///< it is there, and holds no settings
        Unreadable,  ///< it is there, and cannot be read
        NoPlace,     ///< there is no home folder, so no settings file
    };
    Kind kind = Kind::NotRead;
    QString path;      ///< as the user has named it
    QString fault;     ///< one line: what is wrong; empty when nothing is
    QString readOnly;  ///< one line: why it cannot be replaced; empty when it can
    /// What reading waits for, such as a lock; empty when it does not wait.
    QString waitsFor;
    quint64 size = 0;  ///< bytes
    QDateTime readAt;

    [[nodiscard]] bool isDamaged() const { return kind == Kind::Damaged; }
    /// Whether edits can be applied.
    [[nodiscard]] bool isWritable() const {
        return (kind == Kind::Present || kind == Kind::Missing) && readOnly.isEmpty();
    }
};

}  // namespace QRVWindow
