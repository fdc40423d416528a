// SPDX-License-Identifier: MIT
// Every function that hosts may call, each on the threads where it may be called, all at once:
// for ThreadSanitizer. A new exported function belongs in one of the tables.

#include <gtest/gtest.h>

#include <atomic>
#include <iterator>
#include <random>
#include <set>
#include <span>
#include <sstream>
#include <thread>

#include "Platform/Files/Files.h"
#include "Platform/Files/NSFileCoordinator.h"
#include "Platform/System/Terminal.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVHeldKeys.h"
#include "QRVSettings/QRVKnownSettings.h"
#include "Support/MachineSupport.h"
#include "Support/StoreSupport.h"

using namespace QRVPlatform;

using StoreSupport::finishSaves;

namespace {

namespace fs = std::filesystem;

/// `functions` are those that `call` is about, named as in the list of exported names.
struct Action {
    std::vector<std::string> functions;
    std::function<void()> call;
};
using Actions = std::vector<Action>;

QRVSettings& store() {
    return QRVSettings::sharedSettings();
}

/// Changed by the host's thread, read by all.
NSMutableDictionary& sharedDictionary() {
    static NSMutableDictionary dictionary;
    return dictionary;
}

NSMutableArray& sharedArray() {
    static NSMutableArray array;
    return array;
}

/// Keeps the compiler from removing a call whose result is not used.
template <typename... Results>
void use(const Results&...) {}

class Listener : public NSFilePresenter {
  public:
    [[nodiscard]] std::string presentedItemURL() const override { return "listened-to"; }
    [[nodiscard]] std::shared_ptr<NSOperationQueue> presentedItemOperationQueue() const override {
        return queue_;
    }
    void presentedItemDidChange() override {}

  private:
    std::shared_ptr<NSOperationQueue> queue_ = std::make_shared<NSOperationQueue>();
};

/// Before there are other threads, in this order.
Actions ofTheStart() {
    return {
        {{"QRVSettings::setPresenterQueue"},
         [] { store().setPresenterQueue(std::make_shared<NSOperationQueue>()); }},
        {{"QRVSettings::setMonitorFileChanges"}, [] { store().setMonitorFileChanges(true); }},
        {{"QRVSettings::setOnChange"},
         [] {
             store().setOnChange([](const NSArray& keyPaths) {
                 for (const PropertyListValue& keyPath : keyPaths)
                     use(QRVSettingsObjectForKeyPath(keyPath.stringValue()));
             });
         }},
        {{"QRVSettings::loadDefaults"}, [] { store().loadDefaults(); }},
        {{"QRVSettings::fileContentsDidChange"}, [] { use(store().fileContentsDidChange()); }},
        {{"QRVSettings::presentedItemDidChange"}, [] { store().presentedItemDidChange(); }},
        {{"QRVSettings::prepare"}, [] { store().prepare(); }},
    };
}

Actions ofTheHost() {
    const auto width = [] { return QRVKeyPath("CPU.Menubar.Mode.HistoryGraph.Width"); };
    const auto colour = [] { return QRVKeyPath("Network.Menubar.Mode.Status.NoIP.Color"); };
    return {
        {{"QRVSettings::migrate"}, [] { store().migrate(); }},
        {{"QRVSettings::setMergesSaves"}, [] { store().setMergesSaves(!store().mergesSaves()); }},
        {{"QRVSettings::usesSiteDefaults", "QRVSettings::setUsesSiteDefaults"},
         [] { store().setUsesSiteDefaults(!store().usesSiteDefaults()); }},
        {{"QRVSettingsIsLocked", "QRVSettingsLockFileForKeyPath", "QRVSettingsSiteFileForKeyPath",
          "QRVSettingsSiteDefaults"},
         [=] {
             use(QRVSettingsIsLocked(width()), QRVSettingsLockFileForKeyPath(width()),
                 QRVSettingsSiteFileForKeyPath(width()), QRVSettingsSiteDefaults().values);
         }},
        {{"QRVSettingsWaitForSaves"},
         [] { use(QRVSettingsWaitForSaves(std::chrono::milliseconds(1)).keyPaths); }},
        {{"QRVSettings::disableCache", "QRVSettings::setDisableCache", "QRVSettings::setCache"},
         [] {
             store().setDisableCache(!store().disableCache());
             store().setCache(NSMutableDictionary());
         }},
        {{"QRVSettings::prepared", "QRVSettings::setPrepared"},
         [] { store().setPrepared(!store().prepared()); }},
        {{"QRVSettings::activeProfile", "QRVSettings::setActiveProfile"},
         [] { store().setActiveProfile(store().activeProfile() == "a" ? "b" : "a"); }},
        {{"QRVSettings::onChange"}, [] { use(store().onChange()); }},
        {{"QRVSettings::changeOrigin", "QRVSettings::setChangeOrigin"},
         [] {
             store().setChangeOrigin("test");
             use(store().changeOrigin());
         }},
        {{"QRVSettings::defaults", "QRVSettings::setDefaults"},
         [] { store().setDefaults(store().defaults().mutableCopy()); }},
        {{"QRVSettings::setStorageCache"},
         [] { store().setStorageCache(store().storageCache().mutableCopy()); }},
        {{"QRVSettings::currentAppearance", "QRVSettings::setCurrentAppearance"},
         [] { store().setCurrentAppearance(store().currentAppearance()); }},
        {{"QRVSettings::inBatchSave", "QRVSettings::setInBatchSave",
          "QRVSettings::batchLogChanges"},
         [] {
             use(store().inBatchSave(), store().batchLogChanges().count());
             store().setInBatchSave(false);
         }},
        {{"QRVSettingsRemoveEmptyLevelsAbove"},
         [] { QRVSettingsRemoveEmptyLevelsAbove("Empty.Levels.Key"); }},
        {{"QRVSettings::setModificationDate"}, [] { store().setModificationDate(std::nullopt); }},
        {{"QRVSettings::presentedItemURL", "QRVSettings::presentedItemOperationQueue"},
         [] { use(store().presentedItemURL(), store().presentedItemOperationQueue()); }},
        {{"QRVSettingsStoredValues", "QRVSettingsStoredObjectForKeyPath"},
         [=] { use(QRVSettingsStoredValues(), QRVSettingsStoredObjectForKeyPath(width())); }},
        {{"QRVSettingsObjectForKeyPath", "QRVSettingsDefaultForKeyPath",
          "QRVSettingsBoolForKeyPath"},
         [=] {
             use(QRVSettingsObjectForKeyPath(width()), QRVSettingsDefaultForKeyPath(width()),
                 QRVSettingsBoolForKeyPath("CPU.Menubar.Enabled"));
         }},
        {{"QRVSettingsSetObjectForKeyPath", "QRVSettingsSetObjectForKeyPathWithCache",
          "QRVSettingsClearCacheForKeyPath"},
         [=] {
             QRVSettingsSetObjectForKeyPath(NSArray{1, "two"}, "Host.List");
             QRVSettingsSetObjectForKeyPathWithCache(60, width(), true);
             QRVSettingsClearCacheForKeyPath(width());
         }},
        {{"QRVSettingsSaveObject", "QRVSettingsSaveObjectWithLog"},
         [] {
             QRVSettingsSaveObject(QRVSettingsStoredValues());
             QRVSettingsSaveObjectWithLog(QRVSettingsStoredValues(), nullptr);
         }},
        {{"QRVSettingsPrepareBatchSave", "QRVSettingsCommitBatchSave"},
         [=] {
             QRVSettingsPrepareBatchSave();
             QRVSettingsSetObjectForKeyPath(61, width());
             QRVSettingsCommitBatchSave();
         }},
        {{"QRVSettingsImport"},
         [] {
             QRVSettingsImport(NSDictionary{{"Imported", 1}});
         }},
        {{"QRVSettingsProfileKeyForKey", "QRVSettingsProfileObjectForKeyPath",
          "QRVSettingsProfileSetObjectForKeyPath", "QRVSettingsProfileSetObjectForKeyPathWithCache",
          "QRVSettingsProfileClearCacheForKeyPath"},
         [=] {
             use(QRVSettingsProfileKeyForKey(width()), QRVSettingsProfileObjectForKeyPath(width()));
             QRVSettingsProfileSetObjectForKeyPath(62, width());
             QRVSettingsProfileSetObjectForKeyPathWithCache(63, width(), false);
             QRVSettingsProfileClearCacheForKeyPath(width());
         }},
        {{"QRVInside::HeldEntry::value", "QRVInside::HeldEntry::find"},
         [] {
             static const QRVHeldKey<bool> plain(Keys::CPU::Menubar::Enabled);
             static const QRVHeldProfileKey<bool> ofProfile(Keys::CPU::Menubar::Enabled);
             use(plain.value(), ofProfile.value());
         }},
        {{"QRVSettingsSetCurrentAppearance", "QRVSettingsCurrentAppearance"},
         [] {
             QRVSettingsSetCurrentAppearance("NSAppearanceNameDarkAqua");
             use(QRVSettingsCurrentAppearance());
         }},
        {{"QRVSettingsColorForKeyPath", "QRVSettingsSetColorForKeyPath"},
         [=] {
             QRVSettingsSetColorForKeyPath(NSColor{1, 0, 0.5, 1}, colour());
             use(QRVSettingsColorForKeyPath(colour()));
         }},
        {{"DispatchMainQueue::drain", "DispatchMainQueue::run", "DispatchMainQueue::wait"},
         [] {
             DispatchMainQueue& queue = DispatchMainQueue::shared();
             queue.drain();
             use(queue.wait(std::chrono::milliseconds(1)));
             queue.async([&queue] { queue.stop(); });
             queue.run();
         }},
        {{"NSMutableDictionary::setObjectForKey", "NSMutableDictionary::removeObjectForKey",
          "NSMutableDictionary::removeAllObjects", "NSMutableDictionary::addEntriesFromDictionary",
          "NSMutableDictionary::reserve"},
         [] {
             sharedDictionary().removeAllObjects();
             sharedDictionary().reserve(20);
             sharedDictionary().addEntriesFromDictionary({{"A", 1}, {"B", NSArray{1}}});
             sharedDictionary().setObjectForKey("c", "C");
             sharedDictionary().removeObjectForKey("A");
         }},
        {{"NSMutableArray::addObject", "NSMutableArray::addObjectsFromArray",
          "NSMutableArray::removeObject", "NSMutableArray::removeAllObjects",
          "NSMutableArray::setArray"},
         [] {
             sharedArray().setArray(NSArray{1, 2});
             sharedArray().removeAllObjects();
             sharedArray().addObjectsFromArray({1, "two"});
             sharedArray().addObject(3.5);
             sharedArray().removeObject(1);
         }},
        {{"NSDictionaryQRV::setObjectAtKeyPath"},
         [] { NSDictionaryQRV::setObjectAtKeyPath(sharedDictionary(), 1, "Deep.Deeper"); }},
    };
}

Actions ofAnyThreadForTheStore() {
    return {
        {{"QRVSettings::sharedSettings", "QRVSettings::exists", "QRVSettings::location"},
         [] { use(store().exists(), store().location()); }},
        {{"QRVSettings::deviceID", "QRVSettings::modelIdentifier"},
         [] { use(store().deviceID(), store().modelIdentifier()); }},
        {{"QRVSettings::monitorFileChanges"}, [] { use(store().monitorFileChanges()); }},
        {{"QRVSettings::mergesSaves"}, [] { use(store().mergesSaves()); }},
        {{"QRVSettings::cache", "QRVSettings::storageCache", "QRVSettings::localChanges"},
         [] {
             use(store().cache().count(), store().storageCache().count(),
                 store().localChanges().count());
         }},
        {{"QRVSettings::modificationDate"}, [] { use(store().modificationDate()); }},
        {{"QRVSettings::saveLockTimeout", "QRVSettings::setSaveLockTimeout"},
         [] { store().setSaveLockTimeout(store().saveLockTimeout()); }},
        {{"QRVSettings::queue", "QRVSettings::readQueue", "QRVSettings::presenterQueue"},
         [] {
             store().queue().sync([] {});
             store().readQueue().async([] {});
             use(store().presenterQueue());
         }},
        {{"QRVSettingsLocation", "QRVSettingsStorage"},
         [] { use(QRVSettingsLocation(), QRVSettingsStorage()); }},
        {{"QRVSettingsSynchronize", "QRVSettingsMigrationNeeded", "QRVSettingsPerformMigration"},
         [] {
             QRVSettingsSynchronize();
             use(QRVSettingsMigrationNeeded());
             QRVSettingsPerformMigration();
         }},
        {{"QRVKnownSettings", "QRVKnownSettingAt", "QRVPlainKeyPath", "QRVScopeOfKeyPath",
          "QRVIsRecordOfStore"},
         [] {
             for (const QRVKnownSetting& setting : QRVKnownSettings())
                 use(QRVKnownSettingAt(setting.keyPath), QRVPlainKeyPath(setting.keyPath),
                     QRVScopeOfKeyPath(setting.keyPath), QRVIsRecordOfStore(setting.keyPath));
         }},
        {{"QRVSettingsColorOfText", "QRVSettingsTextOfColor"},
         [] {
             use(QRVSettingsColorOfText(QRVSettingsTextOfColor(NSColor{1, 0, 0.5, 1})));
         }},
        {{"QRVSettingsMenuThemeForAppearance"},
         [] { use(QRVSettingsMenuThemeForAppearance("NSAppearanceNameAqua")); }},
    };
}

Actions ofAnyThreadForThePlatform() {
    return {
        {{"DispatchMainQueue::shared", "DispatchMainQueue::async", "DispatchMainQueue::asyncAfter",
          "DispatchMainQueue::fd", "DispatchMainQueue::stop"},
         [] {
             DispatchMainQueue& queue = DispatchMainQueue::shared();
             queue.async([] {});
             queue.asyncAfter(std::chrono::milliseconds(1), [] {});
             use(queue.fd());
             queue.stop();
         }},
        {{"DispatchQueue::DispatchQueue", "DispatchQueue::~DispatchQueue", "DispatchQueue::async",
          "DispatchQueue::sync", "DispatchQueue::label"},
         [] {
             DispatchQueue queue("every.function");
             queue.async([] {});
             queue.sync([] {});
             use(queue.label());
         }},
        {{"NSOperationQueue::NSOperationQueue", "NSOperationQueue::~NSOperationQueue",
          "NSOperationQueue::addOperation", "NSOperationQueue::waitUntilAllOperationsAreFinished"},
         [] {
             NSOperationQueue queue;
             queue.addOperation([] {});
             EXPECT_TRUE(queue.waitUntilAllOperationsAreFinished(std::chrono::steady_clock::now() +
                                                                 std::chrono::seconds(20)));
         }},
        {{"NSFileCoordinator::addFilePresenter", "NSFileCoordinator::removeFilePresenter",
          "NSFilePresenter::~NSFilePresenter"},
         [] {
             Listener listener;
             NSFileCoordinator::addFilePresenter(listener);
             NSFileCoordinator::removeFilePresenter(listener);
         }},
        {{"NSFileCoordinator::coordinateReadingItemAtURL",
          "NSFileCoordinator::coordinateWritingItemAtURL", "QRVPlatform::replaceFile",
          "QRVPlatform::resolvedPath", "QRVPlatform::filesBeside", "QRVPlatform::contentsOfFile"},
         [] {
             NSFileCoordinator().coordinateWritingItemAtURL(
                 QRVSettingsLocation(), NSFileCoordinator::WritingOptions::ForReplacing,
                 [](const std::string& path) {
                     const NSDictionary tree{{"Elsewhere", NSDate::now()}};
                     replaceFile(path,
                                 NSPropertyListSerialization::dataWithPropertyList(tree).bytes);
                 });
             NSFileCoordinator().coordinateReadingItemAtURL(
                 QRVSettingsLocation(), NSFileCoordinator::ReadingOptions::None,
                 [](const std::string& path) {
                     use(contentsOfFile(filesBeside(resolvedPath(path).path).lock, 1U << 20U));
                     use(contentsOfFile(path, 1U << 20U));
                 });
         }},
        {{"QRVPlatform::attributesOfItemAtPath", "QRVPlatform::settledAttributesOfItemAtPath",
          "QRVPlatform::identityOfFileAtPath", "QRVPlatform::fileExistsAtPath",
          "QRVPlatform::userLibraryFolder", "QRVPlatform::userStateFolder"},
         [] {
             const std::string path = QRVSettingsLocation();
             use(attributesOfItemAtPath(path), settledAttributesOfItemAtPath(path),
                 identityOfFileAtPath(path), fileExistsAtPath(path), userLibraryFolder(),
                 userStateFolder());
         }},
        {{"QRVPlatform::backUpFile"},
         [] {
             replaceFile("kept", "bytes");
             fs::remove(backUpFile("kept").path);
         }},
        {{"QRVSettings::fileChangeHandler", "QRVSettings::setFileChangeHandler"},
         [] {
             store().setFileChangeHandler([](const QRVFileChange& change) { use(change.after); });
             use(store().fileChangeHandler());
         }},
        {{"QRVPlatform::setFileFailureHandler", "QRVPlatform::reportFileFailure"},
         [] {
             setFileFailureHandler([](const FileFailure&) {});
             reportFileFailure({"test", {}, {}});
         }},
        {{"NSLog", "setNSLogSink", "QRVPlatform::formattedText"},
         [] {
             setNSLogSink([](const std::string&) {});
             NSLog("%@ of %@", {1, "two"});
             const std::vector<PropertyListValue> arguments{1};
             use(formattedText("%@", arguments));
         }},
        {{"DDLog::log", "DDLog::setSink", "DDLog::flush", "DDLogMessage::text"},
         [] {
             DDLog::setSink([](const DDLogMessage& message) { use(message.text()); });
             DDLogMessage message;
             message.format = "nothing new";
             DDLog::log(message);
             DDLog::flush();
         }},
        {{"QRVPlatform::standardOutputIsTerminal"}, [] { use(standardOutputIsTerminal()); }},
        {{"NSInvalidArgumentException::NSInvalidArgumentException",
          "NSInvalidArgumentException::operator=",
          "NSInvalidArgumentException::~NSInvalidArgumentException"},
         [] {
             NSInvalidArgumentException exception("first");
             exception = NSInvalidArgumentException("second");
         }},
    };
}

Actions ofAnyThreadForValues() {
    return {
        {{"NSArray::NSArray", "NSArray::arrayWithObject", "NSArray::asMutable", "NSArray::begin",
          "NSArray::copy", "NSArray::count", "NSArray::isMutable", "NSArray::mutableCopy",
          "NSArray::objectAtIndex", "NSMutableArray::NSMutableArray",
          "QRVPlatform::ValueObjects::ContainerIterator<PropertyListValue const&>::operator*"},
         [] {
             const NSArray seen = sharedArray();
             for (const PropertyListValue& value : seen) use(value);
             const std::vector<PropertyListValue> values{1, 2};
             use(seen.copy(), seen.mutableCopy(), seen.asMutable(), seen.isMutable(), seen.count(),
                 seen.objectAtIndex(0), NSArray(), NSArray(values), NSArray::arrayWithObject(1),
                 NSMutableArray(), NSMutableArray{1});
         }},
        {{"NSDictionary::NSDictionary", "NSDictionary::asMutable", "NSDictionary::begin",
          "NSDictionary::copy", "NSDictionary::count", "NSDictionary::isMutable",
          "NSDictionary::mutableCopy", "NSDictionary::objectForKey",
          "NSMutableDictionary::NSMutableDictionary",
          "QRVPlatform::ValueObjects::ContainerIterator<NSDictionary::Entry>::operator*"},
         [] {
             const NSDictionary seen = sharedDictionary();
             for (const auto& [key, value] : seen) use(key, value);
             use(seen.copy(), seen.mutableCopy(), seen.asMutable(), seen.isMutable(), seen.count(),
                 seen.objectForKey("C"), NSDictionary(), NSMutableDictionary(),
                 NSMutableDictionary{{"A", 1}});
         }},
        {{"NSDictionaryQRV::changedKeys", "NSDictionaryQRV::flatten", "NSDictionaryQRV::hasValues",
          "NSDictionaryQRV::objectAtKeyPath"},
         [] {
             const NSDictionary seen = sharedDictionary();
             const NSMutableDictionary flat;
             NSDictionaryQRV::flatten(seen, flat);
             NSDictionaryQRV::flatten(seen, flat, "Prefix");
             use(NSDictionaryQRV::changedKeys(seen, flat), NSDictionaryQRV::hasValues(seen),
                 NSDictionaryQRV::objectAtKeyPath(seen, "Deep.Deeper"));
         }},
        {{"NSPropertyListSerialization::dataWithPropertyList",
          "NSPropertyListSerialization::propertyListWithData",
          "NSPropertyListSerialization::refusalsOfStrictReaders", "PropertyListError::description"},
         [] {
             const auto written = NSPropertyListSerialization::dataWithPropertyList(sharedArray());
             use(NSPropertyListSerialization::propertyListWithData(written.bytes));
             use(NSPropertyListSerialization::refusalsOfStrictReaders(sharedArray(), 1));
             use(NSPropertyListSerialization::propertyListWithData("<plist>").error->description());
         }},
        {{"NSData::NSData", "NSData::bytes", "NSData::view", "NSData::size", "NSDate::now"},
         [] {
             const NSData data("bytes");
             const NSData same(data.bytes());
             use(same.view(), same.size(), NSDate::now());
         }},
        {{"PropertyListValue::PropertyListValue", "PropertyListValue::array",
          "PropertyListValue::boolValueOfAnotherKind", "PropertyListValue::color",
          "PropertyListValue::data", "PropertyListValue::dictionary",
          "PropertyListValue::doubleValue", "PropertyListValue::floatValue",
          "PropertyListValue::integerValue", "PropertyListValue::isIdenticalTo",
          "PropertyListValue::stringValue", "PropertyListValue::stringView",
          "QRVPlatform::ValueObjects::retain", "QRVPlatform::ValueObjects::release",
          "QRVPlatform::description"},
         [] {
             const std::vector<PropertyListValue> values{"text",          std::string_view("view"),
                                                         NSData("bytes"), NSColor{1, 0, 0, 1},
                                                         sharedArray(),   sharedDictionary()};
             for (const PropertyListValue& value : values)
                 use(value.array(), value.boolValue(), value.color(), value.data(),
                     value.dictionary(), PropertyListValue(value).dictionary(), value.doubleValue(),
                     value.floatValue(), value.integerValue(), value.isIdenticalTo(values[0]),
                     value.stringValue(), value.stringView(), description(value));
         }},
        {{"operator==", "operator<<"},
         [] {
             const NSArray array = sharedArray();
             const NSDictionary dictionary = sharedDictionary();
             use(array == NSArray(), dictionary == NSDictionary(), NSData("a") == NSData("b"),
                 PropertyListValue(array) == PropertyListValue(dictionary));
             std::ostringstream text;
             text << array << dictionary << NSDate(0) << PropertyListValue(array);
         }},
    };
}

Actions ofAnyThread() {
    Actions all = ofAnyThreadForTheStore();
    for (const auto& more : {ofAnyThreadForThePlatform(), ofAnyThreadForValues()})
        all.insert(all.end(), more.begin(), more.end());
    return all;
}

/// Each once, and then as often as `goesOn` says, any of them.
void callAll(const Actions& actions, unsigned seed, const std::function<bool()>& goesOn) {
    for (const Action& action : actions) action.call();
    std::mt19937 random(seed);
    while (goesOn()) actions[random() % actions.size()].call();
}

std::set<std::string> exportedFunctions() {
    std::ifstream list(QRV_EXPORTED_SYMBOLS);
    std::set<std::string> functions;
    for (std::string line; std::getline(list, line);) {
        if (line.starts_with("typeinfo ") || line.starts_with("vtable ")) continue;
        if (line.starts_with("qrv_")) continue;  // C, with tests of its own
        functions.insert(line.substr(0, line.find_first_of("([")));
    }
    return functions;
}

}  // namespace

TEST(EveryFunction, IsInOneOfTheTables) {
    std::set<std::string> inTables;
    for (const Actions& actions : {ofTheStart(), ofTheHost(), ofAnyThread()})
        for (const Action& action : actions)
            inTables.insert(action.functions.begin(), action.functions.end());
    EXPECT_EQ(inTables, exportedFunctions());
}

TEST(EveryFunction, MayBeCalledWhereItSaysAllAtOnce) {
    constexpr int callsOfTheHost = 300;
    setNSLogSink([](const std::string&) {});
    MachineSupport::beMachine("1", "M");
    for (const Action& action : ofTheStart()) action.call();
    std::atomic<bool> isOver = false;
    std::vector<std::thread> threads;
    for (unsigned seed = 1; seed <= 2; ++seed)
        threads.emplace_back(
            [&isOver, seed] { callAll(ofAnyThread(), seed, [&] { return !isOver; }); });
    int calls = 0;
    callAll(ofTheHost(), 0, [&] { return ++calls < callsOfTheHost; });
    isOver = true;
    for (std::thread& thread : threads) thread.join();
    store().setMonitorFileChanges(false);
    finishSaves();
    store().readQueue().sync([] {});
    DispatchMainQueue::shared().drain();
    QRVSettingsSetObjectForKeyPath("end", "Host.End");
    finishSaves();
    EXPECT_EQ(NSDictionaryQRV::objectAtKeyPath(StoreSupport::fileTree(), "Host.End"), "end");
    store().setOnChange(nullptr);
    DDLog::setSink(nullptr);
    setFileFailureHandler(nullptr);
    setNSLogSink(nullptr);
}
