// SPDX-License-Identifier: MIT
#include "Platform/Values/DictionaryPairs.h"

namespace QRVPlatform {

const PropertyListValue* DictionaryPairs::valueAfter(const Entry& entry) const {
    const auto entries = after_->entries();
    if (position_ < entries.size()) {
        const Entry& likely = entries[position_];
        if (likely.key->hash == entry.key->hash &&
            ValueObjects::isSameText(likely.key->view(), entry.key->view()))
            return &likely.value;
    }
    return after_->find(entry.key->view(), entry.key->hash);
}

bool DictionaryPairs::next() {
    const auto entriesBefore = before_->entries();
    if (position_ < entriesBefore.size()) {
        const Entry& entry = entriesBefore[position_];
        valueBefore_ = &entry.value;
        valueAfter_ = valueAfter(entry);
        if (valueAfter_ != nullptr) ++found_;
        key_ = entry.key->view();
        ++position_;
        return true;
    }
    const auto entriesAfter = after_->entries();
    if (found_ == entriesAfter.size()) return false;
    for (; position_ - entriesBefore.size() < entriesAfter.size(); ++position_) {
        const Entry& entry = entriesAfter[position_ - entriesBefore.size()];
        if (before_->find(entry.key->view(), entry.key->hash) != nullptr) continue;
        valueBefore_ = nullptr;
        valueAfter_ = &entry.value;
        key_ = entry.key->view();
        ++position_;
        return true;
    }
    return false;
}

}  // namespace QRVPlatform
