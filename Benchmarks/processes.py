# SPDX-License-Identifier: MIT
"""Processes that run during a measurement: a message bus, and two processes of which one notices the other."""

import os
import select
import subprocess
import time

LOST_IN_A_ROW = 5


class Bus:
    """A private message bus, which starts the service that writes below one folder."""

    def __init__(self, environment):
        self.process = subprocess.Popen(
            ["dbus-daemon", "--session", "--nofork", "--print-address"],
            env=environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.address = self.process.stdout.readline().strip()

    def close(self):
        self.process.terminate()
        self.process.wait()


class Pair:
    """Two processes: one changes a setting, the other one is notified."""

    def __init__(self, program, folder, environment):
        self.lost = self.lost_in_a_row = 0
        self.listener = self.start([program, "listen", folder], environment)
        self.processor_time_before = 0
        self.writer = self.start([program, "write", folder], environment)

    @staticmethod
    def start(command, environment):
        process = subprocess.Popen(list(map(str, command)), env=environment, stdin=subprocess.PIPE,
                                   stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        if process.stdout.readline() != b"ready\n":
            raise SystemExit(f"{command[0]} {command[1]} did not start")
        return process

    def is_out(self):
        return self.lost_in_a_row >= LOST_IN_A_ROW

    def processor_time(self):
        """Nanoseconds that the listener has used since the last call."""
        # The system's clock of the processor time of another process, as clock_getcpuclockid gives it.
        now = time.clock_gettime_ns(~self.listener.pid << 3 | 2)
        used, self.processor_time_before = now - self.processor_time_before, now
        return used

    def change(self):
        """Nanoseconds until the notification, or None if it took seconds."""
        while select.select([self.listener.stdout], [], [], 0)[0]:
            os.read(self.listener.stdout.fileno(), 4096)
        self.writer.stdin.write(b"\n")
        self.writer.stdin.flush()
        start = int(self.writer.stdout.readline())
        if select.select([self.listener.stdout], [], [], 3)[0]:
            self.lost_in_a_row = 0
            return int(os.read(self.listener.stdout.fileno(), 4096).split()[0]) - start
        self.lost += 1
        self.lost_in_a_row += 1
        return None

    def close(self):
        self.writer.stdin.close()
        self.writer.wait()
        self.listener.terminate()
        self.listener.wait()
