"""Computes for how long which levels were merged, and what became of each control."""

MOST_LISTED, MOST_LEVELS = 1000, 256


def values_of(control):
    """What stays active until a reset withdraws it, as pairs of a field and its value."""
    values = {(("level", place), level)
              for place, level in enumerate(control.get("uclampLevels", []))}
    values |= {(("task", task), uclamp) for task, uclamp in control.get("criticalTaskUclamps", [])}
    if control.get("percentLevel", -1) >= 1:
        values.add((("percent", 0), control["percentLevel"]))
    if control.get("limits", [0])[0]:
        values.add((("limit", 0), control["limits"][0]))
    values |= {((name, 0), True) for name in ("requestValue", "sharedFlag")
               if control.get(name, -1) not in (-1, False)}
    return values


def merged_states(commands):
    """When the merged percent level and levels change, and to what."""
    percent, levels = 0, [0] * 8
    for command in commands:
        fields = command.fields
        if command.name in ("init", "uninit") or fields.get("replaces"):
            percent, levels = 0, [0] * 8
        if command.name == "control":
            percent = percent if fields["percent"] is None else fields["percent"]
            for place, level in fields["levels"].items():
                levels[place] = level
        yield command.at, percent, tuple(levels)


def times_of_levels(session, commands):
    percents, vectors, further = {}, {}, 0
    since, percent, levels = session[0]["at_us"], 0, (0,) * 8
    for at, *state in [*merged_states(commands), (session[-1]["at_us"], 0, ())]:
        if at > since:
            percents[percent] = percents.get(percent, 0) + at - since
            if levels in vectors or len(vectors) < MOST_LEVELS:
                vectors[levels] = vectors.get(levels, 0) + at - since
            else:
                further += at - since
        since, (percent, levels) = at, state
    return {"percentLevels": [{"percentLevel": level, "timeUs": time}
                              for level, time in sorted(percents.items())],
            "uclampLevels": [{"uclampLevels": list(vector), "timeUs": time}
                             for vector, time in sorted(vectors.items())],
            "furtherUclampLevelsUs": further}


class Controls:
    """Follows the controls that callers activated, each with its own life."""

    def __init__(self):
        self.all, self.active, self.stack, self.held = [], [], [], {}
        self.resets = self.unmatched = self.never_reset = 0
        self.at_uninit = self.unreset([])

    def take(self, command):
        if command.name in ("init", "uninit"):
            left = self.end_all(command.at, "uninit")
            self.at_uninit = left if command.name == "uninit" else self.unreset([])
        elif command.name == "control" and not command.fields["replaces"]:
            (self.reset if command.fields["isReset"] else self.activate)(command)

    def activate(self, command):
        asks, category = command.fields["asks"], command.fields["category"]
        life = {"category": category, "thread": command.thread, "call": command.call,
                "line": command.line, "fromUs": command.at, "untilUs": None, "end": None,
                "percentLevel": asks.get("percentLevel") if asks.get("percentLevel", -1) != -1
                else None, "uclampLevels": asks.get("uclampLevels", []),
                "criticalTaskUclamps": sorted(map(list, asks.get("criticalTaskUclamps", [])),
                                              key=lambda pair: pair[0])}
        if not command.fields["isOwn"]:
            self.overlap(life)
            self.all.append(life)
            self.active.append((life, values_of(asks)))
        if category == 0:
            self.stack.append(life)
        for (field, task), uclamp in values_of(asks):
            if field == "task":
                self.held.setdefault(task, set()).add(uclamp)

    def overlap(self, life):
        life["overlaps"] = len(self.active)
        for other, _ in self.active:
            other["overlaps"] += 1

    def reset(self, command):
        withdrawn = values_of(command.fields["asks"])
        for (field, task), uclamp in withdrawn:
            if field == "task":
                self.held.get(task, set()).discard(uclamp)
        if command.fields["category"] == 0:
            newest = self.stack.pop()
            ended = [life for life, _ in self.active if life is newest]
        else:
            ended = [life for life, values in self.active
                     if life["category"] == command.fields["category"] and values <= withdrawn]
        self.end(ended, command.at, "reset")
        self.resets += 1
        self.unmatched += not ended

    def end(self, lives, at, how):
        for life in lives:
            life.update(untilUs=at, end=how)
        self.active = [entry for entry in self.active if entry[0]["untilUs"] is None]

    def end_all(self, at, how):
        left = [life for life, _ in self.active]
        self.end(left, at, how)
        self.never_reset += len(left)
        unreset = self.unreset(left)
        self.stack, self.held = [], {}
        return unreset

    def unreset(self, left):
        return {"controls": left[:MOST_LISTED], "furtherControls": max(0, len(left) - MOST_LISTED),
                "criticalTaskUclamps": [[task, max(uclamps)] for task, uclamps
                                        in sorted(self.held.items()) if uclamps]}


def count(session, commands):
    controls, counts = Controls(), [(session[0]["at_us"], 0)]
    for command in commands:
        controls.take(command)
        counts.append((command.at, len(controls.active)))
    unreset = controls.end_all(session[-1]["at_us"], None)
    spans = [(until - at, active) for (at, active), (until, _)
             in zip(counts, [*counts[1:], (session[-1]["at_us"], 0)])]
    return {
        "boosts": {**times_of_levels(session, commands),
                   "activations": len(controls.all), "resets": controls.resets,
                   "unmatchedResets": controls.unmatched, "neverReset": controls.never_reset,
                   "mostAtOnce": max(active for _, active in counts),
                   "activeUs": sum(time for time, active in spans if active >= 1),
                   "overlapUs": sum(time for time, active in spans if active >= 2),
                   "controls": controls.all[:MOST_LISTED],
                   "furtherControls": max(0, len(controls.all) - MOST_LISTED)},
        "unresetControls": unreset, "unresetControlsAtUninit": controls.at_uninit}
