// SPDX-License-Identifier: MIT
#pragma once

/// A whole process that opens a store and reads it.
///
///     PROGRAM prepare FOLDER SIZE   creates a store of SIZE settings, and FOLDER/keys
///     PROGRAM read FOLDER           reads every boolean and integer once
///     PROGRAM load FOLDER           reads one integer only
///
/// The last two print the sum of the values. With a third argument, `memory`, they also print the
/// peak resident memory of the process in bytes.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>

#include "Workload/FileContents.h"
#include "Workload/Participant.h"

namespace Measures {

inline void writeKeys(const std::filesystem::path& folder,
                      const std::vector<Workload::Setting>& settings) {
    std::ofstream file(folder / "keys");
    for (const Workload::Setting& setting : settings)
        file << static_cast<char>(Workload::kindOf(setting.value)) << setting.keyPath << '\n';
}

inline std::size_t peakResidentBytes() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:")) return std::stoul(line.substr(6)) * 1024;
    }
    return 0;
}

template <Workload::Participant Store>
std::int64_t readSetting(Store& store, std::string_view line) {
    const auto kind = static_cast<Workload::Kind>(line.front());
    const std::string_view keyPath = line.substr(1);
    if (kind == Workload::Kind::Boolean)
        return store.readBoolean(store.handle(keyPath, kind)) ? 1 : 0;
    if (kind == Workload::Kind::Integer) return store.readInteger(store.handle(keyPath, kind));
    return 0;
}

template <Workload::Participant Store>
std::int64_t readSettings(const std::filesystem::path& folder, bool isFirstIntegerOnly) {
    const std::string keys = Workload::contentsOf(folder / "keys");
    Store store(folder);
    std::int64_t sum = 0;
    for (std::string_view rest = keys; !rest.empty();) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(line.size() + 1);
        if (isFirstIntegerOnly && line.front() != static_cast<char>(Workload::Kind::Integer))
            continue;
        sum += readSetting(store, line);
        if (isFirstIntegerOnly) break;
    }
    return sum;
}

template <Workload::Participant Store>
int openAndRead(int argc, char** argv) {
    const std::string_view command = argc < 3 ? "" : argv[1];
    const std::filesystem::path folder = argc < 3 ? "" : argv[2];
    if (argc >= 3) setenv("XDG_CONFIG_HOME", folder.c_str(), 1);
    if (command == "prepare" && argc == 4) {
        const auto settings = Workload::generatedSettings(std::stoul(argv[3]));
        Store::prepare(folder, settings);
        writeKeys(folder, settings);
    } else if (command == "read" || command == "load") {
        std::cout << readSettings<Store>(folder, command == "load") << '\n';
        if (argc == 4) std::cout << peakResidentBytes() << '\n';
    } else {
        std::cerr << "usage: " << argv[0] << " prepare|read|load FOLDER [SIZE|memory]\n";
        return 2;
    }
    return EXIT_SUCCESS;
}

}  // namespace Measures
