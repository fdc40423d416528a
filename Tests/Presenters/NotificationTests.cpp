// SPDX-License-Identifier: MIT
// When and where presenters are notified, and when no more.

#include <gtest/gtest.h>

#include <condition_variable>
#include <filesystem>
#include <optional>
#include <thread>
#include <vector>

#include "Presenters/PresenterSupport.h"

using namespace PresenterSupport;
namespace fs = std::filesystem;

namespace {

/// A door at which notifications stop until it is opened.
class Door {
  public:
    void pass() {
        std::unique_lock lock(mutex_);
        ++arrivals_;
        changed_.wait(lock, [this] { return isOpen_; });
    }
    void open() {
        const std::lock_guard lock(mutex_);
        isOpen_ = true;
        changed_.notify_all();
    }
    [[nodiscard]] bool hasArrivals(int count) {
        return waitUntil([&] {
            const std::lock_guard lock(mutex_);
            return arrivals_ >= count;
        });
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int arrivals_ = 0;
    bool isOpen_ = false;
};

std::size_t countOfDescriptors() {
    std::size_t count = 0;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd"))
        count += entry.is_symlink() ? 1U : 0U;
    return count;
}

}  // namespace

TEST(Notifications, OfChangesDuringOneBecomeExactlyOneMore) {
    Door door;
    Reader reader("file", [&](Reader&) { door.pass(); });
    writePlainly("file", "first");
    ASSERT_TRUE(door.hasArrivals(1));
    for (int round = 0; round < 10; ++round) {
        replaceByRename("file", std::to_string(round));
        ASSERT_TRUE(finishEvents());
    }
    EXPECT_EQ(reader.count(), 1);
    door.open();
    EXPECT_TRUE(reader.isNotifiedMoreThan(1));
    EXPECT_TRUE(reader.sees("9"));
    EXPECT_EQ(finalCount(reader), 2);
}

TEST(Notifications, OfOnePresenterComeOneAtATimeOnItsQueue) {
    const std::thread::id own = std::this_thread::get_id();
    std::atomic<int> inside = 0;
    std::atomic<int> failures = 0;
    Reader reader("file", [&](Reader&) {
        if (++inside != 1 || std::this_thread::get_id() == own) ++failures;
        std::this_thread::yield();
        --inside;
    });
    for (int round = 0; round < 300; ++round) replaceByRename("file", std::to_string(round));
    EXPECT_TRUE(reader.sees("299"));
    EXPECT_EQ(failures, 0);
}

TEST(Notifications, AreNotHeldUpByASlowOperationOfTheHost) {
    Door door;
    Reader reader("file");
    reader.presentedItemOperationQueue()->addOperation([&] { door.pass(); });
    ASSERT_TRUE(door.hasArrivals(1));
    replaceByRename("file", "x");
    EXPECT_TRUE(reader.sees("x"));
    door.open();
}

TEST(Notifications, OfAPresenterAddedAgainWithinOneWaitForThatOne) {
    Door door;
    std::atomic<int> inside = 0;
    std::atomic<int> collisions = 0;
    Reader reader("file", [&](Reader& self) {
        if (++inside != 1) ++collisions;
        NSFileCoordinator::removeFilePresenter(self);
        NSFileCoordinator::addFilePresenter(self);
        door.pass();
        --inside;
    });
    replaceByRename("file", "first");
    ASSERT_TRUE(door.hasArrivals(1));
    replaceByRename("file", "second");
    ASSERT_TRUE(finishEvents());
    EXPECT_EQ(reader.count(), 1);
    door.open();
    EXPECT_TRUE(door.hasArrivals(2));
    EXPECT_TRUE(reader.sees("second"));
    EXPECT_EQ(collisions, 0);
}

TEST(Notifications, EndWithTheRemovalWhichWaitsForTheOneUnderWay) {
    Door door;
    std::atomic<bool> isUnderWay = false;
    std::optional<Reader> reader(std::in_place, "file", [&](Reader&) {
        isUnderWay = true;
        door.pass();
        isUnderWay = false;
    });
    writePlainly("file", "x");
    ASSERT_TRUE(door.hasArrivals(1));
    std::atomic<bool> isRemoved = false;
    int count = 0;
    std::thread remover([&] {
        NSFileCoordinator::removeFilePresenter(*reader);
        EXPECT_FALSE(isUnderWay);
        count = reader->count();
        isRemoved = true;
    });
    replaceByRename("file", "y");
    ASSERT_TRUE(finishEvents());
    EXPECT_FALSE(isRemoved);
    door.open();
    remover.join();
    replaceByRename("file", "z");
    EXPECT_EQ(finalCount(*reader), count);
    reader.reset();
    replaceByRename("file", "nobody is there");
    EXPECT_TRUE(finishEvents());
}

TEST(Notifications, MayRemoveThePresenterAndAddItAgain) {
    Reader reader("file", NSFileCoordinator::removeFilePresenter);
    for (int round = 1; round <= 3; ++round) {
        writePlainly("file", std::to_string(round));
        EXPECT_TRUE(reader.sees(std::to_string(round)));
        writePlainly("file", "unseen");
        EXPECT_EQ(finalCount(reader), round);
        NSFileCoordinator::addFilePresenter(reader);
    }
}

TEST(Notifications, MayDestroyThePresenterAndItsQueue) {
    struct Brief : NSFilePresenter {
        explicit Brief(std::atomic<bool>& flag) : isDestroyed(flag) {}
        ~Brief() override { isDestroyed = true; }
        [[nodiscard]] std::string presentedItemURL() const override { return "file"; }
        [[nodiscard]] std::shared_ptr<NSOperationQueue> presentedItemOperationQueue()
            const override {
            return std::make_shared<NSOperationQueue>();
        }
        void presentedItemDidChange() override {
            NSFileCoordinator::removeFilePresenter(*this);
            delete this;
        }
        std::atomic<bool>& isDestroyed;
    };
    std::atomic<bool> isDestroyed = false;
    NSFileCoordinator::addFilePresenter(*new Brief(isDestroyed));
    writePlainly("file", "x");
    EXPECT_TRUE(waitUntil([&] { return isDestroyed.load(); }));
}

TEST(Notifications, OfAPresenterThatWasAddedTwiceComeOnce) {
    Reader reader("file");
    NSFileCoordinator::addFilePresenter(reader);
    writePlainly("file", "x");
    EXPECT_TRUE(reader.sees("x"));
    NSFileCoordinator::removeFilePresenter(reader);
    const int count = reader.count();
    writePlainly("file", "y");
    EXPECT_EQ(finalCount(reader), count);
    NSFileCoordinator::removeFilePresenter(reader);
}

TEST(Notifications, OfManyPresentersThatComeAndGoWhileFilesChange) {
    std::atomic<bool> isOver = false;
    std::thread writer([&] {
        for (int round = 0; !isOver; ++round)
            replaceByRename("file-" + std::to_string(round % 3), std::to_string(round));
    });
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 3; ++thread)
        threads.emplace_back([thread] {
            const std::string path = "file-" + std::to_string(thread);
            for (int round = 0; round < 30; ++round) {
                const Reader first(path);
                const Reader second(path);
                save(&first, path, "own");
                EXPECT_TRUE(second.isNotifiedMoreThan(0));
            }
        });
    for (auto& thread : threads) thread.join();
    isOver = true;
    writer.join();
}

TEST(Presenters, LeaveNoDescriptorsBehind) {
    ASSERT_TRUE(finishEvents());
    const std::size_t count = countOfDescriptors();
    for (int round = 0; round < 20; ++round) {
        const Reader reader("file");
        ASSERT_TRUE(save(&reader, "file", std::to_string(round)));
    }
    EXPECT_EQ(countOfDescriptors(), count);
}

TEST(Presenters, OpenEverythingCloseOnExec) {
    const Reader reader("file");
    ASSERT_TRUE(save(&reader, "file", "own"));
    int seen = 0;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code ignored;
        const std::string target = fs::read_symlink(entry, ignored).string();
        if (!target.ends_with("inotify") && !target.ends_with("[eventfd]") &&
            !target.ends_with("/file"))
            continue;
        ++seen;
        EXPECT_NE(fcntl(std::stoi(entry.path().filename()), F_GETFD) & FD_CLOEXEC, 0) << target;
    }
    EXPECT_EQ(seen, 3);
}
