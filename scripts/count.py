#!/usr/bin/env python3
"""Counts the hot roads and compares them with the record, or records them anew.

Fails on a rise of more than 2 %, on a road that is not recorded, and on a row without a reason.

Usage: count.py BUILD RECORD [REASON]"""
import subprocess
import sys

FEW, MANY = 102, 201  # multiples of the three ticks between two screens, with as many digits
# What the program would read from its environment is always the same.
ENVIRONMENT = {"TZ": "UTC0"}
RISE_AT_MOST = 0.02
SAME = 0.001  # a smaller change is not recorded
HEADER = """\
# Instructions and memory accesses of one run of each hot road on 32-bit ARM, and why they were
# recorded last. `make count REASON="..."` records them anew.
"""


def run(build, *words):
    counter = f"{build}/instruction_counter.so"
    command = ["qemu-arm", "-plugin", counter, f"{build}/hot_roads", *words]
    return subprocess.run(command, env=ENVIRONMENT, capture_output=True, text=True, check=True)


def total(build, road, runs):
    _, *counts = run(build, road, str(runs)).stderr.split()
    return [int(count) for count in counts]


def count(build, road):
    """Instructions and accesses of one run: what more runs add, divided by their number."""
    few, many = total(build, road, FEW), total(build, road, MANY)
    return [round((b - a) / (MANY - FEW)) for a, b in zip(few, many)]


def read(record):
    rows = {}
    with open(record, encoding="utf-8") as file:
        for line in file:
            if line.startswith("#"):
                continue
            road, instructions, accesses, *reason = line.split(maxsplit=3)
            rows[road] = [int(instructions), int(accesses)], "".join(reason).strip()
    return rows


def change(now, before):
    """The larger of the two changes; a rise counts before a fall."""
    return max(b / a - 1 for a, b in zip(before, now))


def write(record, counts, rows, reason):
    with open(record, "w", encoding="utf-8") as file:
        file.write(HEADER)
        for road, now in counts.items():
            before, old_reason = rows.get(road, (None, ""))
            if before is not None and all(abs(b / a - 1) < SAME for a, b in zip(before, now)):
                now, row_reason = before, old_reason
            else:
                row_reason = reason
            file.write(f"{road:13} {now[0]:9} {now[1]:9}  {row_reason}\n")


def problem(road, now, rows):
    if road not in rows:
        return "not recorded"
    before, reason = rows[road]
    if not reason:
        return "recorded without a reason"
    return f"{change(now, before):+.1%}, too much" if change(now, before) > RISE_AT_MOST else ""


def show(counts, rows):
    print(f"{'road':13} {'instructions':>12} {'accesses':>9} {'change':>7}")
    for road, now in counts.items():
        since = f"{change(now, rows[road][0]):+.1%}" if road in rows else "new"
        print(f"{road:13} {now[0]:12} {now[1]:9} {since:>7}")


def main():
    build, record, reason = (sys.argv[1:] + [""])[:3]
    counts = {road: count(build, road) for road in run(build).stdout.split()}
    rows = read(record)
    show(counts, rows)
    if reason:
        return write(record, counts, rows, reason)
    problems = [f"count: {road}: {text}" for road, now in counts.items()
                if (text := problem(road, now, rows))]
    if problems:
        sys.exit("\n".join(problems) + '\ncount: if that is meant, make count REASON="why"')


if __name__ == "__main__":
    main()
