// SPDX-License-Identifier: MIT
// Hosts that merge their saves, each in a process of its own, on one settings file. The environment
// makes them larger: QRV_TOGETHER_PAUSE is the longest pause between two writes in milliseconds,
// QRV_TOGETHER_SECONDS how long hosts write into shared key paths.

#include <gtest/gtest.h>

#include <random>

#include "Platform/Files/Files.h"
#include "Support/HostProcess.h"

using namespace HostProcess;
using StoreSupport::drainUntil;
using StoreSupport::fileTree;
using StoreSupport::finishSaves;

namespace {

using Clock = std::chrono::steady_clock;

constexpr int keyPathsOfEach = 60;

std::string ownKeyPath(std::size_t host, int number) {
    return "Host" + std::to_string(host) + ".Group" + std::to_string(number % 7) + ".Key" +
           std::to_string(number);
}

std::string sharedKeyPath(int number) {
    return "Shared.Group" + std::to_string(number % 3) + ".Key" + std::to_string(number);
}

/// Most pauses are short, a few are as long as the environment says.
class Pauses {
  public:
    explicit Pauses(std::size_t seed) : random_(static_cast<unsigned>(seed)) {}
    /// As a host's main loop, which goes on with the main queue.
    void pause() {
        const int longest = sizeFromEnvironment("QRV_TOGETHER_PAUSE", 5);
        const int most = random_() % 20 == 0 ? longest : std::min(longest, 5);
        const auto end =
            Clock::now() + std::chrono::milliseconds(random_() % static_cast<unsigned>(most + 1));
        do {
            DispatchMainQueue::shared().drain();
            std::this_thread::sleep_until(
                std::min(end, Clock::now() + std::chrono::milliseconds(1)));
        } while (Clock::now() < end);
    }
    int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }

  private:
    std::mt19937 random_;
};

bool memoryEqualsTheFile() {
    return drainUntil([] { return QRVSettingsStoredValues() == fileTree(); });
}

struct Company {
    std::size_t hosts;
    bool watches;
};

class Together : public testing::TestWithParam<Company> {};

std::string nameOf(const testing::TestParamInfo<Company>& information) {
    return std::to_string(information.param.hosts) +
           (information.param.watches ? "_that_watch" : "_that_do_not_watch");
}

bool writeOwnKeyPaths(const Hosts& hosts, std::size_t self, bool watches) {
    start(Mode::Merging, watches);
    Pauses pauses(self);
    for (int number = 0; number < keyPathsOfEach; ++number) {
        QRVSettingsSetObjectForKeyPath(number, ownKeyPath(self, number));
        pauses.pause();
    }
    return allIsSaved() && hosts.meet(self) && (!watches || memoryEqualsTheFile());
}

/// Strings tell who wrote; the last number of each host and key path goes to `last`.
bool writeSharedKeyPaths(const Hosts& hosts, std::size_t self, bool watches,
                         const SharedNumbers& last, int keyPaths) {
    start(Mode::Merging, watches);
    Pauses pauses(self);
    for (int number = 1; number <= 2 * keyPathsOfEach; ++number) {
        const int key = number <= keyPathsOfEach ? pauses.below(keyPaths) : number % keyPaths;
        QRVSettingsSetObjectForKeyPath(std::to_string(self) + ":" + std::to_string(number),
                                       sharedKeyPath(key));
        last[self * static_cast<std::size_t>(keyPaths) + static_cast<std::size_t>(key)] = number;
        pauses.pause();
    }
    return allIsSaved() && hosts.meet(self) && (!watches || memoryEqualsTheFile());
}

}  // namespace

TEST_P(Together, SettingsOfEveryHostSurvive) {
    const auto [count, watches] = GetParam();
    Hosts hosts(count);
    for (std::size_t self = 0; self < count; ++self)
        hosts.add(
            [&hosts, self, watches = watches] { return writeOwnKeyPaths(hosts, self, watches); });
    EXPECT_TRUE(hosts.letMeet());
    hosts.expectSuccess();
    const NSDictionary tree = fileTree();
    int survivors = 0;
    for (std::size_t self = 0; self < count; ++self)
        for (int number = 0; number < keyPathsOfEach; ++number)
            if (NSDictionaryQRV::objectAtKeyPath(tree, ownKeyPath(self, number)) == number)
                ++survivors;
    EXPECT_EQ(survivors, static_cast<int>(count) * keyPathsOfEach);
    RecordProperty("Survivors", survivors);
}

TEST_P(Together, OfASharedKeyPathTheLastSavedWriteStays) {
    constexpr int keyPaths = 20;
    const auto [count, watches] = GetParam();
    const SharedNumbers last(count * keyPaths);
    Hosts hosts(count);
    for (std::size_t self = 0; self < count; ++self)
        hosts.add([&, self, watches = watches] {
            return writeSharedKeyPaths(hosts, self, watches, last, keyPaths);
        });
    EXPECT_TRUE(hosts.letMeet());
    hosts.expectSuccess();
    const NSDictionary tree = fileTree();
    for (int key = 0; key < keyPaths; ++key) {
        const std::string left =
            NSDictionaryQRV::objectAtKeyPath(tree, sharedKeyPath(key)).stringValue();
        bool isLastOfItsHost = false;
        for (std::size_t self = 0; self < count; ++self) {
            const auto number = last[self * keyPaths + static_cast<std::size_t>(key)].load();
            if (left == std::to_string(self) + ":" + std::to_string(number)) isLastOfItsHost = true;
        }
        EXPECT_TRUE(isLastOfItsHost) << sharedKeyPath(key) << " is " << left;
    }
}

INSTANTIATE_TEST_SUITE_P(Hosts, Together,
                         testing::Values(Company{2, true}, Company{2, false}, Company{4, true},
                                         Company{4, false}, Company{8, true}, Company{8, false}),
                         nameOf);

namespace {

bool writeAndMirror(const Hosts& hosts, std::size_t self, const SharedNumbers& received) {
    constexpr int keyPaths = 12;
    start(Mode::Merging, true);
    Mirror mirror;
    std::mt19937 random(static_cast<unsigned>(self));
    const auto end =
        Clock::now() + std::chrono::seconds(sizeFromEnvironment("QRV_TOGETHER_SECONDS", 2));
    for (std::int64_t number = 0; Clock::now() < end; ++number) {
        const std::string keyPath = sharedKeyPath(static_cast<int>(random() % keyPaths));
        const PropertyListValue value = static_cast<std::int64_t>(self) + 10 * number;
        mirror.write(keyPath, random() % 10 == 0 ? PropertyListValue() : value);
        if (random() % 4 == 0) finishSaves();
        if (random() % 30 == 0) QRVSettingsPrepareBatchSave();
        if (random() % 10 == 0) QRVSettingsCommitBatchSave();
        DispatchMainQueue::shared().drain();
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 3000));
    }
    QRVSettingsCommitBatchSave();
    if (!allIsSaved() || !hosts.meet(self)) return false;
    const bool isAlike = drainUntil([&mirror] {
        const Settings stored = settingsOf(fileTree());
        return settingsOf(QRVSettingsStoredValues()) == stored && mirror.settings() == stored;
    });
    received[self] = mirror.received();
    EXPECT_EQ(settingsOf(QRVSettingsStoredValues()), settingsOf(fileTree())) << "host " << self;
    EXPECT_EQ(mirror.settings(), settingsOf(fileTree())) << "host " << self;
    EXPECT_EQ(mirror.superfluous(), 0) << "host " << self;
    return isAlike && mirror.superfluous() == 0;
}

}  // namespace

TEST(Together, EveryChangeByOthersThatStayedIsReported) {
    constexpr std::size_t count = 4;
    // A host that starts without a file is also notified of what its reads find there later.
    StoreSupport::writeSettings(NSDictionary{{"Begun", true}});
    const SharedNumbers received(count);
    Hosts hosts(count);
    for (std::size_t self = 0; self < count; ++self)
        hosts.add([&, self] { return writeAndMirror(hosts, self, received); });
    EXPECT_TRUE(hosts.letMeet());
    hosts.expectSuccess();
    for (std::size_t self = 0; self < count; ++self) EXPECT_GT(received[self], 0);
    RecordProperty("ReceivedByTheFirst", static_cast<int>(received[0]));
}

namespace {

bool writeWhileSavesFail(const Hosts& hosts, std::size_t self, const Gate& endOfFailures,
                         const SharedNumbers& failed) {
    QRVPlatform::setFileFailureHandler([&failed](const QRVPlatform::FileFailure&) { ++failed[0]; });
    start(Mode::Merging, true);
    Pauses pauses(self);
    int number = 0;
    while (number < keyPathsOfEach || !endOfFailures.isOpen()) {
        QRVSettingsSetObjectForKeyPath(number, ownKeyPath(self, number % keyPathsOfEach));
        ++number;
        pauses.pause();
    }
    // The next save brings what the failed ones could not.
    QRVSettingsSetObjectForKeyPath(number, ownKeyPath(self, keyPathsOfEach));
    if (!allIsSaved() || !hosts.meet(self) || !memoryEqualsTheFile()) return false;
    for (int count = 0; count < keyPathsOfEach; ++count) {
        const PropertyListValue left = QRVSettingsStoredObjectForKeyPath(ownKeyPath(self, count));
        const int last = (number - 1 - count) / keyPathsOfEach * keyPathsOfEach + count;
        EXPECT_EQ(left, last) << ownKeyPath(self, count);
    }
    return !testing::Test::HasFailure();
}

}  // namespace

TEST(Together, WritesWhoseSavesFailNowAndThenAreSavedInTheEnd) {
    constexpr std::size_t count = 3;
    constexpr int failures = 20;
    StoreSupport::writeSettings(NSDictionary{{"Begun", true}});
    const Gate endOfFailures;
    const SharedNumbers failed(1);
    Hosts hosts(count);
    for (std::size_t self = 0; self < count; ++self)
        hosts.add([&, self] { return writeWhileSavesFail(hosts, self, endOfFailures, failed); });
    const std::string obstacle =
        QRVPlatform::filesBeside(QRVSettingsLocation()).temporary + "/inside";
    for (int failure = 0; failure < failures; ++failure) {
        std::error_code error;  // a save may be there at this moment
        std::filesystem::create_directories(obstacle, error);
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        std::filesystem::remove_all(std::filesystem::path(obstacle).parent_path(), error);
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    endOfFailures.open();
    EXPECT_TRUE(hosts.letMeet());
    hosts.expectSuccess();
    EXPECT_GT(failed[0], 0);
    RecordProperty("FailedSaves", static_cast<int>(failed[0]));
}

namespace {

class BesideWholeTrees : public testing::TestWithParam<bool> {};

bool mergeAndMirror(const Hosts& hosts) {
    start(Mode::Merging, true);
    Mirror mirror;
    Pauses pauses(1);
    for (int number = 0; number < keyPathsOfEach; ++number) {
        mirror.write(ownKeyPath(0, number), number);
        pauses.pause();
    }
    if (!allIsSaved() || !hosts.meet(0)) return false;
    const bool isAlike = drainUntil([&mirror] {
        const Settings stored = settingsOf(fileTree());
        return settingsOf(QRVSettingsStoredValues()) == stored && mirror.settings() == stored;
    });
    EXPECT_TRUE(isAlike);
    EXPECT_EQ(mirror.settings(), settingsOf(fileTree()));
    return isAlike;
}

bool saveWholeTrees(const Hosts& hosts, bool watches) {
    start(Mode::WholeTrees, watches);
    Pauses pauses(2);
    for (int number = 0; number < keyPathsOfEach; ++number) {
        QRVSettingsSetObjectForKeyPath(number, ownKeyPath(1, number));
        pauses.pause();
    }
    return allIsSaved() && hosts.meet(1);
}

}  // namespace

// What a whole tree overwrites, the host that merges is notified of.
TEST_P(BesideWholeTrees, AHostThatMergesTakesNothingAndHearsWhatItLoses) {
    const bool otherWatches = GetParam();
    StoreSupport::writeSettings(NSDictionary{{"Begun", true}});
    Hosts hosts(2);
    hosts.add([&] { return mergeAndMirror(hosts); });
    hosts.add([&] { return saveWholeTrees(hosts, otherWatches); });
    EXPECT_TRUE(hosts.letMeet());
    hosts.expectSuccess();
    const NSDictionary tree = fileTree();
    // One that watches may lose its own to a reload beside its writes.
    for (int number = 0; number < keyPathsOfEach && !otherWatches; ++number)
        EXPECT_EQ(NSDictionaryQRV::objectAtKeyPath(tree, ownKeyPath(1, number)), number);
}

INSTANTIATE_TEST_SUITE_P(Hosts, BesideWholeTrees, testing::Bool());
