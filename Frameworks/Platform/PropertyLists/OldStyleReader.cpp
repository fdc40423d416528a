// SPDX-License-Identifier: MIT
// The reader of the old-style text format.

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/PropertyLists/NextStepEncoding.h"
#include "Platform/PropertyLists/Readers.h"
#include "Platform/PropertyLists/Scalars.h"
#include "Platform/PropertyLists/Unicode.h"

namespace QRVPlatform::PropertyLists {
namespace {

bool isUnquoted(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') ||
           std::string_view("_$/:.-+").find(character) != std::string_view::npos;
}

/// Takes strings, data and white space from the front of a text.
class OldStyleScanner {
  public:
    explicit OldStyleScanner(std::string_view text) : text_(text) {}

    std::size_t position() const { return position_; }
    bool isAtEnd() const { return position_ == text_.size(); }
    bool isAt(char character) const { return !isAtEnd() && text_[position_] == character; }
    bool isAtQuote() const { return isAt('"') || isAt('\''); }

    /// Skips white space and comments.
    void skipSpace();
    /// Takes `character` when it is next, and the space behind it.
    bool take(char character) {
        if (!isAt(character)) return false;
        ++position_;
        skipSpace();
        return true;
    }
    void require(char character, const char* message) {
        if (!take(character)) fail(message, position_);
    }
    /// Strings and data, with the space behind them.
    std::string string();
    std::string data();

  private:
    bool continuesWith(std::string_view expected) const {
        return text_.substr(position_).starts_with(expected);
    }
    bool skipComment();
    std::string unquoted();
    std::string quoted();
    void appendEscape(std::string& result);
    char32_t octal();
    char32_t hexadecimalUnit();
    void appendUTF16Escape(std::string& result);

    const std::string_view text_;
    std::size_t position_ = 0;
};

void OldStyleScanner::skipSpace() {
    constexpr std::string_view spaces = " \t\n\r\f\v";
    do {
        while (!isAtEnd() && spaces.find(text_[position_]) != std::string_view::npos) ++position_;
    } while (skipComment());
}

bool OldStyleScanner::skipComment() {
    if (continuesWith("//")) {
        while (!isAtEnd() && !isAt('\n') && !isAt('\r')) ++position_;
        return true;
    }
    if (!continuesWith("/*")) return false;
    const std::size_t end = text_.find("*/", position_ + 2);
    if (end == std::string_view::npos) fail("a comment is not closed", position_);
    position_ = end + 2;
    return true;
}

std::string OldStyleScanner::string() {
    std::string result = isAtQuote() ? quoted() : unquoted();
    skipSpace();
    return result;
}

std::string OldStyleScanner::unquoted() {
    const std::size_t begin = position_;
    while (!isAtEnd() && isUnquoted(text_[position_])) ++position_;
    if (position_ == begin) {
        fail(isAtEnd() ? "the text ends too early" : "unexpected character", begin);
    }
    return std::string(text_.substr(begin, position_ - begin));
}

std::string OldStyleScanner::quoted() {
    const std::size_t begin = position_;
    const char quote = text_[position_++];
    const std::string special{quote, '\\'};
    std::string result;
    while (true) {
        const std::size_t next = text_.find_first_of(special, position_);
        if (next == std::string_view::npos) fail("a string is not closed", begin);
        result += text_.substr(position_, next - position_);
        position_ = next + 1;
        if (text_[next] == quote) return result;
        appendEscape(result);
    }
}

// The backslash has been taken.
void OldStyleScanner::appendEscape(std::string& result) {
    constexpr std::string_view letters = "abfnrtv\\\"'\n";
    constexpr std::string_view meanings = "\a\b\f\n\r\t\v\\\"'\n";
    if (isAtEnd()) fail("a string is not closed", position_);
    const char letter = text_[position_];
    const std::size_t index = letters.find(letter);
    if (index != std::string_view::npos) {
        result += meanings[index];
        ++position_;
    } else if (letter == 'U') {
        appendUTF16Escape(result);
    } else if (letter >= '0' && letter <= '7') {
        appendUTF8(result, octal());
    } else {
        fail("unknown escape", position_ - 1);
    }
}

char32_t OldStyleScanner::octal() {
    const std::size_t begin = position_;
    unsigned value = 0;
    while (position_ < begin + 3 && !isAtEnd() && text_[position_] >= '0' &&
           text_[position_] <= '7') {
        value = value * 8 + static_cast<unsigned>(text_[position_++] - '0');
    }
    const auto character = characterOfNextStepByte(value);
    if (!character) fail("an octal escape stands for no character", begin - 1);
    return *character;
}

// `Uxxxx`
char32_t OldStyleScanner::hexadecimalUnit() {
    const std::size_t begin = position_++;
    char32_t unit = 0;
    for (; position_ < begin + 5; ++position_) {
        const auto digit = isAtEnd() ? std::nullopt : hexadecimalDigit(text_[position_]);
        if (!digit) fail("four hexadecimal digits are expected after \\U", begin - 1);
        unit = unit * 16 + *digit;
    }
    return unit;
}

void OldStyleScanner::appendUTF16Escape(std::string& result) {
    const std::size_t begin = position_ - 1;
    char32_t character = hexadecimalUnit();
    if (isHighSurrogate(character) && continuesWith("\\U")) {
        ++position_;
        const char32_t low = hexadecimalUnit();
        if (isLowSurrogate(low)) character = characterOfSurrogates(character, low);
    }
    if (!isCharacter(character)) fail("an unpaired surrogate", begin);
    appendUTF8(result, character);
}

std::string OldStyleScanner::data() {
    const std::size_t begin = position_++;
    std::string bytes;
    std::optional<unsigned> upper;
    for (; !isAtEnd() && !isAt('>'); ++position_) {
        if (isSpace(text_[position_])) continue;
        const auto digit = hexadecimalDigit(text_[position_]);
        if (!digit) fail("malformed data", position_);
        if (upper) bytes += static_cast<char>(static_cast<unsigned char>(*upper << 4U | *digit));
        upper = upper ? std::nullopt : digit;
    }
    if (isAtEnd()) fail("data is not closed", begin);
    if (upper) fail("data ends within a byte", position_);
    ++position_;
    skipSpace();
    return bytes;
}

class OldStyleReader {
  public:
    explicit OldStyleReader(std::string_view text) : scanner_(text) {}

    PropertyListValue read() {
        scanner_.skipSpace();
        if (scanner_.isAtEnd()) fail("there is no value", scanner_.position());
        PropertyListValue result = root();
        if (!scanner_.isAtEnd()) fail("unexpected text after the value", scanner_.position());
        return result;
    }

  private:
    PropertyListValue root();
    PropertyListValue value();
    PropertyListValue array();
    PropertyListValue dictionary();
    PropertyListValue bareDictionary(std::string firstKey, std::size_t begin);
    PropertyListValue valueAfterKey() {
        scanner_.require('=', "= is expected after a key");
        return value();
    }

    OldStyleScanner scanner_;
    Extent extent_;
    // The elements of the arrays that are being read, the innermost last.
    std::vector<PropertyListValue> elements_;
};

PropertyListValue OldStyleReader::root() {
    if (scanner_.isAt('{') || scanner_.isAt('(') || scanner_.isAt('<')) return value();
    const std::size_t begin = scanner_.position();
    const bool isQuoted = scanner_.isAtQuote();
    std::string text = scanner_.string();
    if (scanner_.isAt('=')) return bareDictionary(std::move(text), begin);
    // Any text may begin with a word; accepting it would hide that the file is damaged.
    if (!isQuoted) fail("a lone word is no property list", begin);
    return text;
}

PropertyListValue OldStyleReader::value() {
    extent_.addValue(scanner_.position());
    if (scanner_.isAt('{')) return dictionary();
    if (scanner_.isAt('(')) return array();
    if (scanner_.isAt('<')) return NSData(scanner_.data());
    return scanner_.string();
}

PropertyListValue OldStyleReader::array() {
    const std::size_t begin = scanner_.position();
    extent_.enterContainer(begin);
    scanner_.take('(');
    const std::size_t first = elements_.size();
    while (!scanner_.take(')')) {
        PropertyListValue element = value();
        elements_.push_back(std::move(element));
        if (!scanner_.take(',') && !scanner_.isAt(')')) {
            fail(scanner_.isAtEnd() ? "an array is not closed" : ", or ) is expected",
                 scanner_.position());
        }
    }
    NSArray result(std::span<const PropertyListValue>(elements_).subspan(first));
    elements_.resize(first);
    extent_.leaveContainer();
    return result;
}

PropertyListValue OldStyleReader::dictionary() {
    extent_.enterContainer(scanner_.position());
    scanner_.take('{');
    const NSMutableDictionary result;
    while (!scanner_.take('}')) {
        const std::string key = scanner_.string();
        result.setObjectForKey(valueAfterKey(), key);
        if (!scanner_.take(';') && !scanner_.isAt('}')) {
            fail(scanner_.isAtEnd() ? "a dictionary is not closed" : "; or } is expected",
                 scanner_.position());
        }
    }
    extent_.leaveContainer();
    return result.copy();
}

// Here the last ";" is required: without it, a value that was cut off would look complete.
PropertyListValue OldStyleReader::bareDictionary(std::string firstKey, std::size_t begin) {
    extent_.addValue(begin);
    extent_.enterContainer(begin);
    const NSMutableDictionary result;
    std::string key = std::move(firstKey);
    while (true) {
        result.setObjectForKey(valueAfterKey(), key);
        scanner_.require(';', "; is expected after a value");
        if (scanner_.isAtEnd()) break;
        key = scanner_.string();
    }
    return result.copy();
}

}  // namespace

PropertyListValue readOldStyle(std::string_view text) {
    return OldStyleReader(text).read();
}

}  // namespace QRVPlatform::PropertyLists
