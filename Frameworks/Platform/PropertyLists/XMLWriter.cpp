// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Platform/PropertyLists/Reading.h"
#include "Platform/PropertyLists/Scalars.h"
#include "Platform/PropertyLists/Unicode.h"
#include "Platform/PropertyLists/Writing.h"
#include "Platform/PropertyLists/XMLText.h"

namespace PropertyLists {
namespace {

constexpr std::string_view header =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";
constexpr std::string_view footer = "</plist>\n";

constexpr std::size_t maximumLevels = NSPropertyListSerialization::maximumLevels;
constexpr std::size_t maximumSize = NSPropertyListSerialization::maximumSize;
constexpr std::size_t maximumValues = NSPropertyListSerialization::maximumValues;

struct Entry {
    std::string key;
    PropertyListValue value;
};

std::vector<Entry> sortedEntries(const NSDictionary& dictionary) {
    std::vector<Entry> entries;
    entries.reserve(dictionary.count());
    for (const auto& [key, value] : dictionary) entries.push_back({std::string(key), value});
    std::sort(entries.begin(), entries.end(),
              [](const Entry& left, const Entry& right) { return left.key < right.key; });
    return entries;
}

class XMLWriter {
  public:
    std::string write(const PropertyListValue& root) {
        text_.reserve(initialCapacity);
        text_ += header;
        value(root);
        text_ += footer;
        requireRoom(0);
        return std::move(text_);
    }

  private:
    static constexpr std::size_t initialCapacity = 4096;

    /// A key, or the index of an array's element.
    struct Step {
        std::string_view key;
        std::size_t index;
        bool isIndex;
    };

    [[noreturn]] void fail(std::string_view message) const {
        throw WriteFailure{std::string(message), keyPath()};
    }
    std::string keyPath() const;
    std::size_t level() const { return path_.size(); }

    // Asked before what may be long is appended, so that no more than the limit is ever held.
    void requireRoom(std::size_t size) const {
        if (text_.size() + size > maximumSize) fail("the file would be larger than 64 MiB");
    }
    void indent() { text_.append(level(), '\t'); }
    void element(std::string_view name, std::string_view characters);

    void value(const PropertyListValue& value);
    void dictionary(const NSDictionary& dictionary);
    void array(const NSArray& array);
    void data(std::string_view bytes);
    void date(NSDate date);
    template <typename Contents>
    void container(std::string_view name, bool isEmpty, Contents&& contents);

    std::string text_;
    std::vector<Step> path_;
    std::size_t values_ = 0;
};

// Bytes that are not UTF-8 are shown as \xNN.
void appendReadable(std::string& text, std::string_view key) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    while (!key.empty()) {
        const std::size_t length = lengthOfFirstCharacter(key);
        if (length == 0) {
            const auto byte = static_cast<unsigned char>(key.front());
            text += {'\\', 'x', digits[byte >> 4U], digits[byte & 0xFU]};
        }
        text += key.substr(0, length);
        key.remove_prefix(std::max<std::size_t>(1, length));
    }
}

std::string XMLWriter::keyPath() const {
    std::string keyPath;
    for (const Step& step : path_) {
        if (step.isIndex) {
            keyPath += "[" + std::to_string(step.index) + "]";
        } else {
            if (!keyPath.empty()) keyPath += '.';
            appendReadable(keyPath, step.key);
        }
    }
    return keyPath;
}

void XMLWriter::element(std::string_view name, std::string_view characters) {
    requireRoom(characters.size());
    text_.append(1, '<').append(name).append(1, '>');
    if (!appendXMLText(text_, characters)) {
        fail(name == "key" ? "a key is not valid UTF-8" : "a string is not valid UTF-8");
    }
    text_.append("</").append(name).append(">\n");
}

void XMLWriter::value(const PropertyListValue& value) {
    using Kind = PropertyListValue::Kind;
    if (++values_ > maximumValues) fail(tooManyValues);
    requireRoom(0);
    indent();
    switch (value.kind()) {
        case Kind::Boolean:
            text_ += value.boolValue() ? "<true/>\n" : "<false/>\n";
            break;
        case Kind::Integer:
            text_ += "<integer>";
            appendInteger(text_, value);
            text_ += "</integer>\n";
            break;
        case Kind::Real:
            text_ += "<real>";
            appendReal(text_, value.doubleValue());
            text_ += "</real>\n";
            break;
        case Kind::String:
            element("string", value.stringView());
            break;
        case Kind::Date:
            date(value.date());
            break;
        case Kind::Data: {
            const NSData bytes = value.data();
            data(bytes.view());
            break;
        }
        case Kind::Array:
            array(value.array());
            break;
        case Kind::Dictionary:
            dictionary(value.dictionary());
            break;
        case Kind::Null:
            fail("there is no value to store");
        case Kind::NullMarker:
            fail("the null marker cannot be stored");
        case Kind::Color:
            fail("a colour cannot be stored");
    }
}

void XMLWriter::date(NSDate date) {
    text_ += "<date>";
    if (!appendDate(text_, date)) fail("a date outside the years 0000 to 9999 cannot be stored");
    text_ += "</date>\n";
}

template <typename Contents>
void XMLWriter::container(std::string_view name, bool isEmpty, Contents&& contents) {
    if (level() >= maximumLevels) fail(tooManyLevels);
    text_.append(1, '<').append(name).append(isEmpty ? "/>\n" : ">\n");
    if (isEmpty) return;
    contents();
    indent();
    text_.append("</").append(name).append(">\n");
}

void XMLWriter::dictionary(const NSDictionary& dictionary) {
    const std::vector<Entry> entries = sortedEntries(dictionary);
    container("dict", entries.empty(), [&] {
        for (const Entry& entry : entries) {
            path_.push_back({.key = entry.key, .index = 0, .isIndex = false});
            indent();
            element("key", entry.key);
            value(entry.value);
            path_.pop_back();
        }
    });
}

// The array may change while it is written, so it is not asked twice.
void XMLWriter::array(const NSArray& array) {
    const NSArray elements = array.copy();
    container("array", elements.count() == 0, [&] {
        std::size_t index = 0;
        for (const PropertyListValue& element : elements) {
            path_.push_back({.key = {}, .index = index++, .isIndex = true});
            value(element);
            path_.pop_back();
        }
    });
}

void XMLWriter::data(std::string_view bytes) {
    constexpr std::size_t lineWidth = 76;
    constexpr std::size_t tabWidth = 8;
    constexpr std::size_t narrowest = 16;
    const std::size_t tabs = std::min(level() * tabWidth, lineWidth - narrowest);
    const std::size_t bytesPerLine = (lineWidth - tabs) / 4 * 3;
    requireRoom(bytes.size());
    text_ += "<data>\n";
    for (std::size_t position = 0; position < bytes.size(); position += bytesPerLine) {
        requireRoom(0);
        indent();
        appendBase64(text_, bytes.substr(position, bytesPerLine));
        text_ += '\n';
    }
    indent();
    text_ += "</data>\n";
}

}  // namespace

std::string writeXML(const PropertyListValue& value) {
    return XMLWriter().write(value);
}

}  // namespace PropertyLists
