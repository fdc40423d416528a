// SPDX-License-Identifier: MIT
// Hosts that end in the middle of their saves, in every way that a program can end. Each round runs
// `ExitProgram.cpp`; two at once where they merge saves. QRV_EXIT_ROUNDS is the number of rounds of
// each test.

#include <gtest/gtest.h>

#include <fcntl.h>

#include <memory>
#include <random>
#include <sstream>

#include "Support/HostProcess.h"

using StoreSupport::contentsOf;
using StoreSupport::fileTree;

namespace {

/// ThreadSanitizer does not support threads in a child that was forked beside threads.
#if defined(__SANITIZE_THREAD__)
constexpr bool canForkBesideThreads = false;
#elif defined(__has_feature)
constexpr bool canForkBesideThreads = !__has_feature(thread_sanitizer);
#else
constexpr bool canForkBesideThreads = true;
#endif

/// What a child inherits counts as a leak.
void searchForNoLeaks() {
    const char* const options = std::getenv("ASAN_OPTIONS");
    const std::string before = options == nullptr ? "" : std::string(options) + ':';
    setenv("ASAN_OPTIONS", (before + "detect_leaks=0").c_str(), 1);
}

struct Ending {
    const char* mode;
    const char* ending;
};

std::ostream& operator<<(std::ostream& out, const Ending& ending) {
    return out << ending.mode << ending.ending;
}

bool appendTo(const std::string& path, int descriptor) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    return file >= 0 && dup2(file, descriptor) == descriptor;
}

class Program {
  public:
    Program(const Ending& ending, const std::string& name, std::int64_t number, int count)
        : output_(name + ".output"),
          errors_(name + ".errors"),
          process_([&] { return run(ending, name, number, count); }) {}

    void expectSuccess() {
        EXPECT_TRUE(process_.succeeded()) << contentsOf(errors_);
        EXPECT_EQ(contentsOf(errors_).find("Sanitizer"), std::string::npos) << contentsOf(errors_);
    }
    /// The last number that each host has reported as saved, by the host's name.
    [[nodiscard]] std::map<std::string, std::int64_t> saved() const {
        std::istringstream lines(contentsOf(output_));
        std::map<std::string, std::int64_t> numbers;
        std::string name;
        std::string saved;
        for (std::int64_t number = 0; lines >> name >> saved >> number;) numbers[name] = number;
        return numbers;
    }

  private:
    [[nodiscard]] bool run(const Ending& ending, const std::string& name, std::int64_t number,
                           int count) const {
        std::filesystem::remove(output_);
        std::filesystem::remove(errors_);
        if (!appendTo(output_, STDOUT_FILENO) || !appendTo(errors_, STDERR_FILENO)) return false;
        execl(QRV_EXIT_PROGRAM, QRV_EXIT_PROGRAM, ending.mode, ending.ending, name.c_str(),
              std::to_string(number).c_str(), std::to_string(count).c_str(), nullptr);
        return false;
    }
    std::string output_;
    std::string errors_;
    ChildProcess process_;
};

std::int64_t numberInFile(const std::string& name) {
    const NSDictionary host = fileTree().objectForKey(name).dictionary();
    return host.isNull() ? 0 : host.objectForKey("Number").integerValue();
}

class Exits : public testing::TestWithParam<Ending> {
  protected:
    static bool merges() { return std::string_view(GetParam().mode) != "WholeTrees"; }
    static bool forks() { return std::string_view(GetParam().ending) == "Fork"; }

    static void runOnce(std::int64_t number, int count) {
        std::vector<std::unique_ptr<Program>> programs;
        programs.push_back(std::make_unique<Program>(GetParam(), "First", number, count));
        if (merges())
            programs.push_back(std::make_unique<Program>(GetParam(), "Second", number, count));
        for (const auto& program : programs) ASSERT_NO_FATAL_FAILURE(program->expectSuccess());
        ASSERT_FALSE(fileTree().isNull());
        if (forks() && !merges()) return;  // Each replaces what the other has saved.
        for (const auto& program : programs) {
            ASSERT_FALSE(program->saved().empty());
            for (const auto& [name, saved] : program->saved())
                ASSERT_GE(numberInFile(name), saved) << name;
        }
    }
};

}  // namespace

TEST_P(Exits, LoseNothingThatWasSavedAndHoldNobodyUp) {
    if (forks() && !canForkBesideThreads) GTEST_SKIP() << "ThreadSanitizer";
    if (forks()) searchForNoLeaks();
    constexpr std::int64_t farApart = 1000;
    std::mt19937 random(7);
    const int rounds = HostProcess::sizeFromEnvironment("QRV_EXIT_ROUNDS", 2);
    for (int round = 1; round <= rounds; ++round) {
        ASSERT_NO_FATAL_FAILURE(runOnce(round * farApart, static_cast<int>(random() % 40)))
            << "round " << round;
        if (HasFailure()) return;
    }
}

INSTANTIATE_TEST_SUITE_P(
    InTheMiddleOfSaves, Exits,
    testing::Values(Ending{"WholeTrees", "Return"}, Ending{"WholeTrees", "Exit"},
                    Ending{"WholeTrees", "QuickExit"}, Ending{"WholeTrees", "NoHandlers"},
                    Ending{"WholeTrees", "ExitOnAnotherThread"},
                    Ending{"WholeTrees", "ExitInASave"}, Ending{"WholeTrees", "Fork"},
                    Ending{"Merging", "Return"}, Ending{"Merging", "Exit"},
                    Ending{"Merging", "QuickExit"}, Ending{"Merging", "NoHandlers"},
                    Ending{"Merging", "ExitInAHandler"}, Ending{"Merging", "ExitOnAnotherThread"},
                    Ending{"Merging", "ExitInASave"}, Ending{"Merging", "Fork"},
                    Ending{"History", "Exit"}, Ending{"History", "ExitOnAnotherThread"},
                    Ending{"History", "Fork"}),
    testing::PrintToStringParamName());
