// SPDX-License-Identifier: MIT
#include "QRVSettings/QRVSettings+KnownText.h"

#include <cmath>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "Platform/PropertyLists/ReadingOnce.h"
#include "Platform/PropertyLists/XMLRevision.h"
#include "Platform/Values/DictionaryPairs.h"

namespace QRVInside {

namespace {

namespace PropertyLists = QRVPlatform::PropertyLists;

/// Makes the frozen tree that reading the text of a tree gives. Parts of the tree that are like
/// that already stay the same objects; parts that have not changed since `base` are those of
/// `base`.
class TreeOfText {
  public:
    /// Null when the tree is deeper than settings are.
    static NSDictionary of(const NSDictionary& tree, const NSDictionary& base) {
        try {
            return TreeOfText().dictionary(tree, base, deepest).dictionary();
        } catch (const TooDeep&) {
            return nullptr;
        }
    }

  private:
    static constexpr std::size_t deepest = 64;
    struct TooDeep {};
    using Entries = std::vector<std::pair<std::string, PropertyListValue>>;

    static const PropertyListValue& none() {
        static constexpr PropertyListValue null;
        return null;
    }

    PropertyListValue value(const PropertyListValue& value, const PropertyListValue& base,
                            std::size_t levels) {
        if (value.isDictionary()) return dictionary(value.dictionary(), base, levels);
        if (value.isArray()) return array(value.array(), base, levels);
        if (!value.isDate()) return value;
        return NSDate(std::floor(value.date().timeIntervalSinceReferenceDate()));
    }

    PropertyListValue array(const NSArray& array, const PropertyListValue& base,
                            std::size_t levels) {
        if (levels == 0) throw TooDeep();
        const NSArray now = array.copy();
        if (base.isArray() && now.isIdenticalTo(base.array())) return now;
        bool isFrozen = true;
        const NSMutableArray frozen;
        for (const PropertyListValue& element : now) {
            PropertyListValue part = value(element, nullptr, levels - 1);
            isFrozen = isFrozen && part.isIdenticalTo(element);
            frozen.addObject(std::move(part));
        }
        return isFrozen ? now : frozen.copy();
    }

    PropertyListValue dictionary(const NSDictionary& dictionary, const PropertyListValue& base,
                                 std::size_t levels) {
        if (levels == 0) throw TooDeep();
        const NSDictionary now = dictionary.copy();
        const bool hasBase = base.isDictionary();
        if (hasBase && now.isIdenticalTo(base.dictionary())) return now;
        const PropertyListValue before = hasBase ? base : PropertyListValue(NSDictionary());
        const PropertyListValue after = now;
        Differences found = differences(before, after, levels);
        if (hasBase && found.fromBase.empty()) return base;
        // To keep `now` would make the next write to a mutable dictionary copy all of its entries.
        if (hasBase && (dictionary.isMutable() || !found.fromTree.empty()))
            return with(found.fromBase, base.dictionary());
        return found.fromTree.empty() ? now : with(found.fromTree, now);
    }

    struct Differences {
        Entries fromTree;  ///< other objects than in the tree
        Entries fromBase;  ///< null for what is gone
    };

    Differences differences(const PropertyListValue& base, const PropertyListValue& now,
                            std::size_t levels) {
        Differences found;
        for (QRVPlatform::DictionaryPairs pairs(base, now); pairs.next();) {
            const PropertyListValue* const present = pairs.valueAfter();
            if (present == nullptr) {
                found.fromBase.emplace_back(pairs.key(), nullptr);
                continue;
            }
            const PropertyListValue& old =
                pairs.valueBefore() == nullptr ? none() : *pairs.valueBefore();
            if (present->isIdenticalTo(old)) continue;
            PropertyListValue part = value(*present, old, levels - 1);
            if (!part.isIdenticalTo(*present)) found.fromTree.emplace_back(pairs.key(), part);
            if (!part.isIdenticalTo(old)) found.fromBase.emplace_back(pairs.key(), std::move(part));
        }
        return found;
    }

    static NSDictionary with(Entries& entries, const NSDictionary& original) {
        const NSMutableDictionary result = original.mutableCopy();
        for (auto& [key, value] : entries) result.setObjectForKey(std::move(value), key);
        return result.copy();
    }
};

}  // namespace

NSDictionary KnownText::treeByKnown(const Known& known, std::string_view bytes) const {
    const auto old = known.bytes.read();
    if (!old) return nullptr;
    return PropertyLists::treeOfRevision(old->view(), known.tree, bytes).value_or(nullptr);
}

NSDictionary KnownText::treeByLikely(const NSDictionary& likely, std::string_view bytes) const {
    const NSDictionary tree = TreeOfText::of(likely, nullptr);
    if (tree.isNull()) return nullptr;
    const auto text = NSPropertyListSerialization::dataWithPropertyList(tree);
    if (text.error) return nullptr;
    return PropertyLists::treeOfRevision(text.bytes, tree, bytes).value_or(nullptr);
}

KnownText::Read KnownText::read(std::string_view bytes, const std::string& path,
                                const NSDictionary& likely,
                                const PropertyLists::PassedText::GiveBack& giveBack) {
    const auto known = known_.load();
    NSDictionary tree = nullptr;
    if (bytes.size() >= smallest) {
        if (known != nullptr)
            tree = treeByKnown(*known, bytes);
        else if (!likely.isNull() && isLaidOutAsOurs_)
            tree = treeByLikely(likely, bytes);
    }
    if (tree.isNull()) {
        forget();
        if (bytes.size() >= smallest && !likely.isNull()) isLaidOutAsOurs_ = known != nullptr;
        return {PropertyLists::propertyListReadOnce(bytes, giveBack), known};
    }
    isLaidOutAsOurs_ = true;
    remember(tree, QRVPlatform::HeldBytes::markOf(bytes), path);
    return {{.value = tree, .format = PropertyListFormat::XML, .error = {}}, known};
}

KnownText::Written KnownText::write(const NSDictionary& tree) {
    Written written;
    const auto known = known_.load();
    written.forgotten = known;
    const bool mayBeLarge = known != nullptr || isLastSaveLarge_;
    if (mayBeLarge)
        written.tree = TreeOfText::of(tree, known == nullptr ? NSDictionary(nullptr) : known->tree);
    if (known != nullptr && !written.tree.isNull()) {
        constexpr std::size_t growth = std::size_t{64} * 1024;
        auto text = known->bytes.read(growth);
        const auto size = text ? PropertyLists::reviseText(text->room(), text->view().size(),
                                                           known->tree, written.tree)
                               : std::nullopt;
        if (size) {
            text->setSize(*size);
            written.revision = std::move(text);
            written.mark = QRVPlatform::HeldBytes::markOf(written.bytes());
            return written;
        }
    }
    written.whole = NSPropertyListSerialization::dataWithPropertyList(
        written.tree.isNull() ? tree : written.tree);
    isLastSaveLarge_ = written.whole.bytes.size() >= smallest;
    if (!isLastSaveLarge_) written.tree = nullptr;
    if (!written.tree.isNull()) written.mark = QRVPlatform::HeldBytes::markOf(written.bytes());
    return written;
}

void KnownText::noteReplaced(const Written& written, const std::string& path) {
    isLaidOutAsOurs_ = true;
    if (written.tree.isNull())
        forget();
    else
        remember(written.tree, written.mark, path);
}

void KnownText::remember(const NSDictionary& tree, const QRVPlatform::HeldBytes::Mark& mark,
                         const std::string& path) {
    auto held = QRVPlatform::HeldBytes::at(path, mark);
    known_.store(held ? std::make_shared<const Known>(Known{tree, std::move(*held)}) : nullptr);
}

}  // namespace QRVInside
