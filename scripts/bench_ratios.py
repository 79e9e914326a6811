#!/usr/bin/env python3
"""Shows benchmark results as ratios to their floors, and fails on an allocation.

Takes the median of the repetitions. A ratio is time over the floor's time."""
import json
import statistics
import sys

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6}

FLOORS = [
    # name, floor
    ("encode/3", "crc_floor/3"),
    ("encode/133", "crc_floor/133"),
    ("encode/350", "crc_floor/350"),
    ("decode/3", "crc_floor/3"),
    ("decode/133", "crc_floor/133"),
    ("decode/350", "crc_floor/350"),
    ("get_rssi", "raw_ping_pong"),
    ("download", "download_floor"),
    ("dump", "dump_floor"),
    ("log_string", "snprintf_per_item"),
    ("syslog_report", "snprintf_per_item"),
]


def medians(results):
    times, allocations = {}, {}
    for run in results["benchmarks"]:
        if run["run_type"] != "iteration":
            continue
        name = run["run_name"].removesuffix("/real_time").removesuffix("/iterations:1")
        times.setdefault(name, []).append(run["real_time"] * NANOSECONDS[run["time_unit"]])
        allocations[name] = allocations.get(name, 0) + run.get("allocations", 0)
    return {name: statistics.median(values) for name, values in times.items()}, allocations


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        times, allocations = medians(json.load(file))
    for name, floor in FLOORS:
        ratio = times[name] / times[floor]
        print(f"{name:14} {times[name]:12.1f} ns   {floor:18} {times[floor]:12.1f} ns   x {ratio:.2f}")
    allocating = [name for name, count in allocations.items() if count > 0]
    if allocating:
        sys.exit(f"bench: these allocate: {', '.join(allocating)}")


main()
