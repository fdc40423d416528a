// SPDX-License-Identifier: MIT
// Findings as words, and from one process to another.

#include <algorithm>
#include <array>
#include <exception>
#include <utility>

#include "Doctor/Doctor.h"
#include "Reporting/Failure.h"
#include "Text/JSON.h"
#include "Text/ShellWords.h"

namespace Tool {
namespace {

using About = Finding::About;
using Level = Finding::Level;

constexpr std::array levels{Level::Note, Level::Warning, Level::Error};
constexpr std::array<std::pair<About, const char*>, 6> abouts{
    {{About::Other, "other"},
     {About::Missing, "missing"},
     {About::Unreadable, "unreadable"},
     {About::Damaged, "damaged"},
     {About::NotSavable, "notSavable"},
     {About::Preparation, "preparation"}}};

std::string aboutWord(About about) {
    for (const auto& [one, word] : abouts)
        if (one == about) return word;
    return {};
}

[[noreturn]] void refuse() {
    throw Failure(Fault::WrongValue, "these are no findings");
}

Level levelFromWord(const std::string& word) {
    for (const Level level : levels)
        if (levelWord(level) == word) return level;
    refuse();
}

About aboutFromWord(const std::string& word) {
    for (const auto& [about, one] : abouts)
        if (one == word) return about;
    refuse();
}

std::string textOf(const NSDictionary& object, const char* key) {
    const PropertyListValue value = object.objectForKey(key);
    if (!value.isString()) refuse();
    return value.stringValue();
}

Finding findingFrom(const PropertyListValue& value) {
    if (!value.isDictionary()) refuse();
    const NSDictionary object = value.dictionary();
    return {levelFromWord(textOf(object, "level")), textOf(object, "message"),
            textOf(object, "advice"), textOf(object, "keyPath"),
            aboutFromWord(textOf(object, "about"))};
}

/// Whether a shell would run it: a program with arguments, none of them a placeholder.
bool isRunnable(const std::string& command) {
    try {
        const std::vector<ShellWord> words = shellWordsOf(command);
        const auto isPlaceholder = [](const ShellWord& word) {
            return word.text == "FILE" || word.text == "KEYPATH" || word.text.ends_with(',');
        };
        return words.size() > 1 && std::none_of(words.begin(), words.end(), isPlaceholder);
    } catch (const Failure&) {
        return false;
    }
}

/// Whether each command is runnable, up to a semicolon outside of quotation marks, where `end` is
/// then.
bool areRunnable(const std::string& text, std::size_t& end) {
    bool isQuoted = false;
    std::size_t start = 0;
    for (end = 0; end < text.size() && (isQuoted || text[end] != ';'); ++end) {
        if (text[end] == '\'') isQuoted = !isQuoted;
        if (isQuoted || (text[end] != '&' && text[end] != '|')) continue;
        if (!isRunnable(text.substr(start, end - start))) return false;
        if (text.compare(end, 2, "&&") == 0) ++end;
        start = end + 1;
    }
    return isRunnable(text.substr(start, end - start));
}

}  // namespace

std::string levelWord(Level level) {
    switch (level) {
        case Level::Note:
            return "note";
        case Level::Warning:
            return "warning";
        case Level::Error:
            break;
    }
    return "error";
}

std::string commandOfAdvice(const std::string& advice) {
    const std::size_t colon = advice.find(": ");
    if (colon == advice.npos) return {};
    const std::string text = advice.substr(colon + 2);
    std::size_t end = 0;
    return areRunnable(text, end) ? text.substr(0, end) : "";
}

std::string lineOf(const std::vector<Finding>& findings) {
    NSMutableArray objects;
    for (const Finding& finding : findings)
        objects.addObject(NSDictionary{{"level", levelWord(finding.level)},
                                       {"message", finding.message},
                                       {"advice", finding.advice},
                                       {"keyPath", finding.keyPath},
                                       {"about", aboutWord(finding.about)}});
    return jsonText(objects);
}

std::vector<Finding> findingsFromLine(std::string_view line) {
    const PropertyListValue value = valueFromJSON(line);
    if (!value.isArray()) refuse();
    std::vector<Finding> findings;
    for (const PropertyListValue& one : value.array()) findings.push_back(findingFrom(one));
    return findings;
}

Diagnosis diagnosisOfSettings() {
    Diagnosis diagnosis;
    const NSDictionary settings = examineFile(diagnosis);
    examineMachine(diagnosis, settings);
    examineSettings(diagnosis, settings);
    examineLists(diagnosis);
    return diagnosis;
}

}  // namespace Tool
