// SPDX-License-Identifier: MIT
// The program qrvsettings-window.

#include <QApplication>
#include <QMainWindow>

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QMainWindow window;
    window.show();
    return QApplication::exec();
}
