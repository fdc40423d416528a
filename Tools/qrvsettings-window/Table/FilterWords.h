// SPDX-License-Identifier: MIT
#pragma once

// The words in the text of a filter, as a field edits them.

#include <QString>

namespace QRVWindow {

struct WordPlace {
    qsizetype start = 0;
    qsizetype length = 0;
};

/// Whether a word is in the text, in any letter case.
bool holdsWord(const QString& text, const QString& word);
/// The text with the word at its end.
QString withWord(const QString& text, const QString& word);
/// The text without the word, and without the blanks that it leaves.
QString withoutWord(const QString& text, const QString& word);
/// The word before a position, without a `-` at its start; empty within quotation marks.
WordPlace wordBefore(const QString& text, qsizetype position);

}  // namespace QRVWindow
