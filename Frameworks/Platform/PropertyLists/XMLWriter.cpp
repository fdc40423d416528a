// SPDX-License-Identifier: MIT
#include "Platform/PropertyLists/XMLWriter.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/PropertyLists/Limits.h"
#include "Platform/PropertyLists/Scalars.h"
#include "Platform/PropertyLists/TextBuilder.h"
#include "Platform/PropertyLists/Unicode.h"
#include "Platform/PropertyLists/XMLText.h"

namespace QRVPlatform::PropertyLists {
namespace {

constexpr std::string_view header =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";
constexpr std::string_view footer = "</plist>\n";

/// Refers to the contents that a dictionary's iterator keeps alive.
struct Entry {
    std::string_view key;
    std::uint64_t beginning;  // the key's first bytes, which sort like the key
    const PropertyListValue* value;
};

std::uint64_t beginningOf(std::string_view key) {
    std::uint64_t beginning = 0;
    if (key.size() >= sizeof beginning) {
        std::memcpy(&beginning, key.data(), sizeof beginning);
        return std::endian::native == std::endian::big ? beginning : __builtin_bswap64(beginning);
    }
    for (const char character : key)
        beginning = beginning << 8U | static_cast<unsigned char>(character);
    return key.empty() ? 0 : beginning << (sizeof beginning - key.size()) * 8;
}

bool isBefore(const Entry& left, const Entry& right) {
    return left.beginning != right.beginning ? left.beginning < right.beginning
                                             : left.key < right.key;
}

class XMLWriter {
  public:
    std::string write(const PropertyListValue& root) {
        text_.append(header);
        value(root);
        text_.append(footer);
        requireRoom(0);
        return text_.take();
    }

  private:
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

    // Called before anything long is appended, so that the text never exceeds the limit by much.
    void requireRoom(std::size_t size) const {
        if (text_.size() + size > maximumSize) fail(tooLarge("would be"));
    }
    void indent() { text_.appendTabs(level()); }
    void characters(std::string_view characters, std::string_view what);

    void value(const PropertyListValue& value);
    void dictionary(const NSDictionary& dictionary);
    void pushSorted(NSDictionary::Iterator& contents);
    // By value: a nested dictionary makes `entries_` grow, which moves the entries in it.
    void entry(Entry entry);
    void array(const NSArray& array);
    void data(std::string_view bytes);
    void date(NSDate date);
    void requireLevel() const {
        if (level() >= maximumLevels) fail(tooManyLevels());
    }

    TextBuilder text_;
    std::vector<Step> path_;
    // The entries of the dictionaries that are being written, the innermost last.
    std::vector<Entry> entries_;
    std::size_t values_ = 0;
};

// Bytes that are not UTF-8 become \xNN.
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

void XMLWriter::characters(std::string_view characters, std::string_view what) {
    requireRoom(characters.size());
    if (!appendXMLText(text_, characters)) fail(std::string(what) + " is not valid UTF-8");
}

void XMLWriter::value(const PropertyListValue& value) {
    using Kind = PropertyListValue::Kind;
    if (++values_ > maximumValues) fail(tooManyValues());
    requireRoom(0);
    indent();
    switch (value.kind()) {
        case Kind::Boolean:
            if (value.boolValue())
                text_.append("<true/>\n");
            else
                text_.append("<false/>\n");
            break;
        case Kind::Integer:
            text_.append("<integer>");
            appendInteger(text_, value);
            text_.append("</integer>\n");
            break;
        case Kind::Real:
            text_.append("<real>");
            appendReal(text_, value.doubleValue());
            text_.append("</real>\n");
            break;
        case Kind::String:
            text_.append("<string>");
            characters(value.stringView(), "a string");
            text_.append("</string>\n");
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
    text_.append("<date>");
    if (!appendDate(text_, date)) fail("a date outside the years 0000 to 9999 cannot be stored");
    text_.append("</date>\n");
}

// A container may change while it is written; the iterator keeps the contents as they were.
void XMLWriter::dictionary(const NSDictionary& dictionary) {
    requireLevel();
    NSDictionary::Iterator contents = dictionary.begin();
    const std::size_t first = entries_.size();
    pushSorted(contents);
    const std::size_t end = entries_.size();
    if (end == first) return text_.append("<dict/>\n");
    text_.append("<dict>\n");
    for (std::size_t index = first; index < end; ++index) entry(entries_[index]);
    entries_.resize(first);
    indent();
    text_.append("</dict>\n");
}

void XMLWriter::pushSorted(NSDictionary::Iterator& contents) {
    const auto first = static_cast<std::ptrdiff_t>(entries_.size());
    for (; contents != std::default_sentinel; ++contents) {
        const NSDictionary::Entry entry = *contents;
        entries_.push_back(
            {.key = entry.key, .beginning = beginningOf(entry.key), .value = &entry.value});
    }
    std::sort(entries_.begin() + first, entries_.end(), isBefore);
}

void XMLWriter::entry(Entry entry) {
    path_.push_back({.key = entry.key, .index = 0, .isIndex = false});
    indent();
    text_.append("<key>");
    characters(entry.key, "a key");
    text_.append("</key>\n");
    value(*entry.value);
    path_.pop_back();
}

void XMLWriter::array(const NSArray& array) {
    requireLevel();
    NSArray::Iterator element = array.begin();
    if (element == std::default_sentinel) return text_.append("<array/>\n");
    text_.append("<array>\n");
    for (std::size_t index = 0; element != std::default_sentinel; ++element, ++index) {
        path_.push_back({.key = {}, .index = index, .isIndex = true});
        value(*element);
        path_.pop_back();
    }
    indent();
    text_.append("</array>\n");
}

void XMLWriter::data(std::string_view bytes) {
    constexpr std::size_t lineWidth = 76;
    constexpr std::size_t tabWidth = 8;
    constexpr std::size_t narrowest = 16;
    const std::size_t indentation = std::min(level() * tabWidth, lineWidth - narrowest);
    const std::size_t bytesPerLine = (lineWidth - indentation) / 4 * 3;
    requireRoom(bytes.size());
    text_.append("<data>\n");
    for (std::size_t position = 0; position < bytes.size(); position += bytesPerLine) {
        requireRoom(0);
        indent();
        appendBase64(text_, bytes.substr(position, bytesPerLine));
        text_.append("\n");
    }
    indent();
    text_.append("</data>\n");
}

}  // namespace

std::string writeXML(const PropertyListValue& value) {
    return XMLWriter().write(value);
}

}  // namespace QRVPlatform::PropertyLists
