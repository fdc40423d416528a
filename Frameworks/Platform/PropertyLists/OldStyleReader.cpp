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
#include "Platform/Values/ImmutableContainers.h"

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
    void returnTo(std::size_t position) { position_ = position; }
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

// The backslash has been taken. Before a character without meaning it is dropped.
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
        result += letter;
        ++position_;
    }
}

char32_t OldStyleScanner::octal() {
    const std::size_t begin = position_;
    unsigned value = 0;
    while (position_ < begin + 3 && !isAtEnd() && text_[position_] >= '0' &&
           text_[position_] <= '7') {
        value = value * 8 + static_cast<unsigned>(text_[position_++] - '0');
    }
    return characterOfNextStepByte(value & 0xFFU);
}

// `U` and one to four digits
char32_t OldStyleScanner::hexadecimalUnit() {
    const std::size_t begin = position_++;
    char32_t unit = 0;
    for (; position_ < begin + 5 && !isAtEnd(); ++position_) {
        const auto digit = hexadecimalDigit(text_[position_]);
        if (!digit) break;
        unit = unit * 16 + *digit;
    }
    if (position_ == begin + 1) fail("a hexadecimal digit is expected after \\U", begin - 1);
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

/// The containers that are being read are in a list, so that the depth of a tree costs no stack.
class OldStyleReader {
  public:
    explicit OldStyleReader(std::string_view text) : scanner_(text) {}

    OldStyleList read() {
        scanner_.skipSpace();
        if (scanner_.isAtEnd()) fail("there is no value", scanner_.position());
        OldStyleList result = root();
        if (!scanner_.isAtEnd()) fail("unexpected text after the value", scanner_.position());
        return result;
    }

  private:
    enum class Form { Array, Dictionary, BareDictionary };

    struct Container {
        Form form;
        std::size_t first;  // of its contents in `entries_` or `elements_`
    };

    OldStyleList root();
    PropertyListValue value();
    PropertyListValue contentsOfContainers(PropertyListValue read);
    PropertyListValue valueOrStart();
    PropertyListValue start(Form form);
    PropertyListValue restOfArray(PropertyListValue nested);
    PropertyListValue restOfDictionary(PropertyListValue nested);
    PropertyListValue valueAfterKey();
    PropertyListValue string();
    PropertyListValue data();
    void endElement();
    void endEntry();
    void leaveContainer();

    OldStyleScanner scanner_;
    Extent extent_;
    // The containers that are being read, and their contents; the innermost last.
    std::vector<Container> containers_;
    std::vector<KeyedValue> entries_;
    std::vector<PropertyListValue> elements_;
};

OldStyleList OldStyleReader::root() {
    if (scanner_.isAt('{') || scanner_.isAt('(') || scanner_.isAt('<')) return {value()};
    const std::size_t begin = scanner_.position();
    const bool isQuoted = scanner_.isAtQuote();
    PropertyListValue text = string();
    if (!scanner_.isAt('=') && !scanner_.isAt(';')) {
        // Any text may begin with a word; accepting it would hide that the file is damaged.
        if (!isQuoted) fail("a lone word is no property list", begin);
        return {std::move(text)};
    }
    scanner_.returnTo(begin);
    extent_ = {};
    extent_.addValue(begin);
    return {contentsOfContainers(start(Form::BareDictionary)), false};
}

PropertyListValue OldStyleReader::value() {
    return contentsOfContainers(valueOrStart());
}

PropertyListValue OldStyleReader::contentsOfContainers(PropertyListValue read) {
    while (!containers_.empty()) {
        read = containers_.back().form == Form::Array ? restOfArray(std::move(read))
                                                      : restOfDictionary(std::move(read));
    }
    return read;
}

// Null when the value is a container: it has been put into `containers_`.
PropertyListValue OldStyleReader::valueOrStart() {
    extent_.addValue(scanner_.position());
    if (scanner_.isAt('{')) return start(Form::Dictionary);
    if (scanner_.isAt('(')) return start(Form::Array);
    if (scanner_.isAt('<')) return data();
    return string();
}

PropertyListValue OldStyleReader::start(Form form) {
    extent_.enterContainer(scanner_.position());
    containers_.push_back({form, form == Form::Array ? elements_.size() : entries_.size()});
    scanner_.take(form == Form::Array ? '(' : '{');
    return nullptr;
}

// Continues with the innermost container after its last element, which was a container; null when
// it has only started. Returns null when the next element starts a container, else the array.
PropertyListValue OldStyleReader::restOfArray(PropertyListValue nested) {
    if (!nested.isNull()) {
        elements_.push_back(std::move(nested));
        endElement();
    }
    while (!scanner_.take(')')) {
        PropertyListValue read = valueOrStart();
        if (read.isNull()) return read;
        elements_.push_back(std::move(read));
        endElement();
    }
    const std::size_t first = containers_.back().first;
    PropertyListValue result = immutableArray(std::span(elements_).subspan(first));
    elements_.resize(first);
    leaveContainer();
    return result;
}

// The same for a dictionary.
PropertyListValue OldStyleReader::restOfDictionary(PropertyListValue nested) {
    if (!nested.isNull()) {
        entries_.back().value = std::move(nested);
        endEntry();
    }
    const bool isBare = containers_.back().form == Form::BareDictionary;
    while (isBare ? !scanner_.isAtEnd() : !scanner_.take('}')) {
        entries_.push_back({string(), nullptr});
        PropertyListValue read = valueAfterKey();
        if (read.isNull()) return read;
        entries_.back().value = std::move(read);
        endEntry();
    }
    const std::size_t first = containers_.back().first;
    PropertyListValue result = immutableDictionary(std::span(entries_).subspan(first));
    entries_.resize(first);
    leaveContainer();
    return result;
}

// A key without value is its own value.
PropertyListValue OldStyleReader::valueAfterKey() {
    if (!scanner_.isAt(';')) {
        scanner_.require('=', "= or ; is expected after a key");
        return valueOrStart();
    }
    const PropertyListValue& key = entries_.back().key;
    extent_.addValue(scanner_.position());
    extent_.addContents(key.stringView().size(), scanner_.position());
    return key;
}

PropertyListValue OldStyleReader::string() {
    const std::size_t begin = scanner_.position();
    const std::string text = scanner_.string();
    extent_.addContents(text.size(), begin);
    return text;
}

PropertyListValue OldStyleReader::data() {
    const std::size_t begin = scanner_.position();
    const std::string bytes = scanner_.data();
    extent_.addContents(bytes.size(), begin);
    return NSData(bytes);
}

void OldStyleReader::endElement() {
    if (scanner_.take(',') || scanner_.isAt(')')) return;
    fail(scanner_.isAtEnd() ? "an array is not closed" : ", or ) is expected", scanner_.position());
}

// Without braces the last ";" is required, too: without it, a value that was cut off would look
// complete.
void OldStyleReader::endEntry() {
    if (containers_.back().form == Form::BareDictionary)
        return scanner_.require(';', "; is expected after a value");
    if (scanner_.take(';') || scanner_.isAt('}')) return;
    fail(scanner_.isAtEnd() ? "a dictionary is not closed" : "; or } is expected",
         scanner_.position());
}

void OldStyleReader::leaveContainer() {
    containers_.pop_back();
    extent_.leaveContainer();
}

}  // namespace

OldStyleList readOldStyle(std::string_view text) {
    return OldStyleReader(text).read();
}

}  // namespace QRVPlatform::PropertyLists
