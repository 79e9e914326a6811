#!/usr/bin/env python3
"""A fleet on real servers: two shards of ClickHouse, rsyslog and the simulated fleet's log. In
between, a shard and the collector are killed and rsyslog is stopped. In the end there is a row for
each report, each trouble is found by its question, and all answers are those of an SQLite file.
Usage: fleet_demo.py BUILD_DIR [DEVICES [DAYS [SECONDS_BETWEEN_REPORTS]]]"""
import json
import os
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import urllib.error

from fleet_servers import collector, fail, free_port, two_shards, wait_for

BUILD = os.path.abspath(sys.argv[1])
DEVICES, DAYS, EVERY = (int(word) for word in sys.argv[2:] + ["1000", "2", "3600"][len(sys.argv) - 2:])
ZOPCTL = os.path.join(BUILD, "zopctl")
STUCK = ["illegal network reject", "data connection without a call", "all networks forbidden"]
START = time.time()


def say(text):
    print(f"{time.time() - START:6.1f} s  {text}", flush=True)


def send(port, lines):
    with socket.create_connection(("127.0.0.1", port)) as connection:
        connection.sendall(b"".join(b"<189>" + line for line in lines))
        connection.shutdown(socket.SHUT_WR)
        connection.recv(1)  # until the collector has read all


def children_of(server):
    with open(f"/proc/{server.process.pid}/task/{server.process.pid}/children", encoding="utf-8") as file:
        direct = [int(word) for word in file.read().split()]
    return direct or [int(word) for word in subprocess.run(
        ["ps", "-o", "pid=", "--ppid", str(server.process.pid)], stdout=subprocess.PIPE, check=False).stdout.split()]


def ask(database, question, *options):
    words = [ZOPCTL, "fleet", "ask", database, question, "--last", f"{DAYS + 1}d", "--json",
             "--rows", "10000000", *options]
    done = subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
    return json.loads(done.stdout)["rows"] if done.returncode == 0 else None


def rows_of(database):
    totals = ask(database, "totals")
    return totals[0]["reports"] if totals else 0


def check(database, truth):
    """What the questions find is what was put in."""
    hosts = lambda question: sorted(row["host"] for row in ask(database, question))
    total = ask(database, "totals")[0]
    found = {"reports": total["reports"], "devices": total["devices"], "stuck": hosts("stuck"),
             "silent": hosts("silent"), "rejected": hosts("rejected"),
             "updated": sorted(row["host"] for row in ask(database, "changed")
                               if row["what"] == "firmware"),
             "weak_cell": ask(database, "weak-cells")[0]["cell_id"],
             "bad_firmware": ask(database, "versions")[0]["firmware"],
             "newly stuck": sorted(row["host"] for row in ask(database, "changed") if row["what"] == "stuck"),
             "crowded": sorted(row["lac"] for row in ask(database, "reject-areas") if row["cause"] == "congestion")}
    wanted = {"reports": truth["reports"], "devices": truth["devices"],
              "stuck": sorted(sum((truth[name] for name in STUCK), [])), "silent": truth["silent"], "newly stuck": sorted(sum((truth[name] for name in STUCK), [])),
              "rejected": sorted(truth["rejected"] + truth[STUCK[0]]), "updated": truth["updated"],
              "weak_cell": truth["weak_cell"], "bad_firmware": truth["bad_firmware"],
              "crowded": [truth["crowded"]["lac"]] if DAYS > 3 else []}
    for name, value in wanted.items():
        if found[name] != value:
            fail(f"{database}: {name} is {found[name]}, and should be {value}")
    say(f"{database}: {found['reports']} rows for as many reports, and each trouble found")


def same_answers(one, other):
    for question in json.loads(subprocess.run([ZOPCTL, "fleet", "ask", one, "--json"], check=True,
                                              stdout=subprocess.PIPE).stdout)["questions"]:
        answer = ask(one, question, "--host", "device-000001")
        if answer is None or answer != ask(other, question, "--host", "device-000001"):
            fail(f"{question} is answered otherwise by {other}")
    say("all answers are the same")


def kill_children(server):
    for child in children_of(server):
        os.kill(child, signal.SIGKILL)


def load(database, log, *options):
    words = [ZOPCTL, "fleet", "load", database, log, "--json", *options]
    start = time.time()
    done = subprocess.run(words, stdout=subprocess.PIPE, check=True)
    counts = json.loads(done.stdout)["load"]
    say(f"{database}: {counts['reports']} reports loaded in {time.time() - start:.1f} s, "
        f"{counts['added_rows']} rows added")
    return counts


def run(folder, servers):
    log, truth_file = os.path.join(folder, "fleet.log"), os.path.join(folder, "truth.json")
    until = int(time.time()) // 3600 * 3600
    with open(log, "wb") as out:
        subprocess.run([os.path.join(BUILD, "zop-fleet-sim"), "--devices", str(DEVICES), "--days", str(DAYS),
                        "--every", str(EVERY), "--until", str(until), "--truth", truth_file], stdout=out, check=True)
    with open(truth_file, encoding="utf-8") as file:
        truth = json.load(file)
    say(f"{DEVICES} devices have logged {truth['reports']} reports in {truth['lines']} lines")

    sqlite = os.path.join(folder, "fleet.db")
    load(sqlite, log)
    check(sqlite, truth)

    servers += two_shards(folder)
    shards = list(servers)
    database = f"clickhouse://127.0.0.1:{shards[0].port}/default"
    state = os.path.join(folder, "state.db")
    rsyslog = collector(folder, ZOPCTL, free_port(), database, state)
    servers.append(rsyslog)
    rsyslog.start()
    say("two shards and rsyslog are up")

    with open(log, "rb") as file:
        lines = file.readlines()
    part = len(lines) // 4

    def drained(sent):
        """Whether each report in the lines that have been sent has its row."""
        reports = len({line for line in lines[:sent] if b",n=" in line})
        wait_for("row for each report", lambda: rows_of(database) >= reports, 300 + reports // 200)

    send(rsyslog.port, lines[:part])
    shards[1].stop(signal.SIGKILL)
    say("a shard is killed while the first lines are on their way")
    send(rsyslog.port, lines[part:2 * part])
    shards[1].start()
    say("it is up again")
    wait_for("rows", lambda: rows_of(database) > 0)
    sender = threading.Thread(target=send, args=(rsyslog.port, lines[2 * part:3 * part]))
    sender.start()
    for _ in range(3):
        time.sleep(1)
        kill_children(rsyslog)
    sender.join()
    say("the collector is killed three times while lines come")
    kill_children(rsyslog)
    rsyslog.stop()
    say("and once more while rsyslog is stopped")
    rsyslog.start()
    send(rsyslog.port, lines[3 * part:])
    drained(len(lines))
    say("it is up again, and all lines are sent")
    check(database, truth)
    again = load(database, log, "--state", os.path.join(folder, "other.db"))
    if again["added_rows"] != 0:
        fail("rows are added twice")
    check(database, truth)
    same_answers(sqlite, database)
    page = os.path.join(folder, "fleet.html")
    subprocess.run([ZOPCTL, "fleet", "page", database, "-o", page], check=True)
    say(f"the page has {os.path.getsize(page) // 1000} kB")


def main():
    servers = []
    signal.signal(signal.SIGTERM, lambda *_: fail("ended"))
    folder = tempfile.mkdtemp(prefix="zop-fleet-")
    try:
        run(folder, servers)
    except urllib.error.HTTPError as error:
        fail(error.read().decode())
    finally:
        for server in reversed(servers):
            server.stop(signal.SIGKILL)
        if not os.environ.get("KEEP"):
            shutil.rmtree(folder, ignore_errors=True)


main()
