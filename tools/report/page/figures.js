// The figures of the summary as tables.

const number = (valueOf) => (each) => formatCount(valueOf(each));
const badCount = (valueOf) => (each) =>
        (valueOf(each) > 0 ? {bad: true, text: formatCount(valueOf(each))} : "0");
const time = (valueOf) => (each) => formatTime(valueOf(each));

// The longest interval of a kind, with a link to its time.
function linkToLongest(isWanted, longestUs) {
    const items = rows.filter(isWanted).flatMap((row) => row.items);
    const item = items.find((each) => !each.isOpen && each.end - each.at === longestUs);
    return item ? linkToTime(item.at, item.end, formatTime(longestUs)) : formatTime(longestUs);
}

const taskColumns = [
    ["task", (task) => `${task.task} ${task.name}`],
    ["starts", number((task) => task.starts), "number"],
    ["ended", number((task) => task.ends), "number"],
    ["target", time((task) => task.targetTimeUs), "number"],
    ["p50", time((task) => task.p50RunUs), "number"],
    ["p90", time((task) => task.p90RunUs), "number"],
    ["p99", time((task) => task.p99RunUs), "number"],
    [
        "longest",
        (task) => linkToLongest(
                (row) => row.kind === "task" && row.number === task.task, task.longestRunUs),
        "number"
    ],
    ["over target", badCount((task) => task.overTarget), "number"],
    ["share", (task) => percentOf(task.overTarget, task.ends), "number"],
    ["busy", time((task) => task.totalRunUs), "number"],
    ["threads", (task) => task.threads.join(", ")],
];

const anchorColumns = [
    ["anchor", (anchor) => `${anchor.anchor}`],
    ["passes", number((anchor) => anchor.passes), "number"],
    ["latency target", time((anchor) => anchor.latencyTargetUs), "number"],
    ["p50", time((anchor) => anchor.p50LatencyUs), "number"],
    ["p90", time((anchor) => anchor.p90LatencyUs), "number"],
    ["p99", time((anchor) => anchor.p99LatencyUs), "number"],
    [
        "longest",
        (anchor) => linkToLongest(
                (row) => row.kind === "anchor" && row.number === anchor.anchor,
                anchor.longestLatencyUs),
        "number"
    ],
    ["over target", badCount((anchor) => anchor.overLatencyTarget), "number"],
    ["jitter target", time((anchor) => anchor.jitterTargetUs), "number"],
    ["p50", time((anchor) => anchor.p50JitterUs), "number"],
    ["p90", time((anchor) => anchor.p90JitterUs), "number"],
    ["p99", time((anchor) => anchor.p99JitterUs), "number"],
    ["largest", time((anchor) => anchor.largestJitterUs), "number"],
    ["over target", badCount((anchor) => anchor.overJitterTarget), "number"],
];

const serialColumns = [
    ["anchor", (anchor) => `${anchor.anchor}`],
    ["starts", number((anchor) => anchor.starts), "number"],
    ["ends", number((anchor) => anchor.ends), "number"],
    ["unmatched starts", badCount((anchor) => anchor.unmatchedStarts), "number"],
    ["unmatched ends", badCount((anchor) => anchor.unmatchedEnds), "number"],
    ["starts out of order", badCount((anchor) => anchor.outOfOrderStarts), "number"],
    ["ends out of order", badCount((anchor) => anchor.outOfOrderEnds), "number"],
    ["open at the end", number((anchor) => anchor.openAtEnd), "number"],
];

const spanColumns = [
    ["ended", number((spans) => spans.count), "number"],
    ["in all", time((spans) => spans.totalUs), "number"],
    ["longest", (spans) => linkToLongest((row) => row.kind === "span", spans.longestUs), "number"],
    ["starts within another", number((spans) => spans.nestedStarts), "number"],
    ["open at the end", badCount((spans) => spans.openAtEnd), "number"],
];

const commandColumns = [
    ["command", ([name]) => name],
    ["accepted", number(([, counts]) => counts.accepted), "number"],
    ["noted", badCount(([, counts]) => counts.noted), "number"],
    ["refused", badCount(([, counts]) => counts.refused), "number"],
    ["refused, injected", number(([, counts]) => counts.refusedInjected), "number"],
];

const operationColumns = [
    ["operation", ([name]) => name],
    ["calls", number(([, operation]) => operation.calls), "number"],
    ["returned -1, injected", number(([, operation]) => operation.failedInjected), "number"],
    ["returned -1", badCount(([, operation]) => operation.failed), "number"],
    [`first in ${unit}`, ([, operation]) => operation.firstFailedLine ?? "-", "number"],
];

const registrationColumns = [
    ["accepted", number((each) => each.accepted), "number"],
    ["after a refusal", number((each) => each.replayed), "number"],
    ["refused", badCount((each) => each.refused), "number"],
    [
        "never accepted",
        (each) =>
                each.neverAccepted.map((task) => `${task.uniqueTaskId} ${task.name}`).join(", ") ||
                "none"
    ],
];

const activeColumns = [
    ["what", (each) => each.what],
    [
        "since",
        (each) =>
                (each.sinceUs === undefined ? "-" :
                                              linkToTime(
                                                      each.sinceUs - data.firstUs, sessionUs,
                                                      formatMoment(each.sinceUs - data.firstUs))),
        "number"
    ],
];

function describeMerged(control) {
    return Object.entries(control)
            .filter(([, value]) =>
                            (Array.isArray(value) ? value.some((each) => each !== 0) :
                                                    Boolean(value)))
            .map(([name, value]) => `${name} ${JSON.stringify(value)}`)
            .join(", ");
}

function listUnreset({controls, furtherControls, criticalTaskUclamps}, when) {
    return [
        ...controls.map(
                (control) => ({
                    what: `control ${control.category} ${when}: ${describeControl(control)}`,
                    sinceUs: control.fromUs,
                    isControl: true
                })),
        ...(furtherControls > 0 ?
                    [{what: `${formatCount(furtherControls)} more controls ${when}`}] :
                    []),
        ...criticalTaskUclamps.map(
                ([task, uclamp]) => ({what: `uclamp ${uclamp} of task ${task} ${when}`})),
    ];
}

function listActive(active) {
    const {initialised, openDescriptors, runs, spans, control, controlAtUninit} = active;
    return [
        ...listUnreset(active.unresetControls, "never reset"),
        ...listUnreset(active.unresetControlsAtUninit, "not reset before uninit"),
        ...(initialised ? [{what: "the library is up"}] : []),
        ...(openDescriptors > 0 ?
                    [{what: `${countOf(openDescriptors, "open descriptor")} of the control node`}] :
                    []),
        ...(control ? [{what: `levels in force: ${describeMerged(control)}`}] : []),
        ...(controlAtUninit ?
                    [{what: `levels in force before uninit: ${describeMerged(controlAtUninit)}`}] :
                    []),
        ...runs.map((run) => ({
                        what: `${run.thread} runs task ${run.task} ${run.name}`,
                        sinceUs: run.sinceUs
                    })),
        ...spans.map(
                (span) => ({
                    what: `${span.thread} is in a critical span of value ${span.criticalValue}`,
                    sinceUs: span.sinceUs
                })),
    ];
}

const controlColumns = [
    ["category", (control) => `${control.category}`],
    [
        "at",
        ({fromUs, untilUs}) => linkToTime(
                fromUs - data.firstUs, untilUs - data.firstUs, formatMoment(fromUs - data.firstUs)),
        "number"
    ],
    ["time", ({fromUs, untilUs}) => formatTime(untilUs - fromUs), "number"],
    ["end", ({end}) => (end === "reset" ? end : {bad: true, text: end ?? "none"})],
    ["others meanwhile", number((control) => control.overlaps), "number"],
    ["activation", describeControl, "wide"],
];

const activationColumns = [
    ["activated", number((boosts) => boosts.activations), "number"],
    ["reset", number((boosts) => boosts.resets), "number"],
    ["resets of nothing", badCount((boosts) => boosts.unmatchedResets), "number"],
    ["never reset", badCount((boosts) => boosts.neverReset), "number"],
    ["most at once", number((boosts) => boosts.mostAtOnce), "number"],
    ["at least one", time((boosts) => boosts.activeUs), "number"],
    ["two or more", time((boosts) => boosts.overlapUs), "number"],
];

const vsyncColumns = [
    ["vsyncs", number((vsync) => vsync.count), "number"],
    [
        "per second", ({ratePerSecond}) => (ratePerSecond === null ? "-" : round(ratePerSecond, 2)),
        "number"
    ],
    ["p50 interval", time((vsync) => vsync.p50IntervalUs), "number"],
    ["p90", time((vsync) => vsync.p90IntervalUs), "number"],
    ["p99", time((vsync) => vsync.p99IntervalUs), "number"],
    ["longest", time((vsync) => vsync.longestIntervalUs), "number"],
    ["missed", badCount((vsync) => vsync.missed), "number"],
];

// Times at levels, with their share of the session.
function levelTimeColumns(name, levelOf) {
    return [
        [name, levelOf],
        ["time", time((level) => level.timeUs), "number"],
        ["share", (level) => percentOf(level.timeUs, summary.recordedUs), "number"],
    ];
}

function describeUclamps(levels) {
    const used = levels.slice(0, levels.findLastIndex((level) => level !== 0) + 1);
    return used.join(", ") || "none";
}

function boostTables() {
    const {boosts} = summary;
    const further = boosts.furtherUclampLevelsUs;
    const uclamps = boosts.uclampLevels.map(
            ({uclampLevels, timeUs}) => ({text: describeUclamps(uclampLevels), timeUs}));
    if (further > 0) {
        uclamps.push({text: "others", timeUs: further});
    }
    const left = boosts.furtherControls;
    const more = left > 0 ? `, the first ${boosts.controls.length}; ${formatCount(left)} more` : "";
    return [
        ["Controls", activationColumns, [boosts]],
        [`Each control${more}`, controlColumns, boosts.controls],
        [
            "Time at each merged percent level",
            levelTimeColumns("percent", (level) => `${level.percentLevel}`), boosts.percentLevels
        ],
        [
            "Time at each merged set of uclamps, by cluster",
            levelTimeColumns("uclamps", (level) => level.text), uclamps
        ],
    ];
}

// Says what the page leaves out of lists that are too long.
function describeLeftOut() {
    const parts = Object.entries(data.leftOut)
                          .filter(([, count]) => count > 0)
                          .map(([what, count]) => `${formatCount(count)} ${what}`);
    return parts.length === 0 ? "" :
                                `The page leaves out ${parts.join(", ")}; the summary has them.`;
}

function addTables() {
    document.getElementById("left-out").textContent = describeLeftOut();
    const commands =
            Object.entries(summary.commands)
                    .filter(([, counts]) => Object.values(counts).some((count) => count > 0));
    const tables = [
        ["Tasks", taskColumns, summary.tasks],
        [
            "Anchors: latency, and jitter, which is the change of latency from one pass to the next",
            anchorColumns, summary.anchors
        ],
        ["Serials of anchors", serialColumns, summary.anchors],
        ["Critical spans", spanColumns, [summary.criticalSpans]],
        ["Vsyncs", vsyncColumns, [summary.frames.vsync]],
        ...boostTables(),
        ["Still active at the end", activeColumns, listActive(summary.active)],
        ["Registrations of tasks", registrationColumns, [summary.registrations]],
        ["Commands that the driver received", commandColumns, commands],
        ["Operations that were called", operationColumns, Object.entries(summary.operations)],
        [
            "Findings of the driver",
            [["finding", ([text]) => text], ["times", number(([, times]) => times), "number"]],
            Object.entries(summary.findings)
        ],
    ];
    for (const [caption, columns, list] of tables) {
        if (list.length > 0) {
            document.getElementById("figures").append(makeTable(caption, columns, list));
        }
    }
}
