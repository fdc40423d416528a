// SPDX-License-Identifier: MIT
#pragma once

/// What becomes of an apply, in words: what it waits for while it runs, and how it ended until
/// something is edited again.

#include <QObject>
#include <QString>
#include <set>

#include "Session/Session.h"

namespace QRVWindow {

class ApplyProgress : public QObject {
    Q_OBJECT

  public:
    /// `session` must outlive the object.
    explicit ApplyProgress(Session& session, QObject* parent = nullptr);

    /// One line; empty when there is nothing to say.
    [[nodiscard]] const QString& line() const { return line_; }
    /// A line each about what it waits for, settings whose value was replaced, and notices.
    [[nodiscard]] const QString& details() const { return details_; }
    /// The last apply has ended and nothing is written.
    [[nodiscard]] bool hasFailed() const { return hasFailed_; }
    /// Forgets how it ended.
    void clear();

  Q_SIGNALS:
    void changed();
    /// An apply has ended; `changed` was sent before.
    void ended();

  private:
    void begin();
    void end(const Tool::ApplyOutcome& outcome);
    void say(const QString& line, const QStringList& details, bool hasFailed);
    [[nodiscard]] QString appliedText() const;

    Session& session_;
    std::set<Tool::SettingPlace> places_;  ///< whose edits were pending when the apply began
    QString line_;
    QString details_;
    bool hasFailed_ = false;
};

}  // namespace QRVWindow
