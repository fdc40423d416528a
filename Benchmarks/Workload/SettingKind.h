// SPDX-License-Identifier: MIT
#pragma once

#include "Workload/GeneratedSettings.h"

namespace Workload {

enum class Kind : char { Boolean = 'b', Integer = 'i', Text = 's', Items = 'a' };

inline Kind kindOf(const Value& value) {
    constexpr Kind kinds[] = {Kind::Boolean, Kind::Integer, Kind::Text, Kind::Items};
    return kinds[value.index()];
}

}  // namespace Workload
