// SPDX-License-Identifier: MIT
// The main function of every test program: each test is a process of its own, with an empty folder
// of its own as home and as configuration home, a site without files, and a session bus that is not
// there. So tests run in parallel, and never meet the settings or the desktop of a person or of the
// machine. One chosen test runs right here, where a debugger sees it.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "TestProcesses.h"

namespace {

int runHere() {
    std::string folder =
        (std::filesystem::temp_directory_path() / "qrvsettings-test-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        std::cerr << "cannot make a folder for the test, " << folder << '\n';
        return EXIT_FAILURE;
    }
    setenv("HOME", folder.c_str(), 1);
    setenv("XDG_CONFIG_HOME", (folder + "/config").c_str(), 1);
    setenv("XDG_CONFIG_DIRS", (folder + "/site").c_str(), 1);
    setenv("XDG_STATE_HOME", (folder + "/state").c_str(), 1);
    setenv("XDG_DATA_HOME", (folder + "/data").c_str(), 1);
    setenv("XDG_DATA_DIRS", (folder + "/system").c_str(), 1);
    setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + folder + "/bus").c_str(), 1);
    std::filesystem::current_path(folder);
    const int result = RUN_ALL_TESTS();
    std::filesystem::current_path("/");
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
    return result;
}

bool choosesAtMostOne(const std::string& filter) {
    return filter.find_first_of("*?:-") == std::string::npos && !filter.empty();
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv, argv + argc);
    testing::InitGoogleTest(&argc, argv);
    if (testing::GTEST_FLAG(list_tests)) return RUN_ALL_TESTS();
    if (choosesAtMostOne(testing::GTEST_FLAG(filter))) return runHere();
    const std::vector<std::string> tests = TestProcesses::chosenTests(arguments);
    return tests.size() > 1 ? TestProcesses::run(tests, arguments) : runHere();
}
