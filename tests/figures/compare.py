#!/usr/bin/env python3
"""Compares the figures of velk-replay with those of an independent counter.

Usage: compare.py VELK_REPLAY TUNING SESSION...

Besides the sessions it plays made-up ones. Exit status 1 when a figure differs.
"""

import json
import subprocess
import sys
import tempfile
from pathlib import Path

import counter
import library
import odd_sessions

PERCENTILE_ERROR = 1 / 1024


def played_figures(program, tuning, path):
    command = [program, "--quiet", "--format", "jsonl", "--tuning", tuning, path]
    # Status 1 stands for calls that fail, which odd sessions have on purpose.
    run = subprocess.run(command, capture_output=True, text=True, timeout=240, check=False)
    if run.returncode not in (0, 1):
        sys.exit(f"{path}: exit status {run.returncode}: {run.stderr}")
    summary = json.loads(run.stdout.splitlines()[-1])["summary"]
    return {**summary, **summary["active"]}


def is_same(key, found, expected):
    if key[:1] == "p" and key[1:3].isdigit() and None not in (found, expected):
        return abs(found - expected) <= expected * PERCENTILE_ERROR
    if isinstance(expected, float):
        return abs(found - expected) <= 1e-9 * abs(expected)
    return found == expected


def differences(place, found, expected):
    if isinstance(expected, dict) and isinstance(found, dict):
        for key in expected.keys() | (found.keys() if place else set()):
            yield from differences([*place, key], found.get(key, "absent"),
                                   expected.get(key, "absent"))
    elif isinstance(expected, list) and isinstance(found, list) and len(found) == len(expected):
        for index, pair in enumerate(zip(found, expected)):
            yield from differences([*place, str(index)], *pair)
    elif not is_same(place[-1], found, expected):
        yield f"{'/'.join(place)}: found {found}, expected {expected}"


def compare(program, tuning, path):
    session = library.read_session(path)
    expected = counter.count(session, library.Library(library.Tuning(tuning)).play(session))
    found = played_figures(program, tuning, path)
    return [f"{path}: {text}" for text in differences([], found, expected)]


def main(program, tuning, *paths):
    with tempfile.TemporaryDirectory() as folder:
        odd = []
        for name, calls in odd_sessions.make_all():
            odd.append(Path(folder, name))
            odd[-1].write_text("".join(json.dumps(call) + "\n" for call in calls))
        faults = [fault for path in [*paths, *odd] for fault in compare(program, tuning, path)]
    print("\n".join(faults) or "all figures agree")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
