// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QTimer>
#include <chrono>
#include <map>
#include <vector>

#include "Session/LiveChange.h"

namespace QRVWindow {

/// The changes that a session has seen, and for how long those of other processes are marked.
class LiveChanges : public QObject {
    Q_OBJECT

  public:
    LiveChanges(std::size_t maximum, std::chrono::milliseconds markedFor, QObject* parent);

    /// Numbers the changes, and marks those of other processes from now on.
    void add(std::vector<LiveChange> changes);
    void clear();
    /// Fills in the program of changes that have none yet; by number.
    void setPrograms(const std::map<quint64, QString>& programs);

    /// The earliest first.
    [[nodiscard]] const std::vector<LiveChange>& all() const { return changes_; }
    /// The latest that is still marked; null when none is.
    [[nodiscard]] const LiveChange* markedAt(const Tool::SettingPlace& place) const;

  Q_SIGNALS:
    void changed();
    void marksChanged(const std::vector<Tool::SettingPlace>& places);

  private:
    using Clock = std::chrono::steady_clock;
    struct Mark {
        LiveChange change;
        Clock::time_point end;
    };
    void endMarks();
    void waitForNextEnd();

    std::size_t maximum_;
    std::chrono::milliseconds markedFor_;
    std::vector<LiveChange> changes_;
    std::map<Tool::SettingPlace, Mark> marks_;
    quint64 lastNumber_ = 0;
    QTimer nextEnd_;
};

}  // namespace QRVWindow
