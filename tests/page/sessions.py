"""Sessions whose pages are opened."""

import json

INIT = {"at_us": 0, "thread": "service", "call": "init", "scenario": 1, "customization": 2}
HOSTILE_THREAD = "</script><img src=x onerror=document.title='broken'>"
HOSTILE_TASK = "<b id=x>&"


def write(path, calls):
    with path.open("w") as file:
        file.writelines(json.dumps(call) + "\n" for call in calls)
    return path


def copy_tuning_with_hostile_name(source, target):
    target.mkdir(exist_ok=True)
    for file in source.glob("*.json"):
        target.joinpath(file.name).write_text(file.read_text().replace("TASK_SENSOR", "TASK_" + HOSTILE_TASK))
    return target


def hostile():
    thread = HOSTILE_THREAD
    yield INIT
    yield {"at_us": 10, "thread": thread, "call": "notifyTaskStart", "key": "0x1", "task": 2}
    yield {"at_us": 5000, "thread": thread, "call": "notifyTaskEnd", "key": "0x1", "task": 2}
    yield {"at_us": 5001, "thread": thread, "call": "notifyTaskEnd", "key": "0x7", "task": 5}
    yield {"at_us": 5002, "thread": thread, "call": "notifyTaskStart", "key": "0x2", "task": 5}
    yield {"at_us": 6000, "thread": thread, "call": "notifySingleShotControl", "category": 5}
    yield {"at_us": 9000, "thread": thread, "call": "notifyVSync"}
    yield {"at_us": 9000, "thread": thread, "call": "notifyAnchorPointEnd", "anchor": 1, "serial": 7}
    yield {"at_us": 9000, "thread": thread, "call": "notifyAnchorPointStart", "anchor": 1, "serial": 8}
    yield {"at_us": 9000, "thread": thread, "call": "notifyAnchorPointEnd", "anchor": 1, "serial": 8}


def long_session(rounds):
    """Runs of ever other lengths, every other one on one of two threads and the others on many, and an anchor."""
    tasks = [2, 3, 5, 6]
    yield INIT
    for number in range(rounds):
        spread = 200 if number % 2 else 1
        thread, task, at = f"thread {number % 2 + number % spread}", tasks[number // 400 % 4], 1000 + 700 * number
        yield {"at_us": at, "thread": thread, "call": "notifyAnchorPointStart", "anchor": 1, "serial": number}
        yield {"at_us": at, "thread": thread, "call": "notifyTaskStart", "key": "0x1", "task": task}
        at += 100 + number * 7919 % 500
        yield {"at_us": at, "thread": thread, "call": "notifyTaskEnd", "key": "0x1", "task": task}
        yield {"at_us": at, "thread": thread, "call": "notifyAnchorPointEnd", "anchor": 1, "serial": number}
