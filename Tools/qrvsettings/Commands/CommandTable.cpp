// SPDX-License-Identifier: MIT
#include "Commands/CommandTable.h"

#include <array>

namespace Tool {
namespace {

constexpr std::string_view setFooter =
    R"(VALUE: true and false are booleans, 40 is an integer, 0.5 and 1e3 are reals, text that
begins with {, [ or " is JSON, and anything else is a string. One newline at the end of
standard input is dropped. A value that begins with a dash and is no number goes after --.

A key path that looks like a typo of a known one is refused, and so is a value of another
kind than the setting's, none of its choices, or out of its range.

In JSON, {"$date":"2020-01-01T00:00:00Z"} is a date, {"$data":"AQI="} is data (base64),
{"$real":"nan"} (inf, -inf) is a real, and {"$dictionary":{...}} is a dictionary that looks
like one of these.

Example: qrvsettings set CPU.Menubar.Mode.HistoryGraph.Width 40)";

constexpr std::string_view applyFooter =
    R"(A line is one of these, blank, or a comment that begins with #:

  set [--type NAME] [--profile NAME] [--new] [--any-kind] KEYPATH VALUE
  unset [--profile NAME] KEYPATH
  qrvsettings set ... and qrvsettings unset ..., as "diff --as-commands" prints

VALUE is the rest of the line, without the blanks at its end, and is read as in "set": text
that begins with {, [ or " is JSON. Unlike in "set", a lone - is an ordinary string. A KEYPATH
or the NAME of a profile that holds blanks is written as a JSON string. What begins with two
dashes and is no option goes after --. The changes are made in the order of their lines.
Unsetting a key that is not set does nothing. A line is refused as "set" refuses it. Where
nothing changes nothing is written. How many settings changed, and how many key paths are as
they were, is said on standard error.

Example: echo 'set Menu.Theme.Dark violet' | qrvsettings apply -)";

constexpr std::array colorParts = {
    Command{"get", "Print red, green, blue and alpha, from 0 to 1; on a terminal the colour too",
            "Example: qrvsettings color get Network.Menubar.Mode.Status.NoIP.Color",
            configureColorGet},
    Command{"set", "Store a colour; returns when the settings file holds it",
            "Example: qrvsettings color set Network.Menubar.Mode.Status.NoIP.Color '#ffc600'",
            configureColorSet},
    Command{"unset", "Remove a stored colour, so that the default holds again",
            "Example: qrvsettings color unset Network.Menubar.Mode.Status.NoIP.Color",
            configureColorUnset},
};

constexpr std::array appearanceParts = {
    Command{"get", "Print it: Dark or Light", "Example: qrvsettings appearance get",
            configureAppearanceGet},
    Command{
        "set", "Store it, and print what is stored",
        "The platform's names NSAppearanceNameDarkAqua, NSAppearanceNameVibrantDark, "
        "NSAppearanceNameAccessibilityHighContrastDarkAqua and "
        "NSAppearanceNameAccessibilityHighContrastVibrantDark are dark, all others are light.\n\n"
        "Example: qrvsettings appearance set NSAppearanceNameVibrantDark",
        configureAppearanceSet},
};

constexpr std::array completionParts = {
    Command{"bash", "Print the script for bash", "Example: eval \"$(qrvsettings completion bash)\"",
            configureBash},
    Command{"zsh", "Print the script for zsh", "Example: eval \"$(qrvsettings completion zsh)\"",
            configureZsh},
    Command{"fish", "Print the script for fish", "Example: qrvsettings completion fish | source",
            configureFish},
    Command{"candidates", "Print what can stand in place of the last word, a line each",
            "A tab and a sentence follow a word that has one. Prints nothing and exits 0 where a "
            "file name is expected; exits 1 where nothing can be completed.\n\n"
            "Example: qrvsettings completion candidates -- get CPU.M",
            configureCandidates},
};

constexpr std::array historyParts = {
    Command{"clear", "Remove all entries of the history, and their values from the disk",
            "Example: qrvsettings history clear", configureHistoryClear},
};

constexpr std::array commands = {
    Command{"get", "Print the value of a setting", "Example: qrvsettings get CPU.Menubar.Enabled",
            configureGet},
    Command{"set", "Store a setting; returns when the settings file holds it", setFooter,
            configureSet},
    Command{"unset", "Remove stored settings, so that the defaults hold again",
            "Key paths that are not stored are named on standard error, and the exit code is 1; "
            "the others are removed all the same. Dictionaries above that are empty then are "
            "removed too.\n\n"
            "Example: qrvsettings unset Menu.Theme.Dark CPU.Menubar.Enabled",
            configureUnset},
    Command{
        "list", "Print settings, a line each: key path, tab, value as JSON",
        "Key paths are sorted by their bytes. One that holds control characters or begins with a "
        "quotation mark is printed as a JSON string. Those of a profile are printed as the "
        "application reads them, without the name of the profile. Records of the store are left "
        "out unless PREFIX names nothing else, or --json --layer stored prints all for import.\n\n"
        "Example: qrvsettings list CPU --layer stored",
        configureList},
    Command{"search", "Print the settings whose key path or value holds a text, as list does",
            "Arrays are searched with all that they hold. Records of the store are left out. The "
            "exit code is 1 where nothing is found.\n\n"
            "Example: qrvsettings search color --keys",
            configureSearch},
    Command{"explain", "Print the value of a setting in each layer, and which layer answers",
            "\"effective\" is what get prints, and \"layer\" where it comes from: stored, profile, "
            "site, default or none. \"stored\" is the value in the file as it is, \"in profile\" "
            "the one "
            "in the profile \"default\" or the one that is named. Integers and reals count as one "
            "kind when the stored value is compared with the default. \"last change\" is the last "
            "one in the history. The exit code is 1 where nothing is effective.\n\n"
            "Example: qrvsettings explain CPU.Menubar.Enabled",
            configureExplain},
    Command{
        "describe", "Print what settings are: in words, with kind, default and present value",
        "Without PREFIX all known settings are described. For a single one all is printed that is "
        "known of it, with the value that the application reads: of a setting of each profile that "
        "in the profile \"default\", or in the one that is named. Lists of applications add to "
        "what is known, see qrvsettings(5). The exit code is 1 where nothing is known.\n\n"
        "Example: qrvsettings describe CPU.Menubar",
        configureDescribe},
    Command{"diff", "Print what is stored and differs from the defaults, or how a file differs",
            "A line is a key path, a tab, and old -> new as JSON, null for not set. Without FILE, "
            "old is the default and new what is stored in the settings file or in the profile. "
            "With FILE, old is what is stored and new what FILE holds. Nothing is migrated before "
            "the comparison. Records of the store are left out. The exit code is 0 where nothing "
            "differs, and 1 where something does.\n\n"
            "Example: qrvsettings diff --as-commands",
            configureDiff},
    Command{"export", "Print or save all stored settings",
            "Where nothing is set nothing is written, and the exit code is 1.\n\n"
            "Example: qrvsettings export settings.plist",
            configureExport},
    Command{"color", "Read or write a colour",
            "Example: qrvsettings color get Network.Menubar.Mode.Status.NoIP.Color", nullptr,
            colorParts},
    Command{"appearance", "Read or write the appearance of the menu bar",
            "Example: qrvsettings appearance set dark", nullptr, appearanceParts},
    Command{"profiles", "Print the names of the profiles that have settings, one a line",
            "Names are sorted by their bytes. Of a name that holds dots only the part before the "
            "first one is printed.\n\n"
            "Example: qrvsettings profiles",
            configureProfiles},
    Command{"apply", "Make many changes at once: all of them in one save, or none", applyFooter,
            configureApply},
    Command{"import", "Replace all stored settings by those of a file, in one save",
            "Settings of an earlier version are migrated. In JSON, keys of the root that hold dots "
            "are key paths, as list prints them, unless the root is {\"$dictionary\":{...}}. In a "
            "property list they are refused, because no key path reaches them. How many settings "
            "changed is said on standard error.\n\n"
            "Example: qrvsettings import settings.plist --dry-run",
            configureImport},
    Command{
        "merge", "Merge two settings files that were changed from a third, by key path",
        "What one file alone has changed is taken. Where both have changed a value differently, or "
        "one has changed and the other removed it, there is a conflict. Conflicts are named on "
        "standard error; the result has the value of OURS there, and the exit code is 1. What "
        "belongs to one machine (see export --portable) stays as it is in OURS. The result is an "
        "XML property list, or JSON where OURS is JSON. qrvsettings(7) shows how Git uses it.\n\n"
        "Example: qrvsettings merge base.plist ours.plist theirs.plist --output new.plist",
        configureMerge},
    Command{"history", "Print who has changed which setting when, the latest last",
            "For each save: its ID, the time, the program with its process, what it was; then its "
            "changes, a line each: key path, old -> new as JSON. A program that does not take part "
            "in the history is \"another program\", at the time when its change was noticed.\n\n"
            "TIME is '10 minutes ago', 2h, today, yesterday, 09:30, 2026-11-22 or '2026-11-22 "
            "09:30'. QRVSETTINGS_HISTORY=0 in the environment switches the history off.\n\n"
            "Example: qrvsettings history CPU --since yesterday",
            configureHistory, historyParts},
    Command{"undo", "Take back what a save has changed, in one save",
            "Prints what it changes, a line each: key path, tab, old -> new as JSON. It is in the "
            "history itself: an undo of an undo makes the change again. What was changed since is "
            "named, with the program and the time; nothing is undone then, and the exit code is 1. "
            "Records of the store stay. TIME is as in history.\n\n"
            "Example: qrvsettings undo --since '10 minutes ago' --dry-run",
            configureUndo},
    Command{"watch", "Print changes of the settings file as they happen, a line each",
            "A line is a key path, a tab, and the new value as JSON: the default where the setting "
            "was removed, null where there is none. Changes made at once are sorted by their key "
            "paths. Records of the store are left out unless PREFIX names one. \"watching FILE\" "
            "on standard error says that it has begun; an interrupt ends it with exit code 0.\n\n"
            "Example: qrvsettings watch CPU.Menubar --count 1 --timeout 60",
            configureWatch},
    Command{"path", "Print the path of the settings file", "Example: ls -l \"$(qrvsettings path)\"",
            configurePath},
    Command{"doctor", "Examine the settings file: what is wrong, and what to do about it",
            "Facts come first, then findings. Notes need no action; warnings and errors do, and "
            "then the exit code is 1. A key path without a default is reported when it looks like "
            "a typo of a known one; other key paths are not judged.\n\n"
            "Example: qrvsettings doctor",
            configureDoctor},
    Command{"completion", "Print what makes a shell complete commands, options and key paths",
            "Example: eval \"$(qrvsettings completion bash)\"", nullptr, completionParts},
};

constexpr Command wholeProgram{"qrvsettings", "Read and change the settings of the system monitor",
                               "Example: qrvsettings set CPU.Menubar.Mode.HistoryGraph.Width 40",
                               nullptr, commands};

}  // namespace

const Command& program() {
    return wholeProgram;
}

}  // namespace Tool
