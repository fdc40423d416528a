// SPDX-License-Identifier: MIT
// Where log texts go.

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <ctime>
#include <regex>
#include <thread>
#include <vector>

#include "Log/SystemLogRecorder.h"
#include "Platform/System/System.h"

namespace {

/// Has standard error in its hands as long as it lives; keeps the borders between writes.
class StandardErrorCapture {
  public:
    StandardErrorCapture() : saved_(dup(STDERR_FILENO)) {
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_DGRAM, 0, ends_.data()), 0);
        dup2(ends_[1], STDERR_FILENO);
    }
    StandardErrorCapture(const StandardErrorCapture&) = delete;
    StandardErrorCapture& operator=(const StandardErrorCapture&) = delete;
    ~StandardErrorCapture() {
        dup2(saved_, STDERR_FILENO);
        for (const int number : {saved_, ends_[0], ends_[1]}) close(number);
    }
    std::vector<std::string> writes() const {
        std::vector<std::string> result;
        std::array<char, 4096> buffer{};
        for (;;) {
            const ssize_t count = recv(ends_[0], buffer.data(), buffer.size(), MSG_DONTWAIT);
            if (count < 0) return result;
            result.emplace_back(buffer.data(), static_cast<std::size_t>(count));
        }
    }

  private:
    int saved_;
    std::array<int, 2> ends_{};
};

}  // namespace

TEST(NSLog, WritesOneLineOnStandardErrorInOneWrite) {
    std::vector<std::string> writes;
    {
        const StandardErrorCapture capture;
        NSLog("Saved %@ of %@ (100%%)", {3, "values"});
        writes = capture.writes();
    }
    ASSERT_EQ(writes.size(), 1U);
    const std::regex line(
        R"((\d{4}-\d\d-\d\d \d\d:\d\d:\d\d)\.\d{3} (.+)\[(\d+)\] Saved 3 of values \(100%\)\n)");
    std::smatch parts;
    ASSERT_TRUE(std::regex_match(writes[0], parts, line)) << writes[0];
    EXPECT_EQ(parts[2], std::string(program_invocation_short_name));
    EXPECT_EQ(parts[3], std::to_string(getpid()));
}

TEST(NSLog, GivesLocalTime) {
    setenv("TZ", "XYZ-05:30", 1);
    tzset();
    std::string line;
    const std::time_t before = std::time(nullptr);
    {
        const StandardErrorCapture capture;
        NSLog("x");
        line = capture.writes().at(0);
    }
    const std::time_t after = std::time(nullptr);
    tm parsed{};
    ASSERT_NE(strptime(line.c_str(), "%Y-%m-%d %H:%M:%S", &parsed), nullptr);
    const std::time_t instant = timegm(&parsed) - std::time_t{5 * 60 + 30} * 60;
    EXPECT_GE(instant, before);
    EXPECT_LE(instant, after);
}

TEST(NSLog, ReportsToTheSystemLogAtLevelNotice) {
    {
        const StandardErrorCapture capture;
        NSLog("%@", {"100%d"});
    }
    const auto& messages = SystemLogRecorder::shared().messages;
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0].first, LOG_USER | LOG_NOTICE);
    EXPECT_EQ(messages[0].second, "100%d");
}

TEST(NSLog, GivesASinkTheTextAloneAndNothingToTheDefault) {
    std::vector<std::string> texts;
    const StandardErrorCapture capture;
    EXPECT_FALSE(setNSLogSink([&](const std::string& text) { texts.push_back(text); }));
    NSLog("%@ text", {"the"});
    EXPECT_EQ(texts, std::vector<std::string>{"the text"});
    EXPECT_TRUE(capture.writes().empty());
    EXPECT_TRUE(SystemLogRecorder::shared().messages.empty());
    setNSLogSink(nullptr);
}

TEST(NSLog, TheSinkBeforeIsReturnedAndNullRestoresTheDefault) {
    int calls = 0;
    setNSLogSink([&](const std::string&) { ++calls; });
    const NSLogSink counting = setNSLogSink([](const std::string&) {});
    NSLog("not counted");
    ASSERT_TRUE(counting);
    setNSLogSink(counting);
    NSLog("counted");
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(setNSLogSink(nullptr));
    const StandardErrorCapture capture;
    NSLog("to the default");
    EXPECT_EQ(capture.writes().size(), 1U);
    EXPECT_EQ(calls, 1);
}

TEST(NSLog, ASinkMayLogAndMayBeReplacedWhileItIsUsed) {
    std::vector<std::string> texts;
    setNSLogSink([&](const std::string& text) {
        texts.push_back(text);
        setNSLogSink([&](const std::string& inner) { texts.push_back("inner " + inner); });
        NSLog("again");
    });
    NSLog("first");
    EXPECT_EQ(texts, (std::vector<std::string>{"first", "inner again"}));
    setNSLogSink(nullptr);
}

TEST(NSLog, LosesNothingFromManyThreadsWhileSinksChange) {
    std::atomic<int> calls = 0;
    const NSLogSink counting = [&](const std::string&) { ++calls; };
    setNSLogSink(counting);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([] {
            for (int count = 0; count < 200; ++count) NSLog("%@", {count});
        });
    for (int count = 0; count < 200; ++count) setNSLogSink(counting);
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(calls, 800);
    setNSLogSink(nullptr);
}

TEST(NSLog, AMissingStandardErrorIsIgnored) {
    const int saved = dup(STDERR_FILENO);
    close(STDERR_FILENO);
    NSLog("nowhere to go but the system log");
    dup2(saved, STDERR_FILENO);
    close(saved);
    EXPECT_EQ(SystemLogRecorder::shared().messages.size(), 1U);
}
