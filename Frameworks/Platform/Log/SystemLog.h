// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace QRVPlatform {

/// The destinations of log texts. No function fails: what cannot be written is lost.
namespace SystemLog {

enum class Level { Notice, Debug };

void write(Level level, const std::string& text);

/// One line on standard error: local time, program, process and text.
void writeToStandardError(const std::string& text);

}  // namespace SystemLog

}  // namespace QRVPlatform
