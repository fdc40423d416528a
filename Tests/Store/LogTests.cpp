// SPDX-License-Identifier: MIT
// What the store writes to its logs, and what it never writes there: users send them along when
// they report a fault.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/Files/Files.h"
#include "Support/MachineSupport.h"
#include "Support/StoreSupport.h"

using namespace QRVPlatform;

using StoreSupport::finishSaves;
using StoreSupport::LogMessages;
using StoreSupport::SystemLogLines;
using StoreSupport::writeSettings;
using testing::Each;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

namespace {

namespace fs = std::filesystem;

constexpr const char* serialNumber = "SERIAL-4711";
constexpr const char* secret = "secret-word";

void save(const char* keyPath, const PropertyListValue& value) {
    QRVSettingsSetObjectForKeyPath(value, keyPath);
    finishSaves();
}

/// A life in which everything that is ever logged is.
void liveThroughEverything() {
    MachineSupport::beMachine(serialNumber, "Model-1");
    writeSettings(
        NSDictionary{{"Note", secret}, {"Device", NSDictionary{{"Device", "of another machine"}}}});
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setMonitorFileChanges(true);
    store.loadDefaults();
    store.prepare();
    save("Note", secret);
    EXPECT_THROW(save("Note.Deeper", secret), NSInvalidArgumentException);
    store.presentedItemDidChange();
    QRVSettingsSaveObject(nullptr);
    save("Colour", NSColor{1, 0, 0, 1});  // no property list holds it
    QRVSettingsSetObjectForKeyPath(nullptr, "Colour");
    finishSaves();
    writeSettings(std::string("damaged ") + secret);
    save("Note", std::string(secret) + "2");
    DispatchMainQueue::shared().drain();
}

}  // namespace

TEST(Logs, HoldNeitherValuesNorTheSerialNumber) {
    const SystemLogLines system;
    const LogMessages developers;
    liveThroughEverything();
    std::vector<std::string> lines = system.lines();
    for (const DDLogMessage& message : developers.messages()) lines.push_back(message.text());
    EXPECT_THAT(lines, SizeIs(testing::Ge(6)));
    EXPECT_THAT(lines, Each(Not(HasSubstr(secret))));
    EXPECT_THAT(lines, Each(Not(HasSubstr(serialNumber))));
}

TEST(Logs, OnlyTheDevelopersOneHoldsTheTreeThatCouldNotBeSaved) {
    const fs::path file = QRVSettingsLocation();
    fs::create_directories(file.parent_path() / ("." + file.filename().string() + ".tmp") / "in");
    setFileFailureHandler([](const FileFailure&) { throw NSInvalidArgumentException("raised"); });
    const SystemLogLines system;
    const LogMessages developers;
    save("Note", secret);
    setFileFailureHandler(nullptr);
    ASSERT_EQ(developers.messages().size(), 2U);
    EXPECT_THAT(developers.messages()[1].text(), HasSubstr(secret));
    EXPECT_THAT(system.lines(), Each(Not(HasSubstr(secret))));
}
