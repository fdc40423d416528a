// SPDX-License-Identifier: MIT
#include "Reporting/Notices.h"

#include <utility>

namespace Tool {
namespace {

NoticeHandler& noticeHandler() {
    static auto& handler = *new NoticeHandler;
    return handler;
}

WaitHandler& waitHandler() {
    static auto& handler = *new WaitHandler;
    return handler;
}

}  // namespace

void setNoticeHandler(NoticeHandler handler) {
    noticeHandler() = std::move(handler);
}

void notice(const std::string& text) {
    if (noticeHandler()) noticeHandler()(text);
}

void setWaitHandler(WaitHandler handler) {
    waitHandler() = std::move(handler);
}

void waitFor(const std::function<std::string()>& description, const std::function<void()>& work) {
    if (waitHandler())
        waitHandler()(description, work);
    else
        work();
}

}  // namespace Tool
