// SPDX-License-Identifier: MIT
#include "Completions.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <map>

#include "CommandLine.h"
#include "CommandOptions.h"
#include "KeyPaths.h"
#include "Layers.h"
#include "StartUp.h"

namespace Tool {
namespace {

using Words = std::set<std::string>;

Words wordsOf(const std::vector<std::string>& names) {
    return {names.begin(), names.end()};
}

/// Walks along a command line as the parser would, and forgives what it would refuse.
class CommandLineSoFar {
  public:
    explicit CommandLineSoFar(const CLI::App& program) : command_(&program) {}

    void take(const std::string& word);
    [[nodiscard]] std::optional<Words> completionsOf(const std::string& last) const;

  private:
    void takeOption(const std::string& word);
    void note(const std::string& option, const std::string& value);
    [[nodiscard]] bool looksLikeOption(const std::string& word) const {
        return !areOptionsOver_ && word.size() > 1 && word.starts_with('-');
    }
    [[nodiscard]] const CLI::App* commandNamed(const std::string& name) const;
    [[nodiscard]] Words optionNames() const;
    [[nodiscard]] std::optional<Words> positionals() const;
    [[nodiscard]] std::optional<Words> wordsFor(const std::string& place) const;
    [[nodiscard]] Words keyPaths() const;

    const CLI::App* command_;
    std::size_t positionalCount_ = 0;
    std::string pendingOption_;  ///< whose value is the next word
    std::string profile_;
    std::string layer_ = "effective";
    bool areOptionsOver_ = false;
};

void CommandLineSoFar::take(const std::string& word) {
    if (!pendingOption_.empty()) {
        note(pendingOption_, word);
        pendingOption_.clear();
    } else if (word == "--" && !areOptionsOver_) {
        areOptionsOver_ = true;
    } else if (looksLikeOption(word)) {
        takeOption(word);
    } else if (const CLI::App* named = commandNamed(word)) {
        command_ = named;
    } else {
        ++positionalCount_;
    }
}

void CommandLineSoFar::takeOption(const std::string& word) {
    const std::size_t end = word.find('=');
    const std::string name = word.substr(0, end);
    const CLI::Option* const option = command_->get_option_no_throw(name);
    if (option == nullptr || option->get_items_expected_max() == 0) return;
    if (end == word.npos)
        pendingOption_ = name;
    else
        note(name, word.substr(end + 1));
}

void CommandLineSoFar::note(const std::string& option, const std::string& value) {
    if (option == "--profile") profile_ = value;
    if (option == "--layer" && wordsOf(layerNames()).count(value) > 0) layer_ = value;
}

const CLI::App* CommandLineSoFar::commandNamed(const std::string& name) const {
    for (const CLI::App* command : command_->get_subcommands([](const CLI::App*) { return true; }))
        if (command->get_name() == name) return command;
    return nullptr;
}

std::optional<Words> CommandLineSoFar::completionsOf(const std::string& last) const {
    if (!pendingOption_.empty()) return wordsFor(pendingOption_);
    const std::size_t end = last.find('=');
    if (looksLikeOption(last) && end != last.npos) {
        Words words;
        for (const std::string& value : wordsFor(last.substr(0, end)).value_or(Words()))
            words.insert(last.substr(0, end + 1) + value);
        return words;
    }
    if (last.starts_with('-') && !areOptionsOver_) return optionNames();
    return positionals();
}

Words CommandLineSoFar::optionNames() const {
    Words names;
    for (const CLI::Option* option : command_->get_options())
        for (const std::string& name : option->get_lnames()) names.insert("--" + name);
    return names;
}

std::optional<Words> CommandLineSoFar::positionals() const {
    Words names;
    for (const CLI::App* command : command_->get_subcommands([](const CLI::App*) { return true; }))
        names.insert(command->get_name());
    if (!names.empty()) return names;
    const auto places =
        command_->get_options([](const CLI::Option* option) { return option->get_positional(); });
    if (places.empty()) return names;
    const bool isPast = positionalCount_ >= places.size();
    const CLI::Option& place = isPast ? *places.back() : *places[positionalCount_];
    if (isPast && place.get_items_expected_max() == 1) return names;
    return wordsFor(place.get_name(true));
}

std::optional<Words> CommandLineSoFar::wordsFor(const std::string& place) const {
    if (place == "FILE") return std::nullopt;
    if (place == "KEYPATH" || place == "PREFIX") return keyPaths();
    if (place == "--profile") return profileNames();
    if (place == "--layer") return wordsOf(layerNames());
    if (place == "--type") return wordsOf(typeNames());
    if (place == "NAME") return Words{"dark", "light"};
    return Words();
}

/// Of what is to be removed only what is there.
Words CommandLineSoFar::keyPaths() const {
    const std::string layer = command_->get_name() == "unset" ? "stored" : layer_;
    Words words;
    for (const auto& [keyPath, value] : Layer(layer, Scope(profile_)).leaves())
        words.emplace(keyPath);
    return words;
}

void openLayers() {
    try {
        Layer("effective", Scope("")).open();
    } catch (const Failure&) {
        startUpOnNothing();
    }
}

/// No shell's line can hold the others as they are.
bool canBeTyped(const std::string& word) {
    return keyPathText(word) == word;
}

}  // namespace

std::optional<std::set<std::string>> completionsOf(std::vector<std::string> words) {
    CLI::App program;
    Action unused;
    describeProgram(program, unused);
    CommandLineSoFar line(program);
    const std::string last = words.empty() ? "" : words.back();
    if (!words.empty()) words.pop_back();
    for (const std::string& word : words) line.take(word);
    openLayers();
    const auto candidates = line.completionsOf(last);
    if (!candidates) return std::nullopt;
    std::set<std::string> completions;
    for (const std::string& candidate : *candidates)
        if (candidate.starts_with(last) && canBeTyped(candidate)) completions.insert(candidate);
    return completions;
}

}  // namespace Tool
