// SPDX-License-Identifier: MIT
#include "Text/ShellCommands.h"

#include "QRVSettings/NSDictionary+QRV.h"
#include "Reporting/Notices.h"
#include "Reporting/PrintableText.h"
#include "Text/Differences.h"
#include "Text/JSON.h"
#include "Text/KeyPaths.h"

namespace Tool {
namespace {

/// `options` end with a blank.
std::string start(const std::string& operation, const std::string& options,
                  const std::string& profile) {
    const std::string option = profile.empty() ? "" : "--profile=" + shellWord(profile) + " ";
    return "qrvsettings " + operation + " " + options + option + "-- ";
}

using NSDictionaryQRV::objectAtKeyPath;

std::string quoted(std::string_view text) {
    std::string word = "'";
    for (const char character : text)
        word += character == '\'' ? std::string(R"('\'')") : std::string(1, character);
    return word + "'";
}

std::string octal(unsigned byte) {
    return {'\\', static_cast<char>('0' + (byte >> 6U)), static_cast<char>('0' + (byte >> 3U & 7U)),
            static_cast<char>('0' + (byte & 7U))};
}

/// What `printf` and the shell could take for something else is in octal, and all but ASCII.
std::string formatOfPrintf(std::string_view text) {
    constexpr std::string_view special = "\\%-'";
    std::string format;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        const bool isPlain = byte >= ' ' && byte < 0x7F && special.find(character) == special.npos;
        format += isPlain ? std::string(1, character) : octal(byte);
    }
    return format;
}

/// A command substitution drops the line ends at its end. `IFS` is a blank, a tab and a line end.
std::string printedWord(std::string_view text) {
    const std::size_t end = text.find_last_not_of('\n') + 1;
    std::string word =
        end == 0 ? "" : "\"$(printf '" + formatOfPrintf(text.substr(0, end)) + "')\"";
    for (std::size_t index = end; index < text.size(); ++index) word += R"("${IFS#??}")";
    return word;
}

}  // namespace

std::string shellWord(std::string_view text) {
    return holdsControls(text) ? printedWord(text) : quoted(text);
}

std::string unsetCommand(const std::string& keyPath) {
    if (keyPath.find('\0') == keyPath.npos) return "qrvsettings unset -- " + shellWord(keyPath);
    return "printf '%s\\n' " + shellWord("unset " + jsonText(keyPath)) + " | qrvsettings apply -";
}

// As JSON, so that the value needs no --type.
std::string shellCommand(const std::string& keyPath, const PropertyListValue& value,
                         const OptionsToSet& optionsToSet, const std::string& profile) {
    if (keyPath.find('\0') != keyPath.npos) {
        notice("no argument of a command can hold this key path, " + keyPath);
        return {};
    }
    if (value.isNull()) return start("unset", "", profile) + shellWord(keyPath) + "\n";
    return start("set", optionsToSet(keyPath, value), profile) + shellWord(keyPath) + " " +
           shellWord(jsonText(value)) + "\n";
}

std::string shellCommands(const std::vector<Difference>& differences, const NSDictionary& newTree,
                          const OptionsToSet& optionsToSet, const std::string& profile) {
    std::string lines;
    for (const Difference& difference : differences) {
        // A value that replaces a dictionary removes what was in it.
        const bool isGone = difference.newValue.isNull() && leafAbove(newTree, difference.keyPath);
        if (!difference.isReached)
            notice("no key path reaches this key, " + difference.keyPath);
        else if (!isGone)
            lines += shellCommand(difference.keyPath, objectAtKeyPath(newTree, difference.keyPath),
                                  optionsToSet, profile);
    }
    return lines;
}

}  // namespace Tool
