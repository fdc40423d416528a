// SPDX-License-Identifier: MIT
// A host that ends in the middle of its saves. Whenever `QRVSettingsWaitForSaves` reports that all
// is saved, it prints the last number that it has written.
//
//     ExitProgram MODE ENDING NAME NUMBER COUNT
//
// ENDING says how it ends. It writes COUNT numbers, from NUMBER on, below the key NAME. Its static
// objects and exit handlers write and read, too.

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

#ifdef QRV_HAS_HISTORY
#include "QRVHistory/QRVHistory.h"
#endif
#include "Platform/Dispatch/Dispatch.h"
#include "QRVSettings/QRVSettings.h"
#include "QRVSettings/QRVSettingsC.h"

namespace {

constexpr std::chrono::seconds patience(20);

struct Host {
    std::string_view mode;
    std::string_view ending;
    std::string_view name;
    std::int64_t number = 0;
};

// Of types that are never destroyed: the exit handlers need them.
constinit Host host;
constinit bool endsOnHostThread = true;
constinit bool isEnding = false;

[[noreturn]] void fail(std::string_view what) {
    std::cerr << what << std::endl;
    _exit(EXIT_FAILURE);
}

std::string keyPath(std::string_view key) {
    return std::string(host.name).append(".").append(key);
}

void print(std::string_view what) {
    const std::string line =
        std::string(host.name) + ' ' + std::string(what) + ' ' + std::to_string(host.number) + '\n';
    if (write(STDOUT_FILENO, line.data(), line.size()) < 0) fail("cannot print");
}

void writeNext() {
    ++host.number;
    QRVSettingsSetObjectForKeyPath(host.number, keyPath("Number"));
    QRVSettingsSetObjectForKeyPath(NSArray{host.number, "text"}, keyPath("Menubar.Items"));
    if (QRVSettingsObjectForKeyPath(keyPath("Number")) != host.number) fail("read another value");
}

void writeBurst(std::int64_t count) {
    for (; count > 0; --count) writeNext();
}

void saveAll() {
    const QRVSaveStatus status = QRVSettingsWaitForSaves(patience);
    if (status.state != QRVSaveStatus::State::Saved) fail("not saved: " + status.reason);
    print("saved");
}

void useAtExit() {
    if (!endsOnHostThread) return;
    isEnding = true;
    writeBurst(2);
    if (qrv_settings_bool(nullptr, nullptr) == QRV_OK || *qrv_last_error() == '\0')
        fail("no error in an exit handler");
    DispatchMainQueue::shared().drain();
}

/// One that lives longer than whatever the library makes, and one that was made after that.
class UsesTheStore {
  public:
    UsesTheStore() = default;
    UsesTheStore(const UsesTheStore&) = delete;
    UsesTheStore& operator=(const UsesTheStore&) = delete;
    ~UsesTheStore() {
        useAtExit();
        if (endsOnHostThread) saveAll();
    }
};
const UsesTheStore madeFirst;

void makeOneMore() {
    static const UsesTheStore madeLater;
    thread_local const UsesTheStore madeForTheThread;
    static_cast<void>(madeForTheThread);
}

void start() {
    if (std::atexit(useAtExit) != 0) fail("no exit handler");
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setMergesSaves(host.mode != "WholeTrees");
    store.setMonitorFileChanges(true);
#ifdef QRV_HAS_HISTORY
    if (host.mode == "History" && !QRVHistoryStart("exit")) fail("no history");
#endif
    store.setOnChange([](const NSArray& keyPaths) {
        for (const PropertyListValue& keyPath : keyPaths)
            QRVSettingsStoredObjectForKeyPath(keyPath.stringValue());
        if (host.ending == "ExitInAHandler" && !isEnding) std::exit(EXIT_SUCCESS);
    });
    store.loadDefaults();
    store.prepare();
    writeNext();
    saveAll();  // No earlier process has left a lock.
    makeOneMore();
    // The first of these is called last.
    if (std::atexit(useAtExit) != 0 || std::at_quick_exit(saveAll) != 0 ||
        std::at_quick_exit(useAtExit) != 0)
        fail("no exit handler");
}

[[noreturn]] void writeUntilTheEnd() {
    for (;;) {
        writeNext();
        std::this_thread::yield();
    }
}

/// Returns where the main function is to return.
void end() {
    const std::string_view ending = host.ending;
    if (ending == "Exit" || ending == "ExitInAHandler") std::exit(EXIT_SUCCESS);
    if (ending == "QuickExit") std::quick_exit(EXIT_SUCCESS);
    if (ending == "NoHandlers") _exit(EXIT_SUCCESS);
    if (ending == "ExitOnAnotherThread") {
        endsOnHostThread = false;
        std::thread([] { std::exit(EXIT_SUCCESS); }).detach();
        writeUntilTheEnd();
    }
    if (ending == "ExitInASave") {
        endsOnHostThread = false;
        QRVSettings::sharedSettings().queue().async([] { std::exit(EXIT_SUCCESS); });
        writeUntilTheEnd();
    }
}

/// A child that writes, too, and ends with its saves under way.
pid_t forkChild(std::int64_t count) {
    const pid_t child = fork();
    if (child < 0) fail("no child");
    if (child > 0) return child;
    host.name = "Child";
    writeBurst(1);
    saveAll();
    writeBurst(count);
    std::exit(EXIT_SUCCESS);
}

void requireSuccessOf(pid_t child) {
    int status = 0;
    if (waitpid(child, &status, 0) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        fail("the child has failed");
}

}  // namespace

int main(int argc, char** argv) {
    constexpr int needed = 6;
    if (argc != needed) fail("wrong arguments");
    host = {argv[1], argv[2], argv[3], std::stoll(argv[4])};
    const std::int64_t count = std::stoll(argv[5]);
    alarm(static_cast<unsigned>(6 * patience.count()));
    start();
    writeBurst(count / 2);
    std::optional<pid_t> child;
    if (host.ending == "Fork") child = forkChild(count);
    for (std::int64_t left = count / 2; left > 0; --left) {
        writeNext();
        DispatchMainQueue::shared().drain();
    }
    if (child) requireSuccessOf(*child);
    end();
    return EXIT_SUCCESS;
}
