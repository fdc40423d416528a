// SPDX-License-Identifier: MIT
#pragma once

// The user's way of writing times, as the environment names it. What the program has chosen with
// setlocale() is no concern here: a host of any locale finds the user's.

#include <string>

namespace QRVPlatform {

/// The locale of times: the first of LC_ALL, LC_TIME and LANG that is set and not empty, else `C`.
/// Read afresh; not while another thread changes the environment.
std::string userTimeLocale();

/// The pattern of the short time style, in the pattern language of Unicode (`HH:mm`, `h:mm a`). A
/// locale is named as in the environment (`de_DE.UTF-8`, `sr_RS@latin`, `C`); one that is not known
/// has the pattern of no language. ASCII: other characters are `?`. Empty when there is none.
///
/// The first call loads ICU, which knows the patterns. Where that fails there are none in this
/// process, and the reason is logged once.
std::string shortTimePattern(const std::string& locale);

}  // namespace QRVPlatform
