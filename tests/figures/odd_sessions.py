"""Sessions that hold what a camera service seldom or never does. They fit samples/tuning."""

import random

LATEST = 10**15
INIT = {"call": "init", "scenario": 1, "customization": 2}


def random_call(dice):
    key, task = f"0x{dice.randint(1, 2)}", dice.choice([2, 5, 9, 24, 13, 77])
    anchor, serial = dice.choice([1, 2, 3]), (2**32 - 5 + dice.randint(0, 9)) % 2**32
    return dice.choices([
        {"call": "notifyTaskStart", "key": key, "task": task},
        {"call": "notifyTaskEnd", "key": key, "task": task},
        {"call": "notifySingleShotCriticalTaskStart", "task": task},
        {"call": "notifySingleShotCriticalTaskEnd", "task": task},
        {"call": "notifyAnchorPointStart", "anchor": anchor, "serial": serial},
        {"call": "notifyAnchorPointEnd", "anchor": anchor, "serial": serial},
        {**INIT, "customization": dice.randint(1, 2)},
        {"call": "uninit"},
    ], weights=[30, 30, 5, 5, 20, 20, 1, 1])[0]


def random_session(seed, length, longest_wait):
    """Calls in no sensible order, some before init and after uninit."""
    dice = random.Random(seed)
    at = dice.randint(0, 1000)
    for _ in range(length):
        yield {"at_us": at, "thread": f"thread {dice.randint(1, 4)}", **random_call(dice)}
        at += dice.randint(0, longest_wait)


def longest_runs():
    """More than fits 64 bits in all: 9500 runs of one task as long as a session can be."""
    keys = range(1, 9501)
    yield {"at_us": 0, "thread": "a", **INIT}
    for call, at in (("notifyTaskStart", 0), ("notifyTaskEnd", LATEST)):
        for key in keys:
            yield {"at_us": at, "thread": "a", "call": call, "key": hex(key), "task": 5}


def make_all():
    yield "longest-runs.jsonl", longest_runs()
    for seed, wait in ((1, 3000), (2, 300), (3, LATEST // 1000)):
        yield f"random-{seed}.jsonl", random_session(seed, 900, wait)
