// SPDX-License-Identifier: MIT
// Settings files of earlier versions (Tests/Golden), and the result of migrating each.
#include <gtest/gtest.h>

#include <algorithm>

#include "Support/StoreSupport.h"

using StoreSupport::contentsOf;
using StoreSupport::fileTree;
using StoreSupport::finishSaves;

namespace {

class Golden : public testing::TestWithParam<const char*> {
  protected:
    static std::string bytes(const std::string& moment) {
        return contentsOf(QRV_GOLDEN_FOLDER "/" + std::string(GetParam()) + "." + moment +
                          ".plist");
    }
    static NSDictionary tree(const std::string& moment) {
        return NSPropertyListSerialization::propertyListWithData(bytes(moment)).value.dictionary();
    }
};

}  // namespace

TEST_P(Golden, IsUpgradedWhenItIsOpened) {
    ASSERT_FALSE(tree("after").isNull());
    StoreSupport::writeSettings(bytes("before"));
    QRVSettings::sharedSettings().prepare();
    finishSaves();
    EXPECT_EQ(QRVSettingsStoredValues(), tree("after"));
    EXPECT_EQ(fileTree(), tree("after"));
}

TEST_P(Golden, OpenedASecondTimeStaysAsItIs) {
    StoreSupport::writeSettings(bytes("after"));
    const std::string before = contentsOf(QRVSettingsLocation());
    QRVSettings::sharedSettings().prepare();
    finishSaves();
    EXPECT_EQ(QRVSettingsStoredValues(), tree("after"));
    EXPECT_EQ(contentsOf(QRVSettingsLocation()), before) << "not even written again";
}

TEST_P(Golden, IsUpgradedWhenItIsImported) {
    QRVSettings::sharedSettings().setActiveProfile("default");
    QRVSettingsImport(tree("before"));
    finishSaves();
    EXPECT_EQ(fileTree(), tree("after"));
    QRVSettingsImport(fileTree());
    finishSaves();
    EXPECT_EQ(fileTree(), tree("after"));
}

INSTANTIATE_TEST_SUITE_P(Files, Golden,
                         testing::Values("before-profiles", "binary",
                                         "combined-items-before-profiles",
                                         "combined-items-in-profile",
                                         "merged-items-before-profiles", "flag-removed", "present",
                                         "empty"),
                         [](const auto& information) {
                             std::string name = information.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });
