// SPDX-License-Identifier: MIT
// The reader of the XML format: from elements to values.

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/PropertyLists/Readers.h"
#include "Platform/PropertyLists/Scalars.h"
#include "Platform/PropertyLists/SharedStrings.h"
#include "Platform/PropertyLists/Unicode.h"
#include "Platform/PropertyLists/XMLScanner.h"
#include "Platform/PropertyLists/XMLText.h"
#include "Platform/Values/ImmutableContainers.h"

namespace QRVPlatform::PropertyLists {
namespace {

/// The same as `name == word`, but without a call.
template <std::size_t Size>
bool is(std::string_view name, const char (&word)[Size]) {
    return name.size() == Size - 1 && std::memcmp(name.data(), word, Size - 1) == 0;
}

std::string shown(const XMLTag& tag) {
    return "<" + shortened(tag.name) + ">";
}

/// Builds the values while the text is scanned. The offset of a malformed value is that of its tag.
class XMLReader {
  public:
    explicit XMLReader(std::string_view text) : scanner_(text) {}

    PropertyListValue read();

  private:
    PropertyListValue contentsOfPlist(const XMLTag& plist);
    PropertyListValue value(const XMLTag& tag);
    PropertyListValue dictionary(const XMLTag& tag);
    PropertyListValue array(const XMLTag& tag);
    PropertyListValue boolean(const XMLTag& tag, bool truth);
    PropertyListValue integer(const XMLTag& tag);
    PropertyListValue real(const XMLTag& tag);
    PropertyListValue date(const XMLTag& tag);
    PropertyListValue data(const XMLTag& tag);

    bool nextElement(const XMLTag& container, XMLTag& tag) {
        return !container.isEmpty && scanner_.nextElement(tag);
    }
    void requireNoElement(const XMLTag& container) {
        XMLTag tag;
        if (nextElement(container, tag)) fail("more than one value: " + shown(tag), tag.offset);
    }

    XMLScanner scanner_;
    SharedStrings strings_;
    Extent extent_;
    // The contents of the containers that are being read, the innermost last.
    std::vector<KeyedValue> entries_;
    std::vector<PropertyListValue> elements_;
};

PropertyListValue XMLReader::read() {
    XMLTag root;
    const bool hasRoot = scanner_.nextElement(root);
    if (!hasRoot && scanner_.isAtEnd()) fail("there is no value", scanner_.offset());
    PropertyListValue result;
    if (hasRoot) result = is(root.name, "plist") ? contentsOfPlist(root) : value(root);
    requireNoElement({});
    if (!scanner_.isAtEnd()) fail("malformed XML: nothing to close", scanner_.offset());
    return result;
}

PropertyListValue XMLReader::contentsOfPlist(const XMLTag& plist) {
    XMLTag tag;
    if (!nextElement(plist, tag)) {
        scanner_.endElement(plist);
        fail("the plist element holds no value", plist.offset);
    }
    PropertyListValue result = value(tag);
    requireNoElement(plist);
    scanner_.endElement(plist);
    return result;
}

PropertyListValue XMLReader::value(const XMLTag& tag) {
    extent_.addValue(tag.offset);
    if (is(tag.name, "string")) return strings_.stringOf(scanner_.textOf(tag));
    if (is(tag.name, "dict")) return dictionary(tag);
    if (is(tag.name, "integer")) return integer(tag);
    if (is(tag.name, "true")) return boolean(tag, true);
    if (is(tag.name, "false")) return boolean(tag, false);
    if (is(tag.name, "real")) return real(tag);
    if (is(tag.name, "array")) return array(tag);
    if (is(tag.name, "data")) return data(tag);
    if (is(tag.name, "date")) return date(tag);
    if (is(tag.name, "key")) fail("a key where a value is expected", tag.offset);
    fail("unknown element " + shown(tag), tag.offset);
}

PropertyListValue XMLReader::dictionary(const XMLTag& tag) {
    extent_.enterContainer(tag.offset);
    const std::size_t first = entries_.size();
    for (XMLTag key; nextElement(tag, key);) {
        if (!is(key.name, "key")) fail(shown(key) + " where a key is expected", key.offset);
        PropertyListValue name = strings_.stringOf(scanner_.textOf(key));
        XMLTag valueTag;
        if (!scanner_.nextElement(valueTag)) fail("a key without a value", key.offset);
        PropertyListValue read = value(valueTag);
        entries_.push_back({std::move(name), std::move(read)});
    }
    scanner_.endElement(tag);
    PropertyListValue result = immutableDictionary(std::span(entries_).subspan(first));
    entries_.resize(first);
    extent_.leaveContainer();
    return result;
}

PropertyListValue XMLReader::array(const XMLTag& tag) {
    extent_.enterContainer(tag.offset);
    const std::size_t first = elements_.size();
    for (XMLTag element; nextElement(tag, element);) {
        PropertyListValue read = value(element);
        elements_.push_back(std::move(read));
    }
    scanner_.endElement(tag);
    PropertyListValue result = immutableArray(std::span(elements_).subspan(first));
    elements_.resize(first);
    extent_.leaveContainer();
    return result;
}

PropertyListValue XMLReader::boolean(const XMLTag& tag, bool truth) {
    const std::string_view text = scanner_.textOf(tag);
    if (!withoutSpaceAround(text).empty()) fail("text inside " + shown(tag), tag.offset);
    return truth;
}

PropertyListValue XMLReader::integer(const XMLTag& tag) {
    const auto number = parseInteger(withoutSpaceAround(scanner_.textOf(tag)));
    if (!number) fail("malformed integer", tag.offset);
    return *number;
}

PropertyListValue XMLReader::real(const XMLTag& tag) {
    const auto number = parseReal(withoutSpaceAround(scanner_.textOf(tag)));
    if (!number) fail("malformed real", tag.offset);
    return *number;
}

PropertyListValue XMLReader::date(const XMLTag& tag) {
    const auto instant = parseDate(withoutSpaceAround(scanner_.textOf(tag)));
    if (!instant) fail("malformed date", tag.offset);
    return *instant;
}

PropertyListValue XMLReader::data(const XMLTag& tag) {
    const auto bytes = parseBase64(scanner_.textOf(tag));
    if (!bytes) fail("malformed base64 data", tag.offset);
    return NSData(*bytes);
}

}  // namespace

PropertyListValue readXML(std::string_view text) {
    checkXMLDeclaration(text);
    return XMLReader(text).read();
}

}  // namespace QRVPlatform::PropertyLists
