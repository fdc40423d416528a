// SPDX-License-Identifier: MIT
// Prints facts and findings about the settings file.

#include <algorithm>

#include "Commands/CommandTable.h"
#include "Commands/FactLines.h"
#include "Doctor/Doctor.h"
#include "Options/CommonOptions.h"
#include "Process/ExitCode.h"
#include "Process/StandardOutput.h"
#include "Reporting/PrintableText.h"
#include "Text/JSON.h"
#include "Text/ValueText.h"

namespace Tool {
namespace {

bool needsAPerson(const Finding& finding) {
    return finding.level != Finding::Level::Note;
}

std::string linesOf(const Diagnosis& diagnosis) {
    std::vector<Fact> facts;
    facts.reserve(diagnosis.facts.size());
    for (const ExaminedFact& fact : diagnosis.facts)
        facts.push_back({fact.name, printable(fact.text)});
    std::string text = factLines(facts);
    for (const Finding& finding : diagnosis.findings)
        text += "\n" + levelWord(finding.level) + ": " + printable(finding.message) +
                "\n  to do: " + printable(finding.advice) + "\n";
    return text;
}

NSDictionary objectOf(const Finding& finding) {
    return {{"level", levelWord(finding.level)},
            {"message", finding.message},
            {"advice", finding.advice},
            {"keyPath", orNullMarker(finding.keyPath)}};
}

std::string jsonOf(const Diagnosis& diagnosis) {
    NSMutableDictionary facts;
    for (const ExaminedFact& fact : diagnosis.facts) facts.setObjectForKey(fact.value, fact.name);
    NSMutableArray findings;
    for (const Finding& finding : diagnosis.findings) findings.addObject(objectOf(finding));
    return jsonText(NSDictionary{{"facts", facts}, {"findings", findings}}) + "\n";
}

struct Options {
    bool json = false;
};

ExitCode doctor(const Options& options) {
    const Diagnosis diagnosis = diagnosisOfSettings();
    print(options.json ? jsonOf(diagnosis) : linesOf(diagnosis));
    return std::any_of(diagnosis.findings.begin(), diagnosis.findings.end(), needsAPerson)
               ? ExitCode::NotSet
               : ExitCode::Done;
}

OptionList declare(Options& options) {
    return {jsonFlag(options.json, "Print one JSON object of facts and findings")};
}

}  // namespace

Configuration configureDoctor() {
    return configured(declare, doctor);
}

}  // namespace Tool
