# SPDX-License-Identifier: Apache-2.0
"""What the tables and the queries must hold after a measured trace, worked out from its file alone: readings, slots, rows,
and the entries that queries fold them into."""
import csv

HOLD_S = 90
NO_W, NO_PCT = 65535, 255
PERIODS = {"1h": (3600, 1), "6h": (21600, 6), "12h": (43200, 12), "24h": (86400, 24)}


def whole(cell):
    """Cells round half away from zero; none of the files' is negative."""
    return None if cell is None or cell == "" else int(float(cell) + 0.5)


def quantities(row):
    """One row of a file as {name: number or None}."""
    supplies = [n for n in range(1, 13) if f"psu{n}_ac_in_W" in row]
    probes = [n for n in range(1, 13) if f"probe{n}_active_power_W" in row]
    if supplies:
        out = [whole(row[f"psu{n}_dc_out_W"]) for n in supplies]
        into = [whole(row[f"psu{n}_ac_in_W"]) for n in supplies]
        ac = whole(row["sys_power_W"])
        dc = None if ac is None or None in out or None in into else sum(out)
    elif probes:
        metered = [whole(row[f"probe{n}_active_power_W"]) for n in probes]
        ac = dc = None if None in metered else sum(metered)
    else:
        ac = dc = whole(row["sys_power_W"])
    if dc is None:
        ac = None
    found = {"dc": dc, "ac": ac, "cpu": whole(row.get("cpu_power_W")), "mem": whole(row.get("mem_power_W"))}
    for n in range(1, 5):
        found[f"ps{n}ac"] = whole(row.get(f"psu{n}_ac_in_W", row.get(f"probe{n}_active_power_W")))
        found[f"ps{n}dc"] = whole(row.get(f"psu{n}_dc_out_W"))
    for name in ("sys", "cpu", "mem", "io"):
        found[f"{name}_pct"] = whole(row.get(f"{name}_util_pct"))
    return found


def read_file(path):
    """[(second, quantities or None where nothing answered)] in the file's order."""
    with open(path, newline="", encoding="utf-8") as file:
        return [(int(float(row["epoch_s"])), None if row.get("sdr_rows") == "0" else quantities(row))
                for row in csv.DictReader(file)]


def seconds_of_trace(readings):
    """{second: quantities} for every second that a row speaks for."""
    spoken = {}
    for place, (start, values) in enumerate(readings):
        following = readings[place + 1][0] if place + 1 < len(readings) else start + HOLD_S
        for second in range(start, min(following, start + HOLD_S)):
            if values is None:
                spoken.pop(second, None)
            else:
                spoken[second] = values
    return spoken


def expected_rows(path, until):
    """{stamp: (_id, the columns in table order)} of the replay of a file."""
    readings = read_file(path)
    spoken = seconds_of_trace(readings)
    last = until // 30 * 30 - 30
    shift = last - readings[-1][0] // 30 * 30
    first = max(readings[0][0] // 30 * 30 + shift, -(-(until - 86400) // 30) * 30)
    rows = {}
    for stamp in range(first, last + 30, 30):
        start = stamp - shift
        rows[stamp] = (stamp % 86400 // 30, *row_of(moments(spoken, range(start, start + 30))))
    return rows


def expected_extra_rows(path, until):
    """{stamp: (_id, AC and DC of supplies 5 to 12)} of the replay of a file with twelve supplies."""
    with open(path, newline="", encoding="utf-8") as file:
        readings = [(int(row["epoch_s"]), [whole(row[f"psu{n}_{side}"]) for n in range(5, 13)
                                           for side in ("ac_in_W", "dc_out_W")]) for row in csv.DictReader(file)]
    spoken = seconds_of_trace(readings)
    shift = until // 30 * 30 - 30 - readings[-1][0] // 30 * 30
    rows = {}
    for stamp in expected_rows(path, until):
        slot = moments(spoken, range(stamp - shift, stamp - shift + 30))
        columns = [[moment[at] for moment in slot] for at in range(16)]
        rows[stamp] = (stamp % 86400 // 30, *(sum(c) // len(c) if c else NO_W for c in columns))
    return rows


def moments(spoken, seconds):
    return [spoken[second] for second in seconds if second in spoken]


def row_of(moments_of_slot):
    """The columns of a slot in table order."""

    def three(name, missing):
        known = [moment[name] for moment in moments_of_slot if moment[name] is not None]
        return (sum(known) // len(known), max(known), min(known)) if known else (missing,) * 3

    columns = []
    for name in ("dc", "ac", "cpu", "mem"):
        columns += three(name, NO_W)
    for n in range(1, 5):
        columns += [three(f"ps{n}ac", NO_W)[0], three(f"ps{n}dc", NO_W)[0]]
    columns += three("sys_pct", NO_PCT)
    columns += [three(f"{name}_pct", NO_PCT)[0] for name in ("cpu", "mem", "io")]
    return columns


def fold(rows, now, period, fold_entry):
    """The 120 entries of a period."""
    period_s, per_entry = PERIODS[period]
    return fold_span(rows, (now - period_s) // 60 * 60 + period_s // 120, now, (120, per_entry), fold_entry)


def fold_window(rows, end, minutes, per_entry, fold_entry):
    """The entries of a window that the caller places."""
    return fold_span(rows, (end - 60 * minutes) // 30 * 30, end, (2 * minutes // per_entry, per_entry), fold_entry)


def fold_span(rows, oldest, newest, shape, fold_entry):
    """Rows of a span, walked back from the newest one in steps of 30 seconds; entries beyond the last row are left out."""
    count, per_entry = shape
    window = {stamp: values for stamp, values in rows.items() if oldest <= stamp <= newest}
    newest, end = max(window), min(window)
    entries = []
    for index in range(count):
        stamps = [newest - 30 * slot for slot in range(index * per_entry, (index + 1) * per_entry)]
        stamps = [stamp for stamp in stamps if stamp >= end]
        if not stamps:
            break
        slots = [window[stamp] for stamp in stamps if stamp in window]
        entries.append({"index": index, "timestamp_s": stamps[0], **fold_entry(slots)})
    return entries


def mean(values):
    return sum(values) // len(values) if values else None


def group(slots, at):
    return {"avg_w": mean([s[at] for s in slots]), "max_w": max((s[at + 1] for s in slots), default=None),
            "min_w": min((s[at + 2] for s in slots), default=None)}


def fold_system(slots):
    valid = [s for s in slots if NO_W not in s[1:4]]
    return {"dc": group(valid, 1), "ac": group(valid, 4)}


def fold_domain(at):
    return lambda slots: {"dc": group([s for s in slots if NO_W not in s[at:at + 3]], at)}


def fold_psu(at):
    def entry(slots):
        valid = [s for s in slots if NO_W not in s[at:at + 2]]
        # Sums are kept in 16 bits.
        ac, dc = (sum(s[at + i] for s in valid) % 65536 // len(valid) if valid else None for i in (0, 1))
        return {"ac": {"avg_w": ac}, "dc": {"avg_w": dc}}
    return entry


def fold_performance(slots):
    valid = [s for s in slots if NO_PCT not in s[21:27]]
    columns = list(zip(*(s[21:27] for s in valid))) or [()] * 6
    return {"system": {"avg_pct": mean(columns[0]), "max_pct": max(columns[1], default=None),
                       "min_pct": min(columns[2], default=None)},
            "cpu": {"avg_pct": mean(columns[3])}, "memory": {"avg_pct": mean(columns[4])},
            "io": {"avg_pct": mean(columns[5])}}
