// SPDX-License-Identifier: MIT
// Defaults of the site, laid over the built-in ones.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "QRVSettings/NSDictionary+QRV.h"
#include "Support/SiteSupport.h"

using namespace SiteSupport;

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

std::string messageOfOnlyFault() {
    const QRVSiteDefaults found = QRVSettingsSiteDefaults();
    return found.faults.size() == 1 ? found.faults[0].reason
                                    : std::to_string(found.faults.size()) + " faults";
}

}  // namespace

TEST(SiteDefaults, AreOffAtTheStart) {
    writeList({{frequency, 7}});
    writeLocks(frequency);
    QRVSettings& store = QRVSettings::sharedSettings();
    EXPECT_FALSE(store.usesSiteDefaults());
    store.loadDefaults();
    EXPECT_EQ(QRVSettingsObjectForKeyPath(frequency), PropertyListValue(1));
    EXPECT_FALSE(QRVSettingsIsLocked(frequency));
    EXPECT_TRUE(QRVSettingsSiteDefaults().values.isNull());
    EXPECT_THAT(QRVSettingsSiteDefaults().files, IsEmpty());
}

TEST(SiteDefaults, AreLaidOverTheBuiltInOnesValueByValue) {
    writeList(cpu(false));
    start();
    EXPECT_EQ(QRVSettingsObjectForKeyPath(enabled), PropertyListValue(false));
    EXPECT_EQ(QRVSettingsDefaultForKeyPath(enabled), PropertyListValue(false));
    EXPECT_EQ(QRVSettingsObjectForKeyPath("CPU.Menu.Processes.Count"), PropertyListValue(5))
        << "a default beside it stays";
    EXPECT_EQ(QRVSettingsObjectForKeyPath("CPU.Menubar.Mode.HistoryGraph.Width"),
              PropertyListValue(40));
    EXPECT_EQ(QRVSettingsSiteDefaults().values, cpu(false));
    EXPECT_THAT(QRVSettingsSiteDefaults().files, ElementsAre(listIn(firstFolder())));
}

TEST(SiteDefaults, LeaveTheBuiltInOnesAsTheyAre) {
    writeList(cpu(false));
    start();
    QRVSettings::sharedSettings().setUsesSiteDefaults(false);
    QRVSettings::sharedSettings().loadDefaults();
    EXPECT_EQ(QRVSettingsDefaultForKeyPath(enabled), PropertyListValue(true));
    EXPECT_TRUE(QRVSettingsSiteDefaults().values.isNull());
}

TEST(SiteDefaults, AreImmutableBelowTheTop) {
    writeList(cpu(false));
    start();
    const NSMutableDictionary defaults = QRVSettings::sharedSettings().defaults();
    for (const auto& [key, value] : defaults)
        EXPECT_FALSE(value.isDictionary() && value.dictionary().isMutable()) << key;
    EXPECT_FALSE(
        defaults.objectForKey("CPU").dictionary().objectForKey("Menubar").dictionary().isMutable());
}

TEST(SiteDefaults, OfTheFirstFolderWin) {
    setenv("XDG_CONFIG_DIRS", "/nowhere:relative:/proc/self/cwd/one:/proc/self/cwd/two", 1);
    writeList({{frequency, 2}, {"Only", 1}}, "one");
    writeList({{frequency, 3}, {"Other", 2}, {"Only", NSDictionary{{"Below", 1}}}}, "two");
    start();
    EXPECT_EQ(QRVSettingsObjectForKeyPath(frequency), PropertyListValue(2));
    EXPECT_EQ(QRVSettingsObjectForKeyPath("Other"), PropertyListValue(2));
    EXPECT_EQ(QRVSettingsObjectForKeyPath("Only"), PropertyListValue(1));
    EXPECT_EQ(QRVSettingsSiteFileForKeyPath(frequency), listIn("/proc/self/cwd/one"));
    EXPECT_EQ(QRVSettingsSiteFileForKeyPath("Other"), listIn("/proc/self/cwd/two"));
    EXPECT_EQ(QRVSettingsSiteFileForKeyPath("Only.Below"), "") << "the other list's value is there";
    EXPECT_THAT(QRVSettingsSiteDefaults().files,
                ElementsAre(listIn("/proc/self/cwd/one"), listIn("/proc/self/cwd/two")));
}

TEST(SiteDefaults, AreComparedWithWhatIsWritten) {
    writeList({{frequency, 7}});
    start();
    QRVSettingsSetObjectForKeyPath(1, frequency);
    EXPECT_EQ(QRVSettingsStoredObjectForKeyPath(frequency), PropertyListValue(1))
        << "the built-in default is no default any more";
    QRVSettingsSetObjectForKeyPath(7, frequency);
    EXPECT_TRUE(QRVSettingsStoredObjectForKeyPath(frequency).isNull());
    StoreSupport::finishSaves();
    EXPECT_TRUE(StoreSupport::fileTree().objectForKey(frequency).isNull());
}

TEST(SiteDefaults, AreThoseOfProfilesToo) {
    writeList(cpu(false));
    start();
    QRVSettings::sharedSettings().prepare();
    EXPECT_EQ(QRVSettingsProfileObjectForKeyPath(enabled), PropertyListValue(false));
    QRVSettingsProfileSetObjectForKeyPath(true, enabled);
    EXPECT_EQ(QRVSettingsProfileObjectForKeyPath(enabled), PropertyListValue(true));
    EXPECT_EQ(QRVSettingsSiteFileForKeyPath("Profiles.Settings.default.CPU.Menubar.Enabled"),
              listIn(firstFolder()));
}

TEST(SiteDefaults, AreReadAgainAtEachCall) {
    writeList({{frequency, 7}});
    start();
    writeList({{frequency, 8}});
    EXPECT_EQ(QRVSettingsDefaultForKeyPath(frequency), PropertyListValue(7));
    start();
    EXPECT_EQ(QRVSettingsDefaultForKeyPath(frequency), PropertyListValue(8));
    std::filesystem::remove(listIn(firstFolder()));
    start();
    EXPECT_EQ(QRVSettingsDefaultForKeyPath(frequency), PropertyListValue(1));
}

TEST(SiteDefaults, AreNotTheUsersOwnSettings) {
    StoreSupport::writeSettings(NSDictionary{{frequency, 9}});
    setenv("XDG_CONFIG_DIRS", std::getenv("XDG_CONFIG_HOME"), 1);
    start();
    EXPECT_EQ(QRVSettingsDefaultForKeyPath(frequency), PropertyListValue(1));
    const std::string link = std::filesystem::absolute("linked").string();
    std::filesystem::create_directory_symlink(std::getenv("XDG_CONFIG_HOME"), link);
    setenv("XDG_CONFIG_DIRS", link.c_str(), 1);
    start();
    EXPECT_EQ(QRVSettingsDefaultForKeyPath(frequency), PropertyListValue(1));
    EXPECT_THAT(QRVSettingsSiteDefaults().files, IsEmpty());
}

TEST(SiteDefaults, OfADamagedListAreLeftOutAndToldOnce) {
    Failures failures;
    StoreSupport::writeFile(listIn(firstFolder()), "<plist><dict><key>A</key>");
    start();
    start();
    ASSERT_THAT(failures.all(), SizeIs(1));
    EXPECT_EQ(failures.all()[0].operation, "read site file");
    EXPECT_EQ(failures.all()[0].path, listIn(firstFolder()));
    EXPECT_EQ(failures.all()[0].error, std::errc::invalid_argument);
    EXPECT_THAT(messageOfOnlyFault(), testing::HasSubstr("line 1"));
    EXPECT_EQ(QRVSettingsDefaultForKeyPath(frequency), PropertyListValue(1));
    EXPECT_THAT(QRVSettingsSiteDefaults().files, IsEmpty());
}

TEST(SiteDefaults, OfAListThatIsNoDictionaryOrCannotBeReadAreLeftOut) {
    StoreSupport::writeFile(listIn(firstFolder()), "<plist><array/></plist>");
    start();
    EXPECT_EQ(messageOfOnlyFault(), "its root is not a dictionary");
    std::filesystem::remove(listIn(firstFolder()));
    std::filesystem::create_directory(listIn(firstFolder()));
    start();
    EXPECT_EQ(messageOfOnlyFault(), std::make_error_code(std::errc::is_a_directory).message());
    std::filesystem::remove(listIn(firstFolder()));
    ASSERT_EQ(truncate((StoreSupport::writeFile(listIn(firstFolder()), ""),
                        listIn(firstFolder()).c_str()),
                       static_cast<off_t>(NSPropertyListSerialization::maximumSize + 1)),
              0);
    start();
    EXPECT_EQ(QRVSettingsSiteDefaults().faults.at(0).error, std::errc::file_too_large);
    StoreSupport::writeFile(listIn(firstFolder()), "");
    start();
    EXPECT_THAT(QRVSettingsSiteDefaults().faults, IsEmpty()) << "an empty file has no settings";
}

TEST(SiteDefaults, OfOneUserOrWithoutAKeyPathAreLeftOutAndTheOthersHold) {
    Failures failures;
    writeList({{frequency, 7},
               {"a.b", 1},
               {"Device", NSDictionary{{"Device", "x"}}},
               {"Migration", NSDictionary{{"Profiles", true}}},
               {"Profiles", NSDictionary{{"Settings", NSDictionary()}}},
               {"MenubarCurrentApperance", "Dark"},
               {"C", NSDictionary{{"d.e", 1}, {"f", 2}}}});
    start();
    EXPECT_THAT(failures.take(),
                testing::UnorderedElementsAre(
                    "read site file: a.b", "read site file: Device", "read site file: Migration",
                    "read site file: Profiles", "read site file: MenubarCurrentApperance",
                    "read site file: C.d.e"));
    EXPECT_EQ(QRVSettingsObjectForKeyPath(frequency), PropertyListValue(7));
    EXPECT_EQ(QRVSettingsObjectForKeyPath("C.f"), PropertyListValue(2));
    EXPECT_TRUE(QRVSettingsDefaultForKeyPath("Migration.Profiles").isNull());
    start();
    EXPECT_THAT(failures.take(), IsEmpty());
}

TEST(SiteDefaults, FaultsOfAFileWithManyAreBounded) {
    const NSMutableDictionary many;
    for (int index = 0; index < 500; ++index) many.setObjectForKey(1, "a." + std::to_string(index));
    writeList(many);
    start();
    const auto faults = QRVSettingsSiteDefaults().faults;
    ASSERT_THAT(faults, SizeIs(21));
    EXPECT_EQ(faults.back().reason, "480 more are left out");
}
