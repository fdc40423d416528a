// SPDX-License-Identifier: MIT
// The identity of the machine, and the settings that another machine resets.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/MachineSupport.h"
#include "Support/Shortages.h"
#include "Support/StoreSupport.h"

using MachineSupport::beMachine;
using StoreSupport::fileTree;
using StoreSupport::finishSaves;
using StoreSupport::LogMessages;
using StoreSupport::writeSettings;
using testing::ElementsAre;

namespace {

constexpr const char* digestOfABC = "a9993e364706816aba3e25717850c26c9cd0d89d";

NSDictionary identity(const PropertyListValue& device, const PropertyListValue& model) {
    return {{"Device", device}, {"Model", model}};
}

NSDictionary sensors(int number) {
    return {{"Menubar", NSDictionary{{"Sensors", NSArray{number}}, {"Enabled", true}}}};
}

/// Settings that another machine or model resets, and some that it does not.
NSDictionary settingsOf(const NSDictionary& device) {
    return {
        {"Device", device},
        {"Network",
         NSDictionary{{"Menubar", NSDictionary{{"Global", NSDictionary{{"PrimaryInterface", "eth0"},
                                                                       {"Other", 1}}}}}}},
        {"Sensors", NSDictionary{{"Global", NSDictionary{{"Fans", NSDictionary{{"Speed", 3}}},
                                                         {"Other", 2}}}}},
        {"Profiles",
         NSDictionary{{"Settings",
                       NSDictionary{{"default", NSDictionary{{"Sensors", sensors(1)}}},
                                    {"work", NSDictionary{{"Sensors", sensors(2)}, {"x", 1}}}}}}},
    };
}

PropertyListValue stored(QRVKeyPath keyPath) {
    return QRVSettingsStoredObjectForKeyPath(keyPath);
}

std::vector<std::string> texts(const LogMessages& log) {
    std::vector<std::string> texts;
    for (const DDLogMessage& message : log.messages()) texts.push_back(message.text());
    return texts;
}

std::vector<std::string> keyPathsWritten() {
    std::vector<std::string> keyPaths;
    for (const PropertyListValue& record : QRVSettings::sharedSettings().batchLogChanges())
        keyPaths.push_back(record.dictionary().objectForKey("key").stringValue());
    return keyPaths;
}

void expectNetworkKept() {
    EXPECT_EQ(stored("Network.Menubar.Global.PrimaryInterface"), "eth0");
}

void expectSensorsKept() {
    EXPECT_EQ(stored("Sensors.Global.Fans"), NSDictionary({{"Speed", 3}}));
    EXPECT_EQ(stored("Profiles.Settings.default.Sensors"), sensors(1));
    EXPECT_EQ(stored("Profiles.Settings.work.Sensors"), sensors(2));
}

}  // namespace

TEST(DeviceID, IsTheDigestOfTheSerialNumber) {
    beMachine("abc\n", "M");
    EXPECT_EQ(QRVSettings::sharedSettings().deviceID(), digestOfABC);
}

TEST(DeviceID, IsTheDigestOfUTF8Bytes) {
    beMachine("\xC3\xA9", "M");
    EXPECT_EQ(QRVSettings::sharedSettings().deviceID(), "bf15be717ac1b080b4f1c456692825891ff5073d");
}

TEST(DeviceID, IsFortyLowercaseHexadecimalDigits) {
    for (const char* serialNumber : {"1", "2", "a much longer serial number than usual", " x "}) {
        beMachine(serialNumber, "M");
        const std::string identifier = QRVSettings::sharedSettings().deviceID().stringValue();
        EXPECT_EQ(identifier.size(), 40U);
        EXPECT_EQ(identifier.find_first_not_of("0123456789abcdef"), std::string::npos);
    }
}

TEST(DeviceID, IsNullWithoutASerialNumber) {
    beMachine(std::nullopt, "M");
    EXPECT_TRUE(QRVSettings::sharedSettings().deviceID().isNull());
}

TEST(ModelIdentifier, IsTheModelOrNull) {
    beMachine("1", "Acme 3\n");
    EXPECT_EQ(QRVSettings::sharedSettings().modelIdentifier(), "Acme 3");
    beMachine("1", std::nullopt);
    EXPECT_TRUE(QRVSettings::sharedSettings().modelIdentifier().isNull());
}

TEST(MachineIdentity, IsRecordedAtTheFirstStartAndNothingIsReset) {
    beMachine("abc", "Acme 3");
    NSMutableDictionary settings = settingsOf({}).mutableCopy();
    settings.removeObjectForKey("Device");
    writeSettings(settings);
    const LogMessages log;
    QRVSettings::sharedSettings().loadDefaults();
    finishSaves();
    EXPECT_EQ(fileTree(), settingsOf(identity(digestOfABC, "Acme 3")));
    EXPECT_THAT(texts(log), ElementsAre());
}

TEST(MachineIdentity, IsRecordedWhereThereIsNoFileYet) {
    beMachine("abc", "Acme 3");
    QRVSettings::sharedSettings().loadDefaults();
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"Device", identity(digestOfABC, "Acme 3")}}));
}

TEST(MachineIdentity, OfTheSameMachineWritesAndLogsNothing) {
    beMachine("abc", "Acme 3");
    writeSettings(settingsOf(identity(digestOfABC, "Acme 3")));
    const std::string before = StoreSupport::contentsOf(QRVSettingsLocation());
    const LogMessages log;
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setInBatchSave(true);
    store.loadDefaults();
    store.loadDefaults();
    EXPECT_THAT(keyPathsWritten(), ElementsAre());
    EXPECT_THAT(texts(log), ElementsAre());
    EXPECT_EQ(StoreSupport::contentsOf(QRVSettingsLocation()), before);
}

TEST(MachineIdentity, OfAnotherDeviceResetsThePrimaryInterfaceOnly) {
    beMachine("abc", "Acme 3");
    writeSettings(settingsOf(identity("0123", "Acme 3")));
    const LogMessages log;
    QRVSettings::sharedSettings().loadDefaults();
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("Network.Menubar.Global.PrimaryInterface").isNull());
    EXPECT_EQ(stored("Network.Menubar.Global.Other"), 1);
    EXPECT_EQ(QRVSettingsObjectForKeyPath("Device.Device"), digestOfABC);
    expectSensorsKept();
    EXPECT_THAT(texts(log), ElementsAre("Device id changed", "Old - 0123",
                                        std::string("New - ") + digestOfABC));
    finishSaves();
    EXPECT_EQ(fileTree().objectForKey("Device"), identity(digestOfABC, "Acme 3"));
}

TEST(MachineIdentity, OfAnotherModelResetsFansAndEachProfilesSensorsOnly) {
    beMachine("abc", "Acme 4");
    writeSettings(settingsOf(identity(digestOfABC, "Acme 3")));
    const LogMessages log;
    QRVSettings::sharedSettings().loadDefaults();
    EXPECT_TRUE(stored("Sensors.Global.Fans").isNull());
    EXPECT_EQ(stored("Sensors.Global.Other"), 2);
    for (const std::string profile : {"default", "work"}) {
        const std::string menubar = "Profiles.Settings." + profile + ".Sensors.Menubar";
        EXPECT_TRUE(QRVSettingsObjectForKeyPath(menubar + ".Sensors").isNull());
        EXPECT_EQ(stored(menubar), NSDictionary({{"Enabled", true}}));
    }
    EXPECT_EQ(stored("Profiles.Settings.work.x"), 1);
    EXPECT_EQ(QRVSettingsObjectForKeyPath("Device.Model"), "Acme 4");
    expectNetworkKept();
    EXPECT_THAT(texts(log), ElementsAre("Model id changed", "Old - Acme 3", "New - Acme 4"));
}

TEST(MachineIdentity, OfAnotherModelTheFansAreThoseOfTheDefaults) {
    beMachine("abc", "Acme 4");
    writeSettings(settingsOf(identity(digestOfABC, "Acme 3")));
    QRVSettings::sharedSettings().loadDefaults();
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("Sensors.Global.Fans.Speed").isNull());
    EXPECT_EQ(QRVSettingsObjectForKeyPath("Sensors.Global.Fans.Curve.Sync"), true);
}

TEST(MachineIdentity, TheResetHappensOncePerChange) {
    beMachine("abc", "Acme 4");
    writeSettings(settingsOf(identity("0123", "Acme 3")));
    QRVSettings& store = QRVSettings::sharedSettings();
    store.loadDefaults();
    store.setInBatchSave(true);
    store.loadDefaults();
    EXPECT_THAT(keyPathsWritten(), ElementsAre());
}

TEST(MachineIdentity, TheStepsWriteInTheirOrder) {
    beMachine("abc", "Acme 4");
    writeSettings(NSDictionary{
        {"Device", identity("0123", "Acme 3")},
        {"Profiles", NSDictionary{{"Settings", NSDictionary{{"work", NSDictionary{}}}}}}});
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setInBatchSave(true);
    store.loadDefaults();
    EXPECT_THAT(keyPathsWritten(),
                ElementsAre("Network.Menubar.Global.PrimaryInterface", "Device.Device",
                            "Sensors.Global.Fans", "Profiles.Settings.work.Sensors.Menubar.Sensors",
                            "Device.Model"));
}

TEST(MachineIdentity, WithoutProfilesAnotherModelResetsTheFans) {
    beMachine("abc", "Acme 4");
    writeSettings(NSDictionary{{"Device", identity(digestOfABC, "Acme 3")}});
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setInBatchSave(true);
    store.loadDefaults();
    EXPECT_THAT(keyPathsWritten(), ElementsAre("Sensors.Global.Fans", "Device.Model"));
}

TEST(MachineIdentity, WithoutADeviceIdentifierTheInterfaceIsResetEachTime) {
    beMachine(std::nullopt, "Acme 3");
    writeSettings(settingsOf(identity("0123", "Acme 3")));
    const LogMessages log;
    QRVSettings& store = QRVSettings::sharedSettings();
    store.loadDefaults();
    EXPECT_TRUE(stored("Network.Menubar.Global.PrimaryInterface").isNull());
    EXPECT_TRUE(stored("Device.Device").isNull());
    expectSensorsKept();
    QRVSettingsSetObjectForKeyPath("eth1", "Network.Menubar.Global.PrimaryInterface");
    store.loadDefaults();
    EXPECT_TRUE(stored("Network.Menubar.Global.PrimaryInterface").isNull());
    EXPECT_THAT(texts(log), ElementsAre("Device id changed", "Old - 0123", "New - (null)",
                                        "Device id changed", "Old - (null)", "New - (null)"));
}

TEST(MachineIdentity, WithoutAModelIdentifierTheFansAreResetEachTime) {
    beMachine("abc", std::nullopt);
    writeSettings(settingsOf(identity(digestOfABC, "Acme 3")));
    QRVSettings& store = QRVSettings::sharedSettings();
    const LogMessages log;
    for (int start = 0; start < 2; ++start) {
        store.loadDefaults();
        EXPECT_TRUE(stored("Sensors.Global.Fans").isNull());
        EXPECT_TRUE(stored("Profiles.Settings.work.Sensors.Menubar.Sensors").isNull());
        EXPECT_TRUE(stored("Device.Model").isNull());
        QRVSettingsSetObjectForKeyPath(1, "Sensors.Global.Fans");
        QRVSettingsSetObjectForKeyPath(1, "Profiles.Settings.work.Sensors.Menubar.Sensors");
    }
    expectNetworkKept();
    EXPECT_THAT(texts(log), ElementsAre("Model id changed", "Old - Acme 3", "New - (null)",
                                        "Model id changed", "Old - (null)", "New - (null)"));
}

// Without descriptors the files of the identity cannot be read: that makes no other machine.
TEST(MachineIdentity, ThatCannotBeReadForWantOfDescriptorsResetsNothing) {
    if (isSanitized) GTEST_SKIP() << "a sanitizer needs descriptors of its own";
    beMachine("abc", "Acme 3");
    auto sources = QRVPlatform::setMachineIdentitySources({});
    sources.usesKernelMachineName = true;
    QRVPlatform::setMachineIdentitySources(sources);
    for (const NSDictionary& recorded :
         {identity(digestOfABC, "Acme 3"), NSDictionary{{"Device", digestOfABC}}}) {
        writeSettings(settingsOf(recorded));
        QRVSettings& store = QRVSettings::sharedSettings();
        store.setStorageCache(settingsOf(recorded));
        store.setInBatchSave(true);
        const LogMessages log;
        {
            const FreeDescriptors none(0);
            EXPECT_TRUE(store.deviceID().isNull());
            EXPECT_TRUE(store.modelIdentifier().isNull());
            store.loadDefaults();
        }
        EXPECT_THAT(keyPathsWritten(), ElementsAre());
        EXPECT_THAT(texts(log), ElementsAre());
        expectNetworkKept();
        expectSensorsKept();
        EXPECT_EQ(stored("Device"), recorded);
    }
}

TEST(MachineIdentity, ThatCouldNotBeReadIsCheckedAtTheNextStart) {
    if (isSanitized) GTEST_SKIP() << "a sanitizer needs descriptors of its own";
    beMachine("abc", "Acme 4");
    const NSDictionary settings = settingsOf(identity("0123", "Acme 3"));
    writeSettings(settings);
    QRVSettings& store = QRVSettings::sharedSettings();
    EXPECT_EQ(stored("Device.Device"), "0123");
    {
        const FreeDescriptors none(0);
        store.loadDefaults();
    }
    expectNetworkKept();
    store.loadDefaults();
    EXPECT_TRUE(stored("Network.Menubar.Global.PrimaryInterface").isNull());
    EXPECT_TRUE(stored("Sensors.Global.Fans").isNull());
    EXPECT_EQ(stored("Device"), identity(digestOfABC, "Acme 4"));
}

TEST(MachineIdentity, ARecordThatIsNoStringIsAnother) {
    beMachine("abc", "3");
    writeSettings(settingsOf(identity(17, 3)));
    const LogMessages log;
    QRVSettings::sharedSettings().loadDefaults();
    EXPECT_THAT(texts(log),
                ElementsAre("Device id changed", "Old - 17", std::string("New - ") + digestOfABC,
                            "Model id changed", "Old - 3", "New - 3"));
    EXPECT_EQ(stored("Device"), identity(digestOfABC, "3"));
}

TEST(MachineIdentity, LogsAtDebugLevelForTheOperation) {
    beMachine("abc", "Acme 4");
    writeSettings(settingsOf(identity("0123", "Acme 3")));
    const LogMessages log;
    QRVSettings::sharedSettings().loadDefaults();
    ASSERT_EQ(log.messages().size(), 6U);
    for (const DDLogMessage& message : log.messages()) {
        EXPECT_TRUE(message.asynchronous);
        EXPECT_EQ(message.level, 31);
        EXPECT_EQ(message.flag, 8);
        EXPECT_EQ(message.context, 0);
        EXPECT_TRUE(message.tag.isNull());
        EXPECT_EQ(message.file, "Frameworks/QRVSettings/QRVSettings");
        EXPECT_EQ(message.function, "-[QRVSettings loadDefaults]");
        EXPECT_GT(message.line, 0);
    }
    const auto argumentsOf = [&](std::size_t index) { return log.messages()[index].arguments; };
    EXPECT_EQ(log.messages()[0].format, "Device id changed");
    EXPECT_THAT(argumentsOf(0), ElementsAre());
    EXPECT_EQ(log.messages()[1].format, "Old - %@");
    EXPECT_THAT(argumentsOf(1), ElementsAre(PropertyListValue("0123")));
    EXPECT_EQ(log.messages()[2].format, "New - %@");
    EXPECT_THAT(argumentsOf(2), ElementsAre(PropertyListValue(digestOfABC)));
}

TEST(MachineIdentity, TheSerialNumberIsNeitherStoredNorLogged) {
    beMachine("SECRET-4711", "Acme 4");
    writeSettings(settingsOf(identity("0123", "Acme 3")));
    const LogMessages log;
    QRVSettings::sharedSettings().loadDefaults();
    finishSaves();
    EXPECT_THAT(StoreSupport::contentsOf(QRVSettingsLocation()),
                testing::Not(testing::HasSubstr("4711")));
    for (const std::string& text : texts(log))
        EXPECT_THAT(text, testing::Not(testing::HasSubstr("4711")));
}

// While the identity is checked the table of the start before still holds.
TEST(MachineIdentity, IsCheckedBeforeTheTableIsBuilt) {
    beMachine("abc", "Acme 3");
    StoreSupport::setDefaults({{"Device", identity("previous", "Acme 3")}});
    const LogMessages log;
    QRVSettings::sharedSettings().loadDefaults();
    EXPECT_THAT(texts(log), ElementsAre("Device id changed", "Old - previous",
                                        std::string("New - ") + digestOfABC));
}

TEST(MachineIdentity, AStoredValueInTheWayFailsAsAWriteDoes) {
    beMachine("abc", "Acme 3");
    writeSettings(NSDictionary{{"Device", "a string"}});
    const StoreSupport::SystemLogLines lines;
    EXPECT_THROW(QRVSettings::sharedSettings().loadDefaults(), NSInvalidArgumentException);
    EXPECT_EQ(stored("Device"), "a string");
}
