// SPDX-License-Identifier: MIT
// The menu bar's appearance: names, the current one, and the stored one.
#include <gtest/gtest.h>

#include <array>

#include "Platform/System/NSAppearance.h"
#include "Support/MachineSupport.h"
#include "Support/StoreSupport.h"

using StoreSupport::fileTree;
using StoreSupport::finishSaves;
using StoreSupport::writeSettings;

namespace {

constexpr const char* key = "MenubarCurrentApperance";

constexpr std::array darkNames = {
    NSAppearanceNameDarkAqua,
    NSAppearanceNameVibrantDark,
    NSAppearanceNameAccessibilityHighContrastDarkAqua,
    NSAppearanceNameAccessibilityHighContrastVibrantDark,
};

const std::vector<PropertyListValue> lightNames = {
    "NSAppearanceNameAqua",
    "NSAppearanceNameVibrantLight",
    "NSAppearanceNameAccessibilityHighContrastAqua",
    "NSAppearanceNameAccessibilityHighContrastVibrantLight",
    nullptr,
    "",
    "Dark",
    "dark",
    "NSAppearanceNameDarkAquaNext",
    "NSAppearanceNameDark",
    "nsappearancenamedarkaqua",
    " NSAppearanceNameDarkAqua",
    1,
};

}  // namespace

TEST(Appearance, TheFourDarkNamesAreDark) {
    for (const std::string_view name : darkNames) {
        EXPECT_EQ(QRVSettingsMenuThemeForAppearance(name), "dark") << name;
        QRVSettingsSetCurrentAppearance(nullptr);
        QRVSettingsSetCurrentAppearance(name);
        EXPECT_EQ(QRVSettingsCurrentAppearance(), "Dark") << name;
    }
}

TEST(Appearance, AnyOtherNameIsLight) {
    for (const PropertyListValue& name : lightNames) {
        EXPECT_EQ(QRVSettingsMenuThemeForAppearance(name), "light") << name;
        QRVSettingsSetCurrentAppearance(NSAppearanceNameDarkAqua);
        QRVSettingsSetCurrentAppearance(name);
        EXPECT_EQ(QRVSettingsCurrentAppearance(), "Light") << name;
    }
}

TEST(Appearance, IsNullUntilItIsSet) {
    EXPECT_TRUE(QRVSettingsCurrentAppearance().isNull());
}

TEST(Appearance, SettingItReachesTheFile) {
    QRVSettingsSetCurrentAppearance(NSAppearanceNameDarkAqua);
    EXPECT_EQ(QRVSettingsCurrentAppearance(), "Dark");
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{key, "Dark"}}));
    QRVSettingsSetCurrentAppearance("NSAppearanceNameAqua");
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{key, "Light"}}));
}

TEST(Appearance, ARepeatedEqualNameIsAWriteAllTheSame) {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setInBatchSave(true);
    QRVSettingsSetCurrentAppearance(NSAppearanceNameDarkAqua);
    QRVSettingsSetCurrentAppearance(NSAppearanceNameVibrantDark);
    ASSERT_EQ(store.batchLogChanges().count(), 2U);
    const NSDictionary record = store.batchLogChanges().objectAtIndex(1).dictionary();
    EXPECT_EQ(record.objectForKey("key"), key);
}

TEST(Appearance, ReadingItDoesNotReadTheFile) {
    writeSettings(NSDictionary{{key, "Dark"}});
    EXPECT_TRUE(QRVSettingsCurrentAppearance().isNull());
    EXPECT_TRUE(QRVSettings::sharedSettings().storageCache().isNull());
}

TEST(Appearance, IsRestoredWithTheDefaults) {
    MachineSupport::beMachine("1", "M");
    writeSettings(NSDictionary{{key, "Dark"}});
    QRVSettings::sharedSettings().loadDefaults();
    EXPECT_EQ(QRVSettingsCurrentAppearance(), "Dark");
}

TEST(Appearance, TheStoredWordIsTakenAsItIs) {
    MachineSupport::beMachine("1", "M");
    writeSettings(NSDictionary{{key, "Sepia"}});
    QRVSettings::sharedSettings().loadDefaults();
    EXPECT_EQ(QRVSettingsCurrentAppearance(), "Sepia");
}

TEST(Appearance, StaysAsItWasWhenNoneIsStored) {
    MachineSupport::beMachine("1", "M");
    QRVSettings::sharedSettings().setCurrentAppearance("Light");
    QRVSettings::sharedSettings().loadDefaults();
    EXPECT_EQ(QRVSettingsCurrentAppearance(), "Light");
}

TEST(Appearance, RestoringItWritesNothing) {
    MachineSupport::beMachine("1", "M");
    QRVSettings& store = QRVSettings::sharedSettings();
    writeSettings(NSDictionary{
        {key, "Dark"}, {"Device", NSDictionary{{"Device", store.deviceID()}, {"Model", "M"}}}});
    const std::string before = StoreSupport::contentsOf(QRVSettingsLocation());
    store.setInBatchSave(true);
    store.loadDefaults();
    EXPECT_EQ(store.batchLogChanges().count(), 0U);
    store.setInBatchSave(false);
    finishSaves();
    EXPECT_EQ(StoreSupport::contentsOf(QRVSettingsLocation()), before);
}

// The previous table may hold a default of the key; a stored one answers before it all the same.
TEST(Appearance, IsRestoredThroughTheLayersThatThereAreBeforeTheTable) {
    MachineSupport::beMachine("1", "M");
    StoreSupport::setDefaults({{key, "of the previous table"}});
    QRVSettings::sharedSettings().loadDefaults();
    EXPECT_EQ(QRVSettingsCurrentAppearance(), "of the previous table");
    EXPECT_TRUE(QRVSettingsDefaultForKeyPath(key).isNull());
}

TEST(Appearance, TheMenuThemeChangesNothing) {
    EXPECT_EQ(QRVSettingsMenuThemeForAppearance(NSAppearanceNameDarkAqua), "dark");
    EXPECT_TRUE(QRVSettingsCurrentAppearance().isNull());
    EXPECT_TRUE(QRVSettings::sharedSettings().storageCache().isNull());
    finishSaves();
    EXPECT_FALSE(QRVSettings::sharedSettings().exists());
}
