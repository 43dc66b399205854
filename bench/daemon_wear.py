#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Bytes that a recording pwrmgtd writes to the disk of the persistent tables in a day, by the kernel's account
(write_bytes of /proc/PID/io), for several --persist-every.

The day before is replayed first, so that every slot replaces one and every trim has something to trim. The daemon then
records a few hours under a clock that runs fast, and after each slot everything is written out: in real time there are
30 seconds between two slots, and a page that is changed in the next one is written once more.

    bench/daemon_wear.py build/release/tools/pwrmgtd/pwrmgtd [--slots 240] [--disk DIRECTORY]"""
import argparse
import glob
import os
import re
import signal
import subprocess
import tempfile
from pathlib import Path

START = 1748995210  # 2025-06-04 00:00:10
SPEED = 120
SLOTS_A_DAY = 2880
TRACE = Path(__file__).resolve().parent.parent / "data" / "server_4socket_24h_60s.csv"


def environment(state, runtime, clock):
    faketime = glob.glob("/usr/lib/*/faketime/libfaketime.so.1")
    if not faketime:
        raise SystemExit("libfaketime is missing: apt-get install libfaketime")
    return os.environ | {"VEKDB_STATE_DIR": state, "VEKDB_RUNTIME_DIR": runtime, "PWRMGTD_CONFIG": os.devnull, "TZ": "UTC",
                         "LD_PRELOAD": faketime[0], "FAKETIME": clock, "FAKETIME_DONT_FAKE_MONOTONIC": "1",
                         "NO_FAKE_STAT": "1"}


def written(process):
    account = Path(f"/proc/{process.pid}/io").read_text(encoding="ascii")
    return int(re.search(r"^write_bytes: (\d+)$", account, re.MULTILINE)[1])


def measure(daemon, slots, batch, disk):
    """Bytes per slot."""
    with tempfile.TemporaryDirectory(prefix="daemon-wear-", dir=disk) as state, \
            tempfile.TemporaryDirectory(prefix="daemon-wear-", dir="/dev/shm") as runtime:
        subprocess.run([daemon, "--replay", str(TRACE), "--until", str(START)], check=True, capture_output=True,
                       env=environment(state, runtime, "2025-06-04 00:00:10"))
        process = subprocess.Popen([daemon, "--source", "trace", "--trace", str(TRACE), "--verbose", "--persist-every",
                                    str(batch)], env=environment(state, runtime, f"@2025-06-04 00:00:10 x{SPEED}"),
                                   stderr=subprocess.PIPE, text=True)
        try:
            seen, before = 0, None
            for line in process.stderr:
                if "recorded up to" not in line:
                    continue
                subprocess.run(["sync", "-f", state], check=True)
                seen += 1
                if before is None and seen >= batch:  # from one save on
                    before, seen = written(process), 0
                if before is not None and seen >= slots:
                    return (written(process) - before) / seen
            raise SystemExit("the daemon ended early")
        finally:
            process.send_signal(signal.SIGTERM)
            process.communicate()


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("daemon")
    parser.add_argument("--slots", type=int, default=240, help="slots to measure over, 240 by default")
    parser.add_argument("--disk", default=".", help="a directory on a disk, this one by default")
    parser.add_argument("--batches", type=int, nargs="+", default=[1, 10, 60, 240], help="values of --persist-every")
    arguments = parser.parse_args()
    print(f"{'--persist-every':>15} {'bytes a slot':>13} {'MiB a day':>10}")
    for batch in arguments.batches:
        bytes_a_slot = measure(arguments.daemon, arguments.slots, batch, arguments.disk)
        if bytes_a_slot == 0:
            raise SystemExit(f"{arguments.disk} accounts no writes; --disk names a directory on a disk")
        print(f"{batch:>15} {bytes_a_slot:>13.0f} {bytes_a_slot * SLOTS_A_DAY / 2**20:>10.1f}", flush=True)


if __name__ == "__main__":
    main()
