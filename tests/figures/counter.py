"""Computes the figures of a session from its calls and its tuning data, with every value kept."""

import boosts

LARGEST = 2**63 - 1


def percentile(values, percent):
    """By nearest rank."""
    return sorted(values)[-(-len(values) * percent // 100) - 1] if values else None


def count_tasks(commands, threads):
    tasks, ids, runs = {}, {}, {}
    for command in commands:
        fields = command.fields
        if command.name == "init":
            ids, runs = {}, {}
        elif command.name == "taskInit":
            task = tasks.setdefault(fields["task"], {
                "starts": 0, "repeated": 0, "runs": [], "over": 0, "threads": set()})
            task.update(name=fields["label"], target=fields["target"])
            ids[fields["id"]] = task
        elif command.name == "taskStart":
            task = ids[fields["id"]]
            task["starts"] += 1
            task["threads"].add(command.thread)
            running = runs.setdefault(fields["id"], {})
            task["repeated"] += command.thread in running
            running.setdefault(command.thread, command.at)
        elif command.name == "taskEnd":
            task = ids[fields["id"]]
            running = runs.setdefault(fields["id"], {})
            ended = [command.thread] if command.thread in running else list(running)
            for thread in ended:
                run = command.at - running.pop(thread)
                task["runs"].append(run)
                task["over"] += run > task["target"]
    return [task_figures(number, task, threads) for number, task in sorted(tasks.items())]


def task_figures(number, task, threads):
    runs = task["runs"]
    return {
        "task": number, "name": task["name"], "starts": task["starts"],
        "repeatedStarts": task["repeated"], "ends": len(runs), "targetTimeUs": task["target"],
        "totalRunUs": min(sum(runs), LARGEST), "p50RunUs": percentile(runs, 50),
        "p90RunUs": percentile(runs, 90), "p99RunUs": percentile(runs, 99),
        "longestRunUs": max(runs, default=0), "overTarget": task["over"],
        "overTargetPercent": 100 * task["over"] / len(runs) if runs else 0,
        "threads": [name for name in threads if name in task["threads"]]}


def count_spans(commands):
    spans, nested, since = [], 0, {}
    for command in commands:
        if command.name == "init":
            since = {}
        elif command.name == "criticalStart":
            nested += command.thread in since
            since.setdefault(command.thread, command.at)
        elif command.name == "criticalEnd" and command.thread in since:
            spans.append(command.at - since.pop(command.thread))
    return {"count": len(spans), "nestedStarts": nested, "totalUs": min(sum(spans), LARGEST),
            "longestUs": max(spans, default=0), "openAtEnd": len(since)}


def is_above(serial, other):
    return other is None or 0 < (serial - other) % 2**32 < 2**31


def count_anchors(commands):
    """The starts and ends of each anchor, one stretch from init to init after the other."""
    stretches, anchors = [], {}
    for command in commands:
        if command.name == "init":
            stretches.append({})
        elif command.name in ("anchorStart", "anchorEnd"):
            number = command.fields["anchor"]
            anchors.setdefault(number, [])
            stretches[-1].setdefault(number, []).append(command)
    return [anchor_figures(number, [stretch.get(number, []) for stretch in stretches])
            for number in sorted(anchors)]


def anchor_figures(number, stretches):
    latencies, jitters, targets = [], [], (0, 0)
    counts = dict.fromkeys(["starts", "ends", "overLatencyTarget", "overJitterTarget",
                            "unmatchedStarts", "unmatchedEnds", "openAtEnd", "outOfOrderStarts",
                            "outOfOrderEnds"], 0)
    for commands in stretches:
        counts["unmatchedStarts"] += counts["openAtEnd"]
        opened, last, highest = {}, None, {"anchorStart": None, "anchorEnd": None}
        for command in commands:
            serial = command.fields["serial"]
            phase = command.name.removeprefix("anchor")
            counts[f"{phase.lower()}s"] += 1
            if is_above(serial, highest[command.name]):
                highest[command.name] = serial
            else:
                counts[f"outOfOrder{phase}s"] += 1
            if phase == "Start":
                targets = (command.fields["latency"], command.fields["jitter"])
                counts["unmatchedStarts"] += serial in opened
                opened[serial] = (command.at, *targets)
            elif serial not in opened:
                counts["unmatchedEnds"] += 1
            else:
                since, latency_target, jitter_target = opened.pop(serial)
                latencies.append(command.at - since)
                counts["overLatencyTarget"] += 0 < latency_target < latencies[-1]
                if last is not None:
                    jitters.append(abs(latencies[-1] - last))
                    counts["overJitterTarget"] += 0 < jitter_target < jitters[-1]
                last = latencies[-1]
        counts["openAtEnd"] = len(opened)
    figures = {"anchor": number, "passes": len(latencies), "latencyChanges": len(jitters),
               "latencyTargetUs": targets[0], "jitterTargetUs": targets[1],
               "longestLatencyUs": max(latencies, default=0),
               "largestJitterUs": max(jitters, default=0), **counts}
    for percent in (50, 90, 99):
        figures[f"p{percent}LatencyUs"] = percentile(latencies, percent)
        figures[f"p{percent}JitterUs"] = percentile(jitters, percent)
    return figures


def middle_of_bucket(time):
    """Of an HDR histogram whose buckets tell the ten leading bits."""
    shift = max(0, time.bit_length() - 10)
    return (time >> shift << shift) + (1 << shift >> 1)


def count_vsyncs(commands):
    intervals, vsyncs, last = [], 0, None
    for command in commands:
        if command.name == "init":
            last = None
        elif command.name == "vsync":
            vsyncs += 1
            intervals += [] if last is None else [command.at - last]
            last = command.at
    period = percentile(intervals, 50)
    if len(intervals) > 1:
        period = max(min(middle_of_bucket(period), max(intervals)), min(intervals))
    figures = {f"p{percent}IntervalUs": percentile(intervals, percent) for percent in (50, 90, 99)}
    return {**figures, "count": vsyncs, "longestIntervalUs": max(intervals, default=0),
            "ratePerSecond": 1e6 / period if period else None,
            "missed": sum(max(0, (2 * middle_of_bucket(interval) + period) // (2 * period) - 1)
                          for interval in intervals) if period else 0}


def count_rates(session, commands):
    """The stretches for which the told rate stays the same."""
    stretches = []
    for command in commands:
        is_told = command.name == "camFps"
        told = stretches[-1] if stretches and stretches[-1]["untilUs"] is None else None
        if told and (command.name in ("init", "uninit")
                     or is_told and told["fps"] != command.fields["fps"]):
            told["untilUs"], told = command.at, None
        if is_told and not told:
            stretches.append({"fps": command.fields["fps"], "fromUs": command.at, "untilUs": None,
                              "anchors": {}})
        elif command.name == "anchorEnd" and told:
            ends = told["anchors"]
            ends[command.fields["anchor"]] = ends.get(command.fields["anchor"], 0) + 1
    for stretch in stretches:
        stretch["untilUs"] = session[-1]["at_us"] if stretch["untilUs"] is None else stretch["untilUs"]
        time = stretch["untilUs"] - stretch["fromUs"]
        stretch["anchors"] = [
            {"anchor": anchor, "ends": ends, "endsPerSecond": ends * 1e6 / time if time else None}
            for anchor, ends in sorted(stretch["anchors"].items())]
    return stretches


def count_frames(session, commands):
    rates = count_rates(session, commands)
    return {"vsync": count_vsyncs(commands), "toldRates": rates[:1000],
            "furtherToldRates": max(0, len(rates) - 1000)}


def count_registrations(commands):
    accepted = sum(command.name == "taskInit" for command in commands)
    return {"accepted": accepted, "refused": 0, "replayed": 0, "neverAccepted": []}


def count(session, commands):
    threads = list(dict.fromkeys(call["thread"] for call in session))
    return {"calls": len(session), "threads": len(threads),
            "recordedUs": session[-1]["at_us"] - session[0]["at_us"],
            "tasks": count_tasks(commands, threads),
            "anchors": count_anchors(commands),
            "criticalSpans": count_spans(commands),
            "frames": count_frames(session, commands),
            **boosts.count(session, commands),
            "registrations": count_registrations(commands)}
