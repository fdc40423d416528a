// SPDX-License-Identifier: MIT
#pragma once

// The markup of an XML file, without what its elements mean. Inner header of this folder.

#include <cstddef>
#include <string>
#include <string_view>

#include "Platform/PropertyLists/XMLText.h"

namespace QRVPlatform::PropertyLists {

struct XMLTag {
    std::string_view name;
    std::size_t offset = 0;  // of its "<"
    bool isEmpty = false;    // <name/>: there is no end tag
};

/// Passes once over a text, from tag to tag. Comments and processing instructions are skipped
/// everywhere, attributes in each tag, a document type without internal subset before the first
/// element. Everything throws Failure at what is malformed.
class XMLScanner {
  public:
    /// `text` is UTF-8 without U+0000 and outlives the scanner and all that it answers.
    explicit XMLScanner(std::string_view text);

    /// Passes over the next start tag; answers whether there is one before the next end tag or the
    /// end of the text. Refuses text before it, white space excepted.
    bool nextElement(XMLTag& tag);

    /// Passes over the end tag that belongs to `tag`, which must come next; an empty one has none.
    void endElement(const XMLTag& tag);

    /// Passes over the rest of an element that may hold text alone, and answers the text. It is
    /// valid until the next call.
    std::string_view textOf(const XMLTag& tag);

    [[nodiscard]] bool isAtEnd() const noexcept { return position_ == text_.size(); }
    [[nodiscard]] std::size_t offset() const noexcept { return position_; }

  private:
    [[nodiscard]] std::string_view rest() const { return text_.substr(position_); }
    // U+0000 at the end of the text: it is part of nothing.
    [[nodiscard]] char at(std::size_t position) const {
        return position < text_.size() ? text_[position] : '\0';
    }
    [[nodiscard]] std::size_t findFromHere(std::string_view what, std::size_t skipped,
                                           const char* fault) const;
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
    [[nodiscard]] bool needsDecoding(std::string_view raw) const;
    void appendToJoined(std::string_view raw, XMLTextKind kind);

    const std::string_view text_;
    const bool hasEscapes_;
    bool hasElement_ = false;
    std::size_t position_ = 0;
    std::string joined_;
};

}  // namespace QRVPlatform::PropertyLists
