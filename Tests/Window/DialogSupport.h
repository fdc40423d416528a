// SPDX-License-Identifier: MIT
#pragma once

// What tests of the dialogs share: a session on the files of the test, whose edits are applied by
// the real window program.

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QLabel>
#include <QString>
#include <QWidget>
#include <string>
#include <vector>

#include "Dialogs/ChangeModel.h"
#include "Session/Session.h"

namespace DialogSupport {

class DialogTest : public testing::Test {
  public:
    DialogTest();

    /// Reads the file; to be called before anything else, once the file is as a test wants it.
    void start();
    /// Waits until what the file holds has reached the session.
    void waitForStored(const std::string& keyPath, const PropertyListValue& value);
    /// Applies all edits and waits for the end.
    Tool::ApplyOutcome applyAll();

    QRVWindow::Session session;
};

/// Writes a value of the profile as the tool does.
void setInProfileByTool(const std::string& profile, const std::string& keyPath,
                        const std::string& value);
/// What the tool prints for a key path, without the line end; empty when nothing is stored.
std::string storedByTool(const std::string& keyPath, const std::string& profile = "");

/// The button with this text, with or without its mnemonic; the test fails when there is none.
QAbstractButton* buttonOf(QWidget& widget, const QString& text);
/// Presses it as a person does; the test fails when it is hidden or disabled.
void press(QWidget& widget, const QString& text);
QString labelText(QWidget& widget, const QString& objectName);

/// The lines of the dialog's list: its cells without marks for the direction.
std::vector<QStringList> linesOf(QWidget& widget);
QRVWindow::ChangeModel& modelOf(QWidget& widget);

/// Nothing is clipped, in light and dark and with a font of twice the size, and lists have a name
/// for screen readers. Pictures are called `name`.
void expectGoodLooks(QWidget& widget, const QString& name);
/// Escape closes the dialog.
void expectEscapeCloses(QWidget& dialog);

}  // namespace DialogSupport
