// SPDX-License-Identifier: MIT
// The main function of every test program: each run gets an empty folder of its own as home and as
// configuration home, so that tests run in parallel and never meet a person's settings.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (testing::GTEST_FLAG(list_tests)) return RUN_ALL_TESTS();

    std::string folder =
        (std::filesystem::temp_directory_path() / "qrvsettings-test-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        std::cerr << "cannot make a folder for the test, " << folder << '\n';
        return EXIT_FAILURE;
    }
    setenv("HOME", folder.c_str(), 1);
    setenv("XDG_CONFIG_HOME", (folder + "/config").c_str(), 1);
    std::filesystem::current_path(folder);
    const int result = RUN_ALL_TESTS();
    std::filesystem::current_path("/");
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
    return result;
}
