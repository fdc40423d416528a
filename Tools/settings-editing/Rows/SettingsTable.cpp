// SPDX-License-Identifier: MIT
#include "Rows/SettingsTable.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <utility>

#include "QRVSettings/QRVSettings.h"
#include "QRVSettings/StoreKeyPaths.h"
#include "Rows/RowFilter.h"
#include "Settings/ProfileScope.h"
#include "Settings/Records.h"
#include "Text/Differences.h"
#include "Text/KeyPaths.h"

namespace Tool {
namespace {

using Kind = PropertyListValue::Kind;

bool isLeaf(const PropertyListValue& value) {
    return !value.isNull() && !isLevel(value);
}

bool isNamedColor(std::string_view keyPath) {
    return keyPath == "Color" || keyPath.ends_with(".Color");
}

bool isModified(const PropertyListValue& stored, const PropertyListValue& byDefault) {
    if (stored.isNull() || areSameInKind(stored, byDefault)) return false;
    return !stored.isDictionary() || !(byDefault.isNull() || byDefault.isDictionary());
}

bool areSame(const SettingRow& one, const SettingRow& other) {
    return areSameInKind(one.effective, other.effective) &&
           areSameInKind(one.stored, other.stored) &&
           areSameInKind(one.byDefault, other.byDefault) && one.layer == other.layer &&
           one.isRecord == other.isRecord && one.isLocked == other.isLocked;
}

bool showsDictionary(const SettingRow& row) {
    return row.effective.isDictionary() || row.stored.isDictionary() ||
           row.byDefault.isDictionary();
}

/// A "." stands before every character of a name.
unsigned rankOf(char character) {
    return character == '.' ? 0 : 1U + static_cast<unsigned char>(character);
}

/// Key paths begin alike for long: eight bytes at a time.
std::size_t lengthOfSameStart(std::string_view keyPath, std::string_view other) {
    const std::size_t length = std::min(keyPath.size(), other.size());
    std::size_t place = 0;
    for (std::uint64_t one = 0, another = 0; place + sizeof one <= length; place += sizeof one) {
        std::memcpy(&one, keyPath.data() + place, sizeof one);
        std::memcpy(&another, other.data() + place, sizeof another);
        if (one != another) break;
    }
    while (place < length && keyPath[place] == other[place]) ++place;
    return place;
}

}  // namespace

bool standsBefore(std::string_view keyPath, std::string_view other) {
    const std::size_t place = lengthOfSameStart(keyPath, other);
    if (place == other.size()) return false;
    return place == keyPath.size() || rankOf(keyPath[place]) < rankOf(other[place]);
}

bool SettingRow::isColor() const {
    const bool isKnownKind = known != nullptr && known->kind != Kind::Null;
    const bool isNamed = isKnownKind ? known->kind == Kind::Color : isNamedColor(keyPath);
    return isNamed && !QRVSettingsColorOfText(effective).isNull();
}

PropertyListValue::Kind SettingRow::kind() const {
    return isColor() ? Kind::Color : effective.kind();
}

SettingsTable::SettingsTable(const KnownLists& lists) : lists_(lists) {}

LayerValues SettingsTable::layersOf(const SettingsSnapshot& snapshot) const {
    LayerValues layers;
    layers[Layer::Stored] = snapshot.stored;
    layers[Layer::Prepared] = snapshot.prepared;
    layers[Layer::Defaults] = snapshot.defaults;
    layers[Layer::Site] = snapshot.site;
    layers[Layer::BuiltIn] = snapshot.builtIn;
    if (profile_.empty()) return layers;
    const std::string root = std::string(QRVStoreKeyPaths::profiles) + "." + profile_;
    for (const Layer layer : {Layer::Stored, Layer::Prepared})
        layers[layer] = valueAt(layers[layer], root);
    return layers;
}

std::string SettingsTable::storedKeyPath(const std::string& keyPath) const {
    if (profile_.empty()) return keyPath;
    return std::string(QRVStoreKeyPaths::profiles) + "." + profile_ + "." + keyPath;
}

// The stored key path of a profile whose name holds a "." is none of a lock.
bool SettingsTable::isLocked(const std::string& keyPath) const {
    return QRVSettingsIsLocked(keyPath) ||
           (!profile_.empty() && QRVSettingsIsLocked(storedKeyPath(keyPath)));
}

bool SettingsTable::isKnownHere(const SettingRow& row) const {
    return row.known != nullptr && row.known->keyPath == row.keyPath &&
           (profile_.empty() || row.known->scope != QRVSettingScope::Record);
}

SettingsTable::Place SettingsTable::placeOf(const std::string& keyPath,
                                            const LayerValues& values) const {
    Place place;
    SettingRow& row = place.row;
    row.keyPath = keyPath;
    const PropertyListValue& prepared = values[Layer::Prepared];
    row.effective = prepared.isNull() ? values[Layer::Defaults] : prepared;
    row.stored = values[Layer::Stored];
    row.known = lists_.at(keyPath);
    place.isRow = isLeaf(row.effective) || isLeaf(row.stored) || additional_.contains(keyPath) ||
                  (row.effective.isNull() && isKnownHere(row));
    if (!place.isRow) return place;

    const std::string storedPath = storedKeyPath(keyPath);
    row.byDefault = values[Layer::Defaults];
    row.isLocked = isLocked(keyPath);
    // In a dictionary, what is locked below it has its place.
    if (row.isLocked || row.effective.isDictionary())
        row.effective = ProfileScope(profile_).effective(keyPath);
    row.layer = answeringLayer({.isOfProfile = !profile_.empty(),
                                .isStored = !prepared.isNull(),
                                .isLocked = QRVSettingsIsLocked(storedPath),
                                .hasSite = !values[Layer::Site].isNull(),
                                .hasBuiltIn = !values[Layer::BuiltIn].isNull()});
    const PropertyListValue& shown = row.stored.isNull() ? row.effective : row.stored;
    row.isRecord =
        shown.isNull() ? isRecord(storedPath) : isOfStoreAlone(storedPath, row.byDefault, shown);
    row.isModified = isModified(row.stored, row.byDefault);
    row.isOfOtherKind =
        !row.stored.isNull() && !row.byDefault.isNull() && !row.stored.isSameKindAs(row.byDefault);
    return place;
}

SettingsTable::Place SettingsTable::placeOf(const std::string& keyPath) const {
    return placeOf(keyPath, layers_.at(keyPath));
}

/// What a comparison of the trees does not find. A row with a dictionary is a level, too, whose
/// entries may have changed.
void SettingsTable::addUncompared(Places& places) const {
    if (!isFilled_) {
        for (const auto& [keyPath, known] : lists_.settings()) places.push_back(placeOf(keyPath));
        for (const std::string& keyPath : additional_) places.push_back(placeOf(keyPath));
    }
    for (const SettingRow& row : rows_)
        if (showsDictionary(row) || row.isLocked != isLocked(row.keyPath))
            places.push_back(placeOf(row.keyPath));
}

/// Puts places among the rows, which are sorted as they are.
class SettingsTable::Merge {
  public:
    explicit Merge(SettingsTable& table) : table_(table) {
        rows_.reserve(table.rows_.size());
        texts_.reserve(table.rows_.size());
    }

    void take(Place& place) {
        std::vector<SettingRow>& rows = table_.rows_;
        const std::string& keyPath = place.row.keyPath;
        if (next_ < rows.size() && standsBefore(rows[next_].keyPath, keyPath))
            keepUntil(lowerBound(rows, next_ + 1, keyPath));
        const bool isOld = next_ < rows.size() && rows[next_].keyPath == keyPath;
        if (isOld && place.isRow && areSame(rows[next_], place.row)) return;
        if (isOld) {
            (place.isRow ? change_.changed : change_.removed).push_back(keyPath);
            ++next_;
        } else if (place.isRow) {
            change_.added.push_back(keyPath);
        }
        if (!place.isRow) return;
        rows_.push_back(std::move(place.row));
        texts_.emplace_back();
    }

    Change finish() {
        keepUntil(table_.rows_.size());
        table_.rows_ = std::move(rows_);
        table_.searchableTexts_ = std::move(texts_);
        return std::move(change_);
    }

    static std::size_t lowerBound(const std::vector<SettingRow>& rows, std::size_t start,
                                  std::string_view keyPath) {
        const auto place =
            std::ranges::lower_bound(rows.begin() + static_cast<std::ptrdiff_t>(start), rows.end(),
                                     keyPath, standsBefore, &SettingRow::keyPath);
        return static_cast<std::size_t>(place - rows.begin());
    }

  private:
    void keepUntil(std::size_t end) {
        for (; next_ < end; ++next_) {
            rows_.push_back(std::move(table_.rows_[next_]));
            texts_.push_back(std::move(table_.searchableTexts_[next_]));
        }
    }

    SettingsTable& table_;
    std::size_t next_ = 0;  // of the old rows
    std::vector<SettingRow> rows_;
    std::vector<std::string> texts_;
    Change change_;
};

SettingsTable::Change SettingsTable::replaceRows(Places places) {
    std::vector<Place*> sorted;
    sorted.reserve(places.size());
    for (Place& place : places) sorted.push_back(&place);
    std::ranges::sort(sorted, [](const Place* place, const Place* other) {
        return standsBefore(place->row.keyPath, other->row.keyPath);
    });
    const auto isRepeated = [](const Place* place, const Place* other) {
        return place->row.keyPath == other->row.keyPath;
    };
    sorted.erase(std::unique(sorted.begin(), sorted.end(), isRepeated), sorted.end());
    Merge merge(*this);
    for (Place* const place : sorted) merge.take(*place);
    Change change = merge.finish();
    if (!change.added.empty() || !change.removed.empty()) ++generation_;
    return change;
}

SettingsTable::Change SettingsTable::update(const SettingsSnapshot& snapshot) {
    snapshot_ = snapshot;
    const LayerValues before = std::exchange(layers_, layersOf(snapshot));
    Places places;
    LayerComparison comparison([&](const std::string& keyPath, const LayerValues& now) {
        places.push_back(placeOf(keyPath, now));
    });
    comparison.compare(before, layers_);
    unreachedCount_ += static_cast<std::size_t>(comparison.unreachedLeaves());
    addUncompared(places);
    isFilled_ = true;
    return replaceRows(std::move(places));
}

void SettingsTable::setProfile(const std::string& profile) {
    profile_ = profile;
    if (!isFilled_) return;
    isFilled_ = false;
    layers_ = {};
    ++generation_;
    rows_.clear();
    searchableTexts_.clear();
    unreachedCount_ = 0;
    update(SettingsSnapshot(snapshot_));
}

SettingsTable::Change SettingsTable::setAdditionalKeyPaths(const std::set<std::string>& keyPaths) {
    std::vector<std::string> differing;
    std::ranges::set_symmetric_difference(additional_, keyPaths, std::back_inserter(differing));
    additional_ = keyPaths;
    if (!isFilled_) return {};
    Places places;
    for (const std::string& keyPath : differing) places.push_back(placeOf(keyPath));
    return replaceRows(std::move(places));
}

std::optional<std::size_t> SettingsTable::indexOf(std::string_view keyPath) const {
    const std::size_t index = Merge::lowerBound(rows_, 0, keyPath);
    if (index == rows_.size() || rows_[index].keyPath != keyPath) return std::nullopt;
    return index;
}

const SettingRow* SettingsTable::at(std::string_view keyPath) const {
    const auto index = indexOf(keyPath);
    return index ? &rows_[*index] : nullptr;
}

std::string_view SettingsTable::searchableTextOf(std::size_t row) const {
    std::string& text = searchableTexts_[row];
    if (text.empty()) text = searchableText(rows_[row]);
    return text;
}

std::set<std::string> SettingsTable::profileNames() const {
    std::set<std::string> names{"default"};
    const PropertyListValue profiles = valueAt(snapshot_.prepared, QRVStoreKeyPaths::profiles);
    for (const auto& [name, settings] : profiles.dictionary()) names.emplace(name);
    return names;
}

}  // namespace Tool
