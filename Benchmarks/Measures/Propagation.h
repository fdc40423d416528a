// SPDX-License-Identifier: MIT
#pragma once

/// A change in one process, and its notification in another: two programs that a third one starts.
///
///     PROGRAM listen FOLDER   prints "ready", then the time of each notification
///     PROGRAM write FOLDER    prints "ready", then for each line read prints the time and changes
///                             the setting
///
/// Times are nanoseconds of the steady clock, which all processes of a machine share.

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <string>
#include <string_view>

namespace Measures {

inline std::int64_t nanosecondsNow() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

inline void printReady() {
    std::cout << "ready" << std::endl;
}

inline void printTimeOfChange() {
    const std::int64_t now = nanosecondsNow();
    std::cout << now << std::endl;
}

/// The key path of the first integer in `FOLDER/keys`: the setting that is changed.
inline std::string changingKeyPath(const std::filesystem::path& folder) {
    std::ifstream keys(folder / "keys");
    for (std::string line; std::getline(keys, line);) {
        if (line.front() == 'i') return line.substr(1);
    }
    std::cerr << "no integer in " << folder / "keys" << '\n';
    std::exit(EXIT_FAILURE);
}

/// `change` receives another number each time. `afterwards` does what a host does when it has time.
inline void changeOnRequest(const std::function<void(std::int64_t)>& change,
                            const std::function<void()>& afterwards) {
    printReady();
    std::int64_t number = 1'000'000;
    for (std::string line; std::getline(std::cin, line);) {
        const std::int64_t start = nanosecondsNow();
        change(++number);
        std::cout << start << std::endl;
        afterwards();
    }
}

struct Roles {
    std::function<void(const std::filesystem::path& folder)> listen;
    std::function<void(const std::filesystem::path& folder)> write;
};

inline int propagation(int argc, char** argv, const Roles& roles) {
    const std::string_view role = argc == 3 ? argv[1] : "";
    if (role != "listen" && role != "write") {
        std::cerr << "usage: " << argv[0] << " listen|write FOLDER\n";
        return 2;
    }
    setenv("XDG_CONFIG_HOME", argv[2], 1);
    (role == "listen" ? roles.listen : roles.write)(argv[2]);
    return EXIT_SUCCESS;
}

}  // namespace Measures
