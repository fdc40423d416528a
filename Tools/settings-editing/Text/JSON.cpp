// SPDX-License-Identifier: MIT
#include "Text/JSON.h"

#include <nlohmann/json.hpp>

#include <utility>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Text/JSONReader.h"
#include "Text/ScalarText.h"

namespace Tool {
namespace {

using nlohmann::json;

constexpr const char* dateKey = "$date";
constexpr const char* dataKey = "$data";
constexpr const char* realKey = "$real";
constexpr const char* dictionaryKey = "$dictionary";

constexpr std::size_t maximumLevels = NSPropertyListSerialization::maximumLevels;
// Each level may stand in an escape, and the innermost value be an object of one entry.
constexpr std::size_t maximumObjectLevels = 2 * maximumLevels + 1;

bool isSpecialKey(std::string_view key) {
    return key == dateKey || key == dataKey || key == realKey || key == dictionaryKey;
}

bool looksSpecial(const NSDictionary& dictionary) {
    return dictionary.count() == 1 && isSpecialKey((*dictionary.begin()).key);
}

bool looksSpecial(const JSONNode& node) {
    return node.keys.size() == 1 && isSpecialKey(node.keys.front());
}

json jsonOf(const PropertyListValue& value);

json specialObject(const char* key, json content) {
    json object = json::object();
    object[key] = std::move(content);
    return object;
}

json jsonOfReal(double value) {
    const std::string name = nameOfReal(value);
    return name.empty() ? json(value) : specialObject(realKey, name);
}

json jsonOfDate(NSDate date) {
    const std::string text = dateText(date);
    if (!text.empty()) return specialObject(dateKey, text);
    return specialObject(dateKey, jsonOfReal(date.timeIntervalSinceReferenceDate()));
}

json jsonOfArray(const NSArray& array) {
    json elements = json::array();
    for (const PropertyListValue& element : array) elements.push_back(jsonOf(element));
    return elements;
}

json jsonOfDictionary(const NSDictionary& dictionary) {
    json entries = json::object();
    for (const auto& [key, value] : dictionary) entries[std::string(key)] = jsonOf(value);
    return looksSpecial(dictionary) ? specialObject(dictionaryKey, std::move(entries)) : entries;
}

json jsonOf(const PropertyListValue& value) {
    using Kind = PropertyListValue::Kind;
    switch (value.kind()) {
        case Kind::Boolean:
            return value.boolValue();
        case Kind::Integer:
            return value.isBeyondSigned() ? json(value.unsignedValue())
                                          : json(value.integerValue());
        case Kind::Real:
            return jsonOfReal(value.doubleValue());
        case Kind::Date:
            return jsonOfDate(value.date());
        case Kind::String:
            return std::string(value.stringView());
        case Kind::Data: {
            const NSData data = value.data();
            return specialObject(dataKey, dataText(data.view()));
        }
        case Kind::Array:
            return jsonOfArray(value.array());
        case Kind::Dictionary:
            return jsonOfDictionary(value.dictionary());
        case Kind::Null:
        case Kind::NullMarker:
        case Kind::Color:
            break;
    }
    return nullptr;
}

/// U+007F and U+0080 to U+009F too: JSON allows them unescaped, but terminals obey them.
std::string withControlsEscaped(const std::string& text) {
    constexpr std::string_view digits = "0123456789abcdef";
    const auto escape = [&](unsigned char code) {
        return std::string("\\u00") + digits[code >> 4U] + digits[code & 0xFU];
    };
    std::string result;
    for (std::size_t index = 0; index < text.size(); ++index) {
        const auto byte = static_cast<unsigned char>(text[index]);
        const auto next = static_cast<unsigned char>(index + 1 < text.size() ? text[index + 1] : 0);
        if (byte == 0x7F) {
            result += escape(byte);
        } else if (byte == 0xC2 && next < 0xA0) {
            result += escape(next);
            ++index;
        } else {
            result += text[index];
        }
    }
    return result;
}

/// The values that nodes mean. Levels count the containers of the value from the root, 1.
class Interpreter {
  public:
    explicit Interpreter(std::string_view text) : text_(text) {}
    [[nodiscard]] PropertyListValue valueOf(const JSONNode& node, std::size_t level) const;

  private:
    [[noreturn]] void refuse(const std::string& reason, const JSONNode& node) const {
        throw JSONFault(text_, node.position, reason);
    }
    [[nodiscard]] std::string sourceOf(const JSONNode& node) const {
        return shortened(text_.substr(node.position, node.end - node.position));
    }
    void requireLevel(std::size_t level, const JSONNode& node) const {
        if (level > maximumLevels) refuse("more than 512 levels", node);
    }
    [[nodiscard]] PropertyListValue dateOf(const JSONNode& node, std::size_t level) const;
    [[nodiscard]] PropertyListValue dataOf(const JSONNode& node) const;
    [[nodiscard]] PropertyListValue realOf(const JSONNode& node) const;
    [[nodiscard]] PropertyListValue specialValue(std::string_view key, const JSONNode& content,
                                                 std::size_t level) const;
    [[nodiscard]] PropertyListValue arrayOf(const JSONNode& node, std::size_t level) const;
    [[nodiscard]] PropertyListValue dictionaryOf(const JSONNode& node, std::size_t level) const;

    std::string_view text_;
};

PropertyListValue Interpreter::valueOf(const JSONNode& node, std::size_t level) const {
    if (node.kind == JSONNode::Kind::Scalar) return node.scalar;
    if (node.kind == JSONNode::Kind::Array) return arrayOf(node, level);
    if (!looksSpecial(node)) return dictionaryOf(node, level);
    return specialValue(node.keys.front(), node.children.front(), level);
}

PropertyListValue Interpreter::dateOf(const JSONNode& node, std::size_t level) const {
    if (node.scalar.isString()) {
        if (const auto date = dateFromText(node.scalar.stringView())) return *date;
    } else if (const PropertyListValue seconds = valueOf(node, level); seconds.isReal()) {
        return NSDate(seconds.doubleValue());
    }
    refuse("not a date (YYYY-MM-DDTHH:MM:SSZ): " + sourceOf(node), node);
}

PropertyListValue Interpreter::dataOf(const JSONNode& node) const {
    const auto bytes = dataFromText(node.scalar.stringView());
    if (!node.scalar.isString() || !bytes) refuse("not base64: " + sourceOf(node), node);
    return NSData(*bytes);
}

PropertyListValue Interpreter::realOf(const JSONNode& node) const {
    const auto real = namedReal(node.scalar.stringView());
    if (!real) refuse("not nan, inf or -inf: " + sourceOf(node), node);
    return *real;
}

PropertyListValue Interpreter::specialValue(std::string_view key, const JSONNode& content,
                                            std::size_t level) const {
    if (key == dateKey) return dateOf(content, level);
    if (key == dataKey) return dataOf(content);
    if (key == realKey) return realOf(content);
    if (content.kind != JSONNode::Kind::Object)
        refuse("not an object: " + sourceOf(content), content);
    return dictionaryOf(content, level);
}

PropertyListValue Interpreter::arrayOf(const JSONNode& node, std::size_t level) const {
    requireLevel(level, node);
    const NSMutableArray result;
    for (const JSONNode& element : node.children) result.addObject(valueOf(element, level + 1));
    return result.copy();
}

PropertyListValue Interpreter::dictionaryOf(const JSONNode& node, std::size_t level) const {
    requireLevel(level, node);
    const NSMutableDictionary result;
    for (std::size_t index = 0; index < node.keys.size(); ++index)
        result.setObjectForKey(valueOf(node.children[index], level + 1), node.keys[index]);
    return result.copy();
}

/// A path in a message may hold other bytes than UTF-8; what a property list holds does not.
std::string textOf(const json& value, int indentation) {
    return withControlsEscaped(value.dump(indentation, ' ', false, json::error_handler_t::replace));
}

std::string textOf(const json& value) {
    constexpr int onOneLine = -1;
    return textOf(value, onOneLine);
}

}  // namespace

std::string jsonText(const PropertyListValue& value) {
    return textOf(jsonOf(value));
}

std::string indentedJSON(const PropertyListValue& value) {
    return textOf(jsonOf(value), 2);
}

std::string markedDictionary(const NSDictionary& dictionary) {
    json entries = json::object();
    for (const auto& [key, value] : dictionary) entries[std::string(key)] = jsonOf(value);
    return textOf(specialObject(dictionaryKey, std::move(entries)));
}

JSONDocument documentFromJSON(std::string_view text) {
    const JSONNode root = nodeFromJSON(text, maximumObjectLevels);
    const bool isMarked = looksSpecial(root) && root.keys.front() == dictionaryKey;
    return {Interpreter(text).valueOf(root, 1), isMarked};
}

PropertyListValue valueFromJSON(std::string_view text) {
    return documentFromJSON(text).value;
}

}  // namespace Tool
