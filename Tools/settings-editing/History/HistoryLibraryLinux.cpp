// SPDX-License-Identifier: MIT
#include <dlfcn.h>

#include <atomic>

#include "History/HistoryLibrary.h"
#include "Reporting/Failure.h"

namespace Tool {
namespace {

std::atomic<bool> isLoaded = false;

const QRVHistoryTable* load() {
    void* const library = dlopen(QRV_HISTORY_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    void* const functions = library == nullptr ? nullptr : dlsym(library, "QRVHistoryFunctions");
    if (functions == nullptr)
        throw Failure(Fault::NotWritten,
                      std::string("the library of the history cannot be loaded: ") + dlerror());
    isLoaded = true;
    return reinterpret_cast<decltype(&QRVHistoryFunctions)>(functions)();
}

}  // namespace

const QRVHistoryTable& history() {
    static const QRVHistoryTable* const table = load();
    return *table;
}

bool isHistoryLoaded() {
    return isLoaded;
}

}  // namespace Tool
