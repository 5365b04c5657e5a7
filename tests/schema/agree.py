#!/usr/bin/env python3
"""Holds the JSON Schemas to what velk-tuning refuses, on samples, corpora and mutated files.

Usage: agree.py VELK_TUNING PROJECT

Exit status 1 when a schema and the tool disagree. What a schema cannot say is in BEYOND_SCHEMA.
"""

import contextlib
import itertools
import json
import os
import random
import re
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from functools import partial
from pathlib import Path

import jsonschema
import mutate

FILES = ("platform.json", "customer.json", "settings.json")
GARBLED = 40

# What only the tool refuses: rules between entries and lines, keys that stand twice, the length of
# texts in bytes, whole numbers that are written with a fraction or an exponent.
BEYOND_SCHEMA = re.compile(
    r"a second entry for |expected 0 or a task of the same variant|duplicate key"
    r"|before the call ahead of it|one thread too many"
    r"|found [-0-9.e+]*[.e][-0-9.e+]*, expected a whole number"
    r"|found \"(\\u00e9)+.*, expected a text of"
)


def schema(project, name):
    text = (project / f"schema/{name}.schema.json").read_text()
    jsonschema.Draft202012Validator.check_schema(json.loads(text))
    return jsonschema.Draft202012Validator(json.loads(text))


class Jury:
    def __init__(self):
        self.agreed = {True: 0, False: 0}
        self.disagreements = []

    def judge(self, validator, data, faults):
        """Of a text and what the tool says against it."""
        try:
            errors = [error.message for error in validator.iter_errors(mutate.parse(data))]
        except ValueError as error:
            errors = [str(error)]
        is_refused = any(not BEYOND_SCHEMA.search(fault) for fault in faults)
        if bool(errors) == is_refused or (errors and faults):
            self.agreed[not errors] += 1
        else:
            self.disagreements.append(f"{data!r}\n  schema: {errors}\n  tool: {faults}")


def faults_of(program, arguments):
    run = subprocess.run([program, "check", *arguments], capture_output=True, timeout=240, check=False)
    lines = run.stdout.decode(errors="replace").splitlines()
    faults = [line.removeprefix("fault: ") for line in lines if line.startswith("fault: ")]
    if run.returncode != (2 if faults else 0):
        sys.exit(f"exit status {run.returncode} with {len(faults)} faults: {run.stderr}")
    return faults


def faults_of_texts(program, texts):
    """Against three files of tuning data, without their folder."""
    with tempfile.TemporaryDirectory() as folder:
        for name, text in zip(FILES, texts):
            Path(folder, name).write_bytes(text)
        return [fault.removeprefix(f"{folder}/") for fault in faults_of(program, [folder])]


def judge_tuning(program, project, jury):
    validators = [schema(project, name.removesuffix(".json")) for name in FILES]
    seeds = [[(project / "samples/tuning" / name).read_bytes() for name in FILES]]
    for path in sorted((project / "fuzz/corpus/tuning").iterdir()):
        parts = path.read_bytes().split(b"\n---\n")
        seeds.append(parts + seeds[0][len(parts) :])
    folders = seeds + [[mutate.garbled(text) for text in seeds[0]] for _ in range(GARBLED)]
    mutants = itertools.zip_longest(*(mutate.mutants(text) for text in seeds[0]))
    folders += [[mutant or seed for mutant, seed in zip(each, seeds[0])] for each in mutants]
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        for texts, faults in zip(folders, pool.map(partial(faults_of_texts, program), folders)):
            for name, text, validator in zip(FILES, texts, validators):
                jury.judge(validator, text, [f for f in faults if f.startswith(f"{name}:")])


def lines_of_calls(lines):
    """A line of each call and its members."""
    shapes = {}
    for line in lines:
        with contextlib.suppress(ValueError, KeyError, TypeError):
            call = mutate.parse(line)
            shapes.setdefault((call["call"], *call), line)
    return list(shapes.values())


def lines_of_sessions(project):
    """A line of each shape in the sample, and every line of the corpus."""
    lines = lines_of_calls((project / "samples/capture-5s.jsonl").read_bytes().splitlines())
    for path in sorted((project / "fuzz/corpus/session").iterdir()):
        lines += path.read_bytes().splitlines()
    return lines


def judge_lines(program, project, jury):
    lines = lines_of_sessions(project)
    lines += [mutate.garbled(random.choice(lines)) for _ in range(GARBLED)]
    for line in lines_of_calls(lines):
        lines += mutate.mutants(line)
    with tempfile.NamedTemporaryFile() as session:
        session.write(b"".join(line + b"\n" for line in lines))
        session.flush()
        faults = {}
        for fault in faults_of(program, [str(project / "samples/tuning"), session.name]):
            number = int(fault.removeprefix(f"{session.name}:").split(":")[0])
            faults.setdefault(number, []).append(fault)
    validator = schema(project, "session-line")
    for number, line in enumerate(lines, 1):
        if line.strip(b" \t\r"):
            jury.judge(validator, line, faults.get(number, []))


def main():
    program, project = sys.argv[1], Path(sys.argv[2])
    random.seed(1)
    for judge in (judge_tuning, judge_lines):
        jury = Jury()
        judge(program, project, jury)
        print(f"{judge.__name__}: both take {jury.agreed[True]}, both refuse {jury.agreed[False]}")
        if jury.disagreements or min(jury.agreed.values()) < 200:
            sys.exit("\n".join([*jury.disagreements, f"{len(jury.disagreements)} disagreements"]))


main()
