// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstddef>
#include <deque>
#include <new>
#include <pugixml.hpp>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/PropertyLists/Reading.h"
#include "Platform/PropertyLists/Scalars.h"
#include "Platform/PropertyLists/Unicode.h"
#include "Platform/PropertyLists/XMLText.h"

namespace PropertyLists {
namespace {

bool isBlank(std::string_view text) {
    return std::all_of(text.begin(), text.end(), isSpace);
}

std::string tag(std::string_view name) {
    return "<" + shortened(name) + ">";
}

enum class Markup {
    Plain,  // only elements and characters after the first element has begun
    Mixed,  // also comments, CDATA sections or processing instructions
};

// The document tree takes 64 bytes for each tag, so their number is bounded before it is built:
// four tags for each entry of a dictionary, and a fifth for comments and the like.
Markup surveyTags(std::string_view text) {
    constexpr std::size_t maximumTags = NSPropertyListSerialization::maximumValues * 5;
    std::size_t tags = 0;
    bool isInsideRoot = false;
    Markup markup = Markup::Plain;
    for (std::size_t open = text.find('<'); open < text.size(); open = text.find('<', open + 1)) {
        if (++tags > maximumTags) fail("there are too many tags", open);
        const char next = open + 1 < text.size() ? text[open + 1] : '\0';
        if (next != '!' && next != '?') {
            isInsideRoot = true;
        } else if (isInsideRoot) {
            markup = Markup::Mixed;
        }
    }
    return markup;
}

// White space between elements would take a node each. Alone in an element it is always kept; next
// to a comment or a CDATA section it is part of the text and needs the full tree.
unsigned parseOptions(Markup markup) {
    constexpr unsigned always =
        pugi::parse_fragment | pugi::parse_doctype | pugi::parse_cdata | pugi::parse_embed_pcdata;
    return always |
           (markup == Markup::Plain ? pugi::parse_ws_pcdata_single : pugi::parse_ws_pcdata);
}

/// Builds the values out of the document tree. Escapes are left to `decodeXMLText`, because the
/// parser passes over entities that it does not know.
class XMLReader {
  public:
    explicit XMLReader(std::string text) : text_(std::move(text)) {}

    PropertyListValue read() {
        checkXMLDeclaration(text_);
        parse();
        const pugi::xml_node root = rootElement();
        if (std::string_view(root.name()) != "plist") return value(root);
        const pugi::xml_node only = firstElement(root);
        if (!only) fail("the plist element holds no value", offsetOf(root));
        requireNoElement(nextElement(only));
        return value(only);
    }

  private:
    void parse();
    pugi::xml_node rootElement() const;
    void checkDocumentType(const pugi::xml_node& node, bool isAfterRoot) const;

    PropertyListValue value(const pugi::xml_node& node);
    PropertyListValue dictionary(const pugi::xml_node& node);
    PropertyListValue array(const pugi::xml_node& node);
    PropertyListValue integer(const pugi::xml_node& node);
    PropertyListValue real(const pugi::xml_node& node);
    PropertyListValue date(const pugi::xml_node& node);
    PropertyListValue data(const pugi::xml_node& node);
    PropertyListValue boolean(const pugi::xml_node& node, bool truth);

    std::string_view textOf(const pugi::xml_node& node);
    std::string joinedTextOf(const pugi::xml_node& node);
    std::string_view decoded(const char* characters, XMLTextKind kind);

    std::size_t offsetOf(const pugi::xml_node& node) const {
        return static_cast<std::size_t>(node.name() - text_.data()) - 1;
    }
    void requireBlank(const char* characters) const;
    pugi::xml_node elementFrom(pugi::xml_node node) const;
    pugi::xml_node firstElement(const pugi::xml_node& parent) const {
        requireBlank(parent.value());
        return elementFrom(parent.first_child());
    }
    pugi::xml_node nextElement(const pugi::xml_node& node) const {
        return elementFrom(node.next_sibling());
    }
    void requireNoElement(const pugi::xml_node& node) const {
        if (node) fail("more than one value: " + tag(node.name()), offsetOf(node));
    }

    struct Entry {
        std::string_view key;
        PropertyListValue value;
    };

    std::string text_;
    bool needsDecoding_ = false;
    pugi::xml_document document_;
    Extent extent_;
    // The contents of the containers that are being read, the innermost last.
    std::vector<Entry> entries_;
    std::vector<PropertyListValue> elements_;
    std::deque<std::string> joinedTexts_;
};

void XMLReader::parse() {
    needsDecoding_ = text_.find('&') != std::string::npos || text_.find('\r') != std::string::npos;
    const unsigned options = parseOptions(surveyTags(text_));
    const std::size_t end = text_.find_last_not_of(" \t\n\r");
    const bool endsWithTag = text_[end] == '>';
    // The parser overwrites the last byte with its end mark, and then passes over a lone "<" there.
    text_ += '\n';
    const pugi::xml_parse_result result =
        document_.load_buffer_inplace(text_.data(), text_.size(), options, pugi::encoding_utf8);
    if (result.status == pugi::status_out_of_memory) throw std::bad_alloc();
    if (!result) {
        fail("malformed XML: " + std::string(result.description()),
             static_cast<std::size_t>(result.offset));
    }
    if (!endsWithTag) fail("unexpected text", end);
}

pugi::xml_node XMLReader::rootElement() const {
    pugi::xml_node root;
    for (const pugi::xml_node& node : document_.children()) {
        if (node.type() == pugi::node_doctype) {
            checkDocumentType(node, !root.empty());
        } else if (node.type() != pugi::node_element) {
            requireBlank(node.value());
        } else {
            if (root) requireNoElement(node);
            root = node;
        }
    }
    if (!root) fail("there is no value", text_.size() - 1);
    return root;
}

void XMLReader::checkDocumentType(const pugi::xml_node& node, bool isAfterRoot) const {
    const auto offset = static_cast<std::size_t>(node.value() - text_.data());
    if (isAfterRoot) fail("the document type follows the value", offset);
    if (std::string_view(node.value()).find('[') != std::string_view::npos) {
        fail("the document type has an internal subset", offset);
    }
}

// Refuses characters between elements.
void XMLReader::requireBlank(const char* characters) const {
    const std::string_view text(characters);
    if (isBlank(text)) return;
    const std::size_t blank = text.find_first_not_of(" \t\n\r");
    fail("unexpected text", static_cast<std::size_t>(characters - text_.data()) + blank);
}

pugi::xml_node XMLReader::elementFrom(pugi::xml_node node) const {
    while (node && node.type() != pugi::node_element) {
        requireBlank(node.value());
        node = node.next_sibling();
    }
    return node;
}

PropertyListValue XMLReader::value(const pugi::xml_node& node) {
    extent_.addValue(offsetOf(node));
    const std::string_view name = node.name();
    if (name == "string") return textOf(node);
    if (name == "dict") return dictionary(node);
    if (name == "integer") return integer(node);
    if (name == "true") return boolean(node, true);
    if (name == "false") return boolean(node, false);
    if (name == "real") return real(node);
    if (name == "array") return array(node);
    if (name == "data") return data(node);
    if (name == "date") return date(node);
    if (name == "key") fail("a key where a value is expected", offsetOf(node));
    fail("unknown element " + tag(name), offsetOf(node));
}

PropertyListValue XMLReader::dictionary(const pugi::xml_node& node) {
    extent_.enterContainer(offsetOf(node));
    const std::size_t first = entries_.size();
    for (pugi::xml_node key = firstElement(node); key;) {
        if (std::string_view(key.name()) != "key") {
            fail(tag(key.name()) + " where a key is expected", offsetOf(key));
        }
        const std::string_view keyText = textOf(key);
        const pugi::xml_node valueNode = nextElement(key);
        if (!valueNode) fail("a key without a value", offsetOf(key));
        PropertyListValue read = value(valueNode);
        entries_.push_back({keyText, std::move(read)});
        key = nextElement(valueNode);
    }
    const NSMutableDictionary result;
    result.reserve(entries_.size() - first);
    for (std::size_t index = first; index < entries_.size(); ++index) {
        result.setObjectForKey(std::move(entries_[index].value), entries_[index].key);
    }
    entries_.resize(first);
    extent_.leaveContainer();
    return result.copy();
}

PropertyListValue XMLReader::array(const pugi::xml_node& node) {
    extent_.enterContainer(offsetOf(node));
    const std::size_t first = elements_.size();
    for (pugi::xml_node child = firstElement(node); child; child = nextElement(child)) {
        PropertyListValue element = value(child);
        elements_.push_back(std::move(element));
    }
    NSArray result(std::span<const PropertyListValue>(elements_).subspan(first));
    elements_.resize(first);
    extent_.leaveContainer();
    return result;
}

PropertyListValue XMLReader::integer(const pugi::xml_node& node) {
    const auto number = parseInteger(withoutSpaceAround(textOf(node)));
    if (!number) fail("malformed integer", offsetOf(node));
    return *number;
}

PropertyListValue XMLReader::real(const pugi::xml_node& node) {
    const auto number = parseReal(withoutSpaceAround(textOf(node)));
    if (!number) fail("malformed real", offsetOf(node));
    return *number;
}

PropertyListValue XMLReader::date(const pugi::xml_node& node) {
    const auto instant = parseDate(withoutSpaceAround(textOf(node)));
    if (!instant) fail("malformed date", offsetOf(node));
    return *instant;
}

PropertyListValue XMLReader::data(const pugi::xml_node& node) {
    const auto bytes = parseBase64(textOf(node));
    if (!bytes) fail("malformed base64 data", offsetOf(node));
    return NSData(*bytes);
}

PropertyListValue XMLReader::boolean(const pugi::xml_node& node, bool truth) {
    if (!isBlank(textOf(node))) fail("text inside " + tag(node.name()), offsetOf(node));
    return truth;
}

std::string_view XMLReader::textOf(const pugi::xml_node& node) {
    if (!node.first_child()) return decoded(node.value(), XMLTextKind::Characters);
    return joinedTexts_.emplace_back(joinedTextOf(node));
}

// The element's own text is what stands before its first CDATA section or comment.
std::string XMLReader::joinedTextOf(const pugi::xml_node& node) {
    std::string joined(decoded(node.value(), XMLTextKind::Characters));
    for (const pugi::xml_node& child : node.children()) {
        if (child.type() == pugi::node_element) {
            fail("unexpected element " + tag(child.name()) + " inside " + tag(node.name()),
                 offsetOf(child));
        }
        joined +=
            decoded(child.value(), child.type() == pugi::node_cdata ? XMLTextKind::CDATA
                                                                    : XMLTextKind::Characters);
    }
    return joined;
}

std::string_view XMLReader::decoded(const char* characters, XMLTextKind kind) {
    const std::string_view text(characters);
    if (!needsDecoding_ || text.empty()) return text;
    return decodeXMLText(text_, static_cast<std::size_t>(characters - text_.data()), text.size(),
                         kind);
}

}  // namespace

PropertyListValue readXML(std::string text) {
    return XMLReader(std::move(text)).read();
}

}  // namespace PropertyLists
