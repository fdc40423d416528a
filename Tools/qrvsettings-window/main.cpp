// SPDX-License-Identifier: MIT
// The program qrvsettings-window: a window, or the process that does something for one. With
// `--apply-edits` that applies its edits, with `--examine` it examines the settings file.

#include <QApplication>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "Edits/ApplyEdits.h"
#include "Look/Theme.h"
#include "Main/MainWindow.h"
#include "Main/WindowState.h"
#include "Panes/Findings.h"
#include "Platform/System/System.h"
#include "Reporting/Failure.h"
#include "Session/Session.h"
#include "Session/ShownFile.h"
#include "Session/StartOptions.h"
#include "Translations/Translations.h"

namespace {

constexpr int wrongUsage = 2;

int answer(const QRVWindow::StartAnswer& answer) {
    (answer.isFault ? std::cerr : std::cout) << answer.text << std::flush;
    return answer.isFault ? wrongUsage : EXIT_SUCCESS;
}

int runWindow(const QRVWindow::StartOptions& options, int argc, char** argv) {
    std::optional<QRVWindow::ShownFile> file;
    if (!options.file.empty()) file.emplace(QString::fromStdString(options.file));
    QRVWindow::keepStateOfDialogsThere();
    QApplication application(argc, argv);
    QRVWindow::loadTranslations(application);
    QRVWindow::Session session;
    if (file) session.setFileName(file->path());
    session.setProfile(QString::fromStdString(options.profile));
    session.start();  // the file is read while the widgets are made
    const QRVWindow::Theme theme;
    QRVWindow::MainWindow window(session);
    window.open(options.keyPath);
    window.show();
    return QApplication::exec();
}

}  // namespace

int main(int argc, char** argv) {
    // The store logs for hosts without a face.
    setNSLogSink([](const std::string&) {});
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    if (arguments == std::vector<std::string>{"--apply-edits"}) return Tool::runApplyProcess();
    if (arguments == std::vector<std::string>{"--examine"}) return QRVWindow::examineProcess();
    const QRVWindow::Start start = QRVWindow::startOf(arguments);
    if (start.answer) return answer(*start.answer);
    try {
        return runWindow(start.options, argc, argv);
    } catch (const Tool::Failure& failure) {
        return answer({std::string("qrvsettings-window: ") + failure.what() + "\n", true});
    }
}
