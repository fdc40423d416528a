// SPDX-License-Identifier: MIT
#include "Platform/PropertyLists/WrittenLines.h"

#include <cstring>

#include "Platform/PropertyLists/XMLText.h"

namespace QRVPlatform::PropertyLists {
namespace {

constexpr std::string_view beginningOfKey = "<key>";

}  // namespace

WrittenLines::Line WrittenLines::at(std::size_t begin) const {
    Line line{.begin = begin};
    std::size_t position = begin;
    while (position < text_.size() && text_[position] == '\t') ++position;
    if (position == text_.size() || text_[position] != '<') return line;
    const std::string_view rest = text_.substr(position);
    // The last line of a text may begin like a tag.
    if (rest.starts_with("</string>") || rest.starts_with("</key>")) return line;
    line.tabs = position - begin;
    if (rest.starts_with(beginningOfKey))
        line.kind = Line::Kind::Key;
    else
        line.kind = rest.starts_with("</dict>") ? Line::Kind::EndOfDictionary : Line::Kind::Tag;
    return line;
}

WrittenLines::Line WrittenLines::around(std::size_t position) const {
    const void* const end = memrchr(text_.data(), '\n', position);
    if (end == nullptr) return at(0);
    return at(static_cast<std::size_t>(static_cast<const char*>(end) - text_.data()) + 1);
}

std::optional<WrittenLines::Line> WrittenLines::from(std::size_t position) const {
    if (position != 0) {
        const std::size_t end = text_.find('\n', position - 1);
        if (end == std::string_view::npos) return std::nullopt;
        position = end + 1;
    }
    if (position == text_.size()) return std::nullopt;
    return at(position);
}

std::optional<WrittenLines::Line> WrittenLines::previous(const Line& line) const {
    if (line.begin == 0) return std::nullopt;
    return around(line.begin - 1);
}

bool WrittenLines::isStartOfDictionary(const Line& line) const {
    return line.isTag() && text_.substr(line.begin + line.tabs).starts_with("<dict>");
}

std::string WrittenLines::keyOf(const Line& line) const {
    const std::size_t begin = line.begin + line.tabs + beginningOfKey.size();
    std::string key;
    appendDecoded(key, text_.substr(begin, text_.find('<', begin) - begin), begin,
                  XMLTextKind::Characters);
    return key;
}

}  // namespace QRVPlatform::PropertyLists
