// SPDX-License-Identifier: MIT
#include "Text/ShellWords.h"

#include <utility>

#include "Reporting/Failure.h"

namespace Tool {
namespace {

constexpr std::string_view blanks = " \t";
constexpr std::string_view startOfPrintf = "$(printf '";
constexpr std::string_view endOfPrintf = "')";
constexpr std::string_view lineEnd = "${IFS#??}";  // `IFS` is a blank, a tab and a line end.

[[noreturn]] void refuse(const std::string& why) {
    throw Failure(Fault::WrongValue, why);
}

bool isPlain(char character) {
    constexpr std::string_view marks = "@%_+=:,./-";
    return ('a' <= character && character <= 'z') || ('A' <= character && character <= 'Z') ||
           ('0' <= character && character <= '9') || marks.find(character) != marks.npos ||
           static_cast<unsigned char>(character) >= 0x80;
}

bool isOctalDigit(char character) {
    return '0' <= character && character <= '7';
}

class WordReader {
  public:
    explicit WordReader(std::string_view line) : rest_(line) {}
    std::vector<ShellWord> words();

  private:
    std::string word();
    std::string segment();
    std::string inSingleMarks();
    std::string inDoubleMarks();
    std::string afterBackslash(std::string_view escapable);
    std::string printed();
    char octal();
    std::string_view takeUpTo(std::string_view end, const char* what);

    std::string_view rest_;
};

std::string_view WordReader::takeUpTo(std::string_view end, const char* what) {
    const std::size_t length = rest_.find(end);
    if (length == rest_.npos) refuse(std::string("no end of ") + what);
    const std::string_view taken = rest_.substr(0, length);
    rest_.remove_prefix(length + end.size());
    return taken;
}

std::string WordReader::inSingleMarks() {
    rest_.remove_prefix(1);
    return std::string(takeUpTo("'", "what stands in quotation marks"));
}

std::string WordReader::afterBackslash(std::string_view escapable) {
    rest_.remove_prefix(1);
    if (rest_.empty()) refuse("nothing after the backslash at the end");
    const char character = rest_.front();
    if (!escapable.empty() && escapable.find(character) == escapable.npos) return "\\";
    rest_.remove_prefix(1);
    return std::string(1, character);
}

char WordReader::octal() {
    if (rest_.size() < 4 || !isOctalDigit(rest_[1]) || !isOctalDigit(rest_[2]) ||
        !isOctalDigit(rest_[3]) || rest_[1] > '3')
        refuse("in the text for printf a backslash begins three octal digits");
    const int code = (rest_[1] - '0') * 64 + (rest_[2] - '0') * 8 + (rest_[3] - '0');
    if (code == 0) refuse("no word of a command can hold U+0000");
    rest_.remove_prefix(4);
    return static_cast<char>(code);
}

/// Without the line ends at its end, which a command substitution drops.
std::string WordReader::printed() {
    rest_.remove_prefix(startOfPrintf.size());
    std::string text;
    while (!rest_.starts_with(endOfPrintf)) {
        if (rest_.empty()) refuse("no end of the text for printf");
        if (rest_.front() == '\'' || rest_.front() == '%')
            refuse("only a backslash and three octal digits mean something to printf here");
        if (rest_.front() == '\\') {
            text += octal();
        } else {
            text += rest_.front();
            rest_.remove_prefix(1);
        }
    }
    rest_.remove_prefix(endOfPrintf.size());
    return text.substr(0, text.find_last_not_of('\n') + 1);
}

std::string WordReader::inDoubleMarks() {
    rest_.remove_prefix(1);
    std::string text;
    while (!rest_.starts_with('"')) {
        if (rest_.empty()) refuse("no end of what stands in quotation marks");
        if (rest_.starts_with(lineEnd)) {
            text += '\n';
            rest_.remove_prefix(lineEnd.size());
        } else if (rest_.starts_with(startOfPrintf)) {
            text += printed();
        } else if (rest_.front() == '\\') {
            text += afterBackslash("$`\"\\");
        } else if (rest_.front() == '$' || rest_.front() == '`') {
            refuse("no shell runs this, which would replace " + shortened(rest_));
        } else {
            text += rest_.front();
            rest_.remove_prefix(1);
        }
    }
    rest_.remove_prefix(1);
    return text;
}

std::string WordReader::segment() {
    if (rest_.front() == '\'') return inSingleMarks();
    if (rest_.front() == '"') return inDoubleMarks();
    if (rest_.front() == '\\') return afterBackslash("");
    if (!isPlain(rest_.front()))
        refuse("no shell runs this, which would give a meaning to " + shortened(rest_));
    std::string text(1, rest_.front());
    rest_.remove_prefix(1);
    return text;
}

std::string WordReader::word() {
    std::string text;
    while (!rest_.empty() && blanks.find(rest_.front()) == blanks.npos) text += segment();
    return text;
}

std::vector<ShellWord> WordReader::words() {
    std::vector<ShellWord> words;
    for (;;) {
        const std::size_t start = rest_.find_first_not_of(blanks);
        if (start == rest_.npos) return words;
        rest_.remove_prefix(start);
        const char* const place = rest_.data();
        words.push_back({word(), place});
    }
}

}  // namespace

std::vector<ShellWord> shellWordsOf(std::string_view line) {
    return WordReader(line).words();
}

bool looksLikeOption(std::string_view word) {
    constexpr std::string_view startsOfNumbers = "0123456789.";
    return word.size() > 1 && word.front() == '-' &&
           startsOfNumbers.find(word[1]) == startsOfNumbers.npos && !word.starts_with("-inf") &&
           !word.starts_with("-nan");
}

}  // namespace Tool
