// SPDX-License-Identifier: MIT
#include "QRVSettings/QRVSettings+Writes.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Platform/System/System.h"
#include "QRVSettings/NSDictionary+QRV.h"

namespace QRVInside {

namespace {

PropertyListValue frozenValue(const PropertyListValue& value, std::size_t levels);

NSArray frozenArray(const NSArray& array, std::size_t levels) {
    bool isFrozen = !array.isMutable();
    NSMutableArray result;
    for (const PropertyListValue& element : array) {
        PropertyListValue part = frozenValue(element, levels - 1);
        isFrozen = isFrozen && part.isIdenticalTo(element);
        result.addObject(std::move(part));
    }
    return isFrozen ? array : result.copy();
}

// Keys and values first, because a change during a walk would copy all entries.
NSDictionary frozenDictionary(const NSDictionary& dictionary, std::size_t levels) {
    std::vector<std::pair<std::string, PropertyListValue>> changed;
    for (const auto& [key, value] : dictionary) {
        PropertyListValue part = frozenValue(value, levels - 1);
        if (!part.isIdenticalTo(value)) changed.emplace_back(key, std::move(part));
    }
    if (changed.empty()) return dictionary.copy();
    const NSMutableDictionary result = dictionary.mutableCopy();
    for (auto& [key, value] : changed) result.setObjectForKey(std::move(value), key);
    return result.copy();
}

PropertyListValue frozenValue(const PropertyListValue& value, std::size_t levels) {
    if (levels == 0) return value;
    if (value.isArray()) return frozenArray(value.array(), levels);
    if (value.isDictionary()) return frozenDictionary(value.dictionary(), levels);
    return value;
}

// As `frozen`, for a tree whose immutable parts are frozen already.
NSDictionary withoutMutableLevels(const NSDictionary& tree, std::size_t levels) {
    if (!tree.isMutable() || levels == 0) return tree;
    std::vector<std::string> changed;
    for (const auto& [key, value] : tree)
        if (value.isDictionary() && value.dictionary().isMutable()) changed.emplace_back(key);
    for (const std::string& key : changed) {
        const NSDictionary level = tree.objectForKey(key).dictionary();
        tree.asMutable().setObjectForKey(withoutMutableLevels(level, levels - 1), key);
    }
    return tree.copy();
}

// Whether a value on the way to the key path is no dictionary; then `prefix` is where it is.
bool leadsThroughAValue(const NSDictionary& tree, std::string_view keyPath, std::string& prefix) {
    NSDictionary level = tree;
    for (std::size_t start = 0;;) {
        const std::size_t end = keyPath.find('.', start);
        if (end == std::string_view::npos) return false;
        const PropertyListValue next = level.objectForKey(keyPath.substr(start, end - start));
        if (next.isNull()) return false;
        if (!next.isDictionary()) {
            prefix = keyPath.substr(0, end);
            return true;
        }
        level = next.dictionary();
        start = end + 1;
    }
}

bool holdsAnEmptyDictionary(const NSDictionary& tree, const std::string& keyPath) {
    const PropertyListValue stored = NSDictionaryQRV::objectAtKeyPath(tree, keyPath);
    return stored.isDictionary() && stored.dictionary().count() == 0;
}

// Whether the later of two writes at one key path leaves nothing of the earlier.
bool supersedes(const Write& later, const Write& earlier) {
    return (!later.unless || later.unless == earlier.unless) &&
           (!later.isOfEmpty || earlier.isOfEmpty);
}

void apply(const Write& write, const NSMutableDictionary& tree, Writes::Logging logging) {
    if (write.isOfEmpty && !holdsAnEmptyDictionary(tree, write.keyPath)) return;
    std::string prefix;
    if (leadsThroughAValue(tree, write.keyPath, prefix)) {
        if (write.value.isNull() && !write.followsAValue) return;  // Nothing is there to remove.
        if (logging == Writes::Logging::On)
            NSLog("Prefs write of %@ replaces the value that another process stored at %@",
                  {write.keyPath, prefix});
        NSDictionaryQRV::setObjectAtKeyPath(tree, nullptr, prefix);
    }
    NSDictionaryQRV::setObjectAtKeyPath(tree, write.value, write.keyPath);
}

using Keys = std::vector<std::string>;

// Why no property list can hold the tree.
std::optional<std::string> refusalOf(const PropertyListValue& tree) {
    const auto written = NSPropertyListSerialization::dataWithPropertyList(tree);
    if (!written.error) return std::nullopt;
    return written.error->description();
}

std::optional<std::string> refusalOf(const Write& write) {
    const NSMutableDictionary alone;
    NSDictionaryQRV::setObjectAtKeyPath(alone, write.value, write.keyPath);
    return refusalOf(alone);
}

std::optional<std::string> refusalBelow(const Keys& keys, PropertyListValue value) {
    for (auto key = keys.rbegin(); key != keys.rend(); ++key) value = NSDictionary{{*key, value}};
    return refusalOf(value);
}

std::string joined(const Keys& keys) {
    std::string keyPath;
    for (const std::string& key : keys) keyPath.append(keyPath.empty() ? "" : ".").append(key);
    return keyPath;
}

// A dictionary that a property list can hold stays, without the values that it cannot.
NSDictionary withoutRefused(const NSDictionary& tree, Keys& keys,
                            std::vector<RefusedWrite>& refused) {
    const NSMutableDictionary result;
    for (const auto& [key, value] : tree) {
        keys.emplace_back(key);
        const std::optional<std::string> reason = refusalBelow(keys, value);
        if (!reason)
            result.setObjectForKey(value, key);
        else if (value.isDictionary() && !refusalBelow(keys, NSDictionary()))
            result.setObjectForKey(withoutRefused(value.dictionary(), keys, refused), key);
        else
            refused.push_back({joined(keys), *reason});
        keys.pop_back();
    }
    return result.copy();
}

}  // namespace

PropertyListValue frozen(const PropertyListValue& value) {
    return frozenValue(value, NSPropertyListSerialization::maximumLevels);
}

PropertyListValue valueAt(const NSDictionary& tree, std::string_view keyPath) {
    PropertyListValue value = tree;
    for (std::size_t start = 0; start <= keyPath.size() && value.isDictionary();) {
        const std::size_t end = std::min(keyPath.find('.', start), keyPath.size());
        value = value.dictionary().objectForKey(keyPath.substr(start, end - start));
        if (end == keyPath.size()) return value;
        start = end + 1;
    }
    return nullptr;
}

bool Settled::isIn(const NSDictionary& tree) const {
    const PropertyListValue stored = NSDictionaryQRV::objectAtKeyPath(tree, keyPath);
    return !stored.isNull() && (!value || stored == *value);
}

// An earlier write at the key path may be dropped: whatever happened between the two, above or
// below the key path, the later one decides what is there. Only to a removal, other than to a
// value, a value on its way does not give way: `followsAValue`. One that may turn out not to be
// needed leaves the earlier one in force.
void Writes::addSettled(Write write) {
    const auto [entry, isNew] = indexes_.try_emplace(write.keyPath, writes_.size());
    if (!isNew) {
        std::optional<Write>& earlier = writes_[std::exchange(entry->second, writes_.size())];
        if (supersedes(write, *earlier)) {
            write.followsAValue = !earlier->value.isNull() || earlier->followsAValue;
            earlier.reset();
            --count_;
        }
    }
    writes_.emplace_back(std::move(write));
    ++count_;
    constexpr std::size_t few = 16;
    if (writes_.size() > 2 * count_ + few) removeGaps();
}

void Writes::add(Write write) {
    settle();
    addSettled(std::move(write));
}

// Few may wait, so that values which later writes have replaced take little memory, and adding
// them takes little time.
void Writes::join(NewWrite write) {
    constexpr std::size_t most = 64;
    if (joined_.size() >= most) settle();
    if (joined_.capacity() == 0) joined_.reserve(most / 2);
    joined_.push_back(std::move(write));
}

// Nothing is lost when there is no memory for all of them: adding a write again changes nothing.
void Writes::settle() {
    NSMutableArray records;
    for (const NewWrite& write : joined_) {
        if (write.hasRecord) records.addObject(write.record.dictionary());
        addSettled(
            {write.record.keyPath.stringValue(), write.value, write.unless, write.isOfEmpty});
    }
    if (records.count() != 0) addSettledRecords(records);
    joined_ = {};
}

Writes Writes::settled() const {
    Writes copy = *this;
    copy.settle();
    return copy;
}

void Writes::removeGaps() {
    std::vector<std::optional<Write>> kept;
    for (std::optional<Write>& write : writes_)
        if (write) kept.push_back(std::move(write));
    writes_ = std::move(kept);
    for (std::size_t index = 0; index < writes_.size(); ++index)
        indexes_[writes_[index]->keyPath] = index;
}

void Writes::replaceTree(NSDictionary tree) {
    settle();
    writes_.clear();
    indexes_.clear();
    count_ = 0;
    origins_.clear();
    tree_ = std::move(tree);
}

void Writes::addRecords(const NSArray& log) {
    if (log.isNull()) return;
    settle();
    addSettledRecords(log);
}

// A copy of these writes has the same array, which stays as it is.
void Writes::addSettledRecords(const NSArray& log) {
    records_ = records_.isNull() ? NSMutableArray() : records_.mutableCopy();
    records_.addObjectsFromArray(log);
}

void Writes::addOrigins(const std::string& origins) {
    constexpr std::string_view separator = ", ";
    for (std::size_t start = 0; start < origins.size();) {
        const std::size_t end = std::min(origins.find(separator, start), origins.size());
        const std::string origin = origins.substr(start, end - start);
        if ((", " + origins_ + ", ").find(", " + origin + ", ") == std::string::npos)
            origins_.append(origins_.empty() ? "" : separator).append(origin);
        start = end + separator.size();
    }
}

NSArray Writes::records() const {
    return isSettled() ? records_ : settled().records_;
}

void Writes::dropRecords() {
    settle();
    records_ = nullptr;
}

void Writes::dropEarlierRecords() {
    settle();
    if (records_.isNull()) return;
    std::unordered_map<std::string, PropertyListValue> latest;
    for (const PropertyListValue& record : records_)
        latest[record.dictionary().objectForKey("key").stringValue()] = record;
    const NSMutableArray kept;
    for (const PropertyListValue& record : records_)
        if (latest[record.dictionary().objectForKey("key").stringValue()].isIdenticalTo(record))
            kept.addObject(record);
    records_ = kept;
}

void Writes::append(const Writes& later) {
    if (!later.isSettled()) return append(later.settled());
    if (!later.tree_.isNull()) replaceTree(later.tree_);
    for (const std::optional<Write>& write : later.writes_)
        if (write) add(*write);
    addRecords(later.records_);
    addOrigins(later.origins_);
}

std::vector<std::string> Writes::keyPaths() const {
    if (!isSettled()) return settled().keyPaths();
    std::vector<std::string> result;
    for (const std::optional<Write>& write : writes_)
        if (write) result.push_back(write->keyPath);
    return result;
}

NSDictionary Writes::appliedTo(const NSDictionary& tree, Logging logging) const {
    if (!isSettled()) return settled().appliedTo(tree, logging);
    const NSDictionary& start = tree_.isNull() ? tree : tree_;
    if (count_ == 0) return start;
    const NSMutableDictionary result = start.isNull() ? NSMutableDictionary() : start.mutableCopy();
    for (const std::optional<Write>& write : writes_)
        if (write && !(write->unless && write->unless->isIn(start))) apply(*write, result, logging);
    return withoutMutableLevels(result, NSPropertyListSerialization::maximumLevels);
}

// A tree that is refused as a whole, because it is too large, gives way to the file's.
void Writes::removeRefusedOfTree(std::vector<RefusedWrite>& refused) {
    if (tree_.isNull() || !refusalOf(tree_)) return;
    Keys keys;
    tree_ = withoutRefused(tree_, keys, refused);
    const std::optional<std::string> reason = refusalOf(tree_);
    if (!reason) return;
    refused.push_back({"", *reason});
    tree_ = nullptr;
}

std::vector<RefusedWrite> Writes::removeRefused() {
    settle();
    std::vector<RefusedWrite> refused;
    removeRefusedOfTree(refused);
    for (std::optional<Write>& write : writes_) {
        if (!write) continue;
        const std::optional<std::string> reason = refusalOf(*write);
        if (!reason) continue;
        refused.push_back({write->keyPath, *reason});
        const auto entry = indexes_.find(write->keyPath);
        if (entry != indexes_.end() && &writes_[entry->second] == &write) indexes_.erase(entry);
        write.reset();
        --count_;
    }
    return refused;
}

}  // namespace QRVInside
