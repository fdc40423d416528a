// SPDX-License-Identifier: MIT
// Counts what the hot paths cost a thread.
//
//     Counts prepare FOLDER   writes the settings file
//     Counts run FOLDER       prints the costs
//
// XDG_CONFIG_HOME is FOLDER. Between the two, counts.py makes FOLDER/binary.plist of the file.

#include <future>
#include <iostream>
#include <span>
#include <stdexcept>
#include <string_view>

#include "Own/OwnStore.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVHeldKeys.h"
#include "RowCounts.h"
#include "ThreadCost.h"
#include "Workload/FileContents.h"

namespace {

constexpr std::size_t settingsInAll = 1000;

using KeyPaths = std::vector<std::string>;

void require(bool condition, const char* what) {
    if (!condition) throw std::runtime_error(what);
}

KeyPaths keyPathsOf(const std::vector<Workload::Setting>& settings, Workload::Kind kind) {
    KeyPaths keyPaths;
    for (const Workload::Setting& setting : settings)
        if (Workload::kindOf(setting.value) == kind) keyPaths.push_back(setting.keyPath);
    return keyPaths;
}

/// Also reads once before, so that all reads are hits.
template <typename Read>
void countReads(const std::string& name, std::span<const std::string> keyPaths, const Read& read) {
    constexpr std::size_t passes = 10;
    for (const std::string& keyPath : keyPaths) read(keyPath);
    countCost(name, passes * keyPaths.size(), [&] {
        for (std::size_t pass = 0; pass < passes; ++pass)
            for (const std::string& keyPath : keyPaths) read(keyPath);
    });
}

void countHits(const KeyPaths& booleans, const KeyPaths& integers) {
    const KeyPaths hot(100, integers.front());
    std::size_t found = 0;
    const auto readObject = [&found](const std::string& keyPath) {
        found += QRVSettingsObjectForKeyPath(keyPath).isNull() ? 0 : 1;
    };
    const auto readBoolean = [&found](const std::string& keyPath) {
        found += QRVSettingsBoolForKeyPath(keyPath) ? 1 : 0;
    };
    const QRVKey<std::int64_t> key(hot.front());
    const auto readTyped = [&found, &key](const std::string& /*keyPath*/) {
        found += QRVSettingsValue(key) > 0 ? 1 : 0;
    };
    const QRVHeldKey<std::int64_t> heldKey(key);
    const auto readHeld = [&found, &heldKey](const std::string& /*keyPath*/) {
        found += heldKey.value() > 0 ? 1 : 0;
    };
    countReads("ReadHotKey", hot, readObject);
    countReads("ReadAllKeys", integers, readObject);
    countReads("BooleanAllKeys", booleans, readBoolean);
    countReads("TypedKey", hot, readTyped);
    countReads("HeldKey", hot, readHeld);
    require(found > 0, "the settings are not read");
}

/// The integers are defaults; the other settings are stored.
void countFirstDefaults(const std::vector<Workload::Setting>& settings, const KeyPaths& integers) {
    std::vector<Workload::Setting> stored;
    std::vector<Workload::Setting> defaults;
    for (const Workload::Setting& setting : settings)
        (Workload::kindOf(setting.value) == Workload::Kind::Integer ? defaults : stored)
            .push_back(setting);
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setStorageCache(treeOf(stored));
    store.setDefaults(treeOf(defaults));
    store.setCache(NSMutableDictionary());
    countCost("DefaultFirst", integers.size(), [&integers] {
        for (const std::string& keyPath : integers)
            require(!QRVSettingsObjectForKeyPath(keyPath).isNull(), "a default is not read");
    });
    store.setDefaults(nullptr);
    OwnStore{""};
}

void write(const KeyPaths& keyPaths, std::int64_t& number) {
    for (const std::string& keyPath : keyPaths) OwnStore::writeInteger(keyPath, ++number);
}

/// Each is saved before, so that no level of the tree is copied for the first time.
void countBatch(const KeyPaths& keyPaths, std::int64_t& number) {
    write(keyPaths, number);
    OwnStore::save();
    QRVSettingsPrepareBatchSave();
    OwnStore::writeInteger(keyPaths.front(), ++number);
    countCost("WriteInABatch", keyPaths.size(), [&] { write(keyPaths, number); });
    QRVSettingsCommitBatchSave();
    OwnStore::save();
}

/// The saves begin when all writes are done, so that both threads never meet at a lock.
void countBurst(const std::string& name, const KeyPaths& keyPaths, std::int64_t& number) {
    write(keyPaths, number);
    OwnStore::save();
    std::promise<void> gate;
    QRVSettings::sharedSettings().queue().async(
        [passed = gate.get_future().share()] { passed.wait(); });
    OwnStore::writeInteger(keyPaths.front(), ++number);
    countCost(name, keyPaths.size(), [&] { write(keyPaths, number); });
    gate.set_value();
    OwnStore::save();
    require(QRVSettingsWaitForSaves(std::chrono::minutes(1)).state == QRVSaveStatus::State::Saved,
            "the burst is not saved");
}

/// The first burst after the file was read, which copies levels of the tree.
void countFirstBurst(const KeyPaths& keyPaths, std::int64_t& number) {
    const OwnStore read{""};
    require(!OwnStore::read(keyPaths.front()).isNull(), "the file is not read");
    std::promise<void> gate;
    QRVSettings::sharedSettings().queue().async(
        [passed = gate.get_future().share()] { passed.wait(); });
    countCost("WriteFirst", keyPaths.size(), [&] { write(keyPaths, number); });
    gate.set_value();
    OwnStore::save();
}

/// What a save of one change costs the store's queue.
void countSave(const std::string& name, const std::string& keyPath, std::int64_t& number) {
    OwnStore::writeInteger(keyPath, ++number);
    OwnStore::save();
    DispatchQueue& queue = QRVSettings::sharedSettings().queue();
    queue.async(beginCost);
    OwnStore::writeInteger(keyPath, ++number);
    queue.async([&name] { endCost(name, 1); });
    OwnStore::save();
}

void countWrites(const KeyPaths& integers) {
    const KeyPaths keyPaths(integers.begin(), integers.begin() + 24);
    std::int64_t number = 1'000'000;
    for (const std::string& keyPath : keyPaths) QRVSettingsObjectForKeyPath(keyPath);
    countBatch(keyPaths, number);
    countBurst("WriteBurst", keyPaths, number);
    countFirstBurst(keyPaths, number);
    countSave("Save", keyPaths.front(), number);
    QRVSettings::sharedSettings().setMergesSaves(true);
    countBurst("WriteBurstMerged", keyPaths, number);
    countSave("SaveMerged", keyPaths.front(), number);
    QRVSettings::sharedSettings().setMergesSaves(false);
}

NSDictionary readOf(std::string_view bytes) {
    const auto read = NSPropertyListSerialization::propertyListWithData(bytes);
    require(!read.error, "a property list cannot be read");
    return read.value.dictionary();
}

/// Costs for each setting.
void countPropertyLists(const std::string& xml, const std::string& binary) {
    NSDictionary tree;
    countCost("XMLReading", settingsInAll, [&] { tree = readOf(xml); });
    NSDictionary same;
    countCost("BinaryReading", settingsInAll, [&] { same = readOf(binary); });
    std::size_t written = 0;
    countCost("XMLWriting", settingsInAll, [&] {
        written = NSPropertyListSerialization::dataWithPropertyList(tree).bytes.size();
    });
    require(written == xml.size(), "a property list is not written as it was");
    std::size_t changes = 1;
    countCost("CompareEqual", settingsInAll,
              [&] { changes = NSDictionaryQRV::changedKeys(tree, same).count(); });
    require(changes == 0, "the property lists differ");
}

void countLoadDefaults() {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.loadDefaults();
    OwnStore::save();
    constexpr std::size_t times = 3;
    countCost("LoadDefaults", times, [&store] {
        for (std::size_t time = 0; time < times; ++time) store.loadDefaults();
    });
    OwnStore::save();
}

void run(const std::filesystem::path& folder) {
    const auto settings = Workload::generatedSettings(settingsInAll);
    const KeyPaths integers = keyPathsOf(settings, Workload::Kind::Integer);
    const std::string xml = Workload::contentsOf(QRVSettingsLocation());
    const std::string binary = Workload::contentsOf(folder / "binary.plist");
    countHits(keyPathsOf(settings, Workload::Kind::Boolean), integers);
    countFirstDefaults(settings, integers);
    countWrites(integers);
    countPropertyLists(xml, binary);
    countLoadDefaults();
    countRows();
}

}  // namespace

int main(int argc, char** argv) {
    const std::string_view command = argc == 3 ? argv[1] : "";
    try {
        if (command == "prepare")
            OwnStore::prepare(argv[2], Workload::generatedSettings(settingsInAll));
        else if (command == "run")
            run(argv[2]);
        else
            throw std::runtime_error("usage: PROGRAM prepare|run FOLDER");
    } catch (const std::exception& problem) {
        std::cerr << argv[0] << ": " << problem.what() << '\n';
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
