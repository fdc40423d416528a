// SPDX-License-Identifier: MIT
#include "Options/Completions.h"

#include <algorithm>

#include "Options/CommonOptions.h"
#include "Options/ValueCompletions.h"
#include "Reporting/Failure.h"
#include "Reporting/PrintableText.h"
#include "Settings/KnownLists.h"
#include "Settings/PendingChanges.h"
#include "Settings/ProfileScope.h"
#include "Settings/SettingsLayer.h"
#include "Text/KeyPaths.h"
#include "Text/ShellWords.h"

namespace Tool {
namespace {

template <typename Names>
Candidates withoutSentences(const Names& names) {
    Candidates words;
    for (const std::string& name : names) words.emplace(name, "");
    return words;
}

std::string sentenceOf(const KnownSetting* setting) {
    return setting == nullptr ? "" : setting->sentence;
}

/// As one line, whatever the files of others say.
std::string lineOf(std::string_view text) {
    return printable(text.substr(0, text.find('\n')));
}

/// Reads a command line as the parser does, but accepts errors.
class CommandLineSoFar {
  public:
    explicit CommandLineSoFar(const Command& program) : program_(program) { enter(program); }

    void take(const std::string& word);
    [[nodiscard]] std::optional<Candidates> completionsOf(const std::string& last) const;

  private:
    void enter(const Command& command);
    void takeOption(const std::string& word);
    void note(const Option& option, const std::string& value);
    [[nodiscard]] bool mayBeOption(const std::string& word) const {
        return !areOptionsOver_ && looksLikeOption(word);
    }
    [[nodiscard]] const Option* optionNamed(const std::string& name) const;
    [[nodiscard]] Candidates optionNames() const;
    [[nodiscard]] const Option* placeOfArgument() const;
    [[nodiscard]] std::optional<Candidates> wordsInPlace() const;
    [[nodiscard]] std::optional<Candidates> wordsFor(const Option& option) const;
    [[nodiscard]] Candidates keyPathsOf(const std::string& layer) const;

    const Command& program_;
    const Command* command_ = nullptr;
    OptionList options_;
    std::size_t argumentCount_ = 0;
    const Option* pendingOption_ = nullptr;  ///< its value is the next word
    std::string keyPath_;                    ///< the argument, where there is one
    std::optional<Option> early_;            ///< one that stands before its command
    std::string profile_;
    std::string layer_ = layerNames().front();
    bool areOptionsOver_ = false;
};

void CommandLineSoFar::enter(const Command& command) {
    command_ = &command;
    options_ = command.configure == nullptr ? OptionList() : command.configure().options;
    for (const Option& option : optionsEverywhere()) options_.push_back(option);
}

void CommandLineSoFar::take(const std::string& word) {
    if (pendingOption_ != nullptr) {
        note(*pendingOption_, word);
        pendingOption_ = nullptr;
    } else if (word == "--" && !areOptionsOver_) {
        areOptionsOver_ = true;
    } else if (mayBeOption(word)) {
        takeOption(word);
    } else if (const Command* const part = command_->partNamed(word)) {
        enter(*part);
    } else {
        const Option* const place = placeOfArgument();
        if (place != nullptr && place->takes == Takes::KeyPath) keyPath_ = word;
        ++argumentCount_;
    }
}

void CommandLineSoFar::takeOption(const std::string& word) {
    const std::size_t end = word.find('=');
    const Option* option = optionNamed(word.substr(0, end));
    if (option == nullptr && command_->configure == nullptr) {
        early_ = optionOfAnyPart(*command_, word.substr(0, end));
        option = early_ ? &*early_ : nullptr;
    }
    if (option == nullptr || option->takes == Takes::Nothing) return;
    if (end == word.npos)
        pendingOption_ = option;
    else
        note(*option, word.substr(end + 1));
}

void CommandLineSoFar::note(const Option& option, const std::string& value) {
    if (option.takes == Takes::Profile) profile_ = value;
    const std::vector<std::string>& layers = layerNames();
    if (option.takes == Takes::Layer && std::ranges::find(layers, value) != layers.end())
        layer_ = value;
}

const Option* CommandLineSoFar::optionNamed(const std::string& name) const {
    const auto found = std::find_if(options_.begin(), options_.end(),
                                    [&name](const Option& one) { return one.name == name; });
    return found == options_.end() ? nullptr : &*found;
}

std::optional<Candidates> CommandLineSoFar::completionsOf(const std::string& last) const {
    if (pendingOption_ != nullptr) return wordsFor(*pendingOption_);
    const std::size_t end = last.find('=');
    if (mayBeOption(last) && end != last.npos) {
        const Option* const option = optionNamed(last.substr(0, end));
        if (option == nullptr) return Candidates();
        Candidates words;
        for (const auto& [value, sentence] : wordsFor(*option).value_or(Candidates()))
            words.emplace(last.substr(0, end + 1) + value, sentence);
        return words;
    }
    if (last.starts_with('-') && !areOptionsOver_) return optionNames();
    return wordsInPlace();
}

Candidates CommandLineSoFar::optionNames() const {
    // The first ones are the parser's own.
    Candidates names = {{"--help", "Print what it does, with an example"}};
    if (command_ == &program_) names.emplace("--version", "Print the version");
    for (const Option& option : options_)
        if (!option.isArgument()) names.emplace(option.name, option.description);
    return names;
}

/// Where the next argument belongs; null where there is no place for it.
const Option* CommandLineSoFar::placeOfArgument() const {
    const Option* place = nullptr;
    std::size_t places = 0;
    for (const Option& option : options_)
        if (option.isArgument() && places <= argumentCount_) {
            place = &option;
            ++places;
        }
    const bool isFull = place != nullptr && places <= argumentCount_ && !place->isRepeated;
    return isFull ? nullptr : place;
}

std::optional<Candidates> CommandLineSoFar::wordsInPlace() const {
    Candidates names;
    if (argumentCount_ == 0)
        for (const Command& part : command_->parts) names.emplace(part.name, part.summary);
    const Option* const place = placeOfArgument();
    if (place == nullptr) return names;
    std::optional<Candidates> words = wordsFor(*place);
    if (words) words->merge(names);
    return words;
}

std::optional<Candidates> CommandLineSoFar::wordsFor(const Option& option) const {
    switch (option.takes) {
        case Takes::File:
            return std::nullopt;
        case Takes::KeyPath:
            return keyPathsOf(layer_);
        case Takes::KnownKeyPath:
            return knownKeyPaths();
        case Takes::Value:
            return valuesOf(keyPath_, ProfileScope(profile_));
        case Takes::Color:
            return colorsOf(keyPath_, ProfileScope(profile_));
        case Takes::StoredKeyPath:
            return keyPathsOf("stored");
        case Takes::Profile:
            return withoutSentences(profileNames());
        case Takes::Nothing:
        case Takes::Text:
        case Takes::Layer:
            break;
    }
    return withoutSentences(option.words);
}

Candidates CommandLineSoFar::keyPathsOf(const std::string& layer) const {
    const KnownLists lists = KnownLists::read();
    Candidates words;
    for (const auto& [keyPath, value] : SettingsLayer(layer, ProfileScope(profile_)).leaves())
        words.emplace(keyPath, sentenceOf(lists.at(keyPath)));
    return words;
}

void openLayers() {
    try {
        SettingsLayer(layerNames().front(), ProfileScope("")).open();
    } catch (const Failure&) {
        prepareWithoutStoredSettings();
    }
}

/// Other words hold characters that no command line can hold.
bool canBeTyped(const std::string& word) {
    return keyPathText(word) == word;
}

}  // namespace

std::optional<Candidates> completionsOf(const Command& program, std::vector<std::string> words) {
    CommandLineSoFar line(program);
    const std::string last = words.empty() ? "" : words.back();
    if (!words.empty()) words.pop_back();
    for (const std::string& word : words) line.take(word);
    openLayers();
    const auto candidates = line.completionsOf(last);
    if (!candidates) return std::nullopt;
    Candidates completions;
    for (const auto& [word, sentence] : *candidates)
        if (word.starts_with(last) && canBeTyped(word)) completions.emplace(word, lineOf(sentence));
    return completions;
}

}  // namespace Tool
