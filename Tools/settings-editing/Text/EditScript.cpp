// SPDX-License-Identifier: MIT
#include "Text/EditScript.h"

#include <algorithm>
#include <string_view>

#include "QRVSettings/NSDictionary+QRV.h"
#include "Reporting/Failure.h"
#include "Text/FileForm.h"
#include "Text/JSON.h"
#include "Text/ValueText.h"

namespace Tool {
namespace {

constexpr std::string_view blanks = " \t";

[[noreturn]] void refuse(const std::string& why) {
    throw Failure(Fault::WrongValue, why);
}

void skipBlanks(std::string_view& rest) {
    rest.remove_prefix(std::min(rest.find_first_not_of(blanks), rest.size()));
}

std::string_view takeUpTo(std::string_view& rest, std::size_t end) {
    const std::string_view taken = rest.substr(0, end);
    rest.remove_prefix(taken.size());
    return taken;
}

std::string_view takeWord(std::string_view& rest) {
    return takeUpTo(rest, rest.find_first_of(blanks));
}

/// Returns the quotation marks too; the whole rest when the second one is missing.
std::string_view takeQuoted(std::string_view& rest) {
    std::size_t end = 1;
    while (end < rest.size() && rest[end] != '"') end += rest[end] == '\\' ? 2 : 1;
    return takeUpTo(rest, end + 1);
}

std::string takeKeyPath(std::string_view& rest) {
    if (rest.empty()) refuse("no key path");
    if (!rest.starts_with('"')) return std::string(takeWord(rest));
    std::string keyPath = valueFromJSON(takeQuoted(rest)).stringValue();
    if (!rest.empty() && blanks.find(rest.front()) == blanks.npos)
        refuse("no blank after the key path: " + shortened(rest));
    return keyPath;
}

/// A storable value is not enough: the key path may have too many levels.
void requireStorableSetting(const Edit& edit) {
    const NSMutableDictionary tree;
    NSDictionaryQRV::setObjectAtKeyPath(tree, edit.value, edit.keyPath);
    requireStorable(tree);
}

Edit editFromLine(std::string_view line, std::size_t number) {
    const std::string_view operation = takeWord(line);
    if (operation != "set" && operation != "unset")
        refuse("neither set nor unset: " + shortened(operation));
    skipBlanks(line);
    Edit edit{number, takeKeyPath(line), nullptr};
    skipBlanks(line);
    if (operation == "set") {
        if (line.empty())
            refuse("no value for " + shortened(edit.keyPath) + " (\"\" is empty text)");
        edit.value = valueFromText(std::string(line), "");
        requireStorableSetting(edit);
    } else if (!line.empty()) {
        refuse("more than a key path: " + shortened(line));
    }
    return edit;
}

/// Without "\n" or "\r\n", and without blanks around it.
std::string_view takeLine(std::string_view& text) {
    std::string_view line = takeUpTo(text, text.find('\n'));
    if (!text.empty()) text.remove_prefix(1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    skipBlanks(line);
    return line.substr(0, line.find_last_not_of(blanks) + 1);
}

}  // namespace

std::vector<Edit> editsFromScript(std::string_view text, const std::string& name) {
    std::vector<Edit> edits;
    for (std::size_t number = 1; !text.empty(); ++number) {
        const std::string_view line = takeLine(text);
        try {
            requireUTF8(std::string(line));
            if (!line.empty() && !line.starts_with('#'))
                edits.push_back(editFromLine(line, number));
        } catch (const Failure& failure) {
            throw Failure(failure.fault(), atLine(name, number, failure.what()));
        }
    }
    return edits;
}

std::string atLine(const std::string& name, std::size_t line, const std::string& fault) {
    return name + ":" + std::to_string(line) + ": " + fault;
}

}  // namespace Tool
