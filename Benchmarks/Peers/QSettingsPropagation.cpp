// SPDX-License-Identifier: MIT
// A change of QSettings in one process, and a file watch in another.
#include <QCoreApplication>
#include <QFileSystemWatcher>

#include "Measures/Propagation.h"
#include "Peers/QSettingsStore.h"

namespace {

/// Watches the folder, because each save replaces the file.
void listenForChanges(const std::filesystem::path& folder) {
    int argumentCount = 0;
    QCoreApplication application(argumentCount, nullptr);
    QSettingsStore store(folder);
    const QString key =
        QSettingsStore::handle(Measures::changingKeyPath(folder), Workload::Kind::Integer);
    std::int64_t known = store.readInteger(key);
    QFileSystemWatcher watcher({QString::fromStdString(folder.string())});
    QObject::connect(&watcher, &QFileSystemWatcher::directoryChanged, [&](const QString&) {
        store.save();  // reads the file again as well
        const std::int64_t number = store.readInteger(key);
        if (number != known) Measures::printTimeOfChange();
        known = number;
    });
    Measures::printReady();
    QCoreApplication::exec();
}

void writeChanges(const std::filesystem::path& folder) {
    QSettingsStore store(folder);
    const QString key =
        QSettingsStore::handle(Measures::changingKeyPath(folder), Workload::Kind::Integer);
    Measures::changeOnRequest(
        [&](std::int64_t number) {
            store.writeInteger(key, number);
            store.save();
        },
        [] {});
}

}  // namespace

int main(int argc, char** argv) {
    return Measures::propagation(argc, argv, {listenForChanges, writeChanges});
}
