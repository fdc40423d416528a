// SPDX-License-Identifier: MIT
// The observer of the settings file.
//
// A save calls it on the store's queue, after the writers' lock is released and before the save
// counts as ended. So whoever has waited for the saves knows that the observer has all of them, and
// of two saves of one process the observer gets the first one first. Between processes there is no
// order but that of the files: what one save has left, the next one replaces. Each save tells both,
// and what they held, as it was under the lock.
//
// A merging save knows all this anyway. A save of a whole tree keeps what it wrote for the next
// one, and reads the old file when that is not its own.

#include "QRVSettings/QRVSettings+FileChange.h"

#include <memory>
#include <optional>
#include <utility>

#include "QRVSettings/QRVSettings+HostThread.h"
#include "QRVSettings/QRVSettings+State.h"
#include "QRVSettings/QRVSettings.h"

namespace QRVInside {

bool isFileChangeObserved() {
    return StoreInside::state().isFileChangeObserved;
}

void noteFileChange(const QRVFileChange& change) {
    const auto handler = StoreInside::state().fileChangeHandler.load();
    if (handler) (*handler)(change);
}

void noteReload(const FileReading& reading) {
    if (!isFileChangeObserved() || reading.failed) return;
    if (reading.root.isNull() && !reading.identity.isMissing()) return;  // Damaged.
    QRVFileChange change;
    change.by = QRVFileChange::By::Others;
    change.after = reading.root;
    change.fileAfter = reading.identity;
    noteFileChange(change);
}

std::string originOfWrites() {
    const StoreInside::State& state = StoreInside::state();
    if (!state.isFileChangeObserved) return {};
    return state.changeOrigin ? *state.changeOrigin : std::string(state.ownOrigin);
}

OriginScope::OriginScope(std::string_view origin)
    : outer_(std::exchange(StoreInside::state().ownOrigin, origin)) {}

OriginScope::~OriginScope() {
    StoreInside::state().ownOrigin = outer_;
}

}  // namespace QRVInside

const std::optional<std::string>& QRVSettings::changeOrigin() const {
    return state_->changeOrigin;
}
void QRVSettings::setChangeOrigin(std::optional<std::string> changeOrigin) {
    QRVInside::requireHostThread();
    state_->changeOrigin = std::move(changeOrigin);
}

void QRVSettings::setFileChangeHandler(QRVFileChangeHandler handler) {
    auto shared =
        handler ? std::make_shared<const QRVFileChangeHandler>(std::move(handler)) : nullptr;
    state_->isFileChangeObserved = shared != nullptr;
    state_->fileChangeHandler.store(std::move(shared));
}

QRVFileChangeHandler QRVSettings::fileChangeHandler() const {
    const auto handler = state_->fileChangeHandler.load();
    return handler ? *handler : nullptr;
}
