// SPDX-License-Identifier: MIT
#include "Text/JSON.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <utility>
#include <vector>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Reporting/Failure.h"
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

[[noreturn]] void refuse(const std::string& why) {
    throw Failure(Fault::WrongValue, why);
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

/// Builds the tree as it is written: special objects are still dictionaries. Keeps no more levels
/// than a value can have, however many the text opens.
class TreeBuilder : public nlohmann::json_sax<json> {
  public:
    [[nodiscard]] const PropertyListValue& tree() const { return tree_; }
    [[nodiscard]] const std::string& fault() const { return fault_; }

    bool null() override { return fail("null is no value of a setting"); }
    bool boolean(bool value) override { return add(value); }
    bool number_integer(number_integer_t value) override { return add(value); }
    bool number_unsigned(number_unsigned_t value) override { return add(value); }
    // An integer that is out of range arrives here too.
    bool number_float(number_float_t, const string_t& text) override {
        if (isDecimalInteger(text)) return fail("integer out of range: " + shortened(text));
        const auto real = realFromText(text);
        return real ? add(*real) : fail("real out of range: " + shortened(text));
    }
    bool string(string_t& value) override { return add(value); }
    bool binary(binary_t&) override { return fail("binary data in text"); }
    bool start_object(std::size_t) override { return open({true, {}, {}, {}}); }
    bool key(string_t& value) override {
        levels_.back().key = value;
        return true;
    }
    bool end_object() override {
        const NSDictionary object = levels_.back().entries;
        return close(object.copy());
    }
    bool start_array(std::size_t) override { return open({false, {}, {}, {}}); }
    bool end_array() override {
        const NSArray array = levels_.back().elements;
        return close(array.copy());
    }
    bool parse_error(std::size_t, const std::string& token, const json::exception& error) override {
        if (error.id == numberOverflow) return fail("number out of range: " + shortened(token));
        const std::string_view what = error.what();
        const std::size_t start = what.find("] ");
        return fail("not JSON: " + std::string(what.substr(start == what.npos ? 0 : start + 2)));
    }

  private:
    static constexpr int numberOverflow = 406;

    struct Level {
        bool isObject;
        NSMutableDictionary entries;
        NSMutableArray elements;
        std::string key;
    };

    bool fail(const std::string& fault) {
        fault_ = fault;
        return false;
    }
    bool open(Level level) {
        if (levels_.size() == maximumObjectLevels) return fail("more than 512 levels");
        levels_.push_back(std::move(level));
        return true;
    }
    bool close(const PropertyListValue& container) {
        levels_.pop_back();
        return add(container);
    }
    bool add(const PropertyListValue& value) {
        if (levels_.empty())
            tree_ = value;
        else if (levels_.back().isObject)
            levels_.back().entries.setObjectForKey(value, levels_.back().key);
        else
            levels_.back().elements.addObject(value);
        return true;
    }

    std::vector<Level> levels_;
    PropertyListValue tree_;
    std::string fault_;
};

PropertyListValue interpreted(const PropertyListValue& value, std::size_t level);

PropertyListValue dateOf(const PropertyListValue& content) {
    if (content.isReal()) return NSDate(content.doubleValue());
    const auto date = dateFromText(content.stringView());
    if (!date) refuse("not a date (YYYY-MM-DDTHH:MM:SSZ): " + shortened(jsonText(content)));
    return *date;
}

PropertyListValue dataOf(const PropertyListValue& content) {
    const auto bytes = dataFromText(content.stringView());
    if (!content.isString() || !bytes) refuse("not base64: " + shortened(jsonText(content)));
    return NSData(*bytes);
}

PropertyListValue realOf(const PropertyListValue& content) {
    const auto real = namedReal(content.stringView());
    if (!real) refuse("not nan, inf or -inf: " + shortened(jsonText(content)));
    return *real;
}

PropertyListValue plainDictionary(const NSDictionary& dictionary, std::size_t level) {
    if (level > maximumLevels) refuse("more than 512 levels");
    const NSMutableDictionary result;
    for (const auto& [key, value] : dictionary)
        result.setObjectForKey(interpreted(value, level + 1), key);
    return result.copy();
}

PropertyListValue specialValue(std::string_view key, const PropertyListValue& content,
                               std::size_t level) {
    if (key == dateKey) return dateOf(content.isString() ? content : interpreted(content, level));
    if (key == dataKey) return dataOf(content);
    if (key == realKey) return realOf(content);
    if (!content.isDictionary()) refuse("not an object: " + shortened(jsonText(content)));
    return plainDictionary(content.dictionary(), level);
}

PropertyListValue interpretedArray(const NSArray& array, std::size_t level) {
    if (level > maximumLevels) refuse("more than 512 levels");
    const NSMutableArray result;
    for (const PropertyListValue& element : array)
        result.addObject(interpreted(element, level + 1));
    return result.copy();
}

/// `level` counts the containers of the value from the root, 1, to this one.
PropertyListValue interpreted(const PropertyListValue& value, std::size_t level) {
    if (value.isArray()) return interpretedArray(value.array(), level);
    if (!value.isDictionary()) return value;
    const NSDictionary dictionary = value.dictionary();
    if (!looksSpecial(dictionary)) return plainDictionary(dictionary, level);
    const auto entry = dictionary.begin();
    return specialValue((*entry).key, (*entry).value, level);
}

/// A path in a message may hold other bytes than UTF-8; what a property list holds does not.
std::string textOf(const json& value) {
    return withControlsEscaped(value.dump(-1, ' ', false, json::error_handler_t::replace));
}

}  // namespace

std::string jsonText(const PropertyListValue& value) {
    return textOf(jsonOf(value));
}

std::string markedDictionary(const NSDictionary& dictionary) {
    json entries = json::object();
    for (const auto& [key, value] : dictionary) entries[std::string(key)] = jsonOf(value);
    return textOf(specialObject(dictionaryKey, std::move(entries)));
}

JSONDocument documentFromJSON(std::string_view text) {
    TreeBuilder builder;
    if (!json::sax_parse(text.begin(), text.end(), &builder)) refuse(builder.fault());
    const PropertyListValue& root = builder.tree();
    const bool isMarked = root.isDictionary() && looksSpecial(root.dictionary()) &&
                          (*root.dictionary().begin()).key == dictionaryKey;
    return {interpreted(root, 1), isMarked};
}

PropertyListValue valueFromJSON(std::string_view text) {
    return documentFromJSON(text).value;
}

}  // namespace Tool
