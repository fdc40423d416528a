// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

#include "CommandOptions.h"
#include "Commands.h"
#include "Doctor.h"
#include "FactLines.h"
#include "JSON.h"
#include "Output.h"

namespace Tool {
namespace {

std::string levelText(Finding::Level level) {
    switch (level) {
        case Finding::Level::Note:
            return "note";
        case Finding::Level::Warning:
            return "warning";
        case Finding::Level::Error:
            break;
    }
    return "error";
}

bool needsAPerson(const Finding& finding) {
    return finding.level != Finding::Level::Note;
}

/// Messages quote paths and keys, which may hold anything.
std::string onOneLine(std::string text) {
    std::replace_if(
        text.begin(), text.end(),
        [](char character) { return static_cast<unsigned char>(character) < ' '; }, '?');
    return text;
}

std::string linesOf(const Diagnosis& diagnosis) {
    std::vector<Fact> facts;
    facts.reserve(diagnosis.facts.size());
    for (const ExaminedFact& fact : diagnosis.facts)
        facts.push_back({fact.name, onOneLine(fact.text)});
    std::string text = factLines(facts);
    for (const Finding& finding : diagnosis.findings)
        text += "\n" + levelText(finding.level) + ": " + onOneLine(finding.message) +
                "\n  to do: " + onOneLine(finding.advice) + "\n";
    return text;
}

NSDictionary objectOf(const Finding& finding) {
    return {{"level", levelText(finding.level)},
            {"message", finding.message},
            {"advice", finding.advice},
            {"keyPath", finding.keyPath.empty() ? PropertyListValue(NSNull())
                                                : PropertyListValue(finding.keyPath)}};
}

std::string jsonOf(const Diagnosis& diagnosis) {
    NSMutableDictionary facts;
    for (const ExaminedFact& fact : diagnosis.facts) facts.setObjectForKey(fact.value, fact.name);
    NSMutableArray findings;
    for (const Finding& finding : diagnosis.findings) findings.addObject(objectOf(finding));
    return jsonText(NSDictionary{{"facts", facts}, {"findings", findings}}) + "\n";
}

ExitCode doctor(bool json) {
    Diagnosis diagnosis;
    const NSDictionary settings = examineFile(diagnosis);
    examineSettings(diagnosis, settings);
    print(json ? jsonOf(diagnosis) : linesOf(diagnosis));
    return std::any_of(diagnosis.findings.begin(), diagnosis.findings.end(), needsAPerson)
               ? ExitCode::NotSet
               : ExitCode::Done;
}

}  // namespace

void addDoctorCommand(CLI::App& program, Action& action) {
    CLI::App& command = *program.add_subcommand(
        "doctor", "Examine the settings file: what is wrong, and what to do about it");
    const auto json = std::make_shared<bool>(false);
    addJSON(command, *json, "Print one JSON object of facts and findings");
    command.footer(
        "After what there is to know come the findings: notes need nobody, warnings and errors\n"
        "need a person, and then the exit code is 1. A key path that no default has is found when\n"
        "it is one slip away from one that is known; other key paths are not judged.\n\n"
        "Example: qrvsettings doctor");
    command.callback([json, &action] { action = [json] { return doctor(*json); }; });
}

}  // namespace Tool
