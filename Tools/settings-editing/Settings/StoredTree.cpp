// SPDX-License-Identifier: MIT
#include "Settings/StoredTree.h"

#include "QRVSettings/QRVSettings.h"

namespace Tool {

void replaceStoredTree(const NSDictionary& tree) {
    QRVSettings::sharedSettings().setStorageCache(tree.isNull() ? NSMutableDictionary()
                                                                : tree.mutableCopy());
}

}  // namespace Tool
