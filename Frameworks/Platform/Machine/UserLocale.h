// SPDX-License-Identifier: MIT
#pragma once

// How the user writes times, according to the environment. What the program has set by setlocale()
// does not matter: a host in any locale gets the user's.

#include <string>

namespace QRVPlatform {

/// The locale of times: the first of LC_ALL, LC_TIME and LANG that is set and not empty, else `C`.
/// Reads the environment at each call; not while another thread changes it.
std::string userTimeLocale();

/// The pattern of the short time style, in the pattern language of Unicode (`HH:mm`, `h:mm a`). A
/// locale is named as in the environment (`de_DE.UTF-8`, `sr_RS@latin`, `C`). ASCII: other
/// characters are `?`.
///
/// The patterns of the locales that ICU or the C library has are compiled in. For any other locale
/// this loads ICU, which may find a related one (`de` for `de_XX`), or the pattern of no language.
/// Where ICU cannot be loaded, an unknown locale has the pattern of `C`.
std::string shortTimePattern(const std::string& locale);

}  // namespace QRVPlatform
