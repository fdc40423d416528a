// SPDX-License-Identifier: MIT
// Reads the load from the kernel, below /proc and /sys.

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "SystemLoad.h"

namespace {

/// A value of /proc/meminfo in bytes; the file counts in KiB.
std::uint64_t memory(const std::string& wanted) {
    std::ifstream file("/proc/meminfo");
    std::string name;
    std::string unit;
    std::uint64_t value = 0;
    while (file >> name >> value) {
        if (name == wanted) return value * 1024;
        std::getline(file, unit);
    }
    return 0;
}

bool isConnected() {
    std::error_code error;
    for (const auto& interface : std::filesystem::directory_iterator("/sys/class/net", error)) {
        std::string state;
        std::ifstream(interface.path() / "operstate") >> state;
        if (state == "up") return true;  // the state of the loopback is "unknown"
    }
    return false;
}

}  // namespace

SystemLoadSampler::ProcessorTime SystemLoadSampler::processorTime() {
    // user nice system idle iowait irq softirq steal; the first two include the other columns.
    constexpr int columns = 8;
    constexpr int idle = 3;
    constexpr int ioWait = 4;
    std::ifstream file("/proc/stat");
    std::string name;
    file >> name;
    ProcessorTime time;
    for (int column = 0; column < columns; ++column) {
        std::uint64_t ticks = 0;
        file >> ticks;
        time.all += ticks;
        if (column != idle && column != ioWait) time.busy += ticks;
    }
    return time;
}

SystemLoad SystemLoadSampler::sample() {
    const ProcessorTime now = processorTime();
    const std::uint64_t all = now.all - last_.all;
    SystemLoad load;
    if (all != 0) load.busy = static_cast<double>(now.busy - last_.busy) / static_cast<double>(all);
    load.freeMemory = memory("MemAvailable:");
    load.usedMemory = memory("MemTotal:") - load.freeMemory;
    load.isConnected = isConnected();
    last_ = now;
    return load;
}
