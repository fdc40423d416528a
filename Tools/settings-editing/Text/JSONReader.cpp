// SPDX-License-Identifier: MIT
#include "Text/JSONReader.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

#include "Text/FileForm.h"
#include "Text/ScalarText.h"

namespace Tool {
namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

struct Place {
    std::size_t line;
    std::size_t column;
};

Place placeOf(std::string_view text, std::size_t position) {
    const std::string_view before = text.substr(0, position);
    const std::size_t lineStart = before.find_last_of('\n') + 1;
    return {static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n')) + 1,
            characterCount(before.substr(lineStart)) + 1};
}

std::string textOf(Place place) {
    return "line " + std::to_string(place.line) + ", column " + std::to_string(place.column);
}

bool isDigit(char character) {
    return '0' <= character && character <= '9';
}

bool isOfWord(char character) {
    return isDigit(character) || ('a' <= character && character <= 'z') ||
           ('A' <= character && character <= 'Z') || character == '_' || character == '-' ||
           character == '+' || character == '.' || static_cast<unsigned char>(character) >= 0x80;
}

std::size_t digitCount(std::string_view text) {
    return std::min(text.find_first_not_of("0123456789"), text.size());
}

/// Stricter than what a value of the command line may be.
bool isNumberOfJSON(std::string_view text) {
    if (text.starts_with('-')) text.remove_prefix(1);
    const std::size_t whole = digitCount(text);
    if (whole == 0 || (whole > 1 && text.front() == '0')) return false;
    text.remove_prefix(whole);
    if (text.starts_with('.')) {
        const std::size_t fraction = digitCount(text.substr(1));
        if (fraction == 0) return false;
        text.remove_prefix(1 + fraction);
    }
    if (text.empty()) return true;
    if (text.front() != 'e' && text.front() != 'E') return false;
    text.remove_prefix(1);
    if (text.starts_with('-') || text.starts_with('+')) text.remove_prefix(1);
    return !text.empty() && digitCount(text) == text.size();
}

/// How a real without digits is written, where the word is one as other programs write it.
std::string formOfNamedReal(std::string_view word) {
    const bool isNegative = word.starts_with('-');
    if (isNegative || word.starts_with('+')) word.remove_prefix(1);
    if (word == "NaN" || word == "nan") return R"({"$real":"nan"})";
    if (word != "Infinity" && word != "infinity" && word != "inf" && word != "Inf") return {};
    return isNegative ? R"({"$real":"-inf"})" : R"({"$real":"inf"})";
}

std::string inUTF8(unsigned code) {
    const auto byte = [](unsigned bits) { return static_cast<char>(bits); };
    const auto following = [&](unsigned shift) { return byte(0x80U | ((code >> shift) & 0x3FU)); };
    if (code < 0x80) return {byte(code)};
    if (code < 0x800) return {byte(0xC0U | (code >> 6U)), following(0)};
    if (code < 0x10000) return {byte(0xE0U | (code >> 12U)), following(6), following(0)};
    return {byte(0xF0U | (code >> 18U)), following(12), following(6), following(0)};
}

class Reader {
  public:
    Reader(std::string_view text, std::size_t maximumLevels)
        : text_(text), maximumLevels_(maximumLevels) {}
    JSONNode root();

  private:
    [[noreturn]] void refuse(const std::string& reason) const { refuse(reason, position_); }
    [[noreturn]] void refuse(const std::string& reason, std::size_t position) const {
        throw JSONFault(text_, position, reason);
    }
    [[noreturn]] void refuseWhatIsFound(const std::string& expected) const;
    void requireReadableText() const;

    [[nodiscard]] bool isAt(char character) const {
        return position_ < text_.size() && text_[position_] == character;
    }
    bool take(char character) {
        const bool isThere = isAt(character);
        position_ += isThere ? 1 : 0;
        return isThere;
    }
    void skipBlanks() {
        position_ = std::min(text_.find_first_not_of(" \t\r\n", position_), text_.size());
    }
    [[nodiscard]] std::string_view word() const;
    [[nodiscard]] std::string found() const;

    JSONNode value(const char* expected);
    void readObject(JSONNode& node);
    void readEntry(JSONNode& node, std::map<std::string, std::size_t>& keys,
                   const std::string& expected);
    void readArray(JSONNode& node);
    PropertyListValue scalar(const char* expected);
    PropertyListValue number(std::string_view digits) const;
    [[nodiscard]] std::size_t endOfPlainText() const;
    std::string string();
    std::string escaped();
    unsigned fourDigits();
    void open(std::size_t position);

    std::string_view text_;
    std::size_t maximumLevels_;
    std::size_t position_ = 0;
    std::vector<std::size_t> open_;  ///< where the containers begin that are not closed yet
};

std::string_view Reader::word() const {
    std::size_t end = position_;
    while (end < text_.size() && isOfWord(text_[end])) ++end;
    return text_.substr(position_, end - position_);
}

std::string Reader::found() const {
    if (position_ == text_.size()) return "the end of the text";
    if (!word().empty()) return shortened(word());
    if (text_[position_] != '"') return std::string(1, text_[position_]);
    const std::size_t end = text_.find('"', position_ + 1);
    return shortened(text_.substr(position_, end == text_.npos ? end : end + 1 - position_));
}

void Reader::refuseWhatIsFound(const std::string& expected) const {
    std::string reason = "expected " + expected + ", found " + found();
    if (position_ == text_.size() && !open_.empty())
        reason += std::string("; the ") + text_[open_.back()] + " of " +
                  textOf(placeOf(text_, open_.back())) + " is not closed";
    refuse(reason);
}

void Reader::requireReadableText() const {
    if (text_.starts_with(byteOrderMark))
        refuse("the text begins with a byte order mark; save it as UTF-8 without one");
    if (text_.starts_with("\xFE\xFF") || text_.starts_with("\xFF\xFE") ||
        text_.substr(0, 2).find('\0') != text_.npos)
        refuse("the text is not UTF-8 but UTF-16 or UTF-32");
}

JSONNode Reader::root() {
    requireReadableText();
    JSONNode node = value("a value");
    if (position_ != text_.size()) refuseWhatIsFound("the end of the text");
    return node;
}

void Reader::open(std::size_t position) {
    if (open_.size() == maximumLevels_) refuse("more than 512 levels", position);
    open_.push_back(position);
}

/// The blanks around it too.
JSONNode Reader::value(const char* expected) {
    skipBlanks();
    JSONNode node;
    node.position = position_;
    if (isAt('{'))
        readObject(node);
    else if (isAt('['))
        readArray(node);
    else
        node.scalar = scalar(expected);
    node.end = position_;
    skipBlanks();
    return node;
}

void Reader::readObject(JSONNode& node) {
    node.kind = JSONNode::Kind::Object;
    open(position_++);
    skipBlanks();
    std::map<std::string, std::size_t> keys;
    if (!isAt('}')) {
        readEntry(node, keys, "a key in quotation marks or }");
        while (take(',')) readEntry(node, keys, "a key in quotation marks after the comma");
    }
    if (!isAt('}')) refuseWhatIsFound("a comma or }");
    ++position_;
    open_.pop_back();
}

void Reader::readEntry(JSONNode& node, std::map<std::string, std::size_t>& keys,
                       const std::string& expected) {
    skipBlanks();
    if (!isAt('"')) refuseWhatIsFound(expected);
    const std::size_t start = position_;
    std::string key = string();
    const auto [known, isNew] = keys.emplace(key, start);
    if (!isNew)
        refuse("the key " + shortened(text_.substr(start, position_ - start)) +
                   " stands in this object twice, first at " +
                   textOf(placeOf(text_, known->second)),
               start);
    skipBlanks();
    if (!isAt(':')) refuseWhatIsFound("a colon after the key");
    ++position_;
    node.keys.push_back(std::move(key));
    node.children.push_back(value("a value after the colon"));
}

void Reader::readArray(JSONNode& node) {
    node.kind = JSONNode::Kind::Array;
    open(position_++);
    skipBlanks();
    if (!isAt(']')) {
        node.children.push_back(value("a value or ]"));
        while (take(',')) node.children.push_back(value("a value after the comma"));
    }
    if (!isAt(']')) refuseWhatIsFound("a comma or ]");
    ++position_;
    open_.pop_back();
}

PropertyListValue Reader::scalar(const char* expected) {
    if (isAt('"')) return string();
    if (isAt('\'')) refuse("a string stands in double quotation marks, not in single ones");
    const std::string_view name = word();
    PropertyListValue result;
    if (name == "true" || name == "false")
        result = name == "true";
    else if (name == "null")
        refuse("null is no value of a setting");
    else if (const std::string form = formOfNamedReal(name); !form.empty())
        refuse(std::string(name) + " is no number of JSON; write " + form);
    else if (isNumberOfJSON(name))
        result = number(name);
    else if (!name.empty() && (isDigit(name.back()) || isDigit(name.front())))
        refuse("not a number as JSON writes it: " + shortened(name));
    else
        refuseWhatIsFound(expected);
    position_ += name.size();
    return result;
}

PropertyListValue Reader::number(std::string_view digits) const {
    if (isDecimalInteger(digits)) {
        PropertyListValue integer = integerFromText(digits);
        if (integer.isNull()) refuse("integer not between -2^63 and 2^64-1: " + shortened(digits));
        return integer;
    }
    const auto real = realFromText(digits);
    if (!real) refuse("number too large or too small for a real: " + shortened(digits));
    return *real;
}

/// Where a quotation mark, a backslash, a control character or the end of the text is.
std::size_t Reader::endOfPlainText() const {
    std::size_t end = position_;
    while (end < text_.size() && text_[end] != '"' && text_[end] != '\\' &&
           static_cast<unsigned char>(text_[end]) >= ' ')
        ++end;
    return end;
}

std::string Reader::string() {
    const std::size_t start = position_++;
    std::string result;
    while (!isAt('"')) {
        const std::size_t end = endOfPlainText();
        const std::string plain(text_.substr(position_, end - position_));
        try {
            requireUTF8(plain);
        } catch (const Failure&) {
            refuse("not UTF-8: " + shortened(plain));
        }
        result += plain;
        position_ = end;
        if (end == text_.size()) refuse("the string that begins here has no end", start);
        if (isAt('\\'))
            result += escaped();
        else if (!isAt('"'))
            refuse("a control character in a string; JSON writes it as \\n, \\t or \\u0000");
    }
    ++position_;
    return result;
}

/// One character that a backslash begins, or two halves of one.
std::string Reader::escaped() {
    constexpr std::string_view letters = "\"\\/bfnrt";
    constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
    const std::size_t start = position_++;
    const std::size_t index =
        position_ == text_.size() ? letters.npos : letters.find(text_[position_]);
    if (index != letters.npos) {
        ++position_;
        return std::string(1, meanings[index]);
    }
    if (!take('u')) refuse("no escape of JSON: " + std::string(text_.substr(start, 2)), start);
    unsigned code = fourDigits();
    if (0xD800 <= code && code < 0xDC00 && text_.substr(position_, 2) == "\\u") {
        position_ += 2;
        const unsigned second = fourDigits();
        if (second < 0xDC00 || 0xDFFF < second)
            refuse("half of a character: " + std::string(text_.substr(start, 6)), start);
        return inUTF8(0x10000 + ((code - 0xD800) << 10U) + (second - 0xDC00));
    }
    if (0xD800 <= code && code <= 0xDFFF)
        refuse("half of a character: " + std::string(text_.substr(start, 6)), start);
    return inUTF8(code);
}

unsigned Reader::fourDigits() {
    unsigned code = 0;
    for (int count = 0; count < 4; ++count, ++position_) {
        constexpr std::string_view digits = "0123456789abcdefABCDEF";
        const std::size_t index =
            position_ == text_.size() ? digits.npos : digits.find(text_[position_]);
        if (index == digits.npos) refuse("expected four hexadecimal digits after \\u");
        code = code * 16 + static_cast<unsigned>(index < 16 ? index : index - 6);
    }
    return code;
}

}  // namespace

JSONFault::JSONFault(std::size_t line, std::size_t column, const std::string& reason)
    : Failure(Fault::WrongValue, "wrong JSON at " + textOf({line, column}) + ": " + reason),
      line_(line),
      column_(column),
      reason_(reason) {}

JSONFault::JSONFault(std::string_view text, std::size_t position, const std::string& reason)
    : JSONFault(placeOf(text, position).line, placeOf(text, position).column, reason) {}

std::size_t characterCount(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
    }));
}

JSONNode nodeFromJSON(std::string_view text, std::size_t maximumLevels) {
    return Reader(text, maximumLevels).root();
}

}  // namespace Tool
