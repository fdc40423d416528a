// SPDX-License-Identifier: MIT
#pragma once

// Runs `PrivilegedProgram.cpp` for a caller who has chosen its environment.

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace PrivilegedProgram {

using Lines = std::vector<std::string>;

constexpr uid_t nobody = 65534;

inline Lines outputOf(const std::string& arguments) {
    const std::string command =
        "XDG_CONFIG_HOME=/of/the/caller XDG_CONFIG_DIRS=/of/the/caller "
        "XDG_STATE_HOME=/of/the/caller HOME=/of/the/caller "
        "./program ";
    FILE* const stream = popen((command + arguments).c_str(), "r");
    if (stream == nullptr) throw std::runtime_error("cannot start the program");
    Lines lines;
    std::array<char, 4096> line{};
    while (fgets(line.data(), line.size(), stream) != nullptr) {
        lines.emplace_back(line.data());
        if (lines.back().ends_with('\n')) lines.back().pop_back();
    }
    if (pclose(stream) != 0) throw std::runtime_error("the program has failed");
    return lines;
}

/// What it prints as a program of its caller.
inline Lines printedWithoutPrivileges() {
    std::filesystem::copy_file(QRV_PRIVILEGED_PROGRAM, "program");
    return outputOf("");
}

/// What it then prints with the privileges of `nobody`. Nothing where it gets none; only root can
/// give it some.
inline Lines printedWithPrivileges() {
    const bool isDone =
        chown("program", nobody, static_cast<gid_t>(-1)) == 0 && chmod("program", 04755) == 0;
    return isDone ? outputOf("privileged") : Lines{};
}

}  // namespace PrivilegedProgram
