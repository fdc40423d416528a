// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <system_error>

#include "Platform/Files/NSFilePresenter.h"

namespace QRVPlatform {

/// The presenters of this process, and the one thread that watches for all of them.
namespace PresenterRegistry {

/// As NSFileCoordinator promises it.
void add(NSFilePresenter& presenter);
void remove(NSFilePresenter& presenter);

/// Has the file at `newFile` put in place of the presented one, on behalf of the performer, which
/// is not notified of it. A performer that is not among the presenters, or none: just does it.
std::error_code replaceFor(const NSFilePresenter* performer, const std::string& newFile,
                           const std::function<std::error_code()>& putInPlace);

}  // namespace PresenterRegistry

}  // namespace QRVPlatform
