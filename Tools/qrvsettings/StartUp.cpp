// SPDX-License-Identifier: MIT
#include "StartUp.h"

#include "Failure.h"
#include "QRVSettings/QRVSettings.h"

namespace Tool {

void startUp() {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setInBatchSave(true);
    try {
        store.loadDefaults();
    } catch (const NSInvalidArgumentException& exception) {
        throw Failure(ExitCode::WrongValue,
                      std::string("the application cannot start with these settings: ") +
                          exception.what() + "; unset what is in its way");
    }
}

}  // namespace Tool
