// SPDX-License-Identifier: MIT
// Compares two trees, which may share parts. They are equal when the model says so, and
// `changedKeys` gives the differences that the model finds in their flat maps, each key path once,
// and the same ones with the trees exchanged.

#include <map>
#include <set>
#include <string>
#include <vector>

#include "Fuzzing.h"
#include "QRVSettings/NSDictionary+QRV.h"

using Fuzzing::Input;
using Fuzzing::require;
using Fuzzing::TreeDecoder;

namespace {

constexpr int levels = 6;

/// Several values where a key that contains a "." gives two places in the tree one key path.
using FlatMap = std::map<std::string, std::vector<PropertyListValue>>;
using KeyPaths = std::set<std::string>;

void enterLeaves(const NSDictionary& tree, const std::string& start, FlatMap& leaves) {
    for (const auto& [key, value] : tree) {
        const std::string keyPath = start + std::string(key);
        if (value.isDictionary())
            enterLeaves(value.dictionary(), keyPath + ".", leaves);
        else
            leaves[keyPath].push_back(value);
    }
}

FlatMap flatMap(const NSDictionary& tree) {
    FlatMap leaves;
    enterLeaves(tree, "", leaves);
    return leaves;
}

KeyPaths changes(const NSDictionary& before, const NSDictionary& after) {
    KeyPaths keyPaths;
    for (const PropertyListValue& keyPath : NSDictionaryQRV::changedKeys(before, after))
        require(keyPaths.insert(keyPath.stringValue()).second, "a key path is listed once",
                keyPath);
    return keyPaths;
}

const std::vector<PropertyListValue>& valuesAt(const FlatMap& leaves, const std::string& keyPath) {
    static const std::vector<PropertyListValue> none;
    const auto found = leaves.find(keyPath);
    return found == leaves.end() ? none : found->second;
}

// It is not promised which of several values with one key path counts.
bool mayBeListed(const FlatMap& before, const FlatMap& after, const std::string& keyPath,
                 bool isListed) {
    const auto& old = valuesAt(before, keyPath);
    const auto& present = valuesAt(after, keyPath);
    if (old.empty() && present.empty()) return !isListed;
    if (old.empty() || present.empty()) return isListed;
    for (const PropertyListValue& one : old)
        for (const PropertyListValue& other : present)
            if (Fuzzing::isEqualByModel(one, other) != isListed) return true;
    return false;
}

void requireChangesOfModel(const NSDictionary& before, const NSDictionary& after) {
    const FlatMap old = flatMap(before);
    const FlatMap present = flatMap(after);
    const KeyPaths listed = changes(before, after);
    KeyPaths all = listed;
    for (const auto& [keyPath, values] : old) all.insert(keyPath);
    for (const auto& [keyPath, values] : present) all.insert(keyPath);
    for (const std::string& keyPath : all)
        require(mayBeListed(old, present, keyPath, listed.contains(keyPath)),
                "changed are the key paths of the model", keyPath, before, after);
    require(listed == changes(after, before), "changes are the same from either side", before,
            after);
}

void requireFlatAsModel(const NSDictionary& tree) {
    const NSMutableDictionary flat;
    NSDictionaryQRV::flatten(tree, flat);
    const FlatMap model = flatMap(tree);
    require(flat.count() == model.size(), "a flat map holds each key path", tree);
    require(NSDictionaryQRV::hasValues(tree) == !model.empty(), "leaves are found", tree);
    for (const auto& [keyPath, values] : model)
        require(values.size() > 1 || flat.objectForKey(keyPath).isIdenticalTo(values.front()),
                "a flat map holds the leaves themselves", keyPath, tree);
}

void requireEqualityOfModel(const PropertyListValue& left, const PropertyListValue& right) {
    const bool isEqual = Fuzzing::isEqualByModel(left, right);
    require((left == right) == isEqual, "values are equal as the model says", left, right);
    require((right == left) == isEqual, "equality has no sides", left, right);
}

// A copy of the tree with some values written or removed.
NSDictionary variantOf(const NSDictionary& tree, Input& input) {
    NSMutableDictionary variant = tree.mutableCopy();
    for (std::size_t count = input.number(4); count > 0; --count) {
        std::string keyPath = TreeDecoder(input, TreeDecoder::Sharing::None).key();
        for (std::size_t length = input.number(4); length > 0; --length)
            keyPath += "." + TreeDecoder(input, TreeDecoder::Sharing::None).key();
        TreeDecoder values(input, TreeDecoder::Sharing::None);
        const PropertyListValue value = input.flag() ? values.value(2) : PropertyListValue();
        try {
            NSDictionaryQRV::setObjectAtKeyPath(variant, value, keyPath);
        } catch (const NSInvalidArgumentException&) {
            continue;  // a leaf is in the way
        }
        require(NSDictionaryQRV::objectAtKeyPath(variant, keyPath).isIdenticalTo(value),
                "what was written is found", keyPath);
    }
    return variant;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzzing::silenceLogs();
    Input input(Fuzzing::textOf(data, size));
    const bool isVariant = input.flag();
    TreeDecoder decoder(input, TreeDecoder::Sharing::OfEarlierParts);
    const NSDictionary before = decoder.dictionary(levels);
    const NSDictionary after = isVariant ? variantOf(before, input) : decoder.dictionary(levels);

    requireEqualityOfModel(before, after);
    requireEqualityOfModel(before, before.mutableCopy());
    requireChangesOfModel(before, after);
    requireChangesOfModel(before, before.copy());
    requireFlatAsModel(before);
    return 0;
}
