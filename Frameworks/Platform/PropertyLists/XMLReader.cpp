// SPDX-License-Identifier: MIT
// The reader of the XML format: from elements to values.

#include <algorithm>
#include <cstddef>
#include <optional>
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

std::string shown(const XMLTag& tag) {
    return "<" + shortened(tag.name) + ">";
}

/// Builds the values while the text is scanned. The offset of a malformed value is that of its tag.
/// The containers that are being read are in a list, so that the depth of a tree costs no stack.
class XMLReader {
  public:
    XMLReader(std::string_view text, PassedText& passed)
        : scanner_(text), passed_(passed), pages_(text.size()), strings_(pages_) {}

    PropertyListValue read();

  private:
    struct Container {
        XMLTag tag;
        bool isDictionary;
        std::size_t first = 0;  // of its contents in `entries_` or `elements_`
    };

    PropertyListValue contentsOfPlist(const XMLTag& plist);
    PropertyListValue value(const XMLTag& tag);
    PropertyListValue valueOrStart(const XMLTag& tag);
    PropertyListValue start(const XMLTag& tag, bool isDictionary);
    PropertyListValue restOfDictionary(PropertyListValue nested);
    PropertyListValue restOfArray(PropertyListValue nested);
    PropertyListValue string(const XMLTag& tag) {
        const std::string_view text = scanner_.textOf(tag);
        extent_.addContents(text.size(), tag.offset);
        return strings_.stringOf(text);
    }
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

    // Between two elements nothing of the text before is needed: the names of the elements that are
    // open do not lie in it.
    void giveBackTextWhenDue() {
        if (passed_.isDue(scanner_.offset())) giveBackText();
    }
    void giveBackText();

    XMLScanner scanner_;
    PassedText& passed_;
    std::optional<std::size_t> plist_;  // the offset of its tag
    ValueObjects::ValuePages pages_;
    SharedStrings strings_;
    Extent extent_;
    // The containers that are being read, and their contents; the innermost last.
    std::vector<Container> containers_;
    std::vector<KeyedValue> entries_;
    std::vector<PropertyListValue> elements_;
};

PropertyListValue XMLReader::read() {
    XMLTag root;
    const bool hasRoot = scanner_.nextElement(root);
    if (!hasRoot && scanner_.isAtEnd()) fail("there is no value", scanner_.offset());
    PropertyListValue result;
    if (hasRoot) result = root.element == XMLElement::Plist ? contentsOfPlist(root) : value(root);
    requireNoElement({});
    if (!scanner_.isAtEnd()) fail("malformed XML: nothing to close", scanner_.offset());
    return result;
}

PropertyListValue XMLReader::contentsOfPlist(const XMLTag& plist) {
    plist_ = plist.offset;
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
    PropertyListValue read = valueOrStart(tag);
    while (!containers_.empty()) {
        giveBackTextWhenDue();
        read = containers_.back().isDictionary ? restOfDictionary(std::move(read))
                                               : restOfArray(std::move(read));
    }
    return read;
}

// Null when the value is a container: it has been put into `containers_`.
PropertyListValue XMLReader::valueOrStart(const XMLTag& tag) {
    extent_.addValue(tag.offset);
    switch (tag.element) {
        case XMLElement::String:
            return string(tag);
        case XMLElement::Dictionary:
            return start(tag, true);
        case XMLElement::Array:
            return start(tag, false);
        case XMLElement::Integer:
            return integer(tag);
        case XMLElement::Real:
            return real(tag);
        case XMLElement::True:
            return boolean(tag, true);
        case XMLElement::False:
            return boolean(tag, false);
        case XMLElement::Date:
            return date(tag);
        case XMLElement::Data:
            return data(tag);
        case XMLElement::Key:
            fail("a key where a value is expected", tag.offset);
        case XMLElement::Plist:
        case XMLElement::Unknown:
            break;
    }
    fail("unknown element " + shown(tag), tag.offset);
}

PropertyListValue XMLReader::start(const XMLTag& tag, bool isDictionary) {
    extent_.enterContainer(tag.offset);
    containers_.push_back({tag, isDictionary});
    return nullptr;
}

// Continues with the innermost container after its last element, which was a container; null when
// it has only started. Returns null when the next element starts a container, else the dictionary.
PropertyListValue XMLReader::restOfDictionary(PropertyListValue nested) {
    if (nested.isNull())
        containers_.back().first = entries_.size();
    else
        entries_.back().value = std::move(nested);
    const XMLTag tag = containers_.back().tag;
    for (XMLTag key; nextElement(tag, key);) {
        if (key.element != XMLElement::Key)
            fail(shown(key) + " where a key is expected", key.offset);
        PropertyListValue name = string(key);
        XMLTag valueTag;
        if (!scanner_.nextElement(valueTag)) fail("a key without a value", key.offset);
        PropertyListValue read = valueOrStart(valueTag);
        const bool isStarted = read.isNull();
        entries_.push_back({std::move(name), std::move(read)});
        if (isStarted) return nullptr;
        giveBackTextWhenDue();
    }
    scanner_.endElement(tag);
    const std::size_t first = containers_.back().first;
    PropertyListValue result = immutableDictionary(std::span(entries_).subspan(first), &pages_);
    entries_.resize(first);
    containers_.pop_back();
    extent_.leaveContainer();
    return result;
}

// The same for an array.
PropertyListValue XMLReader::restOfArray(PropertyListValue nested) {
    if (nested.isNull())
        containers_.back().first = elements_.size();
    else
        elements_.push_back(std::move(nested));
    const XMLTag tag = containers_.back().tag;
    for (XMLTag element; nextElement(tag, element);) {
        PropertyListValue read = valueOrStart(element);
        if (read.isNull()) return read;
        elements_.push_back(std::move(read));
        giveBackTextWhenDue();
    }
    scanner_.endElement(tag);
    const std::size_t first = containers_.back().first;
    PropertyListValue result = immutableArray(std::span(elements_).subspan(first), &pages_);
    elements_.resize(first);
    containers_.pop_back();
    extent_.leaveContainer();
    return result;
}

void XMLReader::giveBackText() {
    std::vector<std::size_t> open;
    if (plist_) open.push_back(*plist_);
    for (const Container& container : containers_) open.push_back(container.tag.offset);
    passed_.pass(scanner_.offset(), open);
}

PropertyListValue XMLReader::boolean(const XMLTag& tag, bool truth) {
    if (!withoutSpaceAround(scanner_.textOf(tag)).empty())
        fail("text inside " + shown(tag), tag.offset);
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
    if (std::string fault = faultOf(*instant); !fault.empty()) fail(std::move(fault), tag.offset);
    return *instant;
}

PropertyListValue XMLReader::data(const XMLTag& tag) {
    const auto bytes = parseBase64(scanner_.textOf(tag));
    if (!bytes) fail("malformed base64 data", tag.offset);
    extent_.addContents(bytes->size(), tag.offset);
    return NSData(*bytes);
}

}  // namespace

PropertyListValue readXML(std::string_view text, PassedText& passed) {
    checkXMLDeclaration(text);
    return XMLReader(text, passed).read();
}

}  // namespace QRVPlatform::PropertyLists
