// SPDX-License-Identifier: MIT
#include <stdio.h>

#include "QRVSettings/QRVSettingsC.h"

int main(void) {
    qrv_value* width = NULL;
    qrv_value* stored = NULL;
    qrv_value* description = NULL;
    const char* text = "";
    size_t length = 0;
    if (qrv_store_load_defaults() != QRV_OK || qrv_value_create_integer(60, &width) != QRV_OK ||
        qrv_settings_set_object(width, "CPU.Menubar.Mode.HistoryGraph.Width") != QRV_OK ||
        qrv_store_wait_for_saves() != QRV_OK ||
        qrv_settings_stored_object("CPU", &stored) != QRV_OK ||
        qrv_value_description(stored, &description) != QRV_OK ||
        qrv_value_get_string(description, &text, &length) != QRV_OK)
        fprintf(stderr, "%s\n", qrv_last_error());
    printf("%.*s\n", (int)length, text);
    qrv_value_release(width);
    qrv_value_release(stored);
    qrv_value_release(description);
    return 0;
}
