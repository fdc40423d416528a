// SPDX-License-Identifier: MIT
// `formattedText` of System.h.

#include "Platform/System/System.h"

namespace QRVPlatform {

std::string formattedText(std::string_view format, std::span<const PropertyListValue> arguments) {
    std::string text;
    while (!format.empty()) {
        if (format.starts_with("%@")) {
            text += description(arguments.empty() ? PropertyListValue() : arguments.front());
            if (!arguments.empty()) arguments = arguments.subspan(1);
            format.remove_prefix(2);
        } else {
            text += format.front();
            format.remove_prefix(format.starts_with("%%") ? 2 : 1);
        }
    }
    return text;
}

}  // namespace QRVPlatform
