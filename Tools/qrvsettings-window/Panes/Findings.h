// SPDX-License-Identifier: MIT
#pragma once

/// What `qrvsettings doctor` finds in the settings file, kept up to date. The examination prepares
/// a store of its own, so it runs in a process of its own: this program with `--examine`.

#include <QElapsedTimer>
#include <QObject>
#include <QProcess>
#include <QTimer>
#include <map>
#include <string>
#include <vector>

#include "Doctor/Doctor.h"

namespace QRVWindow {

class Findings : public QObject {
    Q_OBJECT

  public:
    /// So many milliseconds lie between the starts of two examinations at least.
    static constexpr int pauseMilliseconds = 3000;

    explicit Findings(QObject* parent = nullptr);
    Findings(const Findings&) = delete;
    Findings& operator=(const Findings&) = delete;
    /// Ends an examination that runs.
    ~Findings() override;

    /// The program that is started; empty, as at the start, for that of this process. For tests.
    static void setProgram(const QString& program);

    /// To be called after a change of the file; does nothing by itself. A change during an
    /// examination is followed by another one.
    void examineSoon();
    [[nodiscard]] bool isExamining() const { return process_.state() != QProcess::NotRunning; }

    /// In the order of `qrvsettings doctor`.
    [[nodiscard]] const std::vector<Tool::Finding>& all() const { return all_; }
    /// The worst at a key path as it is stored (`SettingPlace::storedKeyPath`); null when there is
    /// none.
    [[nodiscard]] const Tool::Finding* at(const std::string& storedKeyPath) const;

  Q_SIGNALS:
    void changed();

  private:
    void start();
    void take();
    void replace(std::vector<Tool::Finding> findings);

    QProcess process_;
    QTimer next_;
    QElapsedTimer sinceStart_;
    bool isDue_ = false;  ///< once the running one has ended
    std::vector<Tool::Finding> all_;
    std::map<std::string, std::size_t> worst_;  ///< in `all_`, by key path
};

/// What the process with `--examine` does: prints the findings as a line. Returns its exit code.
int examineProcess();

}  // namespace QRVWindow
