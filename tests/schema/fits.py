#!/usr/bin/python3
# Holds what zopctl prints for programs against docs/schema, by the runs of runs.txt: one object, or one
# a line where the schema says so, whose members are all in the schema. Each verb has a schema, and each
# schema a run that does its work. Usage: fits.py BUILD_DIR SOURCE_DIR [all]; with "all" in every scenario
# what has a star, which takes longer. Exits with 77 without python3-jsonschema.
import concurrent.futures
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

try:
    from jsonschema import Draft202012Validator, RefResolver
except ImportError:
    print("fits: no python3-jsonschema")
    sys.exit(77)

build, source = (pathlib.Path(path).resolve() for path in sys.argv[1:3])
folder = tempfile.TemporaryDirectory()
schemas = {path.name: json.loads(path.read_text()) for path in source.glob("docs/schema/*.json")}
scenarios = sorted(path.stem for path in source.glob("scenarios/*.toml"))
worked = set()


def shell(script, scenario="healthy-wcdma"):
    start = 'Z() { zopctl --sim="$S" --sim-speed "${speed-100}" --json "$@"; }\n'
    done = subprocess.run(
        ["sh", "-c", start + script], cwd=folder.name, stdin=subprocess.DEVNULL,
        capture_output=True, text=True,
        env=dict(os.environ, S=scenario, PATH=f"{build}:{os.environ['PATH']}", LC_ALL="C.UTF-8",
                 ZOPCTL_LOCK_DIR=folder.name, ZOPCTL_STATE_DIR=folder.name))
    return done.stdout


def faults(name, scenario, script):
    """What does not fit, a line each."""
    text = shell(script, scenario)
    where = f"{name}: {scenario}: {script}: "
    try:
        is_stream = schemas[name + ".json"].get("$comment") == "a line of a stream"
        values = [json.loads(part) for part in (text.splitlines() if is_stream else [text])]
    except (KeyError, ValueError) as error:
        return [f"{where}{error!r} {text[-300:]}"]
    resolver = RefResolver("", {}, store=schemas)
    validator = Draft202012Validator(schemas[name + ".json"], resolver=resolver)
    if values and "error" not in values[-1]:
        worked.add(name + ".json")
    return [where + "/".join(map(str, e.path)) + ": " + e.message[:300]
            for value in values or [None] for e in validator.iter_errors(value)]


def verbs(words=()):
    text = shell(" ".join(["zopctl", *words, "--help"]))
    names = re.findall(r"^  (\S+)", text.partition("\nSubcommands:\n")[2].partition("\n\n")[0], re.M)
    return [verb for name in names for verb in verbs((*words, name))] or ["-".join(words).lower()]


prepare, runs = [], []
for line in (source / "tests/schema/runs.txt").read_text().splitlines():
    name, _, script = line.partition(" ")
    if line.startswith(" "):
        prepare.append(line)
    elif script and name != "#":
        others = scenarios if name.endswith("*") and "all" in sys.argv[3:] else []
        for scenario in {"healthy-wcdma", "./refuses.toml", *others}:
            runs.append((name.rstrip("*"), scenario, script.strip()))
shell("\n".join(prepare))
for schema in schemas.values():
    Draft202012Validator.check_schema(schema)
with concurrent.futures.ThreadPoolExecutor(3 * os.cpu_count()) as pool:
    found = [fault for faults in pool.map(lambda run: faults(*run), runs) for fault in faults]
found += [f"{name}: no run did its work" for name in schemas.keys() - worked - {"common.json"}]
found += [f"{verb}: has no schema" for verb in verbs()
          if verb.replace("firmware-finish", "firmware-update") + ".json" not in schemas]
print("\n".join(found) or f"{len(runs)} runs of {len(worked)} schemas fit")
sys.exit(1 if found else 0)
