// SPDX-License-Identifier: MIT
// The program qrvsettings-window.

#include <QApplication>
#include <QMainWindow>
#include <string_view>

#include "Panes/Findings.h"

int main(int argc, char** argv) {
    if (argc == 2 && std::string_view(argv[1]) == "--examine") return QRVWindow::examineProcess();
    const QApplication application(argc, argv);
    QMainWindow window;
    window.show();
    return QApplication::exec();
}
