// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QTimer>
#include <chrono>
#include <map>
#include <memory>
#include <vector>

#include "Session/LiveChange.h"

namespace QRVWindow {

/// Looks up in the history which program has made changes, on another thread. Programs enter their
/// saves a moment after them: what is not found is looked up again, a few times.
class Programs : public QObject {
    Q_OBJECT

  public:
    explicit Programs(QObject* parent = nullptr);
    Programs(const Programs&) = delete;
    Programs& operator=(const Programs&) = delete;
    ~Programs() override;

    /// Changes that have just been seen.
    void lookUp(const std::vector<LiveChange>& changes);

  Q_SIGNALS:
    /// By the number of the change; only those that were found.
    void found(const std::map<quint64, QString>& programs);

  private:
    struct Receiver;
    void ask();
    void take(const std::map<quint64, QString>& programs, bool isHistory);

    std::vector<LiveChange> unknown_;
    std::size_t tries_ = 0;
    bool isAsking_ = false;
    QTimer next_;
    std::shared_ptr<Receiver> receiver_;
};

}  // namespace QRVWindow
