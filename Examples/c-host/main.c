// SPDX-License-Identifier: MIT
// Reads a default: the smallest host in C.
#include <stdio.h>

#include "QRVSettings/QRVSettingsC.h"

int main(void) {
    int64_t width = 0;
    qrv_value* value = NULL;
    qrv_save_state saves = QRV_SAVE_STATE_PENDING;
    qrv_value* unsaved = NULL;
    qrv_value* reason = NULL;
    if (qrv_store_set_merges_saves(true) != QRV_OK ||  // no process loses what another has written
        qrv_store_set_uses_site_defaults(true) != QRV_OK ||
        qrv_store_load_defaults() != QRV_OK ||  // before the first read
        qrv_settings_object("CPU.Menubar.Mode.HistoryGraph.Width", &value) != QRV_OK ||
        qrv_value_get_integer(value, &width) != QRV_OK ||
        qrv_settings_wait_for_saves(5000, &saves, &unsaved, &reason) != QRV_OK)
        fprintf(stderr, "%s\n", qrv_last_error());
    printf("width: %d\n", (int)width);
    qrv_value_release(value);
    qrv_value_release(unsaved);
    qrv_value_release(reason);
    return saves == QRV_SAVE_STATE_SAVED ? 0 : 1;
}
