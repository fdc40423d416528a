// SPDX-License-Identifier: MIT
#include <dlfcn.h>

#include "History/HistoryLibrary.h"
#include "Reporting/Failure.h"

namespace Tool {
namespace {

const QRVHistoryTable* loaded = nullptr;

const QRVHistoryTable* load() {
    void* const library = dlopen(QRV_HISTORY_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    void* const functions = library == nullptr ? nullptr : dlsym(library, "QRVHistoryFunctions");
    if (functions == nullptr)
        throw Failure(Fault::NotWritten,
                      std::string("the library of the history cannot be loaded: ") + dlerror());
    return reinterpret_cast<decltype(&QRVHistoryFunctions)>(functions)();
}

}  // namespace

const QRVHistoryTable& history() {
    if (loaded == nullptr) loaded = load();
    return *loaded;
}

bool isHistoryLoaded() {
    return loaded != nullptr;
}

}  // namespace Tool
