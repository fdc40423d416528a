// SPDX-License-Identifier: MIT
#include <algorithm>

#include "Platform/Values/ContainerObjects.h"

using namespace QRVPlatform;

using ValueObjects::ArrayContents;
using ValueObjects::ArrayObject;
using ValueObjects::DictionaryContents;
using ValueObjects::DictionaryObject;
using ValueObjects::hashOf;
using ValueObjects::MutableContainer;
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
template <typename ObjectType>
Reference<ObjectType> immutableObject(Reference<typename ObjectType::Contents> contents) {
    return Reference<ObjectType>(contents.leak());
}

template <typename ObjectType>
Reference<ObjectType> mutableObject(Reference<typename ObjectType::Contents> contents) {
    return Reference<ObjectType>(new MutableContainer<ObjectType>(std::move(contents)));
}

template <typename ObjectType>
MutableContainer<ObjectType>& mutableContainer(const Reference<ObjectType>& object) {
    return static_cast<MutableContainer<ObjectType>&>(*object.get());
}

// What `look(contents)` returns.
template <typename ObjectType, typename Look>
auto read(const Reference<ObjectType>& object, Look&& look) {
    if (object->isMutable) return std::as_const(mutableContainer(object)).read(look);
    return look(static_cast<const typename ObjectType::Contents&>(*object.get()));
}

// The contents as they are now, which do not change any more; none of no container.
template <typename ObjectType>
auto contentsOf(const Reference<ObjectType>& object) {
    using Contents = typename ObjectType::Contents;
    if (object.get() == nullptr) return Reference<Contents>();
    if (object->isMutable) return std::as_const(mutableContainer(object)).contents();
    return Reference<Contents>(static_cast<Contents*>(Reference(object).leak()));
}

void requireValue(const PropertyListValue& value, const char* receiver) {
    if (value.isNull()) {
        throw NSInvalidArgumentException(std::string("null cannot be an element of ") + receiver);
    }
}

}  // namespace

NSArray::NSArray() : object_(immutableObject<ArrayObject>(emptyContents<ArrayContents>())) {}

NSArray::NSArray(std::initializer_list<PropertyListValue> values)
    : NSArray(std::span<const PropertyListValue>(values.begin(), values.size())) {}

NSArray::NSArray(std::span<const PropertyListValue> values) {
    Reference<ArrayContents> contents = ArrayContents::make(values.size());
    for (const PropertyListValue& value : values) {
        requireValue(value, "an array");
        contents->append(value);
    }
    object_ = immutableObject<ArrayObject>(std::move(contents));
}

NSArray NSArray::arrayWithObject(const PropertyListValue& value) {
    return NSArray(std::span<const PropertyListValue>(&value, 1));
}

bool NSArray::isMutable() const noexcept {
    return !isNull() && object_->isMutable;
}

std::size_t NSArray::count() const {
    return isNull() ? 0 : read(object_, [](const auto& contents) { return contents.count(); });
}

PropertyListValue NSArray::objectAtIndex(std::size_t index) const {
    if (isNull()) return nullptr;
    return read(object_, [index](const auto& contents) {
        return index < contents.count() ? contents.elements()[index] : PropertyListValue();
    });
}

NSArray NSArray::copy() const {
    return NSArray(immutableObject<ArrayObject>(contentsOf(object_)));
}

NSMutableArray NSArray::mutableCopy() const {
    if (isNull()) return nullptr;
    NSMutableArray result(nullptr);
    result.object_ = mutableObject<ArrayObject>(contentsOf(object_));
    return result;
}

NSMutableArray NSArray::asMutable() const {
    NSMutableArray result(nullptr);
    if (isMutable()) result.object_ = object_;
    return result;
}

NSArray::Iterator NSArray::begin() const {
    return Iterator(contentsOf(object_));
}

NSArray::Iterator::Iterator(Reference<ArrayContents> contents)
    : contents_(std::move(contents)), count_(contents_.get() == nullptr ? 0 : contents_->count()) {}

NSArray::Iterator::Iterator(Iterator&& other) noexcept
    : contents_(std::move(other.contents_)),
      position_(other.position_),
      count_(std::exchange(other.count_, 0)) {}

NSArray::Iterator::~Iterator() = default;

const PropertyListValue& NSArray::Iterator::operator*() const noexcept {
    return contents_->elements()[position_];
}

NSArray::Iterator& NSArray::Iterator::operator++() noexcept {
    ++position_;
    return *this;
}

bool NSArray::Iterator::operator!=(Sentinel) const noexcept {
    return position_ < count_;
}

NSMutableArray::NSMutableArray() : NSArray(NSArray().mutableCopy()) {}

NSMutableArray::NSMutableArray(std::initializer_list<PropertyListValue> values)
    : NSMutableArray(NSArray(values).mutableCopy()) {}

void NSMutableArray::addObject(PropertyListValue value) const {
    requireValue(value, "an array");
    if (isNull()) return;
    mutableContainer(object_).change([](const auto&) { return 1U; },
                                     [&value](auto& contents) {
                                         contents.append(std::move(value));
                                         return nullptr;
                                     });
}

void NSMutableArray::addObjectsFromArray(const NSArray& values) const {
    for (const PropertyListValue& value : values) addObject(value);
}

void NSMutableArray::removeObject(const PropertyListValue& value) const {
    if (isNull()) return;
    const Reference<ArrayContents> before = contentsOf(object_);
    Reference<ArrayContents> kept = ArrayContents::make(before->count());
    for (const PropertyListValue& element : before->elements()) {
        if (element != value) kept->append(element);
    }
    mutableContainer(object_).setContents(std::move(kept));
}

void NSMutableArray::removeAllObjects() const {
    if (!isNull()) mutableContainer(object_).setContents(emptyContents<ArrayContents>());
}

void NSMutableArray::setArray(const NSArray& values) const {
    if (isNull()) return;
    if (values.isNull()) return removeAllObjects();
    mutableContainer(object_).setContents(contentsOf(values.mutableCopy().object_));
}

NSDictionary::NSDictionary()
    : object_(immutableObject<DictionaryObject>(emptyContents<DictionaryContents>())) {}

NSDictionary::NSDictionary(std::initializer_list<InitialEntry> entries) {
    Reference<DictionaryContents> contents = DictionaryContents::make(entries.size());
    for (const InitialEntry& entry : entries) {
        requireValue(entry.value, "a dictionary");
        const std::uint32_t hash = hashOf(entry.key);
        const std::size_t index = contents->indexOf(entry.key, hash);
        if (index == DictionaryContents::notFound)
            contents->append(StringObject::make(entry.key, hash), entry.value);
        else
            contents->exchange(index, entry.value);
    }
    object_ = immutableObject<DictionaryObject>(std::move(contents));
}

bool NSDictionary::isMutable() const noexcept {
    return !isNull() && object_->isMutable;
}

std::size_t NSDictionary::count() const {
    return isNull() ? 0 : read(object_, [](const auto& contents) { return contents.count(); });
}

PropertyListValue NSDictionary::objectForKey(std::string_view key) const {
    if (isNull()) return nullptr;
    return read(object_, [key, hash = hashOf(key)](const auto& contents) {
        const PropertyListValue* found = contents.find(key, hash);
        return found == nullptr ? PropertyListValue() : *found;
    });
}

NSDictionary NSDictionary::copy() const {
    return NSDictionary(immutableObject<DictionaryObject>(contentsOf(object_)));
}

NSMutableDictionary NSDictionary::mutableCopy() const {
    if (isNull()) return nullptr;
    NSMutableDictionary result(nullptr);
    result.object_ = mutableObject<DictionaryObject>(contentsOf(object_));
    return result;
}

NSMutableDictionary NSDictionary::asMutable() const {
    NSMutableDictionary result(nullptr);
    if (isMutable()) result.object_ = object_;
    return result;
}

NSDictionary::Iterator NSDictionary::begin() const {
    return Iterator(contentsOf(object_));
}

NSDictionary::Iterator::Iterator(Reference<DictionaryContents> contents)
    : contents_(std::move(contents)), count_(contents_.get() == nullptr ? 0 : contents_->count()) {}

NSDictionary::Iterator::Iterator(Iterator&& other) noexcept
    : contents_(std::move(other.contents_)),
      position_(other.position_),
      count_(std::exchange(other.count_, 0)) {}

NSDictionary::Iterator::~Iterator() = default;

NSDictionary::Entry NSDictionary::Iterator::operator*() const noexcept {
    const DictionaryContents::Entry& entry = contents_->entries()[position_];
    return {entry.key->view(), entry.value};
}

NSDictionary::Iterator& NSDictionary::Iterator::operator++() noexcept {
    ++position_;
    return *this;
}

bool NSDictionary::Iterator::operator!=(Sentinel) const noexcept {
    return position_ < count_;
}

NSMutableDictionary::NSMutableDictionary() : NSDictionary(NSDictionary().mutableCopy()) {}

NSMutableDictionary::NSMutableDictionary(std::initializer_list<InitialEntry> entries)
    : NSMutableDictionary(NSDictionary(entries).mutableCopy()) {}

void NSMutableDictionary::setObjectForKey(PropertyListValue value, std::string_view key) const {
    if (value.isNull()) return removeObjectForKey(key);
    if (isNull()) return;
    const std::uint32_t hash = hashOf(key);
    std::size_t index = DictionaryContents::notFound;
    mutableContainer(object_).change(
        [&](const auto& contents) {
            index = contents.indexOf(key, hash);
            return index == DictionaryContents::notFound ? 1U : 0U;
        },
        [&](auto& contents) {
            if (index != DictionaryContents::notFound)
                return contents.exchange(index, std::move(value));
            contents.append(StringObject::make(key, hash), std::move(value));
            return PropertyListValue();
        });
}

void NSMutableDictionary::removeObjectForKey(std::string_view key) const {
    if (isNull() || objectForKey(key).isNull()) return;
    mutableContainer(object_).change([](const auto&) { return 0U; },
                                     [key](auto& contents) { return contents.remove(key); });
}

void NSMutableDictionary::removeAllObjects() const {
    if (!isNull()) mutableContainer(object_).setContents(emptyContents<DictionaryContents>());
}

void NSMutableDictionary::addEntriesFromDictionary(const NSDictionary& other) const {
    for (const auto& [key, value] : other) setObjectForKey(value, key);
}

void NSMutableDictionary::reserve(std::size_t count) const {
    if (isNull()) return;
    mutableContainer(object_).change(
        [count](const auto& contents) { return count - std::min(count, contents.count()); },
        [](auto&) { return nullptr; });
}
