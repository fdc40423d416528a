// SPDX-License-Identifier: MIT
// A sequence of operations on the store gives, after each of them, what the model gives; at the end
// the stored tree, the cache and the file are the model's.

#include <array>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "Fuzzing.h"
#include "Platform/Dispatch/Dispatch.h"
#include "QRVSettings/QRVHeldKeys.h"
#include "QRVSettings/QRVSettings.h"
#include "StoreModel.h"

using Fuzzing::Input;
using Fuzzing::isSameTree;
using Fuzzing::require;
using Fuzzing::TreeDecoder;
using StoreModel::OptionalKeyPath;

namespace {

constexpr int levels = 3;

/// The home of this process, removed at its end.
class TemporaryHome {
  public:
    TemporaryHome() {
        if (mkdtemp(path_.data()) == nullptr) std::abort();
        setenv("HOME", path_.c_str(), 1);
        setenv("XDG_CONFIG_HOME", path_.c_str(), 1);
    }
    TemporaryHome(const TemporaryHome&) = delete;
    TemporaryHome& operator=(const TemporaryHome&) = delete;
    ~TemporaryHome() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

  private:
    std::string path_ =
        (std::filesystem::temp_directory_path() / "qrvsettings-fuzz-XXXXXX").string();
};

/// The store and its model, in step.
class Comparison {
  public:
    explicit Comparison(Input& input) : input_(input) {}

    void run() {
        begin();
        while (!input_.isAtEnd()) step();
        requireSameState();
        forgetEverything();
    }

  private:
    void begin();
    void forgetEverything();
    void step();
    void write();
    void writeInProfile();
    void import();
    void readByAHeldKey();
    void becomeAnotherProcess();
    void requireSameState();
    void finishSave();
    void requireBatchWhenFileOperationsAreUsedUp();

    static void requireSame(const PropertyListValue& actual, const PropertyListValue& expected,
                            std::string_view what, const OptionalKeyPath& keyPath) {
        require(isSameTree(actual, expected), what, keyPath.value_or("(null)"), actual, expected);
    }

    OptionalKeyPath keyPath() {
        const std::size_t head = input_.number(32);
        if (head == 0) return std::nullopt;
        std::string text = values().key();
        for (std::size_t count = head % 4; count > 0; --count) text += "." + values().key();
        return text;
    }
    TreeDecoder values() { return TreeDecoder(input_, TreeDecoder::Sharing::None); }
    PropertyListValue value() {
        return input_.number(4) == 0 ? PropertyListValue() : values().value(levels);
    }

    Input& input_;
    QRVSettings& store_ = QRVSettings::sharedSettings();
    StoreModel::Store model_;
    std::map<std::string, std::optional<QRVHeldKey<PropertyListValue>>> heldKeys_;
    int fileOperationsLeft_ = 0;
};

// Most inputs get no file operation, because each of them syncs files.
void Comparison::begin() {
    constexpr std::size_t most = 3;
    const std::size_t head = input_.byte();
    fileOperationsLeft_ = static_cast<int>(head % 8 == 0 ? head / 8 % (most + 1) : 0);
    const NSDictionary defaults = values().dictionary(levels);
    store_.setCache(NSMutableDictionary());
    store_.setDefaults(defaults.mutableCopy());
    model_.setDefaults(defaults);
}

// Also for the engine, which looks for leaks whenever an input leaves something behind.
void Comparison::forgetEverything() {
    std::filesystem::remove_all(std::filesystem::path(store_.location()).parent_path());
    store_.setDisableCache(false);
    store_.setStorageCache(nullptr);
    store_.setDefaults(nullptr);
    store_.setActiveProfile(std::nullopt);
    store_.setInBatchSave(false);
    store_.batchLogChanges().removeAllObjects();
}

void Comparison::requireBatchWhenFileOperationsAreUsedUp() {
    if (model_.isInBatch() || fileOperationsLeft_-- > 0) return;
    QRVSettingsPrepareBatchSave();
    model_.setInBatch(true);
}

void Comparison::finishSave() {
    store_.queue().sync([] {});
    DispatchMainQueue::shared().drain();
}

void Comparison::write() {
    requireBatchWhenFileOperationsAreUsedUp();
    const OptionalKeyPath where = keyPath();
    const PropertyListValue what = value();
    bool isWritten = true;
    try {
        QRVSettingsSetObjectForKeyPathWithCache(what, where, input_.flag());
    } catch (const NSInvalidArgumentException&) {
        isWritten = false;
    }
    require(isWritten == model_.set(what, where, where), "a write is refused as the model says",
            where.value_or("(null)"));
    if (!model_.isInBatch()) finishSave();
}

void Comparison::writeInProfile() {
    requireBatchWhenFileOperationsAreUsedUp();
    const OptionalKeyPath where = keyPath();
    const PropertyListValue what = value();
    bool isWritten = true;
    try {
        QRVSettingsProfileSetObjectForKeyPath(what, where);
    } catch (const NSInvalidArgumentException&) {
        isWritten = false;
    }
    require(isWritten == model_.setInProfile(what, where),
            "a write into a profile is refused as the model says", where.value_or("(null)"));
    if (!model_.isInBatch()) finishSave();
}

// With the flags of both migrations, so that nothing is migrated.
void Comparison::import() {
    const NSMutableDictionary settings = values().dictionary(levels).mutableCopy();
    settings.setObjectForKey(NSDictionary{{"CombinedPowerItems", true}, {"Profiles", true}},
                             "Migration");
    if (fileOperationsLeft_-- <= 0) return;
    const OptionalKeyPath flag = "Migration.CombinedPowerItems";
    QRVSettingsClearCacheForKeyPath(flag);
    model_.clearCache(flag);
    QRVSettingsImport(settings);
    model_.import(settings);
    finishSave();
}

// A key path has one held key, which has to notice what the other steps have done.
void Comparison::readByAHeldKey() {
    const OptionalKeyPath where = keyPath();
    if (!where) return;
    const auto entry = heldKeys_.try_emplace(*where).first;
    const QRVKey<PropertyListValue> key(entry->first);
    if (!entry->second) entry->second.emplace(key);
    const PropertyListValue held = entry->second->value();
    static_cast<void>(model_.get(where));
    requireSame(held, QRVSettingsValue(key), "value of a held key", where);
}

void Comparison::becomeAnotherProcess() {
    store_.setStorageCache(nullptr);
    store_.setCache(NSMutableDictionary());
    model_.reopen();
}

void Comparison::step() {
    constexpr std::size_t operations = 20;
    OptionalKeyPath where;
    switch (input_.number(operations)) {
        default:
            return write();
        case 0:
        case 1:
            return writeInProfile();
        case 2:
            return readByAHeldKey();
        case 3:
            where = keyPath();
            return requireSame(QRVSettingsObjectForKeyPath(where), model_.get(where), "value",
                               where);
        case 4:
            where = keyPath();
            return requireSame(QRVSettingsProfileObjectForKeyPath(where),
                               model_.getInProfile(where), "value in the profile", where);
        case 5:
            where = keyPath();
            return requireSame(QRVSettingsStoredObjectForKeyPath(where), model_.getStored(where),
                               "stored value", where);
        case 6:
            where = keyPath();
            return requireSame(QRVSettingsDefaultForKeyPath(where), model_.getDefault(where),
                               "default", where);
        case 7:
            where = keyPath();
            return require(QRVSettingsBoolForKeyPath(where) == model_.get(where).boolValue(),
                           "a truth is that of the value", where.value_or("(null)"));
        case 8:
            where = keyPath();
            QRVSettingsClearCacheForKeyPath(where);
            return model_.clearCache(where);
        case 9:
            where = keyPath();
            QRVSettingsProfileClearCacheForKeyPath(where);
            return model_.clearCache(model_.profileKeyPath(where));
        case 10:
            QRVSettingsPrepareBatchSave();
            return model_.setInBatch(true);
        case 11:
            if (fileOperationsLeft_-- <= 0) return;
            QRVSettingsCommitBatchSave();
            model_.commit();
            return finishSave();
        case 12:
            return import();
        case 13:
            return becomeAnotherProcess();
        case 14: {
            constexpr std::array names{"default", "P", "a.b", ""};
            const std::string name = names[input_.number(names.size())];
            store_.setActiveProfile(name);
            return model_.setProfile(name);
        }
        case 15: {
            const bool isDisabled = input_.flag();
            store_.setDisableCache(isDisabled);
            return model_.disableCache(isDisabled);
        }
    }
}

void Comparison::requireSameState() {
    const auto asValue = [](const StoreModel::LevelReference& tree) {
        return tree == nullptr ? PropertyListValue() : StoreModel::valueOf(tree);
    };
    requireSame(QRVSettingsStorage(), asValue(model_.file()), "tree of the file", {});
    requireSame(QRVSettingsStoredValues(), asValue(model_.storedTree()), "stored tree", {});
    const NSDictionary cache = store_.cache();
    require(cache.isNull() == !model_.cache().has_value(), "there is a cache or none");
    if (cache.isNull()) return;
    require(cache.count() == model_.cache()->size(), "as much is cached", cache);
    for (const auto& [where, node] : *model_.cache())
        requireSame(cache.objectForKey(where), StoreModel::valueOf(node), "cached value", where);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TemporaryHome home;
    Fuzzing::silenceLogs();
    Input input(Fuzzing::textOf(data, size));
    Comparison(input).run();
    return 0;
}
