// SPDX-License-Identifier: MIT
// The log for developers: what reaches a sink, when, and on which thread.
#include <gtest/gtest.h>

#include <future>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "Log/SystemLogRecorder.h"
#include "QRVLogger/DDLog.h"

namespace {

DDLogMessage numbered(int number) {
    DDLogMessage message;
    message.line = number;
    message.format = "%@";
    message.arguments = {number};
    return message;
}

/// Leaves the default sink behind, whatever a test has done.
struct DDLogTest : testing::Test {
    ~DDLogTest() override { DDLog::setSink(nullptr); }
};

}  // namespace

TEST_F(DDLogTest, ConstantsHaveTheirNumbers) {
    EXPECT_EQ(DDLogLevelAll, 31);
    EXPECT_EQ(DDLogFlagDebug, 8);
}

TEST_F(DDLogTest, TheSinkGetsEveryValueOfAMessage) {
    std::optional<DDLogMessage> seen;
    DDLog::setSink([&](const DDLogMessage& message) { seen = message; });
    DDLog::log({.asynchronous = false,
                .level = 31,
                .flag = 8,
                .context = 5,
                .file = "file.m",
                .function = "save",
                .line = 123,
                .tag = "tag",
                .format = "%@ of %@",
                .arguments = {1, "two"},
                .timestamp = NSDate(42.5)});
    DDLog::flush();
    ASSERT_TRUE(seen);
    EXPECT_FALSE(seen->asynchronous);
    EXPECT_EQ(seen->level, 31);
    EXPECT_EQ(seen->flag, 8);
    EXPECT_EQ(seen->context, 5);
    EXPECT_EQ(seen->file, "file.m");
    EXPECT_EQ(seen->function, "save");
    EXPECT_EQ(seen->line, 123);
    EXPECT_EQ(seen->tag, PropertyListValue("tag"));
    EXPECT_EQ(seen->format, "%@ of %@");
    EXPECT_EQ(seen->arguments.size(), 2U);
    EXPECT_EQ(seen->timestamp, NSDate(42.5));
    EXPECT_EQ(seen->text(), "1 of two");
}

TEST_F(DDLogTest, AMessageIsStampedWhenItIsMade) {
    const NSDate before = NSDate::now();
    const DDLogMessage message;
    EXPECT_GE(message.timestamp, before);
    EXPECT_LE(message.timestamp, NSDate::now());
    EXPECT_TRUE(message.tag.isNull());
}

TEST_F(DDLogTest, LogDoesNotWaitForTheSink) {
    std::promise<void> mayGoOn;
    auto permission = mayGoOn.get_future().share();
    int calls = 0;
    std::thread::id thread;
    DDLog::setSink([&](const DDLogMessage&) {
        permission.wait();
        ++calls;
        thread = std::this_thread::get_id();
    });
    DDLogMessage message = numbered(1);
    message.asynchronous = false;
    DDLog::log(message);
    DDLog::log(message);
    mayGoOn.set_value();
    DDLog::flush();
    EXPECT_EQ(calls, 2);
    EXPECT_NE(thread, std::this_thread::get_id());
}

TEST_F(DDLogTest, MessagesOfOneThreadKeepTheirOrder) {
    constexpr int producers = 4;
    constexpr int items = 200;
    std::vector<std::vector<int>> seen(producers);
    DDLog::setSink([&](const DDLogMessage& message) {
        seen[static_cast<std::size_t>(message.context)].push_back(message.line);
    });
    std::vector<std::thread> threads;
    for (int producer = 0; producer < producers; ++producer)
        threads.emplace_back([producer] {
            for (int number = 0; number < items; ++number) {
                DDLogMessage message = numbered(number);
                message.context = producer;
                DDLog::log(std::move(message));
            }
        });
    for (auto& thread : threads) thread.join();
    DDLog::flush();
    std::vector<int> expected;
    for (int number = 0; number < items; ++number) expected.push_back(number);
    for (const auto& numbers : seen) EXPECT_EQ(numbers, expected);
}

TEST_F(DDLogTest, ASinkIsExchangedInOrderWithTheMessages) {
    std::vector<int> first;
    std::vector<int> second;
    DDLog::setSink([&](const DDLogMessage& message) { first.push_back(message.line); });
    for (int number = 0; number < 100; ++number) DDLog::log(numbered(number));
    DDLog::setSink([&](const DDLogMessage& message) { second.push_back(message.line); });
    EXPECT_EQ(first.size(), 100U) << "delivered before the exchange returned";
    DDLog::log(numbered(100));
    DDLog::flush();
    EXPECT_EQ(first.size(), 100U);
    EXPECT_EQ(second, std::vector{100});
}

TEST_F(DDLogTest, TheDefaultIsTheSystemLogAtLevelDebug) {
    auto& messages = SystemLogRecorder::shared().messages;
    DDLog::log(numbered(1));
    DDLog::flush();
    DDLog::setSink([](const DDLogMessage&) {});
    DDLog::log(numbered(2));
    DDLog::setSink(nullptr);
    DDLog::log(numbered(3));
    DDLog::flush();
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_EQ(messages[0], std::pair(LOG_USER | LOG_DEBUG, std::string("1")));
    EXPECT_EQ(messages[1], std::pair(LOG_USER | LOG_DEBUG, std::string("3")));
}

TEST_F(DDLogTest, ASinkMayLogButNotFlushNorExchange) {
    std::vector<int> seen;
    int refusals = 0;
    DDLog::setSink([&](const DDLogMessage& message) {
        seen.push_back(message.line);
        if (message.line != 1) return;
        DDLog::log(numbered(2));
        try {
            DDLog::flush();
        } catch (const std::logic_error&) {
            ++refusals;
        }
        try {
            DDLog::setSink(nullptr);
        } catch (const std::logic_error&) {
            ++refusals;
        }
    });
    DDLog::log(numbered(1));
    DDLog::flush();
    DDLog::flush();
    EXPECT_EQ(seen, (std::vector{1, 2}));
    EXPECT_EQ(refusals, 2);
}
