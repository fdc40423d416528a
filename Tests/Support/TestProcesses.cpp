// SPDX-License-Identifier: MIT
#include "TestProcesses.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <thread>

namespace TestProcesses {
namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned mostSeconds = 300;  // as CMakePresets.json allows a test

/// Most tests wait more than they compute.
std::size_t mostAtATime() {
    return std::size_t{2} * std::max(std::thread::hardware_concurrency(), 1U);
}

struct CloseFile {
    void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
};

struct Process {
    pid_t pid;
    std::unique_ptr<std::FILE, CloseFile> output;  // not a pipe, which fills up while nobody reads
};

std::string contentsOf(std::FILE* file) {
    std::rewind(file);
    std::string text;
    std::array<char, 4096> part{};
    while (const std::size_t size = std::fread(part.data(), 1, part.size(), file))
        text.append(part.data(), size);
    return text;
}

/// This program with further arguments, of which the last ones count.
Process start(std::vector<std::string> arguments, const std::vector<std::string>& more) {
    arguments.insert(arguments.end(), more.begin(), more.end());
    std::vector<char*> words;
    for (std::string& argument : arguments) words.push_back(argument.data());
    words.push_back(nullptr);
    Process process{-1, std::unique_ptr<std::FILE, CloseFile>(std::tmpfile())};
    if (process.output == nullptr) throw std::runtime_error("no file for the output of a test");
    process.pid = fork();
    if (process.pid < 0) throw std::runtime_error("no process for a test");
    if (process.pid != 0) return process;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    alarm(mostSeconds);
    dup2(fileno(process.output.get()), STDOUT_FILENO);
    dup2(STDOUT_FILENO, STDERR_FILENO);
    execv("/proc/self/exe", words.data());
    _exit(EXIT_FAILURE);
}

enum class Outcome { Passed, Skipped, Failed };

struct Ending {
    Outcome outcome = Outcome::Failed;
    std::string text;
};

Ending endingOf(const std::string& test, const std::string& output, int status) {
    const std::size_t begin = output.find("[ RUN      ] ");
    const std::string all = begin == std::string::npos ? output : output.substr(begin);
    const std::string told = all.substr(0, all.find("\n[----------]")) + '\n';
    const auto says = [&](std::string_view result) {
        return told.find(std::string(result) + test) != std::string::npos;
    };
    const bool succeeded = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    if (succeeded && says("[       OK ] ")) return {Outcome::Passed, told};
    if (succeeded && says("[  SKIPPED ] ")) return {Outcome::Skipped, told};
    if (WIFEXITED(status) && !succeeded && says("[  FAILED  ] ")) return {Outcome::Failed, told};
    const std::string end = WIFSIGNALED(status)
                                ? std::string("died of ") + strsignal(WTERMSIG(status))
                                : "ended with status " + std::to_string(WEXITSTATUS(status));
    return {Outcome::Failed, all + "\n[  FAILED  ] " + test + " (its process " + end + ")\n"};
}

class Run {
  public:
    explicit Run(const std::vector<std::string>& arguments) : arguments_(arguments) {}

    /// Waits until one ends when there are enough of them.
    void add(const std::string& test) {
        if (running_.size() >= mostAtATime()) finishOne();
        Process process = start(arguments_, {"--gtest_filter=" + test, "--gtest_color=no",
                                             "--gtest_repeat=1", "--gtest_brief=0"});
        const pid_t pid = process.pid;
        running_.emplace(pid, std::pair(test, std::move(process)));
    }
    void finish() {
        while (!running_.empty()) finishOne();
    }
    [[nodiscard]] bool hasFailed() { return !names_[Outcome::Failed].empty(); }
    void printSummary() {
        const auto took =
            std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - began_);
        std::cout << "[==========] " << counted(ended_) << " ran, each in a process of its own. ("
                  << took.count() << " ms total)\n[  PASSED  ] "
                  << counted(names_[Outcome::Passed].size()) << ".\n";
        printNames("[  SKIPPED ] ", names_[Outcome::Skipped]);
        printNames("[  FAILED  ] ", names_[Outcome::Failed]);
        std::cout << std::flush;
    }

  private:
    void finishOne() {
        int status = 0;
        const auto place = running_.find(waitpid(-1, &status, 0));
        if (place == running_.end()) throw std::runtime_error("a test's process is lost");
        const auto& [test, process] = place->second;
        const Ending ending = endingOf(test, contentsOf(process.output.get()), status);
        std::cout << ending.text << std::flush;
        names_[ending.outcome].push_back(test);
        ++ended_;
        running_.erase(place);
    }
    static std::string counted(std::size_t tests) {
        return std::to_string(tests) + (tests == 1 ? " test" : " tests");
    }
    static void printNames(const char* result, const std::vector<std::string>& tests) {
        if (tests.empty()) return;
        std::cout << result << counted(tests.size()) << ", listed below:\n";
        for (const std::string& test : tests) std::cout << result << test << '\n';
    }

    const std::vector<std::string>& arguments_;
    Clock::time_point began_ = Clock::now();
    std::map<pid_t, std::pair<std::string, Process>> running_;
    std::map<Outcome, std::vector<std::string>> names_;
    std::size_t ended_ = 0;
};

bool isDisabled(const std::string& test) {
    return test.rfind("DISABLED_", 0) == 0 || test.find(".DISABLED_") != std::string::npos ||
           test.find("/DISABLED_") != std::string::npos;
}

}  // namespace

std::vector<std::string> chosenTests(const std::vector<std::string>& arguments) {
    const Process listing = start(arguments, {"--gtest_list_tests", "--gtest_output="});
    int status = 0;
    if (waitpid(listing.pid, &status, 0) != listing.pid || status != 0)
        throw std::runtime_error("the tests cannot be listed");
    std::vector<std::string> tests;
    std::istringstream lines(contentsOf(listing.output.get()));
    std::string suite;
    for (std::string line; std::getline(lines, line);) {
        const bool isTest = line.rfind("  ", 0) == 0;
        const std::string name = line.substr(isTest ? 2 : 0, line.find(' ', 2) - (isTest ? 2 : 0));
        if (!isTest)
            suite = name;  // with its dot
        else if (testing::GTEST_FLAG(also_run_disabled_tests) || !isDisabled(suite + name))
            tests.push_back(suite + name);
    }
    return tests;
}

int run(const std::vector<std::string>& tests, const std::vector<std::string>& arguments) {
    if (!testing::GTEST_FLAG(output).empty()) {
        std::cerr
            << "--gtest_output needs one chosen test; CTest writes the results of all of them\n";
        return EXIT_FAILURE;
    }
    // A shard of one test may be none.
    unsetenv("GTEST_TOTAL_SHARDS");
    bool hasFailed = false;
    for (int left = testing::GTEST_FLAG(repeat); left != 0; --left) {
        Run iteration(arguments);
        for (const std::string& test : tests) {
            if (testing::GTEST_FLAG(fail_fast) && iteration.hasFailed()) break;
            iteration.add(test);
        }
        iteration.finish();
        iteration.printSummary();
        hasFailed = hasFailed || iteration.hasFailed();
    }
    return hasFailed ? EXIT_FAILURE : EXIT_SUCCESS;
}

}  // namespace TestProcesses
