// SPDX-License-Identifier: MIT
#include "Platform/Values/Objects.h"

using ValueObjects::ArrayObject;
using ValueObjects::ArraySnapshot;
using ValueObjects::DictionaryObject;
using ValueObjects::DictionarySnapshot;
using ValueObjects::EntryTable;
using ValueObjects::Kind;
using ValueObjects::Reference;
using ValueObjects::StringObject;

namespace {

template <typename ObjectType, typename Snapshot>
Reference<ObjectType> makeContainer(Kind kind, bool isMutable, const Snapshot* contents) {
    return Reference<ObjectType>(new ObjectType(kind, isMutable, contents));
}

Reference<ArrayObject> makeArray(bool isMutable, const ArraySnapshot* contents) {
    return makeContainer<ArrayObject>(Kind::Array, isMutable, contents);
}

Reference<DictionaryObject> makeDictionary(bool isMutable, const DictionarySnapshot* contents) {
    return makeContainer<DictionaryObject>(Kind::Dictionary, isMutable, contents);
}

// The empty immutable containers are made once and never destroyed.
const Reference<ArrayObject>& emptyArray() {
    static const auto* const empty =
        new Reference<ArrayObject>(makeArray(false, new ArraySnapshot));
    return *empty;
}

const Reference<DictionaryObject>& emptyDictionary() {
    static const auto* const empty =
        new Reference<DictionaryObject>(makeDictionary(false, new DictionarySnapshot));
    return *empty;
}

void requireValue(const PropertyListValue& value, const char* receiver) {
    if (value.isNull()) {
        throw NSInvalidArgumentException(std::string("null cannot be an element of ") + receiver);
    }
}

}  // namespace

NSArray::NSArray() : object_(emptyArray()) {}

NSArray::NSArray(std::initializer_list<PropertyListValue> values)
    : NSArray(std::span<const PropertyListValue>(values.begin(), values.size())) {}

NSArray::NSArray(std::span<const PropertyListValue> values) {
    for (const PropertyListValue& value : values) requireValue(value, "an array");
    object_ = makeArray(false, new ArraySnapshot{{{values.begin(), values.end()}}});
}

NSArray NSArray::arrayWithObject(const PropertyListValue& value) {
    return NSArray(std::span<const PropertyListValue>(&value, 1));
}

bool NSArray::isMutable() const noexcept {
    return !isNull() && object_->isMutable;
}

std::size_t NSArray::count() const {
    return isNull() ? 0 : object_->read([](const auto& elements) { return elements.size(); });
}

PropertyListValue NSArray::objectAtIndex(std::size_t index) const {
    if (isNull()) return nullptr;
    return object_->read([index](const auto& elements) {
        return index < elements.size() ? elements[index] : PropertyListValue();
    });
}

NSArray NSArray::copy() const {
    if (isNull() || !object_->isMutable) return *this;
    return NSArray(makeArray(false, object_->snapshot()));
}

NSMutableArray NSArray::mutableCopy() const {
    if (isNull()) return nullptr;
    NSMutableArray result(nullptr);
    result.object_ = makeArray(true, object_->snapshot());
    return result;
}

NSMutableArray NSArray::asMutable() const {
    NSMutableArray result(nullptr);
    if (isMutable()) result.object_ = object_;
    return result;
}

NSArray::Iterator NSArray::begin() const {
    return Iterator(object_.get());
}

NSArray::Iterator::Iterator(const ArrayObject* object)
    : snapshot_(object == nullptr ? nullptr : object->snapshot()),
      count_(snapshot_ == nullptr ? 0 : snapshot_->contents.size()) {}

NSArray::Iterator::Iterator(Iterator&& other) noexcept
    : snapshot_(std::exchange(other.snapshot_, nullptr)),
      position_(other.position_),
      count_(std::exchange(other.count_, 0)) {}

NSArray::Iterator::~Iterator() {
    if (snapshot_ != nullptr) snapshot_->release();
}

const PropertyListValue& NSArray::Iterator::operator*() const noexcept {
    return snapshot_->contents[position_];
}

NSArray::Iterator& NSArray::Iterator::operator++() noexcept {
    ++position_;
    return *this;
}

bool NSArray::Iterator::operator!=(Sentinel) const noexcept {
    return position_ < count_;
}

NSMutableArray::NSMutableArray() : NSArray(makeArray(true, new ArraySnapshot)) {}

NSMutableArray::NSMutableArray(std::initializer_list<PropertyListValue> values)
    : NSMutableArray(NSArray(values).mutableCopy()) {}

void NSMutableArray::addObject(PropertyListValue value) const {
    requireValue(value, "an array");
    if (isNull()) return;
    object_->change([&value](auto& elements) {
        elements.push_back(std::move(value));
        return nullptr;
    });
}

void NSMutableArray::addObjectsFromArray(const NSArray& values) const {
    for (const PropertyListValue& value : values) addObject(value);
}

void NSMutableArray::removeObject(const PropertyListValue& value) const {
    if (isNull()) return;
    const NSArray before = copy();
    std::vector<PropertyListValue> kept;
    for (const PropertyListValue& element : before) {
        if (element != value) kept.push_back(element);
    }
    object_->change([&kept](auto& elements) {
        elements.swap(kept);
        return nullptr;
    });
}

void NSMutableArray::removeAllObjects() const {
    if (isNull()) return;
    object_->change([](auto& elements) { return std::exchange(elements, {}); });
}

NSDictionary::NSDictionary() : object_(emptyDictionary()) {}

NSDictionary::NSDictionary(std::initializer_list<InitialEntry> entries) {
    auto* contents = new DictionarySnapshot;
    object_ = makeDictionary(false, contents);
    contents->contents.reserve(entries.size());
    for (const InitialEntry& entry : entries) {
        requireValue(entry.value, "a dictionary");
        contents->contents.set(StringObject::make(entry.key), entry.value);
    }
}

bool NSDictionary::isMutable() const noexcept {
    return !isNull() && object_->isMutable;
}

std::size_t NSDictionary::count() const {
    return isNull() ? 0 : object_->read([](const auto& table) { return table.entries().size(); });
}

PropertyListValue NSDictionary::objectForKey(std::string_view key) const {
    if (isNull()) return nullptr;
    return object_->read([key](const auto& table) {
        const PropertyListValue* found = table.find(key);
        return found == nullptr ? PropertyListValue() : *found;
    });
}

NSDictionary NSDictionary::copy() const {
    if (isNull() || !object_->isMutable) return *this;
    return NSDictionary(makeDictionary(false, object_->snapshot()));
}

NSMutableDictionary NSDictionary::mutableCopy() const {
    if (isNull()) return nullptr;
    NSMutableDictionary result(nullptr);
    result.object_ = makeDictionary(true, object_->snapshot());
    return result;
}

NSMutableDictionary NSDictionary::asMutable() const {
    NSMutableDictionary result(nullptr);
    if (isMutable()) result.object_ = object_;
    return result;
}

NSDictionary::Iterator NSDictionary::begin() const {
    return Iterator(object_.get());
}

NSDictionary::Iterator::Iterator(const DictionaryObject* object)
    : snapshot_(object == nullptr ? nullptr : object->snapshot()),
      count_(snapshot_ == nullptr ? 0 : snapshot_->contents.entries().size()) {}

NSDictionary::Iterator::Iterator(Iterator&& other) noexcept
    : snapshot_(std::exchange(other.snapshot_, nullptr)),
      position_(other.position_),
      count_(std::exchange(other.count_, 0)) {}

NSDictionary::Iterator::~Iterator() {
    if (snapshot_ != nullptr) snapshot_->release();
}

NSDictionary::Entry NSDictionary::Iterator::operator*() const noexcept {
    const EntryTable::Entry& entry = snapshot_->contents.entries()[position_];
    return {entry.key->view(), entry.value};
}

NSDictionary::Iterator& NSDictionary::Iterator::operator++() noexcept {
    ++position_;
    return *this;
}

bool NSDictionary::Iterator::operator!=(Sentinel) const noexcept {
    return position_ < count_;
}

NSMutableDictionary::NSMutableDictionary()
    : NSDictionary(makeDictionary(true, new DictionarySnapshot)) {}

NSMutableDictionary::NSMutableDictionary(std::initializer_list<InitialEntry> entries)
    : NSMutableDictionary(NSDictionary(entries).mutableCopy()) {}

void NSMutableDictionary::setObjectForKey(PropertyListValue value, std::string_view key) const {
    if (value.isNull()) return removeObjectForKey(key);
    if (isNull()) return;
    object_->change([&](auto& table) { return table.set(key, std::move(value)); });
}

void NSMutableDictionary::removeObjectForKey(std::string_view key) const {
    if (isNull() || objectForKey(key).isNull()) return;
    object_->change([key](auto& table) { return table.remove(key); });
}

void NSMutableDictionary::removeAllObjects() const {
    if (isNull()) return;
    object_->change([](auto& table) { return std::exchange(table, {}); });
}

void NSMutableDictionary::addEntriesFromDictionary(const NSDictionary& other) const {
    for (const auto& [key, value] : other) setObjectForKey(value, key);
}

void NSMutableDictionary::reserve(std::size_t count) const {
    if (isNull()) return;
    object_->change([count](auto& table) {
        table.reserve(count);
        return nullptr;
    });
}
