// SPDX-License-Identifier: MIT
#pragma once

// The markup of an XML file, without the meaning of its elements.

#include <cstddef>
#include <string>
#include <string_view>

#include "Platform/PropertyLists/XMLElements.h"
#include "Platform/PropertyLists/XMLText.h"

namespace QRVPlatform::PropertyLists {

struct XMLTag {
    std::string_view name;   // lies in the text only when the element is unknown
    std::size_t offset = 0;  // of its "<"
    XMLElement element = XMLElement::Unknown;
    bool isEmpty = false;  // <name/>: there is no end tag
};

/// Passes once over a text, from tag to tag. Skips comments and processing instructions everywhere,
/// attributes in each tag, and before the first element a document type without internal subset.
/// Throws ReadFailure for malformed text.
class XMLScanner {
  public:
    /// `text` is UTF-8 without U+0000, and must outlive the scanner and all texts that it returns.
    explicit XMLScanner(std::string_view text);

    /// Passes over the next start tag. False when an end tag or the end of the text comes first.
    /// Refuses text before it other than white space.
    bool nextElement(XMLTag& tag);

    /// Passes over the end tag that belongs to `tag`, which must come next; an empty one has none.
    void endElement(const XMLTag& tag);

    /// Passes over the rest of an element that may hold only text, and returns the text. It is
    /// valid until the next call.
    std::string_view textOf(const XMLTag& tag);

    [[nodiscard]] bool isAtEnd() const noexcept { return position_ == text_.size(); }
    [[nodiscard]] std::size_t offset() const noexcept { return position_; }

  private:
    [[nodiscard]] std::string_view rest() const { return text_.substr(position_); }
    // U+0000 past the end of the text, which holds none itself.
    [[nodiscard]] char at(std::size_t position) const {
        return position < text_.size() ? text_[position] : '\0';
    }
    [[nodiscard]] std::size_t findFromHere(std::string_view what, std::size_t skipped,
                                           const char* fault) const;
    // All forms of tags are read by `startTag` and `endElement`. These two are quick about the
    // usual ones; when they return false, nothing has happened.
    bool takePlainStartTag(XMLTag& tag);
    bool takePlainEndTag(const XMLTag& tag);
    [[nodiscard]] std::size_t nextMarkup() const;
    void skipSpace();
    void requireBlank(std::string_view text) const;
    std::string_view name();
    void startTag(XMLTag& tag);
    void attribute();
    void skipBetweenElements();
    bool skipCommentOrInstruction();
    bool takeCDATA(std::string_view& contents);
    void documentType();
    std::string_view characters(const XMLTag& tag);
    std::string_view joinedText(const XMLTag& tag, std::string_view first);
    [[nodiscard]] bool needsDecoding(std::string_view raw) const {
        return hasEscapes_ && (raw.find('&') != std::string_view::npos ||
                               (hasReturns_ && raw.find('\r') != std::string_view::npos));
    }
    void appendToJoined(std::string_view raw, XMLTextKind kind);

    const std::string_view text_;
    const bool hasReturns_;
    const bool hasEscapes_;  // returns or entities
    bool hasElement_ = false;
    std::size_t position_ = 0;
    std::string joined_;
};

}  // namespace QRVPlatform::PropertyLists
