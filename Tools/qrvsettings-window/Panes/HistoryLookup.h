// SPDX-License-Identifier: MIT
#pragma once

/// Asks the history for the last changes of a setting, on a thread of its own: the history may be
/// locked by another process, and its library is loaded first.

#include <QObject>
#include <QThreadPool>
#include <optional>
#include <string>
#include <vector>

#include "QRVHistory/QRVHistory.h"

namespace QRVWindow {

struct HistoryAnswer {
    std::string keyPath;                ///< that was asked for, as it is stored
    std::vector<QRVHistorySave> saves;  ///< the latest first, each with the changes there alone
    std::string whyNone;                ///< why there is no answer; empty when there is one
};

class HistoryLookup : public QObject {
    Q_OBJECT

  public:
    static constexpr std::size_t maximumSaves = 5;

    explicit HistoryLookup(QObject* parent = nullptr);
    /// Waits for the end of a lookup.
    ~HistoryLookup() override;

    /// `found` follows. While one lookup runs, only the latest of others is kept.
    void look(const std::string& storedKeyPath);

  Q_SIGNALS:
    void found(const HistoryAnswer& answer);

  private:
    void start(const std::string& storedKeyPath);
    void finish(const HistoryAnswer& answer);

    QThreadPool thread_;
    bool isLooking_ = false;
    std::optional<std::string> next_;
};

}  // namespace QRVWindow
