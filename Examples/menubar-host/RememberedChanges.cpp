// SPDX-License-Identifier: MIT
#include "RememberedChanges.h"

#include <iostream>

#if MENUBAR_HOST_HAS_HISTORY

#include "QRVHistory/QRVHistory.h"

namespace {

constexpr std::chrono::seconds timeout(5);

void print(const QRVHistorySave& save) {
    if (save.program.empty())
        std::cout << "an unknown program";
    else
        std::cout << save.program << '[' << save.process << "] (" << save.origin << ')';
    std::cout << " changed\n";
    for (const QRVHistoryChange& change : save.changes)
        std::cout << "  " << change.keyPath << ": " << change.before << " -> " << change.after
                  << '\n';
}

}  // namespace

void rememberChanges() {
    QRVHistoryStart();
}

void waitForRememberedChanges() {
    QRVHistoryWait(timeout);
}

void printRememberedChanges() {
    constexpr std::size_t few = 5;
    QRVHistoryWait(timeout);
    const QRVHistoryAnswer answer = QRVHistorySaves({.limit = few});
    if (!answer.failure.empty()) std::cerr << "no history: " << answer.failure << '\n';
    for (const QRVHistorySave& save : answer.saves) print(save);
}

#else

void rememberChanges() {}
void waitForRememberedChanges() {}
void printRememberedChanges() {
    std::cerr << "built without the library of the history\n";
}

#endif
