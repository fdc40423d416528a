// SPDX-License-Identifier: MIT
#pragma once

// The parts of every function of the C interface.

#include <atomic>
#include <cstddef>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Values/PropertyListValue.h"
#include "QRVSettings/KeyPath.h"
#include "QRVSettings/QRVSettingsC.h"

struct qrv_value {
    explicit qrv_value(PropertyListValue newValue);
    std::atomic<std::size_t> references = 1;
    const PropertyListValue value;
    const std::string text;  ///< of a string: its characters have no zero byte behind them
};

namespace QRVInside::CInterface {

/// An argument that the C interface itself rejects.
class Refusal : public std::runtime_error {
  public:
    Refusal(qrv_result result, const std::string& reason)
        : std::runtime_error(reason), result_(result) {}
    [[nodiscard]] qrv_result result() const noexcept { return result_; }

  private:
    qrv_result result_;
};

/// The result for the exception being handled. To be called in a catch clause.
qrv_result keepAsLastError() noexcept;

template <typename Pointer>
Pointer notNull(Pointer pointer, const char* name) {
    if (pointer != nullptr) return pointer;
    throw Refusal(QRV_ERROR_NULL_POINTER, std::string(name) + " is NULL");
}

const PropertyListValue& valueOf(const qrv_value* value);
/// Refuses a value of another kind.
const PropertyListValue& valueOf(const qrv_value* value, PropertyListValue::Kind kind);

/// Refuses text that is not UTF-8.
void requireUTF8(std::string_view text);
/// Both refuse text that is not UTF-8; NULL is accepted.
const char* textOf(const char* text);
QRVKeyPath keyPathOf(const char* text);

template <typename Body>
qrv_result perform(const Body& body) noexcept {
    try {
        body();
        return QRV_OK;
    } catch (...) {
        return keepAsLastError();
    }
}

/// Where a result goes, reset.
template <typename Result>
Result& emptied(Result* place) {
    return *notNull(place, "the place of the result") = Result();
}

template <typename Result, typename Answer>
qrv_result give(Result* place, const Answer& answer) {
    return perform([&] {
        Result& result = emptied(place);
        result = answer();
    });
}

/// A handle with one reference.
inline qrv_value* newHandle(PropertyListValue value) {
    return new qrv_value(std::move(value));
}

template <typename Answer>
qrv_result giveValue(qrv_value** place, const Answer& answer) {
    return give(place, [&] { return newHandle(answer()); });
}

/// A host's context; its last copy destroys it.
using Context = std::shared_ptr<void>;
Context contextOf(void* context, qrv_destroy destroy);

}  // namespace QRVInside::CInterface
