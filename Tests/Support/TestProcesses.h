// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

/// The tests of this program, each run in a process that starts the program afresh. `arguments` are
/// those that this process was started with; what they say holds for the others too, but for
/// `--gtest_output`, which needs one chosen test.
namespace TestProcesses {

/// As `--gtest_filter` chooses them, without the disabled ones that do not run.
std::vector<std::string> chosenTests(const std::vector<std::string>& arguments);

/// Runs them, several at a time, prints what GoogleTest prints, and returns the exit status. A test
/// whose process dies has failed; so has one that takes longer than CTest allows.
int run(const std::vector<std::string>& tests, const std::vector<std::string>& arguments);

}  // namespace TestProcesses
