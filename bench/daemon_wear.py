#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Bytes that a recording pwrmgtd writes to the disk of the persistent tables in a day, by the kernel's account
(write_bytes of /proc/PID/io), for several --persist-every.

The day before is replayed first, so that every slot replaces one and every trim has something to trim. The daemon then
records slot by slot under a clock that is moved when everything of the last one has been written out: in real time there are
30 seconds between two slots, and a page that is changed in the next one is written once more.

    bench/daemon_wear.py build/release/tools/pwrmgtd/pwrmgtd [--slots 240] [--disk DIRECTORY]"""
import argparse
import glob
import os
import re
import signal
import subprocess
import tempfile
from datetime import datetime, timezone
from pathlib import Path

START = 1748995210  # 2025-06-04 00:00:10
SLOT_S = 30
SLOTS_A_DAY = 2880
TRACE = Path(__file__).resolve().parent.parent / "data" / "server_4socket_24h_60s.csv"


class Clock:
    """Stands still where it is put; a daemon that is woken notices."""

    def __init__(self, directory):
        self.file = Path(directory, "clock")
        self.now = START
        self.move(0)

    def move(self, seconds):
        self.now += seconds
        new = self.file.with_suffix(".new")
        new.write_text(f"{datetime.fromtimestamp(self.now, timezone.utc):%Y-%m-%d %H:%M:%S}\n", encoding="ascii")
        new.rename(self.file)


def environment(state, runtime, clock):
    faketime = glob.glob("/usr/lib/*/faketime/libfaketime.so.1")
    if not faketime:
        raise SystemExit("libfaketime is missing: apt-get install libfaketime")
    return os.environ | {"VEKDB_STATE_DIR": state, "VEKDB_RUNTIME_DIR": runtime, "PWRMGTD_CONFIG": os.devnull, "TZ": "UTC",
                         "LD_PRELOAD": faketime[0], "FAKETIME_TIMESTAMP_FILE": str(clock.file), "FAKETIME_NO_CACHE": "1",
                         "FAKETIME_DONT_FAKE_MONOTONIC": "1", "NO_FAKE_STAT": "1"}


def written(process):
    account = Path(f"/proc/{process.pid}/io").read_text(encoding="ascii")
    return int(re.search(r"^write_bytes: (\d+)$", account, re.MULTILINE)[1])


def wait_for(process, words):
    for line in process.stderr:
        if words in line:
            return
    raise SystemExit("the daemon ended early")


def record(process, clock, slots, batch, state):
    """So many slots, a save after each batch of them."""
    for slot in range(1, slots + 1):
        clock.move(SLOT_S)
        process.send_signal(signal.SIGHUP)  # wakes it
        wait_for(process, "recorded up to")
        if slot % batch == 0:
            wait_for(process, "saved up to")
        subprocess.run(["sync", "-f", state], check=True)


def measure(daemon, slots, batch, disk):
    """Bytes per slot, from one save to another."""
    with tempfile.TemporaryDirectory(prefix="daemon-wear-", dir=disk) as state, \
            tempfile.TemporaryDirectory(prefix="daemon-wear-", dir="/dev/shm") as runtime:
        clock = Clock(runtime)
        variables = environment(state, runtime, clock)
        subprocess.run([daemon, "--replay", str(TRACE), "--until", str(START)], check=True, capture_output=True, env=variables)
        process = subprocess.Popen([daemon, "--source", "trace", "--trace", str(TRACE), "--verbose", "--persist-every",
                                    str(batch)], env=variables, stderr=subprocess.PIPE, text=True)
        try:
            wait_for(process, "recording from")
            record(process, clock, batch, batch, state)
            before = written(process)
            whole = max(slots // batch, 1) * batch
            record(process, clock, whole, batch, state)
            return (written(process) - before) / whole
        finally:
            process.send_signal(signal.SIGTERM)
            process.communicate()


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("daemon")
    parser.add_argument("--slots", type=int, default=240, help="slots to measure over, 240 by default")
    parser.add_argument("--disk", default=".", help="a directory on a disk, this one by default")
    parser.add_argument("--batches", type=int, nargs="+", default=[1, 10, 20, 60], help="values of --persist-every")
    arguments = parser.parse_args()
    print(f"{'--persist-every':>15} {'bytes a slot':>13} {'MiB a day':>10}")
    for batch in arguments.batches:
        bytes_a_slot = measure(arguments.daemon, arguments.slots, batch, arguments.disk)
        if bytes_a_slot == 0:
            raise SystemExit(f"{arguments.disk} accounts no writes; --disk names a directory on a disk")
        print(f"{batch:>15} {bytes_a_slot:>13.0f} {bytes_a_slot * SLOTS_A_DAY / 2**20:>10.1f}", flush=True)


if __name__ == "__main__":
    main()
