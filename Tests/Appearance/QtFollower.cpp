// SPDX-License-Identifier: MIT
// A host with the loop of Qt that says what the desktop prefers.

#include <QCoreApplication>
#include <QSocketNotifier>

#include "Follower.h"
#include "Platform/Dispatch/Adapters/Qt.h"
#include "QRVSettings/Adapters/QtAppearance.h"

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QtMainQueue mainQueue;
    Follower<QtDesktopAppearance> follower;
    const QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, [&] {
        if (!follower.readInput()) QCoreApplication::quit();
    });
    QCoreApplication::exec();
    return follower.end();
}
