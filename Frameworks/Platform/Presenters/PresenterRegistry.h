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

/// Calls `putInPlace`, which puts the file at `newFile` in place of the presented one. The
/// performer is not notified of that; it may be null or no registered presenter.
std::error_code replaceFor(const NSFilePresenter* performer, const std::string& newFile,
                           const std::function<std::error_code()>& putInPlace);

}  // namespace PresenterRegistry

}  // namespace QRVPlatform
