// SPDX-License-Identifier: MIT
#include "Table/FilterWords.h"

#include <vector>

namespace QRVWindow {
namespace {

constexpr QChar quotationMark(u'"');

/// Words are parted by blanks outside of quotation marks.
std::vector<WordPlace> wordsOf(const QString& text) {
    std::vector<WordPlace> words;
    bool isQuoted = false;
    bool isInWord = false;
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (text[at] == quotationMark) isQuoted = !isQuoted;
        if (text[at].isSpace() && !isQuoted) {
            isInWord = false;
            continue;
        }
        if (!isInWord) words.push_back({at, 0});
        isInWord = true;
        ++words.back().length;
    }
    return words;
}

QStringView at(const QString& text, WordPlace word) {
    return QStringView(text).mid(word.start, word.length);
}

}  // namespace

bool holdsWord(const QString& text, const QString& word) {
    for (const WordPlace place : wordsOf(text))
        if (at(text, place).compare(word, Qt::CaseInsensitive) == 0) return true;
    return false;
}

QString withWord(const QString& text, const QString& word) {
    const QString before = text.trimmed();
    return before.isEmpty() ? word : before + QLatin1Char(' ') + word;
}

QString withoutWord(const QString& text, const QString& word) {
    QString rest;
    for (const WordPlace place : wordsOf(text))
        if (at(text, place).compare(word, Qt::CaseInsensitive) != 0)
            rest = withWord(rest, at(text, place).toString());
    return rest;
}

WordPlace wordBefore(const QString& text, qsizetype position) {
    for (WordPlace place : wordsOf(text)) {
        if (position <= place.start || position > place.start + place.length) continue;
        if (text[place.start] == QLatin1Char('-')) ++place.start;
        const WordPlace word{place.start, position - place.start};
        return at(text, word).contains(quotationMark) ? WordPlace{} : word;
    }
    return {};
}

}  // namespace QRVWindow
