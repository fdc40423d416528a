// SPDX-License-Identifier: MIT
// The commands `get`, `list`, `export` and `path`.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "Tool/ToolSupport.h"

using testing::HasSubstr;
using ToolSupport::contentsOf;
using ToolSupport::Outcome;
using ToolSupport::propertyList;
using ToolSupport::run;
using ToolSupport::writeSettings;

namespace {

const std::vector<std::vector<std::string>> readingCommands = {
    {"get", "CPU.Width"},
    {"get", "absent"},
    {"get", "CPU", "--layer", "default"},
    {"list"},
    {"list", "CPU"},
    {"list", "--json", "--layer", "stored"},
    {"list", "--layer", "default"},
    {"color", "get", "Network.Menubar.Mode.Status.NoIP.Color"},
    {"color", "get", "absent"},
    {"color", "set", "a", "red"},
    {"color", "unset", "absent"},
    {"appearance", "get"},
    {"appearance", "set", "blue"},
    {"export"},
    {"path"},
    {"export", "--json"},
    {"set", "a", "{broken"},
    {"get", "CPU.Width", "--profile", "p"},
    {"list", "--profile", "p"},
    {"color", "get", "absent", "--profile", "p"},
    {"profiles"},
    {"list", "--keys"},
    {"search", "width"},
    {"search", "absent"},
    {"explain", "CPU.Width"},
    {"explain", "absent", "--profile", "p"},
    {"diff"},
    {"diff", "-"},
    {"diff", "--profile", "p", "--as-commands"},
    {"doctor"},
    {"doctor", "--json"},
    {"completion", "bash"},
    {"completion", "candidates", "--", "get", ""},
    {"apply", "-"},
    {"apply", "absent"},
    {"import", "-"},
    {"import", "absent"},
    {"watch", "--timeout", "0.01"},
    {"unset"},
    {"--help"}};

std::string sample() {
    return propertyList(
        "<key>CPU</key><dict><key>Width</key><integer>40</integer>"
        "<key>Enabled</key><true/></dict>"
        "<key>CPUs</key><dict><key>x</key><real>2</real></dict>"
        "<key>Items</key><array><string>b</string><dict><key>n</key><false/></dict></array>"
        "<key>Empty</key><dict/>");
}

void expectNotSet(const std::vector<std::string>& arguments, const std::string& message) {
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.exitCode, 1) << testing::PrintToString(arguments);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "qrvsettings: " + message + "\n");
}

}  // namespace

TEST(ReadingCommands, CreateNothingWhereNothingIs) {
    const auto before = ToolSupport::snapshot(ToolSupport::configurationFolder());
    for (const auto& arguments : readingCommands) run(arguments);
    EXPECT_EQ(ToolSupport::snapshot(ToolSupport::configurationFolder()), before);
    EXPECT_FALSE(std::filesystem::exists(ToolSupport::configurationFolder()));
}

TEST(ReadingCommands, TouchNothingThatIsThere) {
    writeSettings(sample());
    const auto before = ToolSupport::snapshot(ToolSupport::configurationFolder());
    for (const auto& arguments : readingCommands) run(arguments);
    EXPECT_EQ(ToolSupport::snapshot(ToolSupport::configurationFolder()), before);
}

TEST(Get, PrintsScalarsBare) {
    writeSettings(
        propertyList("<key>b</key><true/><key>i</key><integer>18446744073709551615</integer>"
                     "<key>r</key><real>40</real><key>s</key><string>ä \"x\"</string>"
                     "<key>t</key><date>2020-01-02T03:04:05Z</date><key>d</key><data>AQI=</data>"
                     "<key>n</key><real>-infinity</real>"));
    EXPECT_EQ(run({"get", "b"}).output, "true\n");
    EXPECT_EQ(run({"get", "i"}).output, "18446744073709551615\n");
    EXPECT_EQ(run({"get", "r"}).output, "40.0\n");
    EXPECT_EQ(run({"get", "s"}).output, "ä \"x\"\n");
    EXPECT_EQ(run({"get", "t"}).output, "2020-01-02T03:04:05Z\n");
    EXPECT_EQ(run({"get", "d"}).output, "AQI=\n");
    EXPECT_EQ(run({"get", "n"}).output, "-inf\n");
}

TEST(Get, PrintsContainersAsOneLineOfSortedJSON) {
    writeSettings(sample());
    const Outcome outcome = run({"get", "CPU"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "{\"Enabled\":true,\"Width\":40}\n");
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(run({"get", "Items"}).output, "[\"b\",{\"n\":false}]\n");
    EXPECT_EQ(run({"get", "Empty"}).output, "{}\n");
}

TEST(Get, SaysWhatIsNotSet) {
    writeSettings(sample());
    expectNotSet({"get", "CPU.Height"}, "not set, CPU.Height");
    expectNotSet({"get", "CPU.Width.Max"}, "not set, CPU.Width.Max");
    expectNotSet({"get", ""}, "not set, \"\"");
}

TEST(Get, AsksTheLayerThatIsNamed) {
    writeSettings(sample());
    EXPECT_EQ(run({"get", "CPU.Width", "--layer", "effective"}).output, "40\n");
    EXPECT_EQ(run({"get", "CPU.Width", "--layer", "stored"}).output, "40\n");
    expectNotSet({"get", "CPU.Width", "--layer", "default"}, "not set, CPU.Width");
    EXPECT_EQ(run({"get", "UpdateFrequency"}).output, "1\n");
    EXPECT_EQ(run({"get", "UpdateFrequency", "--layer", "default"}).output, "1\n");
    expectNotSet({"get", "UpdateFrequency", "--layer", "stored"}, "not set, UpdateFrequency");
}

TEST(Get, ReadsABinaryFileOfAnotherProgram) {
    std::filesystem::create_directories(ToolSupport::settingsFile().parent_path());
    const Outcome python = ToolSupport::runProgram(
        QRV_PYTHON, {"-c",
                     "import plistlib, sys, datetime\n"
                     "tree = {'a': {'i': -2**63, 'r': 1.0, 'd': b'\\0\\1', 'l': [True, 'ö'],\n"
                     "        't': datetime.datetime(1999, 12, 31, 23, 59, 59)}}\n"
                     "plistlib.dump(tree, open(sys.argv[1], 'wb'), fmt=plistlib.FMT_BINARY)\n",
                     ToolSupport::settingsFile()});
    ASSERT_EQ(python.exitCode, 0) << python.errors;
    ASSERT_THAT(contentsOf(ToolSupport::settingsFile()), testing::StartsWith("bplist00"));
    EXPECT_EQ(run({"get", "a"}).output,
              "{\"d\":{\"$data\":\"AAE=\"},\"i\":-9223372036854775808,\"l\":[true,\"ö\"],"
              "\"r\":1.0,\"t\":{\"$date\":\"1999-12-31T23:59:59Z\"}}\n");
}

TEST(List, PrintsEachLeafOnALineInOrder) {
    writeSettings(sample());
    const Outcome outcome = run({"list", "--layer", "stored"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output,
              "CPU.Enabled\ttrue\nCPU.Width\t40\nCPUs.x\t2.0\nItems\t[\"b\",{\"n\":false}]\n");
    EXPECT_EQ(outcome.errors, "");
}

TEST(List, PrintsTheDefaultsWhereNothingElseIsAskedFor) {
    const Outcome outcome = run({"list", "--layer", "default"});
    EXPECT_EQ(std::count(outcome.output.begin(), outcome.output.end(), '\n'), 87);
    EXPECT_THAT(outcome.output, HasSubstr("\nMenu.THeme.Vibrancy\ttrue\n"));
    EXPECT_THAT(outcome.output, HasSubstr("\nProcesses.Combine\t1\n"));
    EXPECT_THAT(outcome.output, HasSubstr("\nWeather.Global.Location.identifier\t-7\n"));
    EXPECT_EQ(run({"list", "Menu", "--layer", "default"}).output,
              "Menu.THeme.Vibrancy\ttrue\nMenu.Theme.Dark\t\"indigo\"\n"
              "Menu.Theme.Light\t\"indigo\"\n");
}

TEST(List, PrintsWhatTheApplicationSees) {
    writeSettings(
        propertyList("<key>Menu</key><dict><key>Theme</key><dict><key>Dark</key>"
                     "<string>red</string></dict></dict>"));
    EXPECT_EQ(run({"list", "Menu"}).output,
              "Menu.THeme.Vibrancy\ttrue\nMenu.Theme.Dark\t\"red\"\n"
              "Menu.Theme.Light\t\"indigo\"\n");
    EXPECT_EQ(run({"list", "Menu", "--layer", "stored"}).output, "Menu.Theme.Dark\t\"red\"\n");
}

TEST(List, AStoredValueAboveThemLeavesTheDefaultsReadable) {
    writeSettings(propertyList("<key>Menu</key><string>flat</string>"));
    EXPECT_EQ(run({"list", "Menu"}).output,
              "Menu\t\"flat\"\nMenu.THeme.Vibrancy\ttrue\nMenu.Theme.Dark\t\"indigo\"\n"
              "Menu.Theme.Light\t\"indigo\"\n");
    EXPECT_EQ(run({"get", "Menu.Theme.Dark"}).output, "indigo\n");
}

TEST(List, PrintsOneObjectWhenAskedForJSON) {
    writeSettings(sample());
    EXPECT_EQ(run({"list", "--json", "CPUs"}).output, "{\"CPUs.x\":2.0}\n");
}

TEST(List, TakesThePrefixByComponents) {
    writeSettings(sample());
    EXPECT_EQ(run({"list", "CPU", "--layer", "stored"}).output,
              "CPU.Enabled\ttrue\nCPU.Width\t40\n");
    EXPECT_EQ(run({"list", "CPU.Width"}).output, "CPU.Width\t40\n");
    expectNotSet({"list", "CP"}, "nothing is set, CP; did you mean CPU?");
    expectNotSet({"list", "CPU.Width.Max"}, "nothing is set, CPU.Width.Max");
    expectNotSet({"list", ""}, "nothing is set, \"\"");
    expectNotSet({"list", "CPU.Menubar.Enabeld"},
                 "nothing is set, CPU.Menubar.Enabeld; did you mean CPU.Menubar.Enabled?");
}

TEST(List, SaysWhenNothingIsSet) {
    expectNotSet({"list", "--layer", "stored"}, "nothing is set");
    writeSettings(sample());
    expectNotSet({"list", "Items", "--layer", "default"}, "nothing is set, Items");
    expectNotSet({"list", "Empty"}, "nothing is set, Empty");
}

TEST(List, KeepsOneLineForAKeyWithControlCharacters) {
    writeSettings(propertyList("<key>a&#9;b&#10;</key><true/><key>\"q</key><true/>"));
    EXPECT_EQ(run({"list", "--layer", "stored"}).output, "\"\\\"q\"\ttrue\n\"a\\tb\\n\"\ttrue\n");
}

TEST(List, LeavesOutWhatNoKeyPathReaches) {
    writeSettings(
        propertyList("<key>a.b</key><true/><key>c</key><dict><key>d.e</key><true/></dict>"
                     "<key>x.y</key><true/><key>x</key><dict><key>y</key><false/></dict>"));
    EXPECT_EQ(run({"list", "--layer", "stored"}).output, "x.y\tfalse\n");
}

TEST(List, PrintsKeyPathsAloneWhenAskedForThem) {
    writeSettings(sample());
    EXPECT_EQ(run({"list", "--keys", "--layer", "stored"}).output,
              "CPU.Enabled\nCPU.Width\nCPUs.x\nItems\n");
    EXPECT_EQ(run({"list", "CPU", "--keys", "--json", "--layer", "stored"}).output,
              "[\"CPU.Enabled\",\"CPU.Width\"]\n");
    expectNotSet({"list", "--keys", "absent"}, "nothing is set, absent");
}

TEST(Get, NamesTheKeyPathThatMayBeMeant) {
    expectNotSet({"get", "CPU.Menubar.Enabeld"},
                 "not set, CPU.Menubar.Enabeld; did you mean CPU.Menubar.Enabled?");
    expectNotSet({"get", "CPU.Menubar.Enabeld", "--layer", "stored"},
                 "not set, CPU.Menubar.Enabeld; did you mean CPU.Menubar.Enabled?");
}

TEST(Export, GivesThePropertyListAgain) {
    writeSettings(sample());
    const Outcome outcome = run({"export"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.output, HasSubstr("<key>Width</key>\n\t\t<integer>40</integer>"));
    ToolSupport::writeFile(ToolSupport::settingsFile(), outcome.output);
    EXPECT_EQ(run({"export"}).output, outcome.output);
    EXPECT_EQ(run({"export", "-"}).output, outcome.output);
}

TEST(Export, GivesJSONWhenAskedForIt) {
    writeSettings(sample());
    EXPECT_EQ(run({"export", "--json"}).output,
              "{\"CPU\":{\"Enabled\":true,\"Width\":40},\"CPUs\":{\"x\":2.0},\"Empty\":{},"
              "\"Items\":[\"b\",{\"n\":false}]}\n");
}

TEST(Export, ReplacesTheFileNamed) {
    writeSettings(sample());
    ToolSupport::writeFile("out.plist", "old");
    const Outcome outcome = run({"export", "out.plist"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(contentsOf("out.plist"), run({"export"}).output);
    EXPECT_FALSE(std::filesystem::exists(".out.plist.tmp"));
}

TEST(Export, NamesTheFileThatCannotBeWritten) {
    writeSettings(sample());
    const Outcome outcome = run({"export", "no-such-folder/out.plist"});
    EXPECT_EQ(outcome.exitCode, 4);
    EXPECT_EQ(outcome.errors,
              "qrvsettings: cannot write: No such file or directory, no-such-folder/out.plist\n");
}

TEST(Export, SaysWhenNothingIsStoredAndWritesNoFile) {
    expectNotSet({"export"}, "nothing is set");
    expectNotSet({"export", "out.plist"}, "nothing is set");
    EXPECT_FALSE(std::filesystem::exists("out.plist"));
}

TEST(Path, IsBelowTheConfigurationHome) {
    EXPECT_EQ(run({"path"}).output, ToolSupport::configurationFolder().string() +
                                        "/Preferences/" QRV_APPLICATION_IDENTIFIER
                                        ".menubar.7.plist\n");
}

TEST(Path, IsBelowTheHomeFolderWithoutConfigurationHome) {
    unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(run({"path"}).output, std::string(std::getenv("HOME")) +
                                        "/.config/Preferences/" QRV_APPLICATION_IDENTIFIER
                                        ".menubar.7.plist\n");
}

TEST(Path, IsThatOfThePasswordDatabaseWhenTheEnvironmentNamesNoHome) {
    const passwd* user = getpwuid(geteuid());
    ASSERT_NE(user, nullptr);
    unsetenv("XDG_CONFIG_HOME");
    for (const bool isRelative : {false, true}) {
        unsetenv("HOME");
        if (isRelative) setenv("HOME", "somewhere", 1);
        EXPECT_EQ(run({"path"}).output, std::string(user->pw_dir) +
                                            "/.config/Preferences/" QRV_APPLICATION_IDENTIFIER
                                            ".menubar.7.plist\n");
    }
}

TEST(Path, IsMissingForAUserWithoutHome) {
    constexpr uid_t nobodyKnown = 54321;
    constexpr int cannotBeTried = 77;
    if (geteuid() != 0 || getpwuid(nobodyKnown) != nullptr)
        GTEST_SKIP() << "only root can become a user without a home folder";
    unsetenv("XDG_CONFIG_HOME");
    unsetenv("HOME");
    const auto becomeUnknown = [] {
        if (setuid(nobodyKnown) != 0 || access(QRV_TOOL, X_OK) != 0) _exit(cannotBeTried);
    };
    const Outcome path = run({"path"}, {"", becomeUnknown});
    if (path.exitCode == cannotBeTried)
        GTEST_SKIP() << "the tool was built in a folder that other users may not search";
    EXPECT_EQ(path.exitCode, 1);
    EXPECT_EQ(path.errors, "qrvsettings: there is no home folder, so no settings file\n");
    EXPECT_EQ(run({"get", "a"}, {"", becomeUnknown}).exitCode, 1);
    const Outcome set = run({"set", "a", "1"}, {"", becomeUnknown});
    EXPECT_EQ(set.exitCode, 4);
    EXPECT_EQ(set.errors, "qrvsettings: there is no home folder, so no settings file\n");
}

TEST(GetDefault, IsPrintedWhereThereIsNoValue) {
    const auto got = [](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "get");
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        return outcome.output;
    };
    EXPECT_EQ(got({"absent", "--default", "x y"}), "x y\n");
    EXPECT_EQ(got({"absent", "--default", ""}), "\n");
    EXPECT_EQ(got({"absent", "--default", "1e3"}), "1e3\n") << "as it stands";
    EXPECT_EQ(got({"absent", "--default", "1e3", "--json"}), "1000.0\n");
    EXPECT_EQ(got({"absent", "--default", "x y", "--json"}), "\"x y\"\n");
    EXPECT_EQ(got({"absent", "--default", "x", "--profile", "p"}), "x\n");
    EXPECT_EQ(got({"Updater.AutomaticallyCheck", "--default", "x"}), "true\n");
    EXPECT_EQ(got({"Updater.AutomaticallyCheck", "--default", "x", "--layer", "stored"}), "x\n");
    ASSERT_EQ(run({"set", "empty", "--type", "string", ""}).exitCode, 0);
    EXPECT_EQ(got({"empty", "--default", "x"}), "\n") << "empty text is a value";
}

TEST(GetDefault, DoesNotHideThatTheFileCannotBeRead) {
    ToolSupport::writeSettings("{broken");
    EXPECT_EQ(run({"get", "a", "--default", "x"}).exitCode, 3);
    EXPECT_EQ(run({"get", "a", "--default", "{", "--json", "--layer", "default"}).exitCode, 5);
}
