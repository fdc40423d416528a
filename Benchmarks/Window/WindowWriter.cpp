// SPDX-License-Identifier: MIT
// Another process of the application, which writes what the window shows:
//
//     window-writer fill COUNT     stores so many settings
//     window-writer time COUNT     stores the time of the write, so many times, with pauses
//     window-writer many COUNT     stores so many settings, all changed, in one save

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

#include "QRVSettings/QRVSettings.h"

namespace {

double now() {
    using Milliseconds = std::chrono::duration<double, std::milli>;
    return Milliseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void wait() {
    using State = QRVSaveStatus::State;
    if (QRVSettingsWaitForSaves(std::chrono::minutes(1)).state != State::Saved) std::exit(1);
}

/// 20 settings in each group.
std::string keyPath(int number) {
    return "Host.Group" + std::to_string(number / 20) + ".Network.Setting" +
           std::to_string(number % 20) + ".Width";
}

void writeAll(int count, int value) {
    QRVSettingsPrepareBatchSave();
    for (int number = 0; number < count; ++number)
        QRVSettingsSetObjectForKeyPath(value + number, keyPath(number));
    QRVSettingsCommitBatchSave();
    wait();
}

void writeTimes(int count) {
    for (int change = 0; change < count; ++change) {
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        QRVSettingsSetObjectForKeyPath(now(), "Host.Benchmark.Time");
        wait();
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setMergesSaves(true);
    store.loadDefaults();
    store.prepare();
    const std::string mode = argv[1];
    const int count = std::atoi(argv[2]);
    if (mode == "fill")
        writeAll(count, 100);
    else if (mode == "many")
        writeAll(count, 5000);
    else if (mode == "time")
        writeTimes(count);
    else
        return 2;
    return 0;
}
