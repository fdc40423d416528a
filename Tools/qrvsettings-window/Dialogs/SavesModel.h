// SPDX-License-Identifier: MIT
#pragma once

/// The saves of the history, the latest first: when, by which program and why, and how many
/// settings each has changed.

#include <QAbstractTableModel>
#include <QThreadPool>
#include <vector>

#include "QRVHistory/QRVHistory.h"

class QTreeView;

namespace QRVWindow {

/// Reads the history without keeping the window waiting.
class SavesReader : public QObject {
    Q_OBJECT

  public:
    explicit SavesReader(QObject* parent = nullptr);
    /// Waits for a reading that has begun: some seconds at most.
    ~SavesReader() override;

    /// `ended` follows. Only the latest reading counts.
    void read();

  Q_SIGNALS:
    /// `failure` is one line for people; empty when there is none.
    void ended(const std::vector<QRVHistorySave>& saves, const QString& failure);

  private:
    void end(quint64 number, const std::vector<QRVHistorySave>& saves, const QString& failure);

    QThreadPool thread_;
    quint64 number_ = 0;
};

class SavesModel : public QAbstractTableModel {
    Q_OBJECT

  public:
    enum Column { Time, Program, Origin, Count };
    explicit SavesModel(QObject* parent = nullptr);

    /// The latest first. Saves that changed nothing but the store's records have no line.
    void setSaves(std::vector<QRVHistorySave> saves);
    /// Only saves of a program, or of settings, that are called so have a line.
    void setFilter(const QString& text);
    /// All of them.
    [[nodiscard]] const std::vector<QRVHistorySave>& saves() const { return saves_; }
    [[nodiscard]] const QRVHistorySave& saveAt(int row) const {
        return saves_[shown_[static_cast<std::size_t>(row)]];
    }
    /// The save of a line and all later ones, with those that have no line.
    [[nodiscard]] std::vector<QRVHistorySave> savesFrom(int row) const;
    /// Those at this time or later.
    [[nodiscard]] std::vector<QRVHistorySave> savesSince(NSDate time) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;

  private:
    void choose();
    [[nodiscard]] bool isLetThrough(const QRVHistorySave& save) const;

    QString filter_;
    std::vector<QRVHistorySave> saves_;
    std::vector<std::size_t> shown_;     ///< those with a line
    std::vector<std::size_t> settings_;  ///< how many settings each of these has changed
};

/// A flat list of them. `model` must outlive it.
QTreeView* makeSavesView(SavesModel& model, QWidget* parent);

}  // namespace QRVWindow
