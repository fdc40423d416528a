// SPDX-License-Identifier: MIT
#include "Platform/PropertyLists/PassedText.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "Platform/PropertyLists/Words.h"

namespace QRVPlatform::PropertyLists {
namespace {

// A carriage return, a line feed and the two together each end one line.
void advanceByCharacters(TextPlace& place, std::string_view text, std::size_t end) {
    for (; place.offset < end; ++place.offset) {
        const char here = text[place.offset];
        const char next = place.offset + 1 < text.size() ? text[place.offset + 1] : '\0';
        const bool isContinuation = (static_cast<unsigned char>(here) & 0xC0U) == 0x80;
        if (here == '\n' || (here == '\r' && next != '\n')) {
            ++place.line;
            place.column = 1;
        } else if (!isContinuation) {
            ++place.column;
        }
    }
}

std::size_t countOfLineFeeds(std::string_view text) {
    std::size_t count = 0;
    while (text.size() >= 8) {
        // A byte of the sum counts one place in up to 255 words.
        const std::size_t words = std::min<std::size_t>(text.size() / 8, 255);
        std::uint64_t sum = 0;
        for (std::size_t word = 0; word < words; ++word) {
            const std::uint64_t other = wordAt(text.data() + 8 * word) ^ wordOf('\n');
            const std::uint64_t isOther = ((other & wordOf('\x7F')) + wordOf('\x7F')) | other;
            sum += (~isOther & wordOf('\x80')) >> 7U;
        }
        for (; sum != 0; sum >>= 8U) count += sum & 0xFFU;
        text.remove_prefix(8 * words);
    }
    return count + static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

void advance(TextPlace& place, std::string_view text, std::size_t end) {
    end = std::min(end, text.size());
    if (place.offset >= end) return;
    const std::string_view part = text.substr(place.offset, end - place.offset);
    const std::size_t lastLine = part.rfind('\n');
    if (lastLine != std::string_view::npos && part.find('\r') == std::string_view::npos) {
        place = {place.offset + lastLine + 1, place.line + countOfLineFeeds(part), 1};
    }
    advanceByCharacters(place, text, end);
}

}  // namespace

void PassedText::pass(std::size_t offset, const std::vector<std::size_t>& open) {
    std::vector<TextPlace> places;
    for (const std::size_t opened : open) {
        if (opened < passed_.offset) {
            places.push_back(placeOf(opened));
        } else {
            advance(passed_, text_, opened);
            places.push_back(passed_);
        }
    }
    advance(passed_, text_, offset);
    open_ = std::move(places);
    due_ = offset + step_;
    giveBack_(text_.data() + offset);
}

TextPlace PassedText::placeOf(std::size_t offset) const {
    const auto known = std::find_if(open_.begin(), open_.end(), [offset](const TextPlace& place) {
        return place.offset == offset;
    });
    if (known != open_.end()) return *known;
    TextPlace place = passed_;
    advance(place, text_, offset);
    return place;
}

}  // namespace QRVPlatform::PropertyLists
