// SPDX-License-Identifier: MIT
#include "Platform/PropertyLists/XMLScanner.h"

#include <algorithm>
#include <array>

#include "Platform/PropertyLists/Readers.h"
#include "Platform/PropertyLists/Unicode.h"

namespace QRVPlatform::PropertyLists {
namespace {

enum NamePart : unsigned char { None, Inside, Anywhere };

constexpr std::array<NamePart, 256> classifyForNames() {
    std::array<NamePart, 256> parts{};
    for (std::size_t byte = 'A'; byte <= 'Z'; ++byte) parts[byte] = Anywhere;
    for (std::size_t byte = 'a'; byte <= 'z'; ++byte) parts[byte] = Anywhere;
    for (std::size_t byte = 0x80; byte < parts.size(); ++byte) parts[byte] = Anywhere;
    for (std::size_t byte = '0'; byte <= '9'; ++byte) parts[byte] = Inside;
    parts['_'] = parts[':'] = Anywhere;
    parts['-'] = parts['.'] = Inside;
    return parts;
}

constexpr std::array<NamePart, 256> nameParts = classifyForNames();

NamePart namePart(char byte) {
    return nameParts[static_cast<unsigned char>(byte)];
}

[[noreturn]] void failMalformed(const std::string& what, std::size_t offset) {
    fail("malformed XML: " + what, offset);
}

[[noreturn]] void failNotClosed(const XMLTag& tag) {
    failMalformed("<" + shortened(tag.name) + "> is not closed", tag.offset);
}

constexpr std::string_view beginningOfDocumentType = "<!DOCTYPE";
constexpr std::string_view beginningOfCDATA = "<![CDATA[";
constexpr std::string_view beginningOfComment = "<!--";

}  // namespace

XMLScanner::XMLScanner(std::string_view text)
    : text_(text),
      hasReturns_(text.find('\r') != std::string_view::npos),
      hasEscapes_(hasReturns_ || text.find('&') != std::string_view::npos) {}

bool XMLScanner::nextElementOfAnyForm(XMLTag& tag) {
    for (;;) {
        skipSpace();
        if (takePlainStartTag(tag)) return true;
        if (isAtEnd()) return false;
        const char next = at(position_ + 1);
        if (text_[position_] != '<' || next == '\0') fail("unexpected text", position_);
        if (namePart(next) == Anywhere) {
            startTag(tag);
            return true;
        }
        if (next == '/') return false;
        skipBetweenElements();
    }
}

void XMLScanner::endElementOfAnyForm(const XMLTag& tag) {
    if (isAtEnd()) failNotClosed(tag);
    const std::size_t begin = position_;
    position_ += 2;
    if (!rest().starts_with(tag.name)) failNotClosed(tag);
    position_ += tag.name.size();
    if (at(position_) != '>') {
        if (namePart(at(position_)) != None) failNotClosed(tag);
        skipSpace();
        if (at(position_) != '>') failMalformed("an end tag is not closed", begin);
    }
    ++position_;
}

std::string_view XMLScanner::textOfAnyForm(const XMLTag& tag) {
    const std::string_view raw = characters(tag);
    if (at(position_ + 1) != '/' || needsDecoding(raw)) return joinedText(tag, raw);
    endElement(tag);
    return raw;
}

// The position of `what`, which closes a construct that begins here.
std::size_t XMLScanner::findFromHere(std::string_view what, std::size_t skipped,
                                     const char* fault) const {
    const std::size_t found = text_.find(what, position_ + skipped);
    if (found == std::string_view::npos) failMalformed(fault, position_);
    return found;
}

std::string_view XMLScanner::name() {
    const char* const end = text_.data() + text_.size();
    const char* const begin = text_.data() + position_;
    const char* here = begin;
    while (here != end && namePart(*here) != None) ++here;
    position_ = static_cast<std::size_t>(here - text_.data());
    return {begin, static_cast<std::size_t>(here - begin)};
}

void XMLScanner::startTag(XMLTag& tag) {
    hasElement_ = true;
    tag.offset = position_++;
    tag.name = name();
    tag.element = elementNamed(tag.name);
    if (tag.element != XMLElement::Unknown) tag.name = nameOf(tag.element);
    while (at(position_) != '>' && at(position_) != '/') {
        const std::size_t end = position_;
        skipSpace();
        if (namePart(at(position_)) == Anywhere && position_ != end) {
            attribute();
        } else if (position_ == end) {
            failMalformed("a start tag is not closed", tag.offset);
        }
    }
    tag.isEmpty = at(position_) == '/';
    if (tag.isEmpty) ++position_;
    if (at(position_) != '>') failMalformed("a start tag is not closed", tag.offset);
    ++position_;
}

void XMLScanner::attribute() {
    const std::size_t begin = position_;
    name();
    skipSpace();
    if (at(position_) != '=') failMalformed("an attribute has no value", begin);
    ++position_;
    skipSpace();
    const char quote = at(position_);
    if (quote != '"' && quote != '\'') failMalformed("an attribute has no value", begin);
    position_ = findFromHere({&quote, 1}, 1, "an attribute is not closed") + 1;
}

// Markup other than elements.
void XMLScanner::skipBetweenElements() {
    std::string_view contents;
    if (skipCommentOrInstruction()) return;
    if (takeCDATA(contents)) return requireBlank(contents);
    if (!rest().starts_with(beginningOfDocumentType)) failMalformed("unknown markup", position_);
    documentType();
}

// A name must follow "<?".
bool XMLScanner::skipCommentOrInstruction() {
    if (rest().starts_with(beginningOfComment)) {
        position_ = findFromHere("-->", beginningOfComment.size(), "a comment is not closed") + 3;
        return true;
    }
    if (at(position_ + 1) != '?' || namePart(at(position_ + 2)) != Anywhere) return false;
    position_ = findFromHere("?>", 2, "a processing instruction is not closed") + 2;
    return true;
}

bool XMLScanner::takeCDATA(std::string_view& contents) {
    if (!rest().starts_with(beginningOfCDATA)) return false;
    const std::size_t begin = position_ + beginningOfCDATA.size();
    const std::size_t end =
        findFromHere("]]>", beginningOfCDATA.size(), "a CDATA section is not closed");
    contents = text_.substr(begin, end - begin);
    position_ = end + 3;
    return true;
}

void XMLScanner::documentType() {
    const std::size_t begin = position_;
    position_ += beginningOfDocumentType.size();
    skipSpace();
    const std::size_t contents = position_;
    if (hasElement_) fail("the document type follows the value", contents);
    while (at(position_) != '>') {
        const char here = at(position_);
        if (here == '\0' || here == '<') failMalformed("the document type is not closed", begin);
        if (here == '[') fail("the document type has an internal subset", contents);
        if (here == '"' || here == '\'') {
            position_ = findFromHere({&here, 1}, 1, "the document type is not closed");
        }
        ++position_;
    }
    ++position_;
}

void XMLScanner::requireBlank(std::string_view text) const {
    const auto* const other = std::find_if_not(text.begin(), text.end(), isSpace);
    if (other != text.end())
        fail("unexpected text", static_cast<std::size_t>(other - text_.data()));
}

// Passes over characters up to the next markup.
std::string_view XMLScanner::characters(const XMLTag& tag) {
    const std::size_t begin = position_;
    const std::size_t end = nextMarkup();
    if (end == std::string_view::npos) failNotClosed(tag);
    position_ = end;
    return {text_.data() + begin, end - begin};
}

std::string_view XMLScanner::joinedText(const XMLTag& tag, std::string_view first) {
    joined_.clear();
    appendToJoined(first, XMLTextKind::Characters);
    while (at(position_ + 1) != '/') {
        std::string_view contents;
        if (takeCDATA(contents)) {
            appendToJoined(contents, XMLTextKind::CDATA);
        } else if (namePart(at(position_ + 1)) == Anywhere) {
            XMLTag inner;
            startTag(inner);
            fail("unexpected element <" + shortened(inner.name) + "> inside <" +
                     std::string(tag.name) + ">",
                 inner.offset);
        } else if (!skipCommentOrInstruction()) {
            failMalformed("unknown markup", position_);
        }
        appendToJoined(characters(tag), XMLTextKind::Characters);
    }
    endElement(tag);
    return joined_;
}

void XMLScanner::appendToJoined(std::string_view raw, XMLTextKind kind) {
    appendDecoded(joined_, raw, static_cast<std::size_t>(raw.data() - text_.data()), kind);
}

}  // namespace QRVPlatform::PropertyLists
