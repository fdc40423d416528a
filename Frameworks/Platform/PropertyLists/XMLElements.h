// SPDX-License-Identifier: MIT
#pragma once

// The elements of property lists, and their tags as nearly every file has them: without attributes
// and white space.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Platform/PropertyLists/Words.h"

namespace QRVPlatform::PropertyLists {

enum class XMLElement : std::uint8_t {
    Unknown,
    Plist,
    Dictionary,
    Array,
    Key,
    String,
    Integer,
    Real,
    True,
    False,
    Date,
    Data,
};

struct XMLElementForm {
    std::string_view name;
    bool isUsuallyEmpty = false;  ///< as <true/>
    bool isFrequent = true;
};

/// In the order of `XMLElement`.
inline constexpr std::array<XMLElementForm, 12> xmlElements{{
    {.name = "", .isFrequent = false},
    {.name = "plist", .isFrequent = false},
    {.name = "dict"},
    {.name = "array"},
    {.name = "key"},
    {.name = "string"},
    {.name = "integer"},
    {.name = "real"},
    {.name = "true", .isUsuallyEmpty = true},
    {.name = "false", .isUsuallyEmpty = true},
    {.name = "date"},
    {.name = "data"},
}};

/// Empty for `Unknown`. The text lives for ever.
constexpr std::string_view nameOf(XMLElement element) noexcept {
    return xmlElements[static_cast<std::size_t>(element)].name;
}

constexpr XMLElement elementNamed(std::string_view name) noexcept {
    const auto* const found =
        std::find_if(xmlElements.begin() + 1, xmlElements.end(),
                     [name](const XMLElementForm& form) { return form.name == name; });
    return found == xmlElements.end() ? XMLElement::Unknown
                                      : static_cast<XMLElement>(found - xmlElements.begin());
}

/// A tag of at most 16 bytes, which is compared by two words.
class PlainTag {
  public:
    static constexpr std::size_t mostBytes = 16;

    constexpr PlainTag() = default;
    constexpr PlainTag(std::string_view beginning, std::string_view name, std::string_view end)
        : length_(beginning.size() + name.size() + end.size()) {
        std::size_t index = 0;
        for (const std::string_view part : {beginning, name, end}) {
            for (const char character : part) {
                const auto byte = std::uint64_t{static_cast<unsigned char>(character)};
                bytes_[index / 8] |= byte << index % 8 * 8;
                mask_[index / 8] |= std::uint64_t{0xFF} << index % 8 * 8;
                ++index;
            }
        }
    }
    /// Whether the tag stands at `place`, which must have `mostBytes` bytes. The default tag stands
    /// nowhere.
    [[nodiscard]] bool isAt(const char* place) const noexcept {
        const std::uint64_t differences =
            ((wordAt(place) ^ bytes_[0]) & mask_[0]) | ((wordAt(place + 8) ^ bytes_[1]) & mask_[1]);
        return differences == 0 && length_ != 0;
    }
    [[nodiscard]] std::size_t length() const noexcept { return length_; }

  private:
    std::array<std::uint64_t, 2> bytes_{};
    std::array<std::uint64_t, 2> mask_{};
    std::size_t length_ = 0;
};

struct PlainStartTag {
    PlainTag tag;
    XMLElement element = XMLElement::Unknown;
    bool isEmpty = false;
};

/// A table of the plain start tags, and the place in it that two characters of a tag give.
class PlainStartTags {
  public:
    constexpr PlainStartTags() {
        for (std::size_t index = 0; index < xmlElements.size(); ++index) {
            const XMLElementForm& form = xmlElements[index];
            if (!form.isFrequent) continue;
            const char fourth = form.name.size() > 3 ? form.name[3] : '>';
            PlainStartTag& place = tags_[placeOf(form.name[0], fourth)];
            hasCollision_ = hasCollision_ || place.element != XMLElement::Unknown;
            place = {PlainTag("<", form.name, form.isUsuallyEmpty ? "/>" : ">"),
                     static_cast<XMLElement>(index), form.isUsuallyEmpty};
        }
    }
    [[nodiscard]] constexpr bool hasCollision() const noexcept { return hasCollision_; }
    /// The only tag with which the text may begin. It must have `PlainTag::mostBytes` bytes.
    [[nodiscard]] const PlainStartTag& candidateFor(const char* text) const noexcept {
        return tags_[placeOf(text[1], text[4])];
    }

  private:
    static constexpr std::size_t placeOf(char first, char fourth) noexcept {
        return (static_cast<unsigned char>(first) + 3U * static_cast<unsigned char>(fourth)) % 32;
    }
    std::array<PlainStartTag, 32> tags_{};
    bool hasCollision_ = false;
};

inline constexpr PlainStartTags plainStartTags;
static_assert(!plainStartTags.hasCollision());

constexpr auto makePlainEndTags() {
    std::array<PlainTag, xmlElements.size()> tags{};
    for (std::size_t index = 0; index < tags.size(); ++index) {
        if (xmlElements[index].isFrequent)
            tags[index] = PlainTag("</", xmlElements[index].name, ">");
    }
    return tags;
}

/// By element; a default tag for one that is rare.
inline constexpr auto plainEndTags = makePlainEndTags();

}  // namespace QRVPlatform::PropertyLists
