"""What the library sends to a driver that refuses nothing, as far as the figures depend on it."""

import json
from collections import namedtuple
from pathlib import Path

from boosts import values_of

Command = namedtuple("Command", "at line thread call name fields")


def read_session(path):
    with open(path, encoding="utf-8") as lines:
        return [dict(json.loads(text), line=number)
                for number, text in enumerate(lines, 1) if text.strip()]


class Tuning:
    def __init__(self, folder):
        self.platform = self._read(folder, "platform.json")
        self.customer = self._read(folder, "customer.json")
        self.settings = self._read(folder, "settings.json")

    @staticmethod
    def _read(folder, name):
        path = Path(folder, name)
        return json.loads(path.read_text(encoding="utf-8")) if path.exists() else {}

    @staticmethod
    def variant(source, scenario, customization):
        def fits(entry):
            return (entry.get("scenario", scenario) == scenario
                    and entry.get("customization", customization) == customization)
        fitting = [entry for entry in source.get("variants", []) if fits(entry)]
        return max(fitting, key=lambda entry: ("scenario" in entry, "customization" in entry),
                   default=None)

    def tasks(self, scenario, customization):
        """The valid tasks by number, or None where the platform has no data."""
        platform = self.variant(self.platform, scenario, customization)
        if platform is None:
            return None
        customer = self.variant(self.customer, scenario, 0) or {"tasks": []}
        return {entry["task"]: entry for entry in platform["tasks"] + customer["tasks"]
                if entry["targetTimeUs"] > 0 and entry["defaultUclamp"] > 0}

    def floors(self, scenario, customization):
        return self.variant(self.platform, scenario, customization)["clusterLevels"]

    def controls(self, scenario):
        """The control of each category in the scenario, None where it has none."""
        entries = self.settings.get("singleShotControls", [])
        found = {entry["category"]: None for entry in entries}
        for wanted in (8, scenario):
            found.update({entry["category"]: entry["control"] for entry in entries
                          if entry["scenario"] == wanted})
        return found

    def anchors(self, scenario, customization):
        """The targets of latency and jitter by anchor."""
        targets = {}
        for source in (self.platform, self.customer):
            entries = [entry for entry in source.get("anchorSpecs", [])
                       if entry["scenario"] == scenario
                       and entry.get("customization", customization) == customization]
            for anchor in max(entries, key=lambda entry: "customization" in entry,
                              default={"anchors": []})["anchors"]:
                before = targets.get(anchor["anchor"], (0, 0))
                told = (anchor.get("latencyUs", 0), anchor.get("jitterUs", 0))
                targets[anchor["anchor"]] = tuple(new or old for new, old in zip(told, before))
        return targets


class Library:
    """Turns the calls of a session into commands."""

    def __init__(self, tuning):
        self.tuning = tuning
        self.users = 0
        self.tasks = None
        self.ids = {}
        self.anchors, self.invalid = {}, set()
        self.floors, self.controls = [0] * 8, {}
        self.stack, self.held = [], {}
        self.commands = []

    def play(self, session):
        for call in session:
            handler = getattr(self, call["call"], None)
            if handler and (self.users or call["call"] in ("init", "markCriticalTask",
                                                           "unsetCriticalTask")):
                handler(call)
        return self.commands

    def send(self, call, name, **fields):
        self.commands.append(Command(call["at_us"], call["line"], call["thread"], call["call"],
                                     name, fields))

    def init(self, call):
        if not self.users:
            self.tasks = self.tuning.tasks(call["scenario"], call["customization"])
            if self.tasks is None:
                return
            self.ids = {}
            self.anchors = self.tuning.anchors(call["scenario"], call["customization"])
            self.invalid = set()
            self.send(call, "init")
            self.floors = self.tuning.floors(call["scenario"], call["customization"])
            self.controls = self.tuning.controls(call["scenario"])
            self.stack, self.held = [], {}
            for _ in range(1 + call.get("applyExtraDefaultControl", False)):
                self.activate(call, 0, {}, is_own=True)
        self.users += 1

    def uninit(self, call):
        self.users -= 1
        if not self.users:
            self.send(call, "uninit")

    def notifyTaskStart(self, call):
        task = self.tasks.get(call["task"])
        if task is None:
            return
        pair = (int(call["key"], 16), call["task"])
        if pair not in self.ids:
            self.ids[pair] = len(self.ids) + 1
            label = task["name"].replace("TASK_", "", 1).replace("CUSTOM_", "", 1)[:9]
            self.send(call, "taskInit", id=self.ids[pair], task=call["task"], label=label,
                      target=max(task["targetTimeUs"], 5))
        self.send(call, "taskStart", id=self.ids[pair], task=call["task"])

    def notifyTaskEnd(self, call):
        pair = (int(call["key"], 16), call["task"])
        if call["task"] in self.tasks and pair in self.ids:
            self.send(call, "taskEnd", id=self.ids[pair], task=call["task"])

    def notifySingleShotCriticalTaskStart(self, call):
        if call["task"] in self.tasks:
            self.send(call, "criticalStart")

    def notifySingleShotCriticalTaskEnd(self, call):
        if call["task"] in self.tasks:
            self.send(call, "criticalEnd")

    def notifyAnchorPointStart(self, call):
        latency, jitter = self.anchors.get(call["anchor"], (0, 0))
        if latency == jitter == 0:
            self.invalid.add(call["anchor"])
        else:
            self.send(call, "anchorStart", anchor=call["anchor"], serial=call["serial"],
                      latency=latency, jitter=jitter)

    def notifyAnchorPointEnd(self, call):
        if call["anchor"] not in self.invalid:
            self.send(call, "anchorEnd", anchor=call["anchor"], serial=call["serial"])

    def notifyVSync(self, call):
        self.send(call, "vsync")

    def notifyCamFps(self, call):
        self.send(call, "camFps", fps=int(call["fps"]))

    def notifySingleShotControl(self, call):
        control = call.get("control") or self.controls.get(call["category"])
        if control is not None:
            self.activate(call, call.get("category", control.get("category", 0)), control)

    def markCriticalTask(self, call):
        user = call.get("user", 4)
        control = (self.controls if self.users else self.tuning.controls(8)).get(user)
        if control is not None and self.users:
            self.activate(call, user, control)
        elif control is not None:
            self.replace(call, control)

    def unsetCriticalTask(self, call):
        if self.users:
            self.activate(call, 0, {}, is_own=True)
        else:
            self.replace(call, {})

    def notifyResetSingleShotControl(self, call):
        category = call.get("category", 0)
        control = self.controls.get(category)
        if category == 0:
            control = self.stack.pop() if self.stack else None
        if control is not None:
            for field, value in values_of(control):
                self.held[field] = [each for each in self.held.get(field, []) if each != value]
            self.send_merged(call, category, control, is_reset=True)

    def activate(self, call, category, control, is_own=False):
        if category == 0:
            self.stack.append(control)
        else:
            self.controls.setdefault(category, control)
        for field, value in values_of(control):
            self.held.setdefault(field, []).append(value)
        self.send_merged(call, category, control, is_own=is_own)

    def send_merged(self, call, category, control, is_own=False, is_reset=False):
        levels = {}
        for place, _ in enumerate(control.get("uclampLevels", [])):
            known = self.floors[place] if place < 3 else 0
            level = max([self.floors[place], *self.held.get(("level", place), [])])
            if level:  # 0 says nothing to the driver
                levels[place] = level if level > known else 0
        percent = None
        if control.get("percentLevel", -1) != -1:
            percent = max([0, *self.held.get(("percent", 0), [])])
        self.send(call, "control", category=category, asks=control, isOwn=is_own, isReset=is_reset,
                  replaces=False, percent=percent, levels=levels)

    def replace(self, call, control):
        """Sent while the library is down: it merges nothing."""
        self.send(call, "control", replaces=True, percent=max(0, control.get("percentLevel", 0)),
                  levels=dict(enumerate(control.get("uclampLevels", []))))
