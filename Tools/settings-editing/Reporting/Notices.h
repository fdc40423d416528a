// SPDX-License-Identifier: MIT
#pragma once

/// What a program that edits settings may show its user besides results and failures. The handlers
/// belong to the process, as the store does. Set them before the first call of this library; they
/// are called on the thread of the call that causes them.

#include <functional>
#include <string>

namespace Tool {

/// One line about something that does not make a call fail, such as a setting that is reset.
using NoticeHandler = std::function<void(const std::string& text)>;
/// Null, as at the start, drops notices.
void setNoticeHandler(NoticeHandler handler);
void notice(const std::string& text);

/// Runs `work`, which may block for as long as another process likes. `description` says what it
/// waits for; it may be called on any thread while `work` runs.
using WaitHandler = std::function<void(const std::function<std::string()>& description,
                                       const std::function<void()>& work)>;
/// Null, as at the start, runs the work and says nothing.
void setWaitHandler(WaitHandler handler);
void waitFor(const std::function<std::string()>& description, const std::function<void()>& work);

}  // namespace Tool
