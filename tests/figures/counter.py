"""Computes the figures of a session from its calls and its tuning data, with every value kept."""

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


def count_registrations(commands):
    accepted = sum(command.name == "taskInit" for command in commands)
    return {"accepted": accepted, "refused": 0, "replayed": 0, "neverAccepted": []}


def count(session, commands):
    threads = list(dict.fromkeys(call["thread"] for call in session))
    return {"calls": len(session), "threads": len(threads),
            "recordedUs": session[-1]["at_us"] - session[0]["at_us"],
            "tasks": count_tasks(commands, threads),
            "criticalSpans": count_spans(commands),
            "registrations": count_registrations(commands)}
