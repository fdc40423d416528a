// SPDX-License-Identifier: MIT
#include "Window/DialogSupport.h"

#include <QApplication>
#include <QCheckBox>
#include <QFont>
#include <QHeaderView>
#include <QLayout>
#include <QScreen>
#include <QTest>

#include "Dialogs/ChangeView.h"
#include "Look/Theme.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "Session/Applier.h"
#include "Tool/ToolSupport.h"
#include "Window/PictureRules.h"
#include "Window/WindowSupport.h"

namespace DialogSupport {
namespace {

QString withoutMnemonic(QString text) {
    return text.remove(QLatin1Char('&'));
}

}  // namespace

DialogTest::DialogTest() {
    QRVWindow::Applier::setProgram(QStringLiteral(QRV_WINDOW));
}

void DialogTest::start() {
    session.start();
    ASSERT_TRUE(WindowSupport::waitUntil([this] {
        return session.fileState().kind != QRVWindow::FileState::Kind::NotRead &&
               !session.table().rows().empty();
    }));
}

void DialogTest::waitForStored(const std::string& keyPath, const PropertyListValue& value) {
    ASSERT_TRUE(WindowSupport::waitUntil([&] {
        return NSDictionaryQRV::objectAtKeyPath(session.stored(), keyPath) == value;
    })) << keyPath;
}

Tool::ApplyOutcome DialogTest::applyAll() {
    Tool::ApplyOutcome outcome;
    bool hasEnded = false;
    const auto connection = QObject::connect(&session, &QRVWindow::Session::applied, &session,
                                             [&](const Tool::ApplyOutcome& told) {
                                                 outcome = told;
                                                 hasEnded = true;
                                             });
    session.apply({});
    EXPECT_TRUE(WindowSupport::waitUntil([&] { return hasEnded; }));
    QObject::disconnect(connection);
    return outcome;
}

void setInProfileByTool(const std::string& profile, const std::string& keyPath,
                        const std::string& value) {
    WindowSupport::runTool({"set", "--profile", profile, keyPath, value});
}

std::string storedByTool(const std::string& keyPath, const std::string& profile) {
    std::vector<std::string> arguments{"get", "--layer", "stored", keyPath};
    if (!profile.empty()) arguments.insert(arguments.begin() + 1, {"--profile", profile});
    std::string text = ToolSupport::run(arguments).output;
    if (text.ends_with('\n')) text.pop_back();
    return text;
}

QAbstractButton* buttonOf(QWidget& widget, const QString& text) {
    for (auto* const button : widget.findChildren<QAbstractButton*>())
        if (withoutMnemonic(button->text()) == text) return button;
    ADD_FAILURE() << "no button " << text.toStdString();
    return nullptr;
}

void press(QWidget& widget, const QString& text) {
    QAbstractButton* const button = buttonOf(widget, text);
    ASSERT_TRUE(button != nullptr && button->isVisibleTo(&widget) && button->isEnabled())
        << text.toStdString();
    // A check box reacts where its box and text are.
    const int side = button->height() / 2;
    QTest::mouseClick(button, Qt::LeftButton, {},
                      qobject_cast<QCheckBox*>(button) ? QPoint(side, side) : QPoint());
}

QString labelText(QWidget& widget, const QString& objectName) {
    const auto* const label = widget.findChild<QLabel*>(objectName);
    if (label == nullptr) {
        ADD_FAILURE() << "no label " << objectName.toStdString();
        return {};
    }
    return label->isVisibleTo(&widget) ? label->text() : QString();
}

QRVWindow::ChangeModel& modelOf(QWidget& widget) {
    return *dynamic_cast<QRVWindow::ChangeModel*>(
        widget.findChild<QRVWindow::ChangeView*>()->model());
}

std::vector<QStringList> linesOf(QWidget& widget) {
    std::vector<QStringList> lines;
    for (const QRVWindow::ChangeLine& line : modelOf(widget).lines()) {
        QStringList cells;
        for (const QRVWindow::ChangeCell& cell : line.cells) cells.append(cell.text);
        lines.push_back(cells);
    }
    return lines;
}

void expectGoodLooks(QWidget& widget, const QString& name) {
    const QFont font = QApplication::font();
    const auto look = [&](const QString& suffix) {
        WindowSupport::show(widget);
        QCoreApplication::processEvents();
        WindowSupport::grab(widget, name + suffix);
        EXPECT_EQ(WindowSupport::clippedTexts(widget).join(QLatin1Char('\n')).toStdString(), "");
    };
    QApplication::setPalette(QRVWindow::Theme::lightPalette());
    look(QStringLiteral("-light"));
    QApplication::setPalette(QRVWindow::Theme::darkPalette());
    look(QStringLiteral("-dark"));
    QApplication::setPalette(QRVWindow::Theme::lightPalette());
    widget.hide();
    QApplication::setFont(QFont(font.family(), 2 * font.pointSize()));
    QCoreApplication::processEvents();
    WindowSupport::show(widget);
    // As big as it begins with this font, as far as a screen has room for it.
    const int width = std::min(widget.sizeHint().width(), widget.screen()->availableSize().width());
    widget.resize(width, widget.layout()->totalHeightForWidth(width));
    look(QStringLiteral("-large"));
    QApplication::setFont(font);
    for (const auto* const view : widget.findChildren<QAbstractItemView*>())
        EXPECT_FALSE(view->window() == widget.window() && !qobject_cast<const QHeaderView*>(view) &&
                     view->accessibleName().isEmpty())
            << view->objectName().toStdString();
}

void expectEscapeCloses(QWidget& dialog) {
    WindowSupport::show(dialog);
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_FALSE(dialog.isVisible());
}

}  // namespace DialogSupport
