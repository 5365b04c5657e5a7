"""Makes JSON texts that are a little wrong, and reads such texts strictly."""

import copy
import json
import random

NUMBERS = (
    0, 1, -1, -2, 8, 20, 21, 22, 91, 100, 101, 255, 256, 1024, 1025, 10**15, 10**15 + 1, 2**31 - 1,
    2**31, -(2**31), -(2**31) - 1, 2**32 - 1, 2**32, 2**64, 0.5, 7.0, -0.0, 3.4028234e38, 3.5e38,
)  # fmt: skip
TEXTS = (
    "", "a", "a" * 64, "a" * 65, "a" * 91, "a" * 92, "\u00e9" * 33, "tab\t", "end\n", "\x7f",
    "\u0085", "0x", "0x1G", "0xfFffffffffffffff", "0x10000000000000000", "0X0000000000000000000a",
    "0x1\n", "notifyVSync", "init", "notifyResetSingleShotControl", "notifyTaskStart",
)  # fmt: skip
OTHERS = (
    None, True, [], {}, [1], [1, 2], [[3, 300]], [[3, -1]], [1025] * 3, [5] * 4, [5] * 8, [5] * 9,
    {"a": 1}, {"isReset": False}, {"category": 5}, {"percentLevel": 101},
)  # fmt: skip
KEYS = ("unknown", "task", "scenario", "customization", "groupHead", "category", "control", "key",
        "fps", "serial", "vip", "anchorSpecs", "isReset")  # fmt: skip


def parse(data):
    """Raises ValueError for what RFC 8259 does not have, and for numbers beyond a double."""

    def number(text):
        if float(text) in (float("inf"), -float("inf")):
            raise ValueError(f"{text} is too large")
        return float(text)

    def constant(text):
        raise ValueError(f"{text} is no JSON")

    document = json.loads(data, parse_float=number, parse_constant=constant)
    json.dumps(document, ensure_ascii=False).encode()  # half a pair of surrogates is no text
    return document


def places(value, path=()):
    """Every path to a value within the value."""
    if isinstance(value, (dict, list)):
        for key in value if isinstance(value, dict) else range(len(value)):
            yield (*path, key)
            yield from places(value[key], (*path, key))


def with_change(document, path, change):
    """The document's text after change(container, key)."""
    changed = copy.deepcopy(document)
    container = changed
    for key in path[:-1]:
        container = container[key]
    change(container, path[-1])
    return json.dumps(changed, ensure_ascii=random.random() < 0.5).encode(errors="surrogatepass")


def set_to(value):
    return lambda container, key: container.__setitem__(key, copy.deepcopy(value))


def remove(container, key):
    del container[key]


def repeat(container, key):
    container.append(copy.deepcopy(container[key]))


def mutants(data):
    """Every kind of value with each other value of its type, a few of others, and taken away; every
    kind of object with another member, every kind of array with an element twice."""
    document = parse(data)
    seen = set()
    for path in places(document):
        kind = tuple(key if isinstance(key, str) else "" for key in path)
        if kind in seen:
            continue
        seen.add(kind)
        old = document
        for key in path:
            old = old[key]
        same = NUMBERS if type(old) is int else TEXTS if isinstance(old, str) else OTHERS
        changes = [set_to(value) for value in (*same, *random.sample(NUMBERS + TEXTS + OTHERS, 4))]
        changes.append(remove)
        if isinstance(path[-1], int):
            changes.append(repeat)
        for change in changes:
            yield with_change(document, path, change)
        if isinstance(old, dict):
            for key in KEYS:
                yield with_change(document, (*path, key), set_to(random.choice(NUMBERS + OTHERS)))


def garbled(data):
    """The text with another byte."""
    place = random.randrange(max(len(data), 1))
    return data[:place] + random.choice((b"", b"0", b'"', b"}", b",", b"e1")) + data[place + 1 :]
