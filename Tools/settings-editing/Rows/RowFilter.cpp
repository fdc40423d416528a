// SPDX-License-Identifier: MIT
#include "Rows/RowFilter.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

#include "QRVSettings/QRVKnownSettings.h"
#include "Settings/SettingDescription.h"
#include "Text/LetterCase.h"
#include "Text/ValueText.h"

namespace Tool {
namespace {

bool isBlank(char character) {
    return character == ' ' || ('\t' <= character && character <= '\r');
}

/// One word as it is written.
struct Word {
    std::string text;
    bool isLeftOut = false;
    bool isQuoted = false;
};

/// Takes the next word off the text; no text is left after the last one.
Word takeWord(std::string_view& text) {
    Word word;
    if (text.size() > 1 && text[0] == '-' && !isBlank(text[1])) {
        word.isLeftOut = true;
        text.remove_prefix(1);
    }
    word.isQuoted = text.starts_with('"');
    if (word.isQuoted) text.remove_prefix(1);
    const auto isEnd = [&word](char character) {
        return word.isQuoted ? character == '"' : isBlank(character);
    };
    const auto end = std::ranges::find_if(text, isEnd);
    word.text = std::string(text.begin(), end);
    text.remove_prefix(std::min(word.text.size() + (word.isQuoted ? 1 : 0), text.size()));
    return word;
}

std::vector<Word> wordsOf(std::string_view text) {
    std::vector<Word> words;
    while (true) {
        const auto start = std::ranges::find_if_not(text, isBlank);
        text.remove_prefix(static_cast<std::size_t>(start - text.begin()));
        if (text.empty()) return words;
        words.push_back(takeWord(text));
    }
}

/// How many characters must be inserted, removed or replaced to make one word the other.
std::size_t editsBetween(std::string_view one, std::string_view other) {
    std::vector<std::size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < one.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < other.size(); ++j) {
            const std::size_t replaced = diagonal + (one[i] == other[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

std::string_view fieldOf(std::string_view word) {
    return word.substr(0, word.find(':') + 1);
}

/// The words of a field: "is:modified, is:pending, ...".
std::string choicesOf(std::string_view field) {
    std::string text;
    for (const std::string& word : RowFilter::wordsWithMeaning())
        if (word.starts_with(field)) text += (text.empty() ? "" : ", ") + word;
    return text;
}

std::string faultOf(const std::string& word) {
    const auto edits = [&word](const std::string& other) { return editsBetween(word, other); };
    const auto& words = RowFilter::wordsWithMeaning();
    const std::string& nearest = *std::ranges::min_element(words, {}, edits);
    constexpr std::size_t mostEditsOfTypo = 2;
    if (edits(nearest) <= mostEditsOfTypo)
        return word + " has no meaning; did you mean " + nearest + "?";
    return word + " has no meaning; there are " + choicesOf(fieldOf(word));
}

QRVSettingScope scopeOfRow(const SettingRow& row) {
    return row.known == nullptr ? QRVScopeOfKeyPath(row.keyPath) : row.known->scope;
}

bool isAsWord(const SettingRow& row, RowMarks marks, const std::string& word) {
    if (word == "modified") return row.isModified;
    if (word == "pending") return marks.isPending;
    if (word == "live") return marks.isLive;
    if (word == "record") return row.isRecord;
    if (word == "locked") return row.isLocked;
    return row.known != nullptr;
}

/// What the header promises of letter case.
std::string inSmallLetters(std::string text) {
    text = lowercase(std::move(text));
    constexpr unsigned firstByte = 0xc3;  // of U+00C0 to U+00FF
    for (std::size_t index = 0; index + 1 < text.size(); ++index) {
        const unsigned second = static_cast<unsigned char>(text[index + 1]);
        const bool isCapital = 0x80 <= second && second <= 0x9e && second != 0x97;
        if (static_cast<unsigned char>(text[index]) == firstByte && isCapital)
            text[index + 1] = static_cast<char>(second + 0x20);
    }
    return text;
}

}  // namespace

RowFilter::Term RowFilter::termOf(std::string word, bool isLeftOut) {
    static const std::array<std::pair<std::string_view, Term::Field>, 4> fields = {
        {{"is:", Term::Field::Is},
         {"kind:", Term::Field::Kind},
         {"layer:", Term::Field::Layer},
         {"scope:", Term::Field::Scope}}};
    const auto* const field =
        std::ranges::find(fields, fieldOf(word), &decltype(fields)::value_type::first);
    if (field == fields.end()) return {Term::Field::Text, std::move(word), isLeftOut};
    if (std::ranges::count(wordsWithMeaning(), word) == 0)
        return {Term::Field::Wrong, std::move(word), isLeftOut};
    return {field->second, word.substr(field->first.size()), isLeftOut};
}

RowFilter::RowFilter(std::string_view text) : text_(text) {
    for (Word& word : wordsOf(text)) {
        std::string small = inSmallLetters(std::move(word.text));
        if (word.isQuoted && small.empty()) continue;
        terms_.push_back(word.isQuoted ? Term{Term::Field::Text, std::move(small), word.isLeftOut}
                                       : termOf(std::move(small), word.isLeftOut));
        if (terms_.back().field == Term::Field::Wrong)
            faults_.push_back(faultOf(terms_.back().word));
    }
}

bool RowFilter::asksFor(Term::Field field, std::string_view word) const {
    return std::ranges::any_of(terms_, [&](const Term& term) {
        return term.field == field && term.word == word && !term.isLeftOut;
    });
}

bool RowFilter::asksForRecords() const {
    return asksFor(Term::Field::Is, "record") || asksFor(Term::Field::Scope, "record");
}

bool RowFilter::asksForModified() const {
    return asksFor(Term::Field::Is, "modified");
}

bool RowFilter::looksAtText() const {
    return std::ranges::any_of(terms_,
                               [](const Term& term) { return term.field == Term::Field::Text; });
}

bool RowFilter::looksAtMarks() const {
    return std::ranges::any_of(terms_, [](const Term& term) {
        return term.field == Term::Field::Is && (term.word == "pending" || term.word == "live");
    });
}

bool RowFilter::holds(const Term& term, const SettingRow& row, std::string_view searchable,
                      RowMarks marks) {
    switch (term.field) {
        case Term::Field::Text:
            return searchable.find(term.word) != searchable.npos;
        case Term::Field::Is:
            return isAsWord(row, marks, term.word);
        case Term::Field::Kind:
            return !row.effective.isNull() && kindWord(row.kind()) == term.word;
        case Term::Field::Layer:
            return layerWord(row.layer) == term.word;
        case Term::Field::Scope:
            return scopeWord(scopeOfRow(row)) == term.word;
        case Term::Field::Wrong:
            break;
    }
    return false;
}

bool RowFilter::matches(const SettingRow& row, std::string_view searchable, RowMarks marks) const {
    return std::ranges::all_of(terms_, [&](const Term& term) {
        return term.field != Term::Field::Wrong &&
               holds(term, row, searchable, marks) != term.isLeftOut;
    });
}

const std::vector<std::string>& RowFilter::wordsWithMeaning() {
    static const auto& words = *new std::vector<std::string>{
        "is:modified",   "is:pending",        "is:live",      "is:record",     "is:locked",
        "is:known",      "kind:color",        "kind:boolean", "kind:integer",  "kind:real",
        "kind:string",   "kind:date",         "kind:data",    "kind:array",    "kind:dictionary",
        "layer:stored",  "layer:default",     "layer:site",   "layer:profile", "layer:none",
        "scope:profile", "scope:application", "scope:record"};
    return words;
}

std::string searchableText(const SettingRow& row) {
    std::string text = row.keyPath;
    const auto add = [&text](std::string_view more) { text.append("\n").append(more); };
    if (row.known != nullptr) add(row.known->sentence);
    if (!row.effective.isNull()) add(bareText(row.effective));
    if (!row.byDefault.isNull() && !row.byDefault.isIdenticalTo(row.effective))
        add(bareText(row.byDefault));
    return inSmallLetters(std::move(text));
}

}  // namespace Tool
