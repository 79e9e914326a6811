#!/usr/bin/env python3
"""Measures both engines of a fleet at some sizes and writes the figures in docs/fleet.md, with a plot.
Usage: fleet_figures.py BUILD_DIR [ROWS...], by default a million and ten million. Reports are an hour
apart, for a week; ten million rows need 40 GB on the disk below TMPDIR."""
import datetime
import json
import os
import resource
import shutil
import signal
import statistics
import subprocess
import sys
import tempfile
import time

from fleet_servers import SOURCES, two_shards
from figures import FOLDER, plot, processor, time_text

BUILD = os.path.abspath(sys.argv[1])
SIZES = [int(word) for word in sys.argv[2:]] or [10**6, 10**7]
ZOPCTL = os.path.join(BUILD, "zopctl")
DAYS = 7
REPEATS = 3
ENGINES = ("SQLite", "ClickHouse, two shards on this machine")


def run(*words):
    """What a program prints as JSON, and its time and CPU time, s."""
    before, start = resource.getrusage(resource.RUSAGE_CHILDREN), time.monotonic()
    done = subprocess.run(words, stdout=subprocess.PIPE, check=True)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    cpu = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
    return json.loads(done.stdout or "null"), time.monotonic() - start, cpu


def make_log(folder, rows):
    log = os.path.join(folder, "fleet.log")
    with open(log, "wb") as out:
        subprocess.run([os.path.join(BUILD, "zop-fleet-sim"), "--devices", str(max(100, rows // (24 * DAYS))),
                        "--days", str(DAYS), "--until", str(int(time.time()) // 3600 * 3600)], stdout=out, check=True)
    os.sync()  # or the load would wait for the log's writing
    return log


def bytes_on_servers(shards):
    sql = "SELECT sum(bytes) FROM system.parts WHERE active AND table = 'report_shard'"
    return sum(int(shard.query(sql)) for shard in shards)


def questions_of(database):
    names = list(run(ZOPCTL, "fleet", "ask", database, "--json")[0]["questions"])
    times = {}
    for name in names:
        words = [ZOPCTL, "fleet", "ask", database, name, "--host", "device-000001", "--json"]
        times[name] = statistics.median(run(*words)[1] for _ in range(REPEATS))
    return times


def measure(folder, database, log, size_of):
    counts, seconds, cpu = run(ZOPCTL, "fleet", "load", database, log, "--json",
                               *(["--state", os.path.join(folder, "state.db")] if "://" in database else []))
    rows = counts["load"]["added_rows"]
    print(f"{database}: {rows} rows in {seconds:.1f} s", flush=True)
    return {"rows": rows, "seconds": seconds, "cpu": cpu, "bytes": size_of() / rows, "times": questions_of(database)}


def measure_size(rows):
    folder = tempfile.mkdtemp(prefix="zop-figures-")
    shards = []
    try:
        log = make_log(folder, rows)
        name = os.path.join(folder, "fleet.db")
        small = measure(folder, name, log, lambda: os.path.getsize(name))
        shards = two_shards(folder)
        large = measure(folder, f"clickhouse://127.0.0.1:{shards[0].port}/default", log,
                        lambda: bytes_on_servers(shards))
        return {"log": os.path.getsize(log), "engines": [small, large]}
    finally:
        for shard in shards:
            shard.stop(signal.SIGKILL)
        shutil.rmtree(folder, ignore_errors=True)


def table(measured):
    columns = [(size["engines"][i], f"{ENGINES[i]}, {size['engines'][i]['rows']:,} rows")
               for i in range(2) for size in measured]
    lines = ["| | " + " | ".join(title for _, title in columns) + " |", "|---" * (len(columns) + 1) + "|"]

    def line(what, text):
        lines.append(f"| {what} | " + " | ".join(text(engine) for engine, _ in columns) + " |")

    line("loaded in", lambda engine: f"{engine['seconds']:.0f} s")
    line("rows a second", lambda engine: f"{engine['rows'] / engine['seconds']:,.0f}")
    line("zopctl's CPU time a row", lambda engine: time_text(1e9 * engine["cpu"] / engine["rows"]))
    line("bytes a row", lambda engine: f"{engine['bytes']:.0f}")
    for name in columns[0][0]["times"]:
        line(f"`{name}`", lambda engine, name=name: time_text(1e9 * engine["times"][name]))
    return "\n".join(lines)


def million_devices(measured):
    """What follows for a million devices that report each hour; rows of real devices are less alike."""
    small, large = measured[-1]["engines"]
    rows = 24 * 10**6
    row_bytes = 3 * large["bytes"]
    slowest = max(large["times"].values()) * rows / large["rows"]
    log_day = measured[-1]["log"] / large["rows"] * rows
    return f"""**A million devices**, on paper, with a report an hour: {rows / 1e6:.0f} million rows a day, {rows / 86400:.0f} a
second, which take zopctl {100 * rows / 86400 * large['cpu'] / large['rows']:.1f} % of a core, and {log_day / 1e9:.0f} GB of log a
day. Simulated reports are more alike than real ones; with three times the bytes a row, {row_bytes:.0f}, three
months are {90 * rows * row_bytes / 1e9:.0f} GB on the servers. The slowest question over a day takes {slowest:.0f} s on two cores as
here; shards share it. SQLite would grow by {rows * small['bytes'] / 1e9:.0f} GB a day: it is for fleets whose
weeks fit into some ten million rows."""


def write(measured):
    os.makedirs(FOLDER, exist_ok=True)
    times = {f"{ENGINES[i].partition(',')[0]}": [(size["engines"][i]["rows"], max(size["engines"][i]["times"].values()))
                                                for size in measured] for i in range(2)}
    plot("fleet", "The slowest question", "rows", "s", times, "set key top left\nset xrange [0:*]")
    text = f"""Measured by `make fleet-figures` on {datetime.date.today()}: {processor()}, {os.cpu_count()} cores. A simulated fleet,
{DAYS} days, a report an hour, a line of {measured[-1]['log'] / measured[-1]['engines'][0]['rows'] / 1e3:.2f} kB. Questions look at the whole week; medians of {REPEATS}.

{table(measured)}

![time of the slowest question by rows](figures/fleet.svg)

{million_devices(measured)}
"""
    name = os.path.join(SOURCES, "docs", "fleet.md")
    with open(name, encoding="utf-8") as file:
        page = file.read()
    head, _, _ = page.partition("## Figures\n")
    with open(name, "w", encoding="utf-8") as file:
        file.write(head + "## Figures\n\n" + text)
    print("figures: docs/fleet.md")


write([measure_size(rows) for rows in SIZES])
