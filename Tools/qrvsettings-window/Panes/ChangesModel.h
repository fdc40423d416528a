// SPDX-License-Identifier: MIT
#pragma once

/// The changes that a session has seen, as the rows of a list: the earliest first.

#include <QAbstractTableModel>
#include <QStringList>
#include <vector>

#include "Session/Session.h"

namespace QRVWindow {

class ChangesModel : public QAbstractTableModel {
    Q_OBJECT

  public:
    enum Column { Time, Setting, Before, After, Who, ColumnCount };

    /// `session` must outlive the model.
    explicit ChangesModel(Session& session, QObject* parent = nullptr);

    /// Rows hold all of these words somewhere, in any letter case.
    void setFilter(const QString& text);
    void setShowsRecords(bool showsRecords);
    /// While paused no rows are added; changes that are cleared or forgotten go all the same.
    void setPaused(bool isPaused);
    [[nodiscard]] bool isPaused() const { return isPaused_; }
    /// The rows that wait for the end of the pause.
    [[nodiscard]] int newCount() const { return newCount_; }

    /// Null when there is no such row, or its change is forgotten.
    [[nodiscard]] const LiveChange* changeAt(int row) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;

  Q_SIGNALS:
    /// Rows, or the count of those that wait, are others.
    void countsChanged();

  private:
    void follow();
    void removeForgotten();
    void addNew();
    void showAnew();
    [[nodiscard]] bool matches(const LiveChange& change) const;
    [[nodiscard]] std::vector<quint64> matchesAfter(quint64 number) const;

    Session& session_;
    QStringList words_;
    bool showsRecords_ = false;
    bool isPaused_ = false;
    int newCount_ = 0;
    quint64 lastNumber_ = 0;  ///< of the changes that are shown or left out
    std::vector<quint64> numbers_;
};

/// "this window", the name of the program, or "another process".
QString authorOf(const LiveChange& change);

}  // namespace QRVWindow
