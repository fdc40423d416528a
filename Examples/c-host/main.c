// SPDX-License-Identifier: MIT
// Reads a default: the smallest host in C.
#include <stdio.h>

#include "QRVSettings/QRVSettingsC.h"

int main(void) {
    int64_t width = 0;
    qrv_value* value = NULL;
    if (qrv_store_load_defaults() != QRV_OK ||  // before the first read
        qrv_settings_object("CPU.Menubar.Mode.HistoryGraph.Width", &value) != QRV_OK ||
        qrv_value_get_integer(value, &width) != QRV_OK)
        fprintf(stderr, "%s\n", qrv_last_error());
    printf("width: %d\n", (int)width);
    qrv_value_release(value);
    return 0;
}
