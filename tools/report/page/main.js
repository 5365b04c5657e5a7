// Assembles the page.

const mostEventsListed = 20;

function describeSession() {
    const name = (summary.program ?? summary.session).split("/").at(-1);
    document.title = `${name} - VELKPerfCtrl`;
    document.getElementById("session-name").textContent = name;
    const parts = [
        `${countOf(summary.calls, "call")} on ${countOf(summary.threads, "thread")}`,
        `${formatTime(summary.recordedUs)} ${
                isProgram ? "from the first to the last" : "recorded"}`,
    ];
    if (isProgram) {
        parts.push(summary.ending);
    }
    if (summary.error) {
        parts.push(`ended early: ${summary.error}`);
    } else if (summary.interrupted) {
        parts.push(isProgram ? "interrupted" : "interrupted: what was played until then");
    } else if (summary.cutOff) {
        parts.push(`the recording was cut off at ${summary.cutOff}`);
    }
    document.getElementById("session-facts").textContent = parts.join(", ");
    document.getElementById("about").textContent =
            `Written by ${isProgram ? "velk-run" : "velk-replay"} ${
                    data.version}. Times count from the first call of the session, in recorded time. ` +
            `Charts by Chart.js ${Chart.version}, © Chart.js contributors, MIT licence.`;
}

// The worst interval of a row's kind and number, and a link to it.
function linkToWorst(kind, number) {
    const items = rows.filter((row) => row.kind === kind && row.number === number)
                          .flatMap((row) => row.items);
    const late = items.filter((item) => item.isOver);
    if (late.length === 0) {
        return "";
    }
    const worst =
            late.reduce((one, other) => (other.end - other.at > one.end - one.at ? other : one));
    return linkToTime(worst.at, worst.end, `The worst: ${formatTime(worst.end - worst.at)}`);
}

// An item of the list when something missed its target: `over` of `count`.
function pointOfTarget(what, targetUs, over, count, noun, link) {
    const share =
            `${formatCount(over)} of ${formatCount(count)} ${noun} (${percentOf(over, count)})`;
    const text = `${what} of ${formatTime(targetUs)} in ${share}. `;
    return over > 0 ? [{share: over / count, text, link}] : [];
}

function pointsOfTargets() {
    const tasks = summary.tasks.flatMap(
            (task) => pointOfTarget(
                    `Task ${task.task} ${task.name} missed its target`, task.targetTimeUs,
                    task.overTarget, task.ends, "runs", () => linkToWorst("task", task.task)));
    const latencies = summary.anchors.flatMap(
            (anchor) => pointOfTarget(
                    `Anchor ${anchor.anchor} missed its latency target`, anchor.latencyTargetUs,
                    anchor.overLatencyTarget, anchor.passes, "passes",
                    () => linkToWorst("anchor", anchor.anchor)));
    const jitters = summary.anchors.flatMap(
            (anchor) => pointOfTarget(
                    `Anchor ${anchor.anchor} missed its jitter target`, anchor.jitterTargetUs,
                    anchor.overJitterTarget, anchor.latencyChanges, "changes", () => ""));
    return [...tasks, ...latencies, ...jitters]
            .sort((one, other) => other.share - one.share)
            .map(({text, link}) => makeElement("li", {}, text, link()));
}

function pointsOfSerials() {
    const kinds = {
        unmatchedStarts: "unmatched start",
        unmatchedEnds: "unmatched end",
        outOfOrderStarts: "out-of-order start",
        outOfOrderEnds: "out-of-order end",
    };
    return summary.anchors.flatMap((anchor) => {
        const counts = Object.entries(kinds)
                               .filter(([key]) => anchor[key] > 0)
                               .map(([key, what]) => countOf(anchor[key], what));
        const textContent = `Anchor ${anchor.anchor}: ${counts.join(", ")}.`;
        return counts.length > 0 ? [makeElement("li", {textContent})] : [];
    });
}

function pointsOfFrames() {
    const {missed, count} = summary.frames.vsync;
    const textContent = `${countOf(missed, "vsync")} missed, ${formatCount(count)} came.`;
    return missed > 0 ? [makeElement("li", {textContent})] : [];
}

function linkToEvent({atUs}) { return linkToTime(atUs, atUs, `At ${formatMoment(atUs)}`); }

function pointsOfEvents() {
    const points = data.events.slice(0, mostEventsListed)
                           .map((event) => makeElement(
                                        "li", {}, `${describeEvent(event)}. `, linkToEvent(event)));
    const all = Object.values(data.eventCounts).reduce((sum, count) => sum + count, 0);
    if (all > points.length) {
        const left = formatCount(all - points.length);
        const textContent = `${left} more findings, refusals and failed calls, see the table.`;
        points.push(makeElement("li", {textContent}));
    }
    return points;
}

function tableOfEvents() {
    const counts = Object.entries(data.eventCounts)
                           .filter(([, count]) => count > 0)
                           .map(([kind, count]) => `${eventKinds[kind]}: ${formatCount(count)}`);
    return makeTable(
            `${counts.join(", ")}. The first of each:`,
            [
                ["at", linkToEvent],
                [unit, (event) => `${event.line}`, "number"],
                ["thread", (event) => event.thread],
                ["what", (event) => event.what],
                ["kind", (event) => eventKinds[event.kind]],
                ["text", (event) => event.text, "wide"],
            ],
            data.events,
    );
}

function linkToStart({sinceUs}) {
    if (sinceUs === undefined) {
        return "";
    }
    const atUs = sinceUs - data.firstUs;
    return linkToTime(atUs, atUs, `since ${formatMoment(atUs)}`);
}

function pointsOfEnd() {
    return listActive(summary.active)
            .filter((each) => each.isControl || each.sinceUs === undefined)
            .map((each) => makeElement("li", {}, `At the end: ${each.what} `, linkToStart(each)));
}

function addAttention() {
    const points = [
        ...pointsOfTargets(), ...pointsOfSerials(), ...pointsOfFrames(), ...pointsOfEvents(),
        ...pointsOfEnd()
    ];
    const nothing = makeElement("li", {
        textContent: "Nothing: every target was met, and the driver found fault with nothing."
    });
    document.getElementById("events").hidden = data.events.length === 0;
    keepTable("events", tableOfEvents);
    document.getElementById("attention").append(...(points.length > 0 ? points : [nothing]));
}

describeSession();
addAttention();
setUpWindow();
setUpTimeline();
addLatencyCharts();
addFrameChart();
addLevelCharts();
addDistributions();
addTables();
drawCharts();
timeWindow.listeners.push(updateCharts);
window.matchMedia("(prefers-color-scheme: dark)").addEventListener("change", drawCharts);
followAddress();
timeWindow.announce();
