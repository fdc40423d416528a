// SPDX-License-Identifier: MIT
#pragma once

/// What a filter field holds: words, all of which a row must match. A word is found anywhere in the
/// key path, the sentence, or the text of the value or default. A to Z match a to z, and À to Þ
/// match à to þ; the case of other letters counts. `-` before a word leaves out what matches it.
/// Between quotation marks a word may hold blanks, and means nothing but its text. Other words may
/// have a meaning:
///
///     is:modified is:pending is:live is:record is:locked is:known
///     kind:color (also boolean, integer, real, string, date, data, array, dictionary)
///     layer:stored (also default, site, profile, none)
///     scope:profile (also application, record)
///
/// The kind is that of the effective value; a colour is of the kind "color" alone.

#include <string>
#include <string_view>
#include <vector>

#include "Rows/SettingsTable.h"

namespace Tool {

/// What only the caller knows of a row.
struct RowMarks {
    bool isPending = false;
    bool isLive = false;  ///< changed by another process a moment ago
};

class RowFilter {
  public:
    /// Everything matches an empty text. A word that is wrong, such as "is:modifed", is among
    /// `faults`, and nothing matches then.
    explicit RowFilter(std::string_view text = "");

    [[nodiscard]] const std::string& text() const { return text_; }
    [[nodiscard]] bool isEmpty() const { return terms_.empty(); }
    /// A line for people about each word that is wrong.
    [[nodiscard]] const std::vector<std::string>& faults() const { return faults_; }
    /// Whether the text asks for records, which are hidden otherwise.
    [[nodiscard]] bool asksForRecords() const;
    /// Whether it asks for what differs from the defaults.
    [[nodiscard]] bool asksForModified() const;
    /// Whether `matches` looks at its second and third argument.
    [[nodiscard]] bool looksAtText() const;
    [[nodiscard]] bool looksAtMarks() const;

    /// `searchable` is `searchableText` of the row.
    [[nodiscard]] bool matches(const SettingRow& row, std::string_view searchable,
                               RowMarks marks) const;

    /// The words that have a meaning, for completion: "is:modified", "kind:color", ...
    static const std::vector<std::string>& wordsWithMeaning();

  private:
    struct Term {
        enum class Field { Text, Is, Kind, Layer, Scope, Wrong };
        Field field;
        std::string word;  ///< in small letters; of a field, what follows the ":"
        bool isLeftOut;
    };
    static Term termOf(std::string word, bool isLeftOut);
    static bool holds(const Term& term, const SettingRow& row, std::string_view searchable,
                      RowMarks marks);
    [[nodiscard]] bool asksFor(Term::Field field, std::string_view word) const;

    std::string text_;
    std::vector<Term> terms_;
    std::vector<std::string> faults_;
};

/// What words are looked for in: key path, sentence, value and default, in small letters.
/// `SettingsTable::searchableTextOf` makes it once for each row.
std::string searchableText(const SettingRow& row);

}  // namespace Tool
