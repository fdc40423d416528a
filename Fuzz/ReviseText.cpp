// SPDX-License-Identifier: MIT
// A text that the writer wrote, and another one: a changed tree written, the same text with bytes
// replaced, or any text. What is read and written by their difference is what the whole gives.

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "Fuzzing.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Platform/PropertyLists/XMLRevision.h"

using Fuzzing::Input;
using Fuzzing::require;
using Fuzzing::TreeDecoder;

namespace {

using Serialization = NSPropertyListSerialization;

constexpr int levels = 5;

/// Most of the text stays alike, or it is not read by the difference.
NSDictionary amongMany(const NSDictionary& tree) {
    const NSMutableDictionary result = tree.mutableCopy();
    for (int index = 0; index < 40; ++index) {
        result.setObjectForKey(NSDictionary{{"first", index}, {"last", "text & more"}},
                               (index % 2 == 0 ? "@ before " : "~ after ") + std::to_string(index));
    }
    return result.copy();
}

/// What reading the written tree gives; null when it cannot be written.
NSDictionary asRead(const NSDictionary& tree, std::string& text) {
    if (!Fuzzing::isQuicklyWritten(tree)) return nullptr;
    const auto written = Serialization::dataWithPropertyList(tree);
    if (written.error) return nullptr;
    text = written.bytes;
    return Serialization::propertyListWithData(text).value.dictionary();
}

NSDictionary revised(const NSDictionary& tree, Input& input, int level) {
    const NSMutableDictionary result = tree.mutableCopy();
    TreeDecoder values(input, TreeDecoder::Sharing::None);
    for (std::size_t count = input.number(3) + 1; count > 0; --count) {
        const std::string key = values.key();
        const PropertyListValue old = tree.objectForKey(key);
        if (old.isDictionary() && level > 0)
            result.setObjectForKey(revised(old.dictionary(), input, level - 1), key);
        else
            result.setObjectForKey(input.flag() ? values.value(2) : PropertyListValue(), key);
    }
    return result.copy();
}

std::string withBytesReplaced(std::string text, Input& input) {
    for (std::size_t count = input.number(3) + 1; count > 0; --count) {
        std::size_t position = input.bits() % text.size();
        if (input.flag()) position = std::min(text.find('\n', position) + 1, text.size() - 1);
        const std::string piece = input.flag()
                                      ? std::string(input.text())
                                      : text.substr(input.bits() % text.size(), input.byte());
        text.replace(position, input.number(64), piece);
        if (text.empty()) text = "\n";
    }
    return text;
}

void requireTreeOfWhole(const std::string& known, const NSDictionary& tree,
                        const std::string& text) {
    const auto read = QRVPlatform::PropertyLists::treeOfRevision(known, tree, text);
    if (!read) return;
    const auto whole = Serialization::propertyListWithData(text);
    require(!whole.error, "what is read by its difference can be read", text);
    require(Fuzzing::isSameTree(*read, whole.value), "the difference gives the tree of the whole",
            known, text);
    require(Serialization::dataWithPropertyList(*read).bytes == text,
            "what is read by its difference is as the writer writes it", known, text);
}

void requireTextOfWhole(const std::string& known, const NSDictionary& tree,
                        const NSDictionary& next) {
    constexpr std::size_t more = 4096;
    std::string text = known;
    text.resize(known.size() + more);
    const auto size = QRVPlatform::PropertyLists::reviseText(text, known.size(), tree, next);
    text.resize(size.value_or(known.size()));
    if (!size) return require(text == known, "without a difference the text stays");
    const auto whole = Serialization::dataWithPropertyList(next);
    require(!whole.error, "what is written by its difference can be written");
    require(text == whole.bytes, "the difference gives the text of the whole", text, whole.bytes);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(Fuzzing::textOf(data, size));
    const std::size_t choice = input.number(4);
    TreeDecoder decoder(input, TreeDecoder::Sharing::None);
    std::string known;
    const NSDictionary tree = asRead(amongMany(decoder.dictionary(levels)), known);
    if (tree.isNull()) return 0;
    if (choice == 0) {
        requireTreeOfWhole(known, tree, std::string(input.rest()));
    } else if (choice == 1) {
        requireTreeOfWhole(known, tree, withBytesReplaced(known, input));
    } else {
        const NSDictionary next = revised(tree, input, levels);
        std::string text;
        if (Fuzzing::isQuicklyWritten(next)) requireTextOfWhole(known, tree, next);
        if (!asRead(next, text).isNull()) requireTreeOfWhole(known, tree, text);
    }
    return 0;
}
