// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "Workload/GeneratedSettings.h"

namespace Peers {

/// A small dictionary as text, for stores that have strings only.
inline std::string textOf(const Workload::Item& item) {
    return R"({"source":)" + std::to_string(item.source) + R"(,"label":")" + item.label + R"("})";
}

/// The dictionary that holds a setting, and the setting's key in it.
struct SplitKeyPath {
    std::string_view group, key;
};

inline SplitKeyPath splitKeyPath(std::string_view keyPath) {
    const std::size_t dot = keyPath.rfind('.');
    return {keyPath.substr(0, dot), keyPath.substr(dot + 1)};
}

}  // namespace Peers
