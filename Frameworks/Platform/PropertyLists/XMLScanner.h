// SPDX-License-Identifier: MIT
#pragma once

// The markup of an XML file, without the meaning of its elements.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Platform/PropertyLists/Scalars.h"
#include "Platform/PropertyLists/Words.h"
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
    bool nextElement(XMLTag& tag) {
        skipSpace();
        return takePlainStartTag(tag) || nextElementOfAnyForm(tag);
    }

    /// Passes over the end tag that belongs to `tag`, which must come next; an empty one has none.
    void endElement(const XMLTag& tag) {
        if (!tag.isEmpty && !takePlainEndTag(tag)) endElementOfAnyForm(tag);
    }

    /// Passes over the rest of an element that may hold only text, and returns the text. It is
    /// valid until the next call.
    std::string_view textOf(const XMLTag& tag) {
        if (tag.isEmpty) return {};
        const std::size_t begin = position_;
        const std::size_t end = hasEscapes_ ? std::string_view::npos : nextMarkup();
        if (end != std::string_view::npos) {
            position_ = end;
            if (takePlainEndTag(tag)) return {text_.data() + begin, end - begin};
            position_ = begin;
        }
        return textOfAnyForm(tag);
    }

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
    // The usual forms are read in the caller, all others by these.
    bool nextElementOfAnyForm(XMLTag& tag);
    void endElementOfAnyForm(const XMLTag& tag);
    std::string_view textOfAnyForm(const XMLTag& tag);

    // When these return false, nothing has happened.
    bool takePlainStartTag(XMLTag& tag);
    bool takePlainEndTag(const XMLTag& tag);

    // The place of the next "<". Most text is so short that a call would take longer.
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

inline bool XMLScanner::takePlainStartTag(XMLTag& tag) {
    if (text_.size() - position_ < PlainTag::mostBytes) return false;
    const char* const here = text_.data() + position_;
    const PlainStartTag& plain = plainStartTags.candidateFor(here);
    if (!plain.tag.isAt(here)) return false;
    hasElement_ = true;
    tag = {nameOf(plain.element), position_, plain.element, plain.isEmpty};
    position_ += plain.tag.length();
    return true;
}

inline bool XMLScanner::takePlainEndTag(const XMLTag& tag) {
    if (text_.size() - position_ < PlainTag::mostBytes) return false;
    const PlainTag& plain = plainEndTags[static_cast<std::size_t>(tag.element)];
    if (!plain.isAt(text_.data() + position_)) return false;
    position_ += plain.length();
    return true;
}

inline std::size_t XMLScanner::nextMarkup() const {
    constexpr std::size_t shortText = 32;
    if (text_.size() - position_ < shortText) return text_.find('<', position_);
    for (std::size_t passed = 0; passed < shortText; passed += 8) {
        const std::size_t place =
            firstZeroByteOf(wordAt(text_.data() + position_ + passed) ^ wordOf('<'));
        if (place < 8) return position_ + passed + place;
    }
    return text_.find('<', position_ + shortText);
}

// Most white space is a line end and the tabs or blanks that follow it.
inline void XMLScanner::skipSpace() {
    const char* const end = text_.data() + text_.size();
    const char* here = text_.data() + position_;
    if (end - here > 8 && *here == '\n' && isSpace(here[1])) {
        const std::uint64_t indentation = wordOf(*++here);
        std::size_t same = 8;
        for (; same == 8 && end - here >= 8; here += same)
            same = zeroBytesOf(wordAt(here) ^ indentation);
    }
    while (here != end && isSpace(*here)) ++here;
    position_ = static_cast<std::size_t>(here - text_.data());
}

}  // namespace QRVPlatform::PropertyLists
