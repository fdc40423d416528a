// SPDX-License-Identifier: MIT
// NSArray and NSDictionary, immutable and mutable.

#include <algorithm>
#include <vector>

#include "Platform/Values/ContainerObjects.h"
#include "Platform/Values/DictionaryDescent.h"
#include "Platform/Values/HashedKey.h"

using namespace QRVPlatform;

using ValueObjects::Access;
using ValueObjects::ArrayContents;
using ValueObjects::ArrayObject;
using ValueObjects::DictionaryContents;
using ValueObjects::DictionaryObject;
using ValueObjects::Editing;
using ValueObjects::hashOf;
using ValueObjects::MutableContainer;
using ValueObjects::ObjectReference;
using ValueObjects::Reference;
using ValueObjects::StringObject;

namespace {

// The empty immutable containers are made once and never destroyed.
template <typename Contents>
Reference<Contents> emptyContents() {
    static const auto* const empty = new Reference<Contents>(Contents::make(0));
    return *empty;
}

// An immutable container is its contents.
template <typename Contents>
ObjectReference immutableObject(Reference<Contents> contents) {
    return ObjectReference(contents.leak());
}

template <typename ObjectType>
ObjectReference mutableObject(Reference<typename ObjectType::Contents> contents) {
    return ObjectReference(new MutableContainer<ObjectType>(std::move(contents)));
}

template <typename ObjectType>
MutableContainer<ObjectType>& mutableContainer(const ObjectReference& object) {
    return static_cast<MutableContainer<ObjectType>&>(*object.get());
}

MutableContainer<ArrayObject>& mutableArray(const ObjectReference& object) {
    return mutableContainer<ArrayObject>(object);
}

MutableContainer<DictionaryObject>& mutableDictionary(const ObjectReference& object) {
    return mutableContainer<DictionaryObject>(object);
}

// What `look(contents)` returns.
template <typename ObjectType, typename Look>
auto read(const ObjectReference& object, Look&& look) {
    if (object.get()->isMutable)
        return std::as_const(mutableContainer<ObjectType>(object)).read(look);
    return look(static_cast<const typename ObjectType::Contents&>(*object.get()));
}

// The contents as they are now, in a block that does not change any more; none of no container.
template <typename ObjectType>
auto contentsOf(const ObjectReference& object) {
    using Contents = typename ObjectType::Contents;
    if (object.get() == nullptr) return Reference<Contents>();
    if (object.get()->isMutable)
        return std::as_const(mutableContainer<ObjectType>(object)).contents();
    return Reference<Contents>(static_cast<Contents*>(ObjectReference(object).leak()));
}

template <typename Iterator, typename Contents>
Iterator startOf(Reference<Contents> contents) {
    const std::size_t count = contents.get() == nullptr ? 0 : contents->count();
    return Iterator(ObjectReference(contents.leak()), count);
}

std::vector<std::size_t> placesOf(const PropertyListValue& value, const ArrayContents& contents) {
    std::vector<std::size_t> places;
    for (std::size_t index = 0; index < contents.count(); ++index)
        if (contents.elements()[index] == value) places.push_back(index);
    return places;
}

void requireValue(const PropertyListValue& value, const char* receiver) {
    if (value.isNull()) {
        throw NSInvalidArgumentException(std::string("null cannot be an element of ") + receiver);
    }
}

}  // namespace

NSArray::NSArray() : object_(immutableObject(emptyContents<ArrayContents>())) {}

NSArray::NSArray(std::initializer_list<PropertyListValue> values)
    : NSArray(std::span<const PropertyListValue>(values.begin(), values.size())) {}

NSArray::NSArray(std::span<const PropertyListValue> values) {
    Reference<ArrayContents> contents = ArrayContents::make(values.size());
    for (const PropertyListValue& value : values) {
        requireValue(value, "an array");
        contents->append(value);
    }
    object_ = immutableObject(std::move(contents));
}

NSArray NSArray::arrayWithObject(const PropertyListValue& value) {
    return NSArray(std::span<const PropertyListValue>(&value, 1));
}

bool NSArray::isMutable() const noexcept {
    return !isNull() && object_.get()->isMutable;
}

std::size_t NSArray::count() const {
    return isNull()
               ? 0
               : read<ArrayObject>(object_, [](const auto& contents) { return contents.count(); });
}

PropertyListValue NSArray::objectAtIndex(std::size_t index) const {
    if (isNull()) return nullptr;
    return read<ArrayObject>(object_, [index](const auto& contents) {
        return index < contents.count() ? contents.elements()[index] : PropertyListValue();
    });
}

NSArray NSArray::copy() const {
    return NSArray(immutableObject(contentsOf<ArrayObject>(object_)));
}

NSMutableArray NSArray::mutableCopy() const {
    if (isNull()) return nullptr;
    NSMutableArray result(nullptr);
    result.object_ = mutableObject<ArrayObject>(contentsOf<ArrayObject>(object_));
    return result;
}

NSMutableArray NSArray::asMutable() const {
    NSMutableArray result(nullptr);
    if (isMutable()) result.object_ = object_;
    return result;
}

NSArray::Iterator NSArray::begin() const {
    return startOf<Iterator>(contentsOf<ArrayObject>(object_));
}

template <>
const PropertyListValue& NSArray::Iterator::operator*() const noexcept {
    return static_cast<const ArrayContents*>(contents_.get())->elements()[position_];
}

NSMutableArray::NSMutableArray() : NSArray(NSArray().mutableCopy()) {}

NSMutableArray::NSMutableArray(std::initializer_list<PropertyListValue> values)
    : NSMutableArray(NSArray(values).mutableCopy()) {}

void NSMutableArray::addObject(PropertyListValue value) const {
    requireValue(value, "an array");
    if (isNull()) return;
    Editing edit(mutableArray(object_), 1);
    edit->append(std::move(value));
}

void NSMutableArray::addObjectsFromArray(const NSArray& values) const {
    for (const PropertyListValue& value : values) addObject(value);
}

// Elements are compared outside the lock, because that takes the locks of other containers, or this
// one's when the array holds itself. While `seen` is shared, a change by another thread replaces
// the block instead of editing it, so the places are right as long as the block is the same.
void NSMutableArray::removeObject(const PropertyListValue& value) const {
    if (isNull()) return;
    while (true) {
        Reference<ArrayContents> seen = contentsOf<ArrayObject>(object_);
        const std::vector<std::size_t> places = placesOf(value, *seen.get());
        if (places.empty()) return;
        Editing edit(mutableArray(object_));
        if (&edit.current() != seen.get()) continue;
        seen = {};  // else the block would be shared, and be cloned
        edit.makeRoom(0);
        edit.discard(edit->remove(places));
        return;
    }
}

void NSMutableArray::removeAllObjects() const {
    if (!isNull()) mutableArray(object_).setContents(emptyContents<ArrayContents>());
}

void NSMutableArray::setArray(const NSArray& values) const {
    if (isNull()) return;
    if (values.isNull()) return removeAllObjects();
    mutableArray(object_).setContents(contentsOf<ArrayObject>(values.mutableCopy().object_));
}

NSDictionary::NSDictionary() : object_(immutableObject(emptyContents<DictionaryContents>())) {}

NSDictionary::NSDictionary(std::initializer_list<InitialEntry> entries) {
    Reference<DictionaryContents> contents = DictionaryContents::make(entries.size());
    for (const InitialEntry& entry : entries) {
        requireValue(entry.value, "a dictionary");
        const std::uint32_t hash = hashOf(entry.key);
        const std::size_t index = contents->indexOf(entry.key, hash);
        if (index == DictionaryContents::notFound)
            contents->append(StringObject::make(entry.key, hash), entry.value);
        else
            static_cast<void>(contents->exchange(index, entry.value));
    }
    object_ = immutableObject(std::move(contents));
}

bool NSDictionary::isMutable() const noexcept {
    return !isNull() && object_.get()->isMutable;
}

std::size_t NSDictionary::count() const {
    return isNull() ? 0 : read<DictionaryObject>(object_, [](const auto& contents) {
        return contents.count();
    });
}

PropertyListValue NSDictionary::objectForKey(std::string_view key) const {
    if (isNull()) return nullptr;
    return read<DictionaryObject>(object_, [key, hash = hashOf(key)](const auto& contents) {
        const PropertyListValue* found = contents.find(key, hash);
        return found == nullptr ? PropertyListValue() : *found;
    });
}

NSDictionary NSDictionary::copy() const {
    return NSDictionary(immutableObject(contentsOf<DictionaryObject>(object_)));
}

NSMutableDictionary NSDictionary::mutableCopy() const {
    if (isNull()) return nullptr;
    NSMutableDictionary result(nullptr);
    result.object_ = mutableObject<DictionaryObject>(contentsOf<DictionaryObject>(object_));
    return result;
}

NSMutableDictionary NSDictionary::asMutable() const {
    NSMutableDictionary result(nullptr);
    if (isMutable()) result.object_ = object_;
    return result;
}

NSDictionary::Iterator NSDictionary::begin() const {
    return startOf<Iterator>(contentsOf<DictionaryObject>(object_));
}

template <>
NSDictionary::Entry NSDictionary::Iterator::operator*() const noexcept {
    const DictionaryContents::Entry& entry =
        static_cast<const DictionaryContents*>(contents_.get())->entries()[position_];
    return {entry.key->view(), entry.value};
}

NSMutableDictionary::NSMutableDictionary() : NSDictionary(NSDictionary().mutableCopy()) {}

NSMutableDictionary::NSMutableDictionary(std::initializer_list<InitialEntry> entries)
    : NSMutableDictionary(NSDictionary(entries).mutableCopy()) {}

namespace {

// Null removes. The key's own string, as long as it has an entry; null when it has none.
StringObject* setEntry(MutableContainer<DictionaryObject>& dictionary, PropertyListValue value,
                       const HashedKey& key) {
    Editing edit(dictionary);
    const std::size_t index = edit.current().indexOf(key.text(), key.hash);
    const bool isNew = index == DictionaryContents::notFound;
    if (value.isNull()) {
        if (isNew) return nullptr;
        edit.makeRoom(0);
        edit.discard(edit->remove(index));
        return nullptr;
    }
    edit.makeRoom(isNew ? 1 : 0);
    if (isNew)
        edit->append(StringObject::make(key.text(), key.hash), std::move(value));
    else
        edit.discard(edit->exchange(index, std::move(value)));
    return edit->entries()[isNew ? edit->count() - 1 : index].key.get();
}

}  // namespace

void QRVPlatform::setObjectForHashedKey(const NSMutableDictionary& dictionary,
                                        PropertyListValue value, const HashedKey& key) {
    if (dictionary.isNull()) return;
    WritersEdit(dictionary).set(std::move(value), key);
}

void WritersEdit::set(PropertyListValue value, const HashedKey& key) const {
    setEntry(static_cast<MutableContainer<DictionaryObject>&>(*level_), std::move(value), key);
}

PropertyListValue WritersEdit::setAndShareKey(PropertyListValue value, const HashedKey& key) const {
    StringObject* const own =
        setEntry(static_cast<MutableContainer<DictionaryObject>&>(*level_), std::move(value), key);
    if (own == nullptr) return key.text();
    ValueObjects::retain(own);
    return Access::valueOwning(own);
}

void NSMutableDictionary::setObjectForKey(PropertyListValue value, std::string_view key) const {
    setObjectForHashedKey(*this, std::move(value), HashedKey::of(key));
}

void NSMutableDictionary::removeObjectForKey(std::string_view key) const {
    setObjectForHashedKey(*this, nullptr, HashedKey::of(key));
}

void NSMutableDictionary::removeAllObjects() const {
    if (!isNull()) mutableDictionary(object_).setContents(emptyContents<DictionaryContents>());
}

void NSMutableDictionary::addEntriesFromDictionary(const NSDictionary& other) const {
    for (const auto& [key, value] : other) setObjectForKey(value, key);
}

void NSMutableDictionary::reserve(std::size_t count) const {
    if (isNull()) return;
    Editing edit(mutableDictionary(object_));
    edit.makeRoom(count - std::min(count, edit.current().count()));
}
