// SPDX-License-Identifier: MIT
// The rows of this project's store: those of every store, and those that only this store has.

#include <benchmark/benchmark.h>

#include <chrono>
#include <future>

#include "Measures/StoreRows.h"
#include "Own/OwnStore.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVHeldKeys.h"
#include "Workload/FileContents.h"

namespace {

using Fixture = Measures::StoreOfSize<OwnStore>;

/// A tree as it is in memory after it was read from a file; shares nothing with another reading.
NSDictionary readApart(const NSDictionary& tree) {
    const auto written = NSPropertyListSerialization::dataWithPropertyList(tree);
    return NSPropertyListSerialization::propertyListWithData(written.bytes).value.dictionary();
}

/// Half of the settings are stored and the other half are defaults, so that the read of a default
/// meets stored dictionaries on its way.
struct Halves {
    explicit Halves(const Fixture& of) {
        std::vector<Workload::Setting> stored;
        std::vector<Workload::Setting> defaults;
        for (const Workload::Setting& setting : of.settings)
            (stored.size() <= defaults.size() ? stored : defaults).push_back(setting);
        storedTree = readApart(treeOf(stored)).mutableCopy();
        defaultTree = treeOf(defaults);
        for (const Workload::Setting& setting : defaults) keyPaths.push_back(setting.keyPath);
        std::shuffle(keyPaths.begin(), keyPaths.end(), std::mt19937(7));
    }
    void install() const {
        QRVSettings::sharedSettings().setStorageCache(storedTree);
        QRVSettings::sharedSettings().setDefaults(defaultTree);
        forgetWhatWasRead();
    }
    static void forgetWhatWasRead() {
        QRVSettings::sharedSettings().setCache(NSMutableDictionary());
    }
    static void remove(const std::filesystem::path& folder) {
        QRVSettings::sharedSettings().setDefaults(nullptr);
        OwnStore{folder};
    }

    NSMutableDictionary storedTree, defaultTree;
    std::vector<std::string> keyPaths;
};

void readKeyPath(const std::string& keyPath) {
    benchmark::DoNotOptimize(QRVSettingsObjectForKeyPath(keyPath));
}

/// Seconds for each read while all are read for the first time.
double secondsOfAFirstRead(const Halves& halves) {
    Halves::forgetWhatWasRead();
    const auto start = std::chrono::steady_clock::now();
    for (const std::string& keyPath : halves.keyPaths) readKeyPath(keyPath);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    return elapsed.count() / static_cast<double>(halves.keyPaths.size());
}

void readFirstTime(benchmark::State& state, const Halves& halves) {
    halves.install();
    for ([[maybe_unused]] const auto unused : state)
        state.SetIterationTime(secondsOfAFirstRead(halves));
}

void registerHalves(const Fixture& of, const std::filesystem::path& folder) {
    const auto* const halves = new Halves(of);
    const auto passes = 1 + 5000 / static_cast<benchmark::IterationCount>(halves->keyPaths.size());
    benchmark::RegisterBenchmark(("DefaultFirst" + of.name).c_str(),
                                 [halves, folder](benchmark::State& state) {
                                     readFirstTime(state, *halves);
                                     Halves::remove(folder);
                                 })
        ->UseManualTime()
        ->Iterations(passes)
        ->Repetitions(Measures::samplesOfARow);
    benchmark::RegisterBenchmark(
        ("DefaultAgain" + of.name).c_str(), [halves, folder](benchmark::State& state) {
            halves->install();
            Measures::readRoundAndRound<std::string>(state, halves->keyPaths, readKeyPath);
            Halves::remove(folder);
        });
}

/// Like the burst of every store, but each burst is the first one after the file was read.
void registerFirstBurst(const Fixture& of, const std::filesystem::path& folder) {
    const auto burst = std::span<const std::string>(of.integers)
                           .first(std::min(Measures::writesInABurst, of.integers.size()));
    benchmark::RegisterBenchmark(
        ("WriteFirst" + of.name).c_str(),
        [burst, folder](benchmark::State& state) {
            std::int64_t number = 50'000;
            for ([[maybe_unused]] const auto unused : state) {
                OwnStore store(folder);
                benchmark::DoNotOptimize(OwnStore::read(burst.front()));
                state.SetIterationTime(Measures::secondsOfAWrite(store, burst, number));
                OwnStore::save();
            }
        })
        ->UseManualTime()
        ->Iterations(1)
        ->Repetitions(Measures::samplesOfARow);
}

/// Saves are merged during its life.
class MergedSaves {
  public:
    MergedSaves() { QRVSettings::sharedSettings().setMergesSaves(true); }
    MergedSaves(const MergedSaves&) = delete;
    MergedSaves& operator=(const MergedSaves&) = delete;
    ~MergedSaves() { QRVSettings::sharedSettings().setMergesSaves(false); }
};

/// Seconds for each write while a save waits, so that the writes join it.
double secondsOfAJoiningWrite(OwnStore& store, std::span<const std::string> burst,
                              std::int64_t& number) {
    std::promise<void> gate;
    QRVSettings::sharedSettings().queue().async(
        [passed = gate.get_future().share()] { passed.wait(); });
    OwnStore::writeInteger(burst.front(), ++number);
    const double seconds = Measures::secondsOfAWrite(store, burst, number);
    gate.set_value();
    return seconds;
}

void registerMergedSaves(const Fixture& of) {
    const auto burst = std::span<const std::string>(of.integers)
                           .first(std::min(Measures::writesInABurst, of.integers.size()));
    OwnStore& store = *of.store;
    benchmark::RegisterBenchmark(("WriteBurstMerged" + of.name).c_str(),
                                 [&store, burst](benchmark::State& state) {
                                     const MergedSaves merged;
                                     Measures::writeBurst(state, store, burst);
                                 })
        ->UseManualTime()
        ->Iterations(1)
        ->Repetitions(Measures::samplesOfARow);
    benchmark::RegisterBenchmark(("SaveBurstMerged" + of.name).c_str(),
                                 [&store, burst](benchmark::State& state) {
                                     const MergedSaves merged;
                                     Measures::saveBurst(state, store, burst);
                                 })
        ->UseRealTime()
        ->Iterations(1)
        ->Repetitions(Measures::samplesOfARow);
    benchmark::RegisterBenchmark(
        ("WriteWhileASaveWaits" + of.name).c_str(),
        [&store, burst](benchmark::State& state) {
            const MergedSaves merged;
            std::int64_t number = 300'000;
            Measures::secondsOfAWrite(store, burst, number);
            OwnStore::save();
            for ([[maybe_unused]] const auto unused : state)
                state.SetIterationTime(secondsOfAJoiningWrite(store, burst, number));
            OwnStore::save();
        })
        ->UseManualTime()
        ->Iterations(1)
        ->Repetitions(Measures::samplesOfARow);
}

/// Writes of an open batch, which queue no save.
void registerBatch(const Fixture& of) {
    const auto burst = std::span<const std::string>(of.integers)
                           .first(std::min(Measures::writesInABurst, of.integers.size()));
    OwnStore& store = *of.store;
    benchmark::RegisterBenchmark(
        ("WriteInABatch" + of.name).c_str(),
        [&store, burst](benchmark::State& state) {
            std::int64_t number = 400'000;
            Measures::secondsOfAWrite(store, burst, number);
            OwnStore::save();
            QRVSettingsPrepareBatchSave();
            for ([[maybe_unused]] const auto unused : state)
                state.SetIterationTime(Measures::secondsOfAWrite(store, burst, number));
            QRVSettingsCommitBatchSave();
            OwnStore::save();
        })
        ->UseManualTime()
        ->Iterations(1)
        ->Repetitions(Measures::samplesOfARow);
}

void registerPropertyLists(const Fixture& of, const std::filesystem::path& files) {
    const auto* const tree = new NSDictionary(readApart(treeOf(of.settings)));
    benchmark::RegisterBenchmark(("XMLWriting" + of.name).c_str(), [tree](benchmark::State& state) {
        for ([[maybe_unused]] const auto unused : state)
            benchmark::DoNotOptimize(NSPropertyListSerialization::dataWithPropertyList(*tree));
    });
    for (const char* const row : {"XMLReading", "BinaryReading"}) {
        const auto* const bytes = new std::string(Workload::contentsOf(files / row));
        if (bytes->empty()) continue;
        benchmark::RegisterBenchmark((row + of.name).c_str(), [bytes](benchmark::State& state) {
            for ([[maybe_unused]] const auto unused : state) {
                const auto read = NSPropertyListSerialization::propertyListWithData(*bytes);
                if (read.error) state.SkipWithError(read.error->message.c_str());
            }
        });
    }
}

void compareTrees(benchmark::State& state, const NSDictionary& left, const NSDictionary& right,
                  std::size_t changes) {
    for ([[maybe_unused]] const auto unused : state) {
        if (NSDictionaryQRV::changedKeys(left, right).count() != changes)
            state.SkipWithError("another number of changes");
    }
}

void registerComparisons(const Fixture& of) {
    const NSDictionary tree = treeOf(of.settings).copy();
    const NSMutableDictionary changed = treeOf(of.settings);
    constexpr std::size_t changes = 5;
    for (std::size_t index = 0; index < changes; ++index)
        NSDictionaryQRV::setObjectAtKeyPath(changed, -1, of.integers[index]);
    const NSDictionary left = readApart(tree);
    const NSDictionary equal = readApart(tree);
    const NSDictionary different = readApart(changed.copy());
    benchmark::RegisterBenchmark(("CompareEqual" + of.name).c_str(), [=](benchmark::State& state) {
        compareTrees(state, left, equal, 0);
    });
    benchmark::RegisterBenchmark(
        ("CompareDifferent" + of.name).c_str(),
        [=](benchmark::State& state) { compareTrees(state, left, different, changes); });
}

void registerStart(const Fixture& of) {
    benchmark::RegisterBenchmark(("LoadDefaults" + of.name).c_str(), [](benchmark::State& state) {
        for ([[maybe_unused]] const auto unused : state)
            QRVSettings::sharedSettings().loadDefaults();
        OwnStore::save();
        QRVSettings::sharedSettings().setDefaults(nullptr);
    });
}

template <typename Value>
void readHeldKeys(const char* row, const Fixture& of, const std::vector<std::string>& keyPaths) {
    auto* const held = new std::vector<QRVHeldKey<Value>>;
    for (const std::string& keyPath : keyPaths) held->emplace_back(QRVKey<Value>(keyPath));
    benchmark::RegisterBenchmark((row + of.name).c_str(), [held](benchmark::State& state) {
        Measures::readRoundAndRound<QRVHeldKey<Value>>(
            state, *held,
            [](const QRVHeldKey<Value>& key) { benchmark::DoNotOptimize(key.value()); });
    });
}

void registerHeldKeys(const Fixture& of) {
    readHeldKeys<bool>("HeldBooleans", of, of.booleans);
    readHeldKeys<std::int64_t>("HeldIntegers", of, of.integers);
}

/// Of a host that asks for defaults and locks of the site, which has none.
void registerSite(const Fixture& of) {
    const auto hotKey = std::span<const std::string>(of.integers).first(1);
    benchmark::RegisterBenchmark(
        ("SiteHotKey" + of.name).c_str(), [hotKey](benchmark::State& state) {
            QRVSettings::sharedSettings().setUsesSiteDefaults(true);
            QRVSettings::sharedSettings().loadDefaults();
            OwnStore::save();
            Measures::readRoundAndRound<std::string>(state, hotKey, readKeyPath);
            QRVSettings::sharedSettings().setUsesSiteDefaults(false);
            QRVSettings::sharedSettings().setDefaults(nullptr);
        });
}

}  // namespace

int main(int argc, char** argv) {
    const Measures::RowArguments arguments = Measures::takeRowArguments(argc, argv);
    Fixture of(arguments.folder, arguments.size);
    Measures::registerStoreRows(of);
    registerHalves(of, arguments.folder);
    registerFirstBurst(of, arguments.folder);
    registerMergedSaves(of);
    registerBatch(of);
    registerPropertyLists(of, arguments.folder / "files");
    registerComparisons(of);
    registerHeldKeys(of);
    registerSite(of);
    registerStart(of);
    return Measures::runRows(argc, argv);
}
