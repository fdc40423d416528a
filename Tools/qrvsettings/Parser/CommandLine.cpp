// SPDX-License-Identifier: MIT
#include "Parser/CommandLine.h"

#include <algorithm>
#include <optional>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "Commands/CommandTable.h"
#include "Options/Command.h"
#include "Parser/Help.h"
#include "Parser/Nearest.h"
#include "Process/StandardError.h"
#include "Process/StandardOutput.h"
#include "Reporting/Failure.h"
#include "Text/ShellWords.h"

namespace Tool {
namespace {

using Words = std::vector<std::string>;

/// Why a command line is refused.
class WrongUsage : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

bool isHelp(const std::string& word) {
    return word == "--help" || word == "-h";
}

const Option* optionNamed(const OptionList& options, const std::string& name) {
    const auto found = std::find_if(options.begin(), options.end(),
                                    [&name](const Option& one) { return one.name == name; });
    return found == options.end() || found->isArgument() ? nullptr : &*found;
}

std::string choiceOf(const Words& words) {
    std::string text;
    for (std::size_t index = 0; index < words.size(); ++index)
        text += (index == 0 ? "" : index + 1 == words.size() ? " or " : ", ") + words[index];
    return text;
}

ExitCode printed(const std::string& text) {
    print(text);
    return ExitCode::Done;
}

/// Reads a command line from left to right.
class Reader {
  public:
    explicit Reader(const Words& arguments) : rest_(arguments.rbegin(), arguments.rend()) {
        enter(program());
    }

    /// Does what the command line asks for. Throws WrongUsage, and Failure.
    ExitCode run();
    [[nodiscard]] std::string hint() const { return " (see " + nameOf(path_) + " --help)"; }

  private:
    void enter(const Command& command);
    [[nodiscard]] bool isCommand() const { return path_.back()->configure != nullptr; }
    [[nodiscard]] bool isPartNext() const {
        return path_.back()->partNamed(rest_.back()) != nullptr;
    }
    [[nodiscard]] std::string name() const { return nameOf({path_.begin() + 1, path_.end()}); }
    std::string take();

    void findCommand();
    void deferOption(const std::string& word);
    void enterPart(const std::string& word);
    void readWords();
    void takeOption(const std::string& word);
    std::string valueFor(const Option& option);
    void takeValue(const Option& option, const std::string& value);
    static void requireNoObjection(const Option& option, const std::string& value);
    void takeArguments();
    void requireNoExclusion() const;

    [[noreturn]] void refuseOption(const std::string& name) const;

    Words rest_;      ///< the last one is the next
    Words deferred_;  ///< options of the command, and their values, that stand before it
    std::vector<const Command*> path_;
    OptionList options_;
    Action action_;
    Words arguments_;
    std::set<std::string> given_;  ///< names of options and arguments
    std::string whereItWent_;      ///< of a word that an option took which may stand alone
    bool isHelpWanted_ = false;
    bool isVersionWanted_ = false;
};

void Reader::enter(const Command& command) {
    path_.push_back(&command);
    options_ = optionsEverywhere();
    if (command.configure == nullptr) return;
    Configuration configuration = command.configure();
    action_ = std::move(configuration.action);
    options_.insert(options_.begin(), configuration.options.begin(), configuration.options.end());
}

std::string Reader::take() {
    std::string word = std::move(rest_.back());
    rest_.pop_back();
    return word;
}

void Reader::enterPart(const std::string& word) {
    if (const Command* const part = path_.back()->partNamed(word)) return enter(*part);
    Words names;
    for (const Command& part : path_.back()->parts) names.emplace_back(part.name);
    if (path_.size() == 1)
        throw WrongUsage("there is no such command, " + shortened(word) + nearestOf(word, names));
    throw WrongUsage("there is no such command, " + name() + " " + shortened(word) + "; there is " +
                     choiceOf(names));
}

/// An option before the command is one of the command, which is not known yet.
void Reader::deferOption(const std::string& word) {
    const std::size_t end = word.find('=');
    const std::optional<Option> option = optionOfAnyPart(*path_.back(), word.substr(0, end));
    if (!option) refuseOption(word.substr(0, end));
    deferred_.push_back(word);
    if (option->takes == Takes::Nothing || end != word.npos || rest_.empty()) return;
    const bool mayStandAlone = !option->withoutValue.empty();
    if (!looksLikeOption(rest_.back()) &&
        !(mayStandAlone && path_.back()->partNamed(rest_.back()) != nullptr))
        deferred_.push_back(take());
    else if (mayStandAlone)
        deferred_.back() += "=" + option->withoutValue;
}

void Reader::findCommand() {
    while (!rest_.empty() && (!isCommand() || isPartNext())) {
        const std::string word = take();
        if (isHelp(word)) {
            isHelpWanted_ = true;
        } else if (word == "--version" && path_.size() == 1) {
            isVersionWanted_ = true;
            return;
        } else if (word == "--") {
            throw WrongUsage("there is no command before --");
        } else if (!looksLikeOption(word)) {
            if (isHelpWanted_ && path_.back()->partNamed(word) == nullptr) return;
            enterPart(word);
        } else if (optionNamed(options_, word.substr(0, word.find('='))) != nullptr) {
            takeOption(word);
        } else {
            deferOption(word);
        }
    }
}

void Reader::refuseOption(const std::string& option) const {
    Words names = {"--help"};
    for (const Option& one : options_)
        if (!one.isArgument()) names.push_back(one.name);
    const std::string whose =
        path_.size() == 1 ? "no command has an option " : name() + " has no option ";
    throw WrongUsage(whose + shortened(option) +
                     (option.starts_with("--")
                          ? nearestOf(option, names)
                          : "; an argument that begins with a dash goes after --"));
}

void Reader::takeOption(const std::string& word) {
    const std::size_t end = word.find('=');
    const Option* const option = optionNamed(options_, word.substr(0, end));
    if (option == nullptr) refuseOption(word.substr(0, end));
    const bool isFirst = given_.insert(option->name).second;
    if (option->takes == Takes::Nothing) {
        if (end != word.npos)
            throw WrongUsage(option->name + " takes no value: " + shortened(word));
        return option->store({});
    }
    if (!isFirst) throw WrongUsage(option->name + " stands there twice");
    takeValue(*option, end == word.npos ? valueFor(*option) : word.substr(end + 1));
}

std::string Reader::valueFor(const Option& option) {
    const bool isThere = !rest_.empty() && !looksLikeOption(rest_.back()) && rest_.back() != "--";
    if (isThere && !option.withoutValue.empty())
        whereItWent_ = ", as " + shortened(rest_.back()) + " is the " + option.valueName + " of " +
                       option.name;
    if (isThere) return take();
    if (!option.withoutValue.empty()) return option.withoutValue;
    throw WrongUsage(option.name + " needs a " + option.valueName + " behind it" +
                     (rest_.empty() ? ""
                                    : "; one that begins with a dash is written " + option.name +
                                          "=" + shortened(rest_.back())));
}

void Reader::requireNoObjection(const Option& option, const std::string& value) {
    if (!option.objection) return;
    if (const std::string objection = option.objection(value); !objection.empty())
        throw WrongUsage(option.name + ": " + objection);
}

void Reader::takeValue(const Option& option, const std::string& value) {
    if (option.takesOnlyWords &&
        std::find(option.words.begin(), option.words.end(), value) == option.words.end())
        throw WrongUsage(option.name + " takes " + choiceOf(option.words) + ", not " +
                         shortened(value));
    requireNoObjection(option, value);
    option.store({value});
}

void Reader::readWords() {
    bool areOptionsOver = false;
    rest_.insert(rest_.end(), deferred_.rbegin(), deferred_.rend());
    while (!rest_.empty()) {
        const std::string word = take();
        if (areOptionsOver || (word != "--" && !looksLikeOption(word)))
            arguments_.push_back(word);
        else if (word == "--")
            areOptionsOver = true;
        else if (isHelp(word))
            isHelpWanted_ = true;
        else
            takeOption(word);
    }
}

void Reader::takeArguments() {
    auto next = arguments_.begin();
    for (const Option& option : options_) {
        if (!option.isArgument()) continue;
        if (next == arguments_.end()) {
            if (option.isRequired)
                throw WrongUsage(option.name + " is missing" + whereItWent_ +
                                 "; usage: " + usageOf(path_, options_));
            return;
        }
        const auto end = option.isRepeated ? arguments_.end() : next + 1;
        given_.insert(option.name);
        for (auto word = next; word != end; ++word) requireNoObjection(option, *word);
        option.store({next, end});
        next = end;
    }
    if (next != arguments_.end())
        throw WrongUsage("one word too many, " + shortened(*next) +
                         "; usage: " + usageOf(path_, options_));
}

void Reader::requireNoExclusion() const {
    for (const Option& option : options_)
        if (given_.contains(option.name) && given_.contains(option.excludes))
            throw WrongUsage(option.excludes + " and " + option.name + " exclude each other");
}

ExitCode Reader::run() {
    findCommand();
    if (isVersionWanted_) return printed("qrvsettings " QRV_VERSION "\n");
    if (isCommand()) readWords();
    if (isHelpWanted_) return printed(helpOf(path_, options_));
    if (!isCommand()) throw WrongUsage("no command is named; usage: " + usageOf(path_, options_));
    takeArguments();
    requireNoExclusion();
    return action_();
}

}  // namespace

ExitCode runCommandLine(const std::vector<std::string>& arguments) {
    Reader reader(arguments);
    try {
        return reader.run();
    } catch (const WrongUsage& refusal) {
        say(refusal.what() + reader.hint());
        return ExitCode::WrongUsage;
    }
}

}  // namespace Tool
