// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace QRVPlatform {

/// Where log texts end up. Nothing here fails: what cannot be written is lost.
namespace SystemLog {

enum class Level { Notice, Debug };

void write(Level level, const std::string& text);

/// One line on standard error, after local time, program and process.
void writeToStandardError(const std::string& text);

}  // namespace SystemLog

}  // namespace QRVPlatform
