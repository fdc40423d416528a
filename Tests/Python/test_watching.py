# SPDX-License-Identifier: MIT
"""Changes by other processes, in asyncio and without it."""

import asyncio
import subprocess
import sys
import unittest

import other
import qrvsettings

DEADLINE = other.DEADLINE


async def in_another_process(statements):
    await asyncio.get_running_loop().run_in_executor(None, other.run, statements)


async def until(condition):
    """The loop runs meanwhile."""
    while not condition():
        await asyncio.sleep(0.001)


class Watching(unittest.IsolatedAsyncioTestCase):
    async def test_a_change_of_another_process_comes_with_its_value(self):
        settings = qrvsettings.open()
        async with settings.watch() as changes:
            await in_another_process("settings.set('UpdateFrequency', 7)")
            async for change in changes:
                if change.key_path == "UpdateFrequency":
                    break
        self.assertEqual(change, qrvsettings.Change("UpdateFrequency", 7))

    async def test_a_removal_comes_with_the_default(self):
        settings = qrvsettings.open()
        settings.set("UpdateFrequency", 7)
        settings.wait_for_saves(other.DEADLINE)
        default = settings.default("UpdateFrequency")
        async with settings.watch("UpdateFrequency") as changes:
            await in_another_process("settings.unset('UpdateFrequency')")
            change = await asyncio.wait_for(changes.__anext__(), DEADLINE)
        self.assertEqual(change.value, default)
        self.assertNotEqual(default, 7)

    async def test_only_what_is_below_the_prefix_comes(self):
        settings = qrvsettings.open()
        async with settings.watch("Test.A.") as changes:
            await in_another_process("settings.set('Test.B', 1)\nsettings.set('Test.A.C', 2)")
            change = await asyncio.wait_for(changes.__anext__(), DEADLINE)
        self.assertEqual(change, qrvsettings.Change("Test.A.C", 2))

    async def test_own_writes_do_not_come(self):
        settings = qrvsettings.open()
        async with settings.watch("Test.") as changes:
            settings.set("Test.Mine", 1)
            settings.wait_for_saves(other.DEADLINE)
            await in_another_process("settings.set('Test.Theirs', 2)")
            change = await asyncio.wait_for(changes.__anext__(), DEADLINE)
        self.assertEqual(change.key_path, "Test.Theirs")

    async def test_two_watches_see_the_same(self):
        settings = qrvsettings.open()
        async with settings.watch("Test.") as first, settings.watch("Test.") as second:
            await in_another_process("settings.set('Test.A', 1)")
            changes = await asyncio.wait_for(asyncio.gather(first.__anext__(), second.__anext__()), DEADLINE)
        self.assertEqual([change.key_path for change in changes], ["Test.A", "Test.A"])

    async def test_closing_ends_the_iteration_of_another_task(self):
        settings = qrvsettings.open()
        watch = settings.watch()

        async def iterate():
            return [change async for change in watch]

        task = asyncio.ensure_future(iterate())
        await asyncio.sleep(0)
        watch.close()
        await asyncio.wait_for(task, DEADLINE)
        await asyncio.wait_for(asyncio.ensure_future(iterate()), DEADLINE)

    async def test_a_cancelled_iteration_can_go_on(self):
        settings = qrvsettings.open()
        async with settings.watch("Test.") as changes:
            waiting = asyncio.ensure_future(changes.__anext__())
            await asyncio.sleep(0)
            waiting.cancel()
            with self.assertRaises(asyncio.CancelledError):
                await waiting
            await in_another_process("settings.set('Test.A', 1)")
            change = await asyncio.wait_for(changes.__anext__(), DEADLINE)
        self.assertEqual(change.key_path, "Test.A")

    async def test_a_handler_is_called_by_the_loop(self):
        settings = qrvsettings.open()
        received = []
        with settings.subscribe(received.extend):
            await in_another_process("settings.set('Test.A', 1)")
            await asyncio.wait_for(until(lambda: "Test.A" in received), DEADLINE)
        self.assertEqual(settings.get("Test.A"), 1)

    async def test_an_exception_of_a_handler_reaches_the_loop(self):
        settings = qrvsettings.open()
        contexts = []
        asyncio.get_running_loop().set_exception_handler(lambda _, context: contexts.append(context))
        with settings.subscribe(lambda key_paths: [][1]):
            await in_another_process("settings.set('Test.A', 1)")
            await asyncio.wait_for(until(lambda: contexts), DEADLINE)
        self.assertIsInstance(contexts[0]["exception"], IndexError)

    async def test_a_closed_handler_is_not_called(self):
        settings = qrvsettings.open()
        closed, received = [], []
        with settings.subscribe(received.extend):
            settings.subscribe(closed.extend).close()
            await in_another_process("settings.set('Test.A', 1)")
            await asyncio.wait_for(until(lambda: "Test.A" in received), DEADLINE)
        self.assertEqual(closed, [])

    async def test_the_active_profile_stays_active(self):
        settings = qrvsettings.open()
        settings.active_profile = "Travel"
        settings.watch().close()
        self.assertEqual(settings.active_profile, "Travel")


class TwoProcesses(unittest.TestCase):
    SCRIPT = """
import asyncio, sys, qrvsettings

async def main(me, you, count):
    with qrvsettings.open() as settings:
        async with settings.watch(f"Test.{you}") as changes:
            print("watching", flush=True)
            sys.stdin.readline()
            settings.set(f"Test.{me}", 1)
            async for change in changes:
                if change.value == count:
                    break
                if settings.get(f"Test.{me}", int) <= change.value:
                    settings.set(f"Test.{me}", change.value + 1)
            settings.set(f"Test.{me}", count)
        settings.wait_for_saves(60)
    print("done")

asyncio.run(main(sys.argv[1], sys.argv[2], 10))
"""

    def test_watch_each_other(self):
        processes = [subprocess.Popen([sys.executable, "-c", self.SCRIPT, me, you], text=True,
                                      stdin=subprocess.PIPE, stdout=subprocess.PIPE)
                     for me, you in (("A", "B"), ("B", "A"))]
        for process in processes:
            self.assertEqual(process.stdout.readline(), "watching\n")
        for process in processes:
            process.stdin.write("go\n")
            process.stdin.flush()
        for process in processes:
            output, _ = process.communicate(timeout=DEADLINE)
            self.assertEqual((output, process.returncode), ("done\n", 0))
        self.assertEqual(qrvsettings.open().get("Test"), {"A": 10, "B": 10})


class Loops(unittest.TestCase):
    def test_a_watch_needs_a_running_loop(self):
        settings = qrvsettings.open()
        with self.assertRaises(RuntimeError):
            settings.watch()

    def test_each_loop_can_watch(self):
        settings = qrvsettings.open()

        async def see(number):
            async with settings.watch("Test.") as changes:
                await in_another_process(f"settings.set('Test.A', {number})")
                return (await asyncio.wait_for(changes.__anext__(), DEADLINE)).value

        self.assertEqual([asyncio.run(see(number)) for number in (1, 2)], [1, 2])

    def test_a_loop_that_was_left_with_a_watch_disturbs_no_other(self):
        settings = qrvsettings.open()

        async def leave():
            settings.watch()

        async def see():
            async with settings.watch("Test.") as changes:
                await in_another_process("settings.set('Test.A', 1)")
                return (await asyncio.wait_for(changes.__anext__(), DEADLINE)).value

        asyncio.run(leave())
        self.assertEqual(asyncio.run(see()), 1)

    def test_without_a_loop_of_asyncio(self):
        settings = qrvsettings.open()
        received = []
        with settings.subscribe(received.extend):
            other.run("settings.set('Test.A', 1)")
            while "Test.A" not in received:
                self.assertTrue(settings.wait(DEADLINE))
                settings.drain()
        self.assertEqual(settings.get("Test.A"), 1)
        self.assertGreaterEqual(settings.fileno(), 0)

    def test_an_exception_of_a_handler_comes_out_of_drain(self):
        settings = qrvsettings.open()

        def fail(key_paths):
            raise KeyError(key_paths[0])

        with settings.subscribe(fail):
            other.run("settings.set('Test.A', 1)")
            with self.assertRaises(KeyError):
                while settings.wait(DEADLINE):
                    settings.drain()
        self.assertEqual(settings.get("Test.A"), 1)
