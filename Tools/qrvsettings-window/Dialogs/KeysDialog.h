// SPDX-License-Identifier: MIT
#pragma once

/// The keys of the window: those of its actions, as they are, and those that its lists have.

#include <QDialog>
#include <QList>
#include <vector>

class QAction;
class QTreeWidget;

namespace QRVWindow {

class KeysDialog : public QDialog {
    Q_OBJECT

  public:
    /// A key that no action has.
    struct Key {
        QString keys;
        QString text;
    };
    /// Actions without keys are left out.
    explicit KeysDialog(const QList<QAction*>& actions, const std::vector<Key>& others = {},
                        QWidget* parent = nullptr);

  private:
    void add(const QString& keys, const QString& text);
    QTreeWidget* list_ = nullptr;
};

}  // namespace QRVWindow
