#!/usr/bin/env python3
"""Writes docs/figures.md and its plots from the benchmark results.

Usage: figures.py RESULTS.json... Plots are SVG, by gnuplot."""
import datetime
import math
import os
import platform
import statistics
import subprocess
import sys

from bench_ratios import FLOORS, read
from count import read as read_counts

FOLDER = "docs/figures"
SIZES = [3, 16, 48, 133, 240, 350]
MEGABYTES = [20, 100]
# What was measured at several sizes: its name in the plot, the sizes, and the bytes of one.
SCALES = {
    "encode": ("frame encoded", SIZES, 1),
    "decode": ("frame decoded", SIZES, 1),
    "dump": ("dump", [1, 4, 16], 1 << 20),
    "download": ("download", [1, 4, 16], 1 << 20),
    "parse_log": ("parse-log", [4, 20, 100], 1e6),
}

# name: what was measured, and its floor
WORDS = {
    "encode": ("frame of {} bytes encoded", "plain CRC loop over them"),
    "decode": ("frame of {} bytes decoded", "copy of it, plain CRC loop"),
    "get_rssi": ("one `zop_get_rssi`", "raw write and read of the same bytes"),
    "vurn_open_close": ("`vurn_open` and `vurn_close`", "their exchanges, raw"),
    "bars": ("one `vurn_get_bars`", "its exchanges, raw"),
    "download": ("download of {} MiB", "its frames and pauses, raw"),
    "dump": ("dump of {} MiB", "its frames, raw, a plain CRC loop over each answer, and a copy to a file"),
    "log_string": ("log string, full lists", "a snprintf for each item"),
    "syslog_report": ("report to syslog, full lists", "a snprintf for each item"),
    "zopctl_help": ("`zopctl --help`", "`true`, a program that does nothing"),
    "parse_log": ("`zopctl parse-log`, {} MB", ""),
}
ROADS = {
    "encode": "frame of {} bytes encoded",
    "decode": "frame of {} bytes decoded",
    "query": "one query (`zop_get_rssi`)",
    "listener_tick": "one tick of the event listener, mean of the three between two screens",
    "bars": "one `vurn_get_bars`",
    "log_string": "log string, full lists",
    "syslog_report": "report to syslog, full lists",
    "stream_write": "one write of a download, 2048 bytes",
    "memory_read": "one read of a dump, 1024 bytes",
}
FLOOR_WORDS = {"count_lines": "`wc -l`", "grep": "`grep -c`"}

# Limits: the largest ratio, or the longest time in ns.
RATIO_AT_MOST = {"encode/133": 0.6, "decode/133": 0.6, "encode/240": 0.6, "decode/240": 0.6,
                 "encode/350": 0.6, "decode/350": 0.6, "get_rssi": 1.05, "download/16": 1.05,
                 "dump/16": 1.05}
TIME_AT_MOST = {"log_string": 60e3, "parse_log/100": 1e9}


def time_text(ns):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if ns >= 0.9995 * size:
            return f"{ns / size:.3g} {unit}"
    return f"{ns:.3g} ns"


def reach(name, time, ratio):
    if name in RATIO_AT_MOST:
        good = ratio <= RATIO_AT_MOST[name]
        return f"× {RATIO_AT_MOST[name]} at most: {'met' if good else '**missed**'}"
    if name in TIME_AT_MOST:
        good = time <= TIME_AT_MOST[name]
        return f"{time_text(TIME_AT_MOST[name])} at most: {'met' if good else '**missed**'}"
    return ""


def row(name, floor, times):
    base, _, size = name.partition("/")
    what, floor_text = WORDS[base]
    floor_text = floor_text or FLOOR_WORDS[floor.partition("/")[0]]
    ratio = times[name] / times[floor]
    return (f"| {what.format(size)} | {time_text(times[name])} | {floor_text} "
            f"| {time_text(times[floor])} | × {ratio:.2f} | {reach(name, times[name], ratio)} |")


def counted_row(road, counts):
    name, _, size = road.rpartition("_")
    instructions, accesses = counts
    per_byte = ""
    if size.isdigit():
        road, per_byte = name, f"{instructions / int(size):.1f}"
    return f"| {ROADS[road].format(size)} | {instructions:,} | {accesses:,} | {per_byte} |"


def plot(name, title, xlabel, ylabel, series, extra=""):
    """series: {label: [(x, y)]}"""
    data = "".join(
        f"$d{i} << END\n" + "".join(f"{x} {y}\n" for x, y in points) + "END\n"
        for i, points in enumerate(series.values()))
    lines = ", ".join(f"$d{i} with linespoints lw 2 pt 7 ps 0.5 title '{label}'"
                      for i, label in enumerate(series))
    script = (f"set terminal svg size 640,360 font 'sans,12' background 'white'\n"
              f"set output '{FOLDER}/{name}.svg'\nset title '{title}'\nset xlabel '{xlabel}'\n"
              f"set ylabel '{ylabel}'\nset yrange [0:*]\nset grid lc '#dddddd'\n"
              f"set key top right\n{extra}\n{data}plot {lines}\n")
    subprocess.run(["gnuplot"], input=script, text=True, check=True)


def plots(times):
    per_byte = {label: [(size, times[f"{name}/{size}"] / size) for size in SIZES]
                for name, label in (("encode", "encode"), ("decode", "decode"),
                                    ("crc_floor", "plain CRC loop"), ("memcpy_floor", "memcpy"))}
    plot("codec", "Frame codec: cost per byte", "payload, bytes", "ns per byte", per_byte, "set key center right")
    logs = {label: [(0, 0)] + [(mb, times[f"{name}/{mb}"] / 1e6) for mb in MEGABYTES]
            for name, label in (("parse_log", "zopctl parse-log"), ("count_lines", "wc -l"),
                                ("grep", "grep -c"))}
    plot("parse_log", "Log of many devices", "log, MB", "ms", logs, "set key top left")
    ratios = [(name, times[name] / times[floor]) for name, floor in FLOORS
              if not name.startswith(("parse_log", "zopctl"))]
    labels = ", ".join(f"'{name}' {i}".replace("_", " ") for i, (name, _) in enumerate(ratios))
    data = "".join(f"{i} {ratio}\n" for i, (_, ratio) in enumerate(ratios))
    script = (f"set terminal svg size 640,400 font 'sans,12' background 'white'\n"
              f"set output '{FOLDER}/ratios.svg'\nset title 'Time as a multiple of the floor'\n"
              f"set boxwidth 0.6\nset style fill solid 0.7\nset grid y lc '#dddddd'\n"
              f"set yrange [0:*]\nset xtics ({labels}) rotate by -40\nset rmargin 10\nset offsets 0, 0, 0.2, 0\nunset key\n"
              f"set arrow 1 from graph 0, first 1 to graph 1, first 1 nohead lc 'red'\n"
              f"$d << END\n{data}END\nplot $d with boxes lc '#2b6cb0'\n")
    subprocess.run(["gnuplot"], input=script, text=True, check=True)


def exponent(points):
    """Of the size, in the time: 1 is in proportion. Over the upper half of the sizes, where what
    does not depend on the size counts least."""
    points = [(math.log(size), math.log(time)) for size, time in points[len(points) // 2 - 1:]]
    x, y = (statistics.mean(values) for values in zip(*points))
    return (sum((a - x) * (b - y) for a, b in points) / sum((a - x) ** 2 for a, _ in points))


def scale_plot(times):
    series = {}
    for name, (label, sizes, unit) in SCALES.items():
        points = [(size * unit, times[f"{name}/{size}"] / 1e9) for size in sizes]
        series[f"{label}: size^{{{exponent(points):.2f}}}"] = points
    plot("scale", "Time against size", "bytes", "seconds", series,
         "set logscale xy\nset yrange [*:*]\nset format '10^{%L}'\nset xrange [1:1e9]\nset key top left")


def processor():
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        for line in file:
            if line.startswith("model name"):
                return line.partition(":")[2].strip()
    return platform.machine()


def page(times, allocations, memory):
    table = "\n".join(row(name, floor, times) for name, floor in FLOORS)
    counted = sum(1 for name in allocations if name.partition("/")[0] in
                  ("encode", "decode", "get_rssi", "log_string", "syslog_report"))
    allocated = sum(allocations.values())
    roads = "\n".join(counted_row(road, counts)
                      for road, (counts, _) in read_counts("bench/counts.txt").items())
    peaks = ", ".join(f"{name.partition('/')[2]} MB: {kb / 1000:.1f} MB"
                      for name, kb in memory.items() if name.startswith("parse_log/"))
    sparse = {jobs: f"{200e6 / times[f'parse_log_sparse/jobs:{jobs}']:.1f}" for jobs in (1, 2)}
    return f"""# Figures

Made by `make figures` on {datetime.date.today()}: {processor()}, {os.cpu_count()} cores,
{platform.system()} {platform.release()}. Medians of five runs. Each figure has a floor measured in
the same run. The ratio is what counts: the times depend on the machine.

| what | time | floor | its time | ratio | limit |
| --- | --- | --- | --- | --- | --- |
{table}

![times as multiples of the floors](figures/ratios.svg)

`vurn_open` also waits 0.1 ms for the line to settle, and searches the running processes for the age of
the PPP daemon. `zopctl --sim status` takes {time_text(times['zopctl_status'])} from start to end,
including the simulated modem that it starts.

Heap allocations on the measured paths of the module ({counted} benchmarks count them): {allocated:.0f}.
In a short frame the fixed part, flags and check bytes, dominates; from about a hundred bytes on the
codec takes a third of the time of a CRC loop that goes byte by byte:

![cost per byte by payload size](figures/codec.svg)

## On the device's processor

Instructions and memory accesses of one run on 32-bit ARM, the C library's included; system calls are
not (`make count`, `bench/counts.txt`). They are the same on every machine.

| what | instructions | memory accesses | instructions a byte |
| --- | --- | --- | --- |
{roads}

A module at rest never wakes up while field testing is off. While it is on, its listener wakes up twice a
second and for each answer; `make idle` counts a minute of each.

## Logs

`zopctl parse-log` reads {100e6 / (times['parse_log/100'] / 1e9) / 1e6:.0f} MB a second; its memory
does not grow with the log ({peaks}):

![time by log size](figures/parse_log.svg)

A device's whole log, in which one line in sixty is a report, is read with
{sparse[1]} GB a second by one thread and {sparse[2]} GB by two (`--jobs`).

The databases of a fleet, loading and questions, have their figures in [fleet.md](fleet.md#figures).

## Time against size

Nothing takes more than in proportion to its size. The exponents are those of the larger sizes:

![time by size](figures/scale.svg)
"""


def main():
    times, allocations, memory = read(sys.argv[1:])
    os.makedirs(FOLDER, exist_ok=True)
    plots(times)
    scale_plot(times)
    with open("docs/figures.md", "w", encoding="utf-8") as file:
        file.write(page(times, allocations, memory))
    print("figures: docs/figures.md")


if __name__ == "__main__":
    main()
