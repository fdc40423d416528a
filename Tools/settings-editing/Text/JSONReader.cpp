// SPDX-License-Identifier: MIT
#include "Text/JSONReader.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>
#include <sstream>
#include <utility>

#include "Text/ScalarText.h"

namespace Tool {
namespace {

using nlohmann::json;

constexpr std::string_view blanks = " \t\r\n";

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

/// How a real without digits is written, where the word is one as other programs write it.
std::string formOfNamedReal(std::string_view word) {
    const bool isNegative = word.starts_with('-');
    if (isNegative || word.starts_with('+')) word.remove_prefix(1);
    if (word == "NaN" || word == "nan") return R"({"$real":"nan"})";
    if (word != "Infinity" && word != "infinity" && word != "inf" && word != "Inf") return {};
    return isNegative ? R"({"$real":"-inf"})" : R"({"$real":"inf"})";
}

/// The parser reads from a stream, since that tells after each token how far it has read.
class TreeBuilder : public nlohmann::json_sax<json> {
  public:
    TreeBuilder(std::string_view text, std::size_t maximumLevels)
        : text_(text), maximumLevels_(maximumLevels), stream_(std::string(text)) {}
    JSONNode root();

    bool null() override { refuse("null is no value of a setting", startOfToken(readCount())); }
    bool boolean(bool value) override { return addScalar(value); }
    bool number_integer(number_integer_t value) override { return addNumber(value); }
    bool number_unsigned(number_unsigned_t value) override { return addNumber(value); }
    bool number_float(number_float_t value, const string_t& text) override;
    bool string(string_t& value) override { return addScalar(value); }
    bool binary(binary_t&) override { return false; }
    bool start_object(std::size_t) override { return open(JSONNode::Kind::Object); }
    bool key(string_t& value) override;
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(JSONNode::Kind::Array); }
    bool end_array() override { return close(); }
    bool parse_error(std::size_t position, const std::string& token,
                     const json::exception& error) override;

  private:
    struct Level {
        JSONNode* node;
        std::map<std::string, std::size_t> keys;  ///< and where they stand
    };

    [[noreturn]] void refuse(const std::string& reason, std::size_t position) const {
        throw JSONFault(text_, position, reason);
    }
    void requireReadableText() const;
    [[nodiscard]] std::size_t readCount();
    [[nodiscard]] std::size_t pastBlanks(std::size_t position) const {
        return std::min(text_.find_first_not_of(blanks, position), text_.size());
    }
    [[nodiscard]] std::size_t startOfToken(std::size_t lastRead) const;
    JSONNode& add(JSONNode::Kind kind, std::size_t end);
    bool addScalar(const PropertyListValue& value) {
        add(JSONNode::Kind::Scalar, readCount()).scalar = value;
        return true;
    }
    bool addNumber(const PropertyListValue& value);
    bool open(JSONNode::Kind kind);
    bool close();

    std::string_view text_;
    std::size_t maximumLevels_;
    std::istringstream stream_;
    JSONNode root_;
    std::vector<Level> levels_;  ///< the containers that are not closed yet
    std::size_t end_ = 0;        ///< behind the last token that is a key, a value or a bracket
};

JSONNode TreeBuilder::root() {
    requireReadableText();
    json::sax_parse(stream_, this);
    return std::move(root_);
}

/// The parser would skip the mark, and take a zero byte for the end of the text.
void TreeBuilder::requireReadableText() const {
    if (text_.starts_with("\xEF\xBB\xBF"))
        refuse("the text begins with a byte order mark; save it as UTF-8 without one", 0);
    if (const std::size_t zero = text_.find('\0'); zero != text_.npos)
        refuse("a zero byte; the text is UTF-16 or binary, not UTF-8", zero);
}

std::size_t TreeBuilder::readCount() {
    return static_cast<std::size_t>(
        std::streamoff(stream_.rdbuf()->pubseekoff(0, std::ios::cur, std::ios::in)));
}

/// Between two such tokens stands at most one comma or colon, unless that is what is wrong.
std::size_t TreeBuilder::startOfToken(std::size_t lastRead) const {
    const std::size_t start = pastBlanks(end_);
    const bool isSeparator = start < lastRead && (text_[start] == ',' || text_[start] == ':');
    return isSeparator ? pastBlanks(start + 1) : start;
}

JSONNode& TreeBuilder::add(JSONNode::Kind kind, std::size_t end) {
    JSONNode& node = levels_.empty() ? root_ : levels_.back().node->children.emplace_back();
    node.kind = kind;
    node.position = startOfToken(end);
    node.end = end_ = end;
    return node;
}

/// The parser has read the character behind a number too.
bool TreeBuilder::addNumber(const PropertyListValue& value) {
    add(JSONNode::Kind::Scalar, readCount() - (stream_.eof() ? 0 : 1)).scalar = value;
    return true;
}

/// An integer that the parser has no type for is one too.
bool TreeBuilder::number_float(number_float_t, const string_t& text) {
    if (isDecimalInteger(text))
        refuse("integer not between -2^63 and 2^64-1: " + shortened(text),
               startOfToken(readCount()));
    const auto real = realFromText(text);
    if (!real)
        refuse("number too large or too small for a real: " + shortened(text),
               startOfToken(readCount()));
    return addNumber(*real);
}

bool TreeBuilder::key(string_t& value) {
    const std::size_t start = startOfToken(readCount());
    const auto [known, isNew] = levels_.back().keys.emplace(value, start);
    if (!isNew)
        refuse("the key " + shortened(text_.substr(start, readCount() - start)) +
                   " stands in this object twice, first at " +
                   textOf(placeOf(text_, known->second)),
               start);
    levels_.back().node->keys.push_back(value);
    end_ = readCount();
    return true;
}

bool TreeBuilder::open(JSONNode::Kind kind) {
    JSONNode& node = add(kind, readCount());
    if (levels_.size() == maximumLevels_) refuse("more than 512 levels", node.position);
    levels_.push_back({&node, {}});
    return true;
}

bool TreeBuilder::close() {
    levels_.back().node->end = end_ = readCount();
    levels_.pop_back();
    return true;
}

bool TreeBuilder::parse_error(std::size_t position, const std::string& token,
                              const json::exception& error) {
    constexpr int numberOverflow = 406;
    if (error.id == numberOverflow) return number_float(0, token);

    const std::size_t lastRead = std::min(position - 1, text_.size());
    const std::size_t start = startOfToken(lastRead);
    const std::size_t end = text_.find_first_of(" \t\r\n,:[]{}\"", start);
    const std::string_view word = text_.substr(start, end - start);
    if (const std::string form = formOfNamedReal(word); !form.empty())
        refuse(std::string(word) + " is no number of JSON; write " + form, start);

    std::string reason = error.what();
    const std::string_view separator = " - ";
    reason.erase(0, reason.find(separator) + separator.size());
    const std::string read = "; last read: '" + token + "'";
    if (const std::size_t found = reason.find(read); found != reason.npos)
        reason.replace(found, read.size(),
                       reason.starts_with("invalid literal") ? " " + shortened(word) : "");
    if (reason.ends_with("expected ']'") || reason.ends_with("expected '}'"))
        reason.insert(reason.size() - 3, "',' or ");
    if (reason.starts_with("unexpected end") && !levels_.empty()) {
        const std::size_t bracket = levels_.back().node->position;
        reason += std::string("; the ") + text_[bracket] + " of " +
                  textOf(placeOf(text_, bracket)) + " is not closed";
    }
    const bool isInsideString = reason.starts_with("invalid string") && lastRead < text_.size();
    refuse(reason, isInsideString ? lastRead : start);
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
    return TreeBuilder(text, maximumLevels).root();
}

}  // namespace Tool
