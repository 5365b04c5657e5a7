"""Sessions that hold what a camera service seldom or never does. They fit samples/tuning."""

import random

LATEST = 10**15
INIT = {"call": "init", "scenario": 1, "customization": 2}


def random_control(dice):
    control = {"category": dice.choice([0, 0, 5, 7]), "percentLevel": dice.choice([-1, 0, 40, 60]),
               "uclampLevels": dice.choices([0, 200, 700, 900], k=dice.randint(0, 4)),
               "criticalTaskUclamps": [[dice.choice([2, 24]), dice.choice([100, 600])]
                                       for _ in range(dice.randint(0, 2))]}
    extra = dice.choice([{}, {"requestValue": 2}, {"sharedFlag": True}, {"limits": [9, 0, 0, 0]}])
    return {**control, **extra}


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
        {"call": "notifyVSync"},
        {"call": "notifyCamFps", "fps": dice.choice([24, 29.97])},
        {"call": "notifySingleShotControl", "control": random_control(dice)},
        {"call": "notifySingleShotControl", "category": dice.choice([4, 5, 7, 9])},
        dice.choice([{"call": "notifyResetSingleShotControl"}, {"call": "unsetCriticalTask"},
                     {"call": "notifyResetSingleShotControl", "category": dice.choice([4, 5, 7])},
                     {"call": "markCriticalTask", "user": dice.choice([4, 5, 6])}]),
        {**INIT, "customization": dice.randint(1, 2)},
        {"call": "uninit"},
    ], weights=[30, 30, 5, 5, 20, 20, 25, 3, 8, 8, 20, 1, 1])[0]


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


def many_controls():
    """More controls, levels and frame rates than are listed."""
    yield {"at_us": 0, "thread": "a", **INIT}
    for at in range(2, 2202, 2):
        control = {"uclampLevels": [1024 - at % 600], "criticalTaskUclamps": [[5, at % 1000]]}
        yield {"at_us": at, "thread": "a", "call": "notifySingleShotControl", "control": control}
        yield {"at_us": at, "thread": "a", "call": "notifyCamFps", "fps": at}
        if at < 800:
            yield {"at_us": at + 1, "thread": "a", "call": "notifyResetSingleShotControl"}


def make_all():
    yield "many-controls.jsonl", many_controls()
    yield "longest-runs.jsonl", longest_runs()
    for seed, wait in enumerate((3000, 300, LATEST // 1000) * 2):
        yield f"random-{seed}.jsonl", random_session(seed, 900, wait)
