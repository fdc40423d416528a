// SPDX-License-Identifier: MIT
// Prints scripts that make a shell complete command lines, and the words that these ask for.

#include "Commands/CommandTable.h"
#include "Options/Completions.h"
#include "Process/ExitCode.h"
#include "Process/StandardOutput.h"
#include "Reporting/Failure.h"

namespace Tool {
namespace {

struct Options {
    std::vector<std::string> words;
};

ExitCode printCandidates(const Options& options) {
    const auto candidates = completionsOf(program(), options.words);
    if (!candidates) return ExitCode::Done;
    if (candidates->empty()) throw Failure(Fault::NotSet, "nothing can be completed");
    std::string lines;
    for (const auto& [word, sentence] : *candidates) {
        lines += word;
        if (!sentence.empty()) lines.append("\t").append(sentence);
        lines += '\n';
    }
    print(lines);
    return ExitCode::Done;
}

OptionList declare(Options& options) {
    return {texts("WORD", options.words,
                  "The words of a command line after its first, as far as typed")};
}

ExitCode printed(std::string_view script) {
    print(script);
    return ExitCode::Done;
}

}  // namespace

Configuration configureBash() {
    return {{}, [] { return printed(bashScript()); }};
}

Configuration configureZsh() {
    return {{}, [] { return printed(zshScript()); }};
}

Configuration configureFish() {
    return {{}, [] { return printed(fishScript()); }};
}

Configuration configureCandidates() {
    return configured(declare, printCandidates);
}

}  // namespace Tool
