// SPDX-License-Identifier: MIT
// The boundary between C and C++: checks arguments, and turns exceptions into results.

#include "QRVSettings/QRVSettingsC+Boundary.h"

#include <array>
#include <cstddef>
#include <new>
#include <string>
#include <system_error>

#include "Platform/PropertyLists/Unicode.h"

namespace QRVInside::CInterface {
namespace {

struct EmptiedAtTheEnd {
    std::string& text;
    ~EmptiedAtTheEnd() { std::string().swap(text); }
};

// The text itself is not destroyed: destructors that run later on the thread may fail, too.
std::string& lastError() {
    alignas(std::string) thread_local std::array<std::byte, sizeof(std::string)> place;
    thread_local std::string* const text = new (place.data()) std::string;
    thread_local const EmptiedAtTheEnd emptied{*text};
    static_cast<void>(emptied);
    return *text;
}

qrv_result keep(qrv_result result, const char* text) noexcept {
    try {
        lastError() = text;
    } catch (const std::bad_alloc&) {
        lastError().clear();
    }
    return result;
}

}  // namespace

qrv_result keepAsLastError() noexcept {
    try {
        throw;
    } catch (const Refusal& refusal) {
        return keep(refusal.result(), refusal.what());
    } catch (const std::bad_alloc&) {
        return keep(QRV_ERROR_OUT_OF_MEMORY, "out of memory");
    } catch (const std::logic_error& error) {
        return keep(QRV_ERROR_INVALID_ARGUMENT, error.what());
    } catch (const std::system_error& error) {
        return keep(QRV_ERROR_SYSTEM, error.what());
    } catch (const std::exception& error) {
        return keep(QRV_ERROR_FAILED, error.what());
    } catch (...) {
        return keep(QRV_ERROR_FAILED, "an exception of an unknown type");
    }
}

const PropertyListValue& valueOf(const qrv_value* value) {
    return notNull(value, "the value")->value;
}

const PropertyListValue& valueOf(const qrv_value* value, PropertyListValue::Kind kind) {
    const PropertyListValue& found = valueOf(value);
    if (found.kind() == kind) return found;
    throw Refusal(QRV_ERROR_WRONG_KIND,
                  "the value is of another kind: " + QRVPlatform::description(found));
}

void requireUTF8(std::string_view text) {
    if (const auto position = QRVPlatform::PropertyLists::positionOfBrokenUTF8(text))
        throw Refusal(QRV_ERROR_NOT_UTF8,
                      "the text is not UTF-8 from byte " + std::to_string(*position));
}

const char* textOf(const char* text) {
    if (text != nullptr) requireUTF8(text);
    return text;
}

QRVKeyPath keyPathOf(const char* text) {
    return textOf(text);
}

Context contextOf(void* context, qrv_destroy destroy) {
    return {context, [destroy](void* ended) {
                if (destroy != nullptr) destroy(ended);
            }};
}

}  // namespace QRVInside::CInterface

const char* qrv_last_error(void) {
    return QRVInside::CInterface::lastError().c_str();
}
