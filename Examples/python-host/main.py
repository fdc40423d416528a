# SPDX-License-Identifier: MIT
"""Sets a width, and prints every setting that another process changes, until SIGTERM or SIGINT."""

import asyncio
import signal

import qrvsettings

WIDTH = "CPU.Menubar.Mode.HistoryGraph.Width"


async def main() -> None:
    with qrvsettings.open() as settings:  # its end waits for the saves
        print("width:", settings.get(WIDTH, int))
        settings.set(WIDTH, 60)
        async with settings.watch() as changes:
            for number in (signal.SIGTERM, signal.SIGINT):
                asyncio.get_running_loop().add_signal_handler(number, changes.close)
            print("watching", settings.location, flush=True)
            async for change in changes:
                print(change.key_path, change.value, sep=": ", flush=True)


asyncio.run(main())
