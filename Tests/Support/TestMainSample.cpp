// SPDX-License-Identifier: MIT
// Tests of every ending, for started_whole.py. CTest does not run them.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

int testsOfThisProcess = 0;

void expectToBeAlone() {
    EXPECT_EQ(++testsOfThisProcess, 1);
    EXPECT_TRUE(std::filesystem::is_empty("."));
    EXPECT_EQ(std::filesystem::current_path(), std::filesystem::path(std::getenv("HOME")));
    std::ofstream("left-behind") << "text";
}

TEST(Sample, Passes) {
    expectToBeAlone();
}

TEST(Sample, PassesToo) {
    expectToBeAlone();
}

TEST(Sample, Fails) {
    EXPECT_EQ(1, 2) << "which is what it is for";
}

TEST(Sample, Crashes) {
    std::abort();
}

TEST(Sample, Exits) {
    std::exit(EXIT_SUCCESS);
}

TEST(Sample, IsSkipped) {
    GTEST_SKIP() << "on purpose";
}

TEST(Sample, DISABLED_IsDisabled) {
    FAIL() << "a disabled test has run";
}

class SampleOfTexts : public testing::TestWithParam<const char*> {};

TEST_P(SampleOfTexts, Passes) {
    expectToBeAlone();
}

INSTANTIATE_TEST_SUITE_P(Some, SampleOfTexts, testing::Values("one", "two"));

}  // namespace
