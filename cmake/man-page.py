#!/usr/bin/env python3
"""Writes the manual page of a tool from what the tool prints with --help.

Usage: man-page.py PROGRAM PAGE [TOOL...]

PROGRAM is run with --help, its subcommands too, and with --version. PAGE is written; it refers to
the other TOOLs.
"""
import pathlib
import re
import subprocess
import sys

SECTION_NAMES = {"positionals": "ARGUMENTS", "subcommands": "COMMANDS"}


def printed(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def escaped(text):
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return "\\&" + text if text.startswith((".", "'")) else text


def sections_of(text):
    """The text before the first heading, the usage, and pairs of a heading and its lines."""
    usage, sections = "", [("", [])]
    for line in text.splitlines():
        if line.lower().startswith("usage:"):
            usage = line[len("usage:"):].strip()
            sections.append(("Options", []))
        elif re.match(r"\S.*:$", line):
            sections.append((line[:-1], []))
        elif re.match(r"\S", line) and sections[-1][1][-1:] == [""] and usage and sections[-1][0]:
            sections.append(("", [line]))
        else:
            sections[-1][1].append(line)
    return sections[0][1], usage, [part for part in sections[1:] if any(part[1])]


def items_of(lines):
    """Pairs of a term and its description from a list in two columns; prose has no term."""
    items = []
    for line in filter(None, lines):
        indent = len(line) - len(line.lstrip())
        if indent == 2 and "  " not in line.strip() and len(line) > 60:
            if not items or items[-1][0]:
                items.append(("", []))
            items[-1][1].append(line.strip())
        elif indent <= 2 or indent <= 6 and line.lstrip().startswith("-"):
            term, _, words = re.sub(r"^(-\w),\s*", r"\1, ", line.strip()).partition("  ")
            items.append((term, [words.strip()]))
        else:
            items[-1][1].append(line.strip())
    return [(term, " ".join(filter(None, words))) for term, words in items]


def format_list(lines):
    for term, words in items_of(lines):
        yield from (".TP", f'.B {escaped(term)}') if term else (".PP",)
        yield escaped(words)


def format_examples(lines, tool):
    for line in filter(None, lines):
        if line.startswith("    ") or tool in line and line[-1] not in ":?":
            yield from (".RS 4", ".EX", escaped(line.strip()), ".EE", ".RE")
        else:
            yield from (".PP", escaped(line.strip()))


def format_section(title, lines, tool, macro):
    if not title:
        # Prose behind the examples is no part of them.
        yield f'.{macro} "NOTES"'
        yield from (escaped(line) or ".PP" for line in "\n".join(lines).strip().splitlines())
        return
    # After a comma, a heading may describe the entries of its list.
    name, _, explanation = title.partition(", ")
    name = SECTION_NAMES.get(
        name.lower(), " ".join(w if w.startswith("(-") else w.upper() for w in name.split()))
    yield f'.{macro} "{escaped(name)}"'
    if explanation:
        yield escaped(explanation[0].upper() + explanation[1:] + ":")
    yield from format_examples(lines, tool) if name == "EXAMPLES" else format_list(lines)


def subcommands_of(sections):
    for title, lines in sections:
        if title.lower() == "subcommands":
            yield from (term.split()[0] for term, _ in items_of(lines))


def page_of(program, others):
    tool = pathlib.Path(program).name
    description, usage, sections = sections_of(printed(program, "--help"))
    description = [line for line in description if line]
    # The NAME section gets the text up to the first comma, colon or full stop.
    summary = re.split(r"[,:.]", description[0])[0]
    version = printed(program, "--version").split()[-1]
    yield f'.TH {escaped(tool.upper())} 1 "" "VELKPerfCtrl {version}" "User Commands"'
    yield from (".SH NAME", escaped(f"{tool} ") + "\\- " + escaped(summary[0].lower() + summary[1:]))
    yield from (".SH SYNOPSIS", ".B " + escaped(usage))
    yield from (".SH DESCRIPTION", *(escaped(line) for line in description))
    for title, lines in sections:
        yield from format_section(title, lines, tool, "SH")
    for subcommand in subcommands_of(sections):
        about, usage, parts = sections_of(printed(program, subcommand, "--help"))
        yield f'.SH "{escaped((tool + " " + subcommand).upper())}"'
        yield from (escaped(line) for line in about if line)
        yield from (".PP", ".B " + escaped(usage))
        for title, lines in parts:
            yield from format_section(title, lines, tool, "SS")
    yield from (".SH SEE ALSO",
                ", ".join(f"\\fB{escaped(other)}\\fR(1)" for other in others if other != tool))


def main():
    program, page, *others = sys.argv[1:]
    target = pathlib.Path(page)
    target.parent.mkdir(parents=True, exist_ok=True)
    target.write_text("\n".join(page_of(program, others)) + "\n")


main()
