// SPDX-License-Identifier: MIT
#pragma once

/// Several processes that write to one store.
///
///     PROGRAM write FOLDER INDEX PROCESSES WRITES   prints "ready"; after a line of input it
///     writes
///                                                   WRITES settings of its own, and waits for the
///                                                   save of each
///     PROGRAM count FOLDER PROCESSES WRITES         prints how many of them all are stored
///     PROGRAM turns FOLDER                          prints "ready"; for each line of input it
///                                                   writes one setting, and prints how many
///                                                   nanoseconds write and save took

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "Workload/Participant.h"

namespace Measures {

/// The first integers of `FOLDER/keys` whose position, divided by `processes`, leaves `index`.
inline std::vector<std::string> ownIntegers(const std::filesystem::path& folder, std::size_t index,
                                            std::size_t processes, std::size_t writes) {
    std::ifstream keys(folder / "keys");
    std::vector<std::string> own;
    std::size_t position = 0;
    for (std::string line; own.size() < writes && std::getline(keys, line);)
        if (line.front() == 'i' && position++ % processes == index) own.push_back(line.substr(1));
    if (own.size() == writes) return own;
    std::cerr << "too few integers in " << folder / "keys" << '\n';
    std::exit(EXIT_FAILURE);
}

/// No generated setting has this value.
constexpr std::int64_t writtenTogether = 1'000'000;

template <Workload::Participant Store>
void writeTogether(const std::filesystem::path& folder, const std::vector<std::string>& keyPaths) {
    Store store(folder);
    std::vector<typename Store::Handle> handles;
    for (const std::string& keyPath : keyPaths)
        handles.push_back(store.handle(keyPath, Workload::Kind::Integer));
    std::int64_t sum = 0;
    for (const auto& handle : handles) sum += store.readInteger(handle);
    std::cout << (sum < 0 ? "negative" : "ready") << std::endl;
    std::string line;
    std::getline(std::cin, line);
    for (const auto& handle : handles) {
        store.writeInteger(handle, writtenTogether);
        store.save();
    }
}

template <Workload::Participant Store>
std::size_t countTogether(const std::filesystem::path& folder, std::size_t processes,
                          std::size_t writes) {
    Store store(folder);
    std::size_t count = 0;
    for (std::size_t index = 0; index < processes; ++index)
        for (const std::string& keyPath : ownIntegers(folder, index, processes, writes))
            if (store.readInteger(store.handle(keyPath, Workload::Kind::Integer)) ==
                writtenTogether)
                ++count;
    return count;
}

template <Workload::Participant Store>
void takeTurns(const std::filesystem::path& folder) {
    Store store(folder);
    const auto handle = store.handle(ownIntegers(folder, 0, 1, 1).front(), Workload::Kind::Integer);
    std::int64_t number = writtenTogether + store.readInteger(handle);
    std::cout << "ready" << std::endl;
    for (std::string line; std::getline(std::cin, line);) {
        const auto start = std::chrono::steady_clock::now();
        store.writeInteger(handle, ++number);
        store.save();
        const std::chrono::nanoseconds elapsed = std::chrono::steady_clock::now() - start;
        std::cout << elapsed.count() << std::endl;
    }
}

template <Workload::Participant Store>
int together(int argc, char** argv) {
    const std::string_view command = argc < 3 ? "" : argv[1];
    const std::filesystem::path folder = argc < 3 ? "" : argv[2];
    if (argc >= 3) setenv("XDG_CONFIG_HOME", folder.c_str(), 1);
    if (command == "write" && argc == 6) {
        writeTogether<Store>(folder, ownIntegers(folder, std::stoul(argv[3]), std::stoul(argv[4]),
                                                 std::stoul(argv[5])));
    } else if (command == "count" && argc == 5) {
        std::cout << countTogether<Store>(folder, std::stoul(argv[3]), std::stoul(argv[4])) << '\n';
    } else if (command == "turns" && argc == 3) {
        takeTurns<Store>(folder);
    } else {
        std::cerr << "usage: " << argv[0] << " write|count|turns FOLDER [NUMBER...]\n";
        return 2;
    }
    return EXIT_SUCCESS;
}

}  // namespace Measures
