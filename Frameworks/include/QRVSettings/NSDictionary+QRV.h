// SPDX-License-Identifier: MIT
#pragma once

/// Operations on trees of nested dictionaries by key path. None takes a lock: while another thread
/// changes a tree, each dictionary of it is read as it is before or after a change.

#include <optional>
#include <string_view>

#include "Platform/Export.h"
#include "Platform/Values/PropertyListValue.h"
#include "QRVSettings/KeyPath.h"

namespace NSDictionaryQRV {

/// The value at a key path, of any kind, itself and not a copy; null where there is none, and for a
/// null key path. Where the path leads through a value that is not a dictionary, the answer is null
/// and two lines go to the system log: "object is not a dictionary" and the key path.
QRV_EXPORT PropertyListValue objectAtKeyPath(const NSDictionary& root, QRVKeyPath keyPath);

/// Stores a value at a key path; a null value removes the key. Missing levels are created, also
/// when there is nothing to remove, and immutable levels are replaced by shallow mutable copies in
/// their parents: the immutable ones do not change.
///
/// Throws NSInvalidArgumentException for a null key path, for an immutable root that would have to
/// change, and where the path leads through a value that is not a dictionary, after a line "leaf is
/// not a dictionary" in the system log. Levels created or replaced before that stay. Does nothing
/// when the root is null.
QRV_EXPORT void setObjectAtKeyPath(const NSDictionary& root, const PropertyListValue& value,
                                   QRVKeyPath keyPath);

/// Whether the dictionary holds a leaf (a value other than a dictionary) at any depth.
QRV_EXPORT bool hasValues(const NSDictionary& dictionary);

/// Adds an entry for each leaf of the tree to `results`, under its key path. Existing entries under
/// the same key path are replaced. An array is one leaf; dictionaries without any leaf add nothing.
QRV_EXPORT void flatten(const NSDictionary& tree, const NSMutableDictionary& results);

/// The same below a prefix: the key path of a leaf is the prefix, "." and the rest. An empty prefix
/// gives key paths that begin with "."; only `std::nullopt` means no prefix. A value that is not a
/// dictionary adds nothing.
QRV_EXPORT void flatten(const PropertyListValue& value, const NSMutableDictionary& results,
                        std::optional<std::string_view> prefix);

/// The key paths of the leaves that were added, removed or given another value, each once, in no
/// defined order. Null counts as an empty tree. An array is one leaf, numbers are compared by their
/// numeric value, and dictionaries without any leaf are ignored. Subtrees that both trees share are
/// skipped.
QRV_EXPORT NSMutableArray changedKeys(const NSDictionary& dict1, const NSDictionary& dict2);

}  // namespace NSDictionaryQRV
