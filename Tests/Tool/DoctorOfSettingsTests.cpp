// SPDX-License-Identifier: MIT
// The command `doctor`: what the settings file holds, beyond kinds and typos.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "Tool/DoctorSupport.h"
#include "Tool/ToolSupport.h"

using testing::ElementsAre;
using testing::IsEmpty;
using ToolSupport::dictionary;
using ToolSupport::examine;
using ToolSupport::expectFinding;
using ToolSupport::Outcome;
using ToolSupport::Report;
using ToolSupport::run;
using ToolSupport::settingsFile;
using ToolSupport::writeMigrated;
using ToolSupport::writePrivately;

TEST(Doctor, NamesEmptyDictionariesThatHideADefault) {
    writeMigrated(
        dictionary("CPU", dictionary("Menubar", "")) + dictionary("Own", "") +
        dictionary(
            "Profiles",
            dictionary("Settings",
                       dictionary("p", dictionary("Menu", "")) +
                           dictionary("default", dictionary("CPU", dictionary("Menubar", ""))))));
    const Report report = examine();
    EXPECT_EQ(report.exitCode, 0);
    EXPECT_THAT(
        report.messages,
        ElementsAre(
            "note: CPU.Menubar is an empty dictionary, and hides its default",
            "note: Profiles.Settings.p.Menu is an empty dictionary, and hides its default"));
    for (const std::string& advice : report.advices)
        ASSERT_EQ(ToolSupport::runShell(advice.substr(advice.find("qrvsettings"))).exitCode, 0);
    EXPECT_THAT(examine().messages, IsEmpty());
}

TEST(Doctor, NamesKeysThatNoKeyPathReaches) {
    writeMigrated("<key>CPU.Menubar.Enabled</key><false/><key>a</key><integer>1</integer>" +
                  dictionary("b", "<key>c.d</key><true/>"));
    const Report report = examine();
    EXPECT_EQ(report.exitCode, 1);
    EXPECT_THAT(
        report.messages,
        ElementsAre(
            "warning: a key holds a dot, so that no key path reaches it: CPU.Menubar.Enabled",
            "warning: a key holds a dot, so that no key path reaches it: b.c.d"));
    const std::string advice = report.advices.front();
    const Outcome outcome = ToolSupport::runShell(advice.substr(advice.find("qrvsettings")));
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_THAT(examine().messages, IsEmpty());
    EXPECT_EQ(run({"get", "a"}).output, "1\n");
}

TEST(Doctor, NamesWhatOtherReadersRefuse) {
    ASSERT_EQ(run({"apply", "-"}, {"set a.b \"\\u001b\"\nset \"n\\u0000\" 1\n"
                                   "set c [{\"x\":\"\\uffff\"}]\n",
                                   {}})
                  .exitCode,
              0);
    const Report report = examine();
    EXPECT_EQ(report.exitCode, 1);
    EXPECT_THAT(
        report.messages,
        ElementsAre("warning: a string holds U+001B, which strict XML readers refuse: a.b",
                    "warning: a string holds U+FFFF, which strict XML readers refuse: c",
                    "warning: a key holds U+0000, which strict XML readers refuse: \"n\\u0000\""));
    for (const std::string& advice : report.advices) {
        const std::size_t start = std::min(advice.find("qrvsettings unset"), advice.find("printf"));
        ASSERT_EQ(ToolSupport::runShell(advice.substr(start)).exitCode, 0) << advice;
    }
    EXPECT_THAT(examine().messages, IsEmpty());
}

TEST(Doctor, NamesDatesThatOtherReadersRefuse) {
    ASSERT_EQ(
        ToolSupport::runProgram(
            QRV_PYTHON, {"-c",
                         "import plistlib, struct, sys\n"
                         "tree = {'Migration': {'CombinedPowerItems': True, 'Profiles': True},\n"
                         "        'a': [__import__('datetime').datetime(2001, 1, 1, 0, 0, 1)]}\n"
                         "data = plistlib.dumps(tree, fmt=plistlib.FMT_BINARY)\n"
                         "date = b'\\x33' + struct.pack('>d', 1.0)\n"
                         "assert data.count(date) == 1\n"
                         "open(sys.argv[1], 'wb').write(data.replace(date, b'\\x33' + "
                         "struct.pack('>d', 1e12)))\n",
                         (writePrivately(""), settingsFile())})
            .exitCode,
        0);
    expectFinding(examine(), 1,
                  "warning: other programs may refuse the file: a has a date outside the years");
}
