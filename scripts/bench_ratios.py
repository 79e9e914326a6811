#!/usr/bin/env python3
"""Shows benchmark results as ratios to their floors, and fails on an allocation or on memory that
grows with a log.

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
    ("decode/3", "fresh_copy_and_crc/3"),
    ("decode/133", "fresh_copy_and_crc/133"),
    ("decode/350", "fresh_copy_and_crc/350"),
    ("get_rssi", "raw_ping_pong"),
    ("vurn_open_close", "open_floor"),
    ("bars", "bars_floor"),
    ("download/16", "download_floor/16"),
    ("dump/16", "dump_floor/16"),
    ("log_string", "snprintf_per_item"),
    ("syslog_report", "snprintf_per_item"),
    ("zopctl_help", "empty_program"),
    ("parse_log/20", "count_lines/20"),
    ("parse_log/100", "count_lines/100"),
    ("parse_log/100", "grep/100"),
]


# A log five times as long may take this much more memory.
GROWTH_KB = 2000


def medians(results):
    times, allocations, memory = {}, {}, {}
    for run in results["benchmarks"]:
        if run["run_type"] != "iteration":
            continue
        name = run["run_name"].removesuffix("/real_time").removesuffix("/iterations:1")
        times.setdefault(name, []).append(run["real_time"] * NANOSECONDS[run["time_unit"]])
        allocations[name] = allocations.get(name, 0) + run.get("allocations", 0)
        if "memory_kb" in run:
            memory[name] = max(memory.get(name, 0), run["memory_kb"])
    return {name: statistics.median(values) for name, values in times.items()}, allocations, memory


def read(names):
    """The medians over all result files."""
    together = {"benchmarks": []}
    for name in names:
        with open(name, encoding="utf-8") as file:
            together["benchmarks"] += json.load(file)["benchmarks"]
    return medians(together)


def main():
    times, allocations, memory = read(sys.argv[1:])
    for name, floor in FLOORS:
        ratio = times[name] / times[floor]
        print(f"{name:15} {times[name]:12.1f} ns   {floor:18} {times[floor]:12.1f} ns   x {ratio:.2f}")
    for name, kilobytes in memory.items():
        print(f"{name:15} {kilobytes:11.0f} kB peak")
    allocating = [name for name, count in allocations.items() if count > 0]
    if allocating:
        sys.exit(f"bench: heap allocations in {', '.join(allocating)}")
    if memory["parse_log/100"] > memory["parse_log/20"] + GROWTH_KB:
        sys.exit("bench: parse_log needs more memory for a longer log")


if __name__ == "__main__":
    main()
