// SPDX-License-Identifier: MIT
#include "Text/EditScript.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "QRVSettings/StoreKeyPaths.h"
#include "Reporting/Failure.h"
#include "Text/FileForm.h"
#include "Text/JSON.h"
#include "Text/JSONReader.h"
#include "Text/ShellWords.h"
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

std::string typeNamed(const std::string& name) {
    if (std::find(valueTypes().begin(), valueTypes().end(), name) != valueTypes().end())
        return name;
    std::string names;
    for (const std::string& type : valueTypes()) names += (names.empty() ? "" : ", ") + type;
    refuse("not a type of values (" + names + "): " + shortened(name));
}

std::string profileNamed(const std::string& name) {
    if (name.empty()) refuse("the name of the profile is empty");
    return name;
}

/// A storable value is not enough: the key path may have too many levels.
void requireStorableSetting(const Edit& edit) {
    std::string keyPath = edit.keyPath;
    if (!edit.profile.empty())
        keyPath = std::string(QRVStoreKeyPaths::profiles) + "." + edit.profile + "." + keyPath;
    requireStorable(edit.value, keyPath);
}

/// Runs `read` on text that begins at `start`; a fault in JSON gets its column in the line.
template <typename Read>
auto readAt(const char* lineStart, const char* start, Read&& read) {
    try {
        return read();
    } catch (const JSONFault& fault) {
        const std::string_view before(lineStart, static_cast<std::size_t>(start - lineStart));
        throw JSONFault(1, characterCount(before) + fault.column(), fault.reason());
    }
}

/// What stands before the value of a set, or the key paths of an unset, in either form of a line.
struct Operation {
    std::string name;
    std::string type;
    std::string profile;
    bool isNew = false;
    bool isOfAnyKind = false;

    [[nodiscard]] bool isSet() const { return name == "set"; }
    void start(const std::string& word);
    /// False where there is no such option without a value.
    bool takeFlag(std::string_view option);
    void requireOption(std::string_view option) const;
    void takeOption(std::string_view option, const std::string& value);
    [[nodiscard]] Edit edit(std::size_t number, std::string keyPath, PropertyListValue value) const;
};

void Operation::start(const std::string& word) {
    if (word != "set" && word != "unset") refuse("neither set nor unset: " + shortened(word));
    name = word;
}

bool Operation::takeFlag(std::string_view option) {
    if (isSet() && option == "--new") return isNew = true;
    if (isSet() && option == "--any-kind") return isOfAnyKind = true;
    return false;
}

void Operation::requireOption(std::string_view option) const {
    if (option != "--profile" && !(option == "--type" && isSet()))
        refuse("no option of " + name + " in a line: " + shortened(option) +
               " (a key path or value that begins with -- goes after --)");
}

void Operation::takeOption(std::string_view option, const std::string& value) {
    if (option == "--type")
        type = typeNamed(value);
    else
        profile = profileNamed(value);
}

Edit Operation::edit(std::size_t number, std::string keyPath, PropertyListValue value) const {
    return {number, std::move(keyPath), std::move(value), profile, isNew, isOfAnyKind};
}

/// Reads one line from its start.
class LineReader {
  public:
    LineReader(std::string_view line, const char* lineStart) : rest_(line), lineStart_(lineStart) {}
    Edit edit(std::size_t number);

  private:
    std::string takeName(const std::string& what);
    void takeOptions();
    void takeOption(std::string_view name);
    std::string takeKeyPath();
    PropertyListValue takeValue(const std::string& keyPath);

    std::string_view rest_;
    const char* lineStart_;
    Operation operation_;
    bool areOptionsOver_ = false;
};

/// A word, or a JSON string that may hold blanks.
std::string LineReader::takeName(const std::string& what) {
    if (!rest_.starts_with('"')) return std::string(takeWord(rest_));
    const char* const start = rest_.data();
    const std::string_view quoted = takeQuoted(rest_);
    std::string name =
        readAt(lineStart_, start, [&] { return valueFromJSON(quoted).stringValue(); });
    if (!rest_.empty() && blanks.find(rest_.front()) == blanks.npos)
        refuse("no blank after " + what + ": " + shortened(rest_));
    return name;
}

void LineReader::takeOptions() {
    skipBlanks(rest_);
    while (!areOptionsOver_ && rest_.starts_with("--")) {
        const std::string_view name = takeUpTo(rest_, rest_.find_first_of(" \t="));
        if (name == "--" && !rest_.starts_with('='))
            areOptionsOver_ = true;
        else if (rest_.starts_with('=') || !operation_.takeFlag(name))
            takeOption(name);
        skipBlanks(rest_);
    }
}

void LineReader::takeOption(std::string_view name) {
    operation_.requireOption(name);
    if (rest_.starts_with('='))
        rest_.remove_prefix(1);
    else
        skipBlanks(rest_);
    if (rest_.empty()) refuse("no value for " + std::string(name));
    operation_.takeOption(name, takeName("the value of " + std::string(name)));
}

std::string LineReader::takeKeyPath() {
    if (rest_.empty()) refuse("no key path");
    return takeName("the key path");
}

PropertyListValue LineReader::takeValue(const std::string& keyPath) {
    if (rest_.empty()) refuse("no value for " + shortened(keyPath) + " (\"\" is empty text)");
    return readAt(lineStart_, rest_.data(),
                  [this] { return valueFromText(std::string(rest_), operation_.type); });
}

Edit LineReader::edit(std::size_t number) {
    operation_.start(std::string(takeWord(rest_)));
    takeOptions();
    const std::string keyPath = takeKeyPath();
    takeOptions();
    if (operation_.isSet()) return operation_.edit(number, keyPath, takeValue(keyPath));
    if (!rest_.empty()) refuse("more than a key path: " + shortened(rest_));
    return operation_.edit(number, keyPath, nullptr);
}

/// Reads one command for a shell.
class CommandReader {
  public:
    CommandReader(std::string_view line, const char* lineStart)
        : words_(shellWordsOf(line)), lineStart_(lineStart) {}
    std::vector<Edit> edits(std::size_t number);

  private:
    void takeWords();
    void takeOption(const std::string& word);
    [[nodiscard]] PropertyListValue valueOf(const ShellWord& word) const;

    std::vector<ShellWord> words_;
    std::size_t next_ = 1;  ///< after the name of the program
    std::vector<ShellWord> arguments_;
    const char* lineStart_;
    Operation operation_;
};

void CommandReader::takeOption(const std::string& word) {
    const std::size_t end = word.find('=');
    const std::string name = word.substr(0, end);
    operation_.requireOption(name);
    const bool isAlone =
        next_ == words_.size() || words_[next_].text == "--" || looksLikeOption(words_[next_].text);
    if (end != word.npos)
        operation_.takeOption(name, word.substr(end + 1));
    else if (!isAlone)
        operation_.takeOption(name, words_[next_++].text);
    else if (name == "--profile")
        operation_.takeOption(name, "default");
    else
        refuse("no value for " + name);
}

void CommandReader::takeWords() {
    operation_.start(next_ == words_.size() ? "" : words_[next_].text);
    ++next_;
    bool areOptionsOver = false;
    while (next_ < words_.size()) {
        const ShellWord& word = words_[next_++];
        if (areOptionsOver || (word.text != "--" && !looksLikeOption(word.text)))
            arguments_.push_back(word);
        else if (word.text == "--")
            areOptionsOver = true;
        else if (!operation_.takeFlag(word.text))
            takeOption(word.text);
    }
}

PropertyListValue CommandReader::valueOf(const ShellWord& word) const {
    if (word.text == "-") refuse("a lone - would read standard input");
    const bool isQuoted = *word.start == '\'' || *word.start == '"';
    return readAt(lineStart_, word.start + (isQuoted ? 1 : 0),
                  [&] { return valueFromText(word.text, operation_.type); });
}

std::vector<Edit> CommandReader::edits(std::size_t number) {
    takeWords();
    if (arguments_.empty()) refuse("no key path");
    std::vector<Edit> edits;
    if (operation_.isSet()) {
        if (arguments_.size() == 1) refuse("no value for " + shortened(arguments_.front().text));
        if (arguments_.size() > 2)
            refuse("more than a key path and a value: " + shortened(arguments_[2].text));
        edits.push_back(
            operation_.edit(number, arguments_.front().text, valueOf(arguments_.back())));
    } else {
        for (const ShellWord& keyPath : arguments_)
            edits.push_back(operation_.edit(number, keyPath.text, nullptr));
    }
    return edits;
}

bool isCommand(std::string_view line) {
    constexpr std::string_view program = "qrvsettings";
    return line.starts_with(program) &&
           (line.size() == program.size() || blanks.find(line[program.size()]) != blanks.npos);
}

std::vector<Edit> editsOfLine(std::string_view line, const char* lineStart, std::size_t number) {
    requireUTF8(std::string(line));
    if (line.empty() || line.starts_with('#')) return {};
    std::vector<Edit> edits = isCommand(line)
                                  ? CommandReader(line, lineStart).edits(number)
                                  : std::vector<Edit>{LineReader(line, lineStart).edit(number)};
    for (const Edit& edit : edits) {
        requireUTF8(edit.keyPath + edit.profile);
        if (!edit.value.isNull()) requireStorableSetting(edit);
    }
    return edits;
}

void refuseByteOrderMark(std::string_view line) {
    if (line.starts_with("\xEF\xBB\xBF"))
        refuse("the text begins with a byte order mark; save it as UTF-8 without one");
    if (line.starts_with("\xFE\xFF") || line.starts_with("\xFF\xFE"))
        refuse("the text is not UTF-8 but UTF-16 or UTF-32");
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
        const char* const lineStart = text.data();
        const std::string_view line = takeLine(text);
        try {
            if (number == 1) refuseByteOrderMark(line);
            for (Edit& edit : editsOfLine(line, lineStart, number))
                edits.push_back(std::move(edit));
        } catch (const JSONFault& fault) {
            throw Failure(fault.fault(), name + ":" + std::to_string(number) + ":" +
                                             std::to_string(fault.column()) +
                                             ": wrong JSON: " + fault.reason());
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
