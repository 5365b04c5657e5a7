// Tables of figures. A column is [head, what stands in a row, class].

function makeTable(caption, columns, list) {
    const head = makeElement(
            "tr", {},
            ...columns.map(
                    ([text, , className = ""]) =>
                            makeElement("th", {scope: "col", className, textContent: text})));
    const body = list.map((each) => {
        const cells = columns.map(([, valueOf, className = ""], place) => {
            const cell = makeElement(place === 0 ? "th" : "td", {className});
            const value = valueOf(each);
            cell.append(value?.bad ? value.text : (value ?? "-"));
            cell.classList.toggle("bad", Boolean(value?.bad));
            return cell;
        });
        cells[0].scope = "row";
        return makeElement("tr", {}, ...cells);
    });
    const table = makeElement(
            "table", {}, makeElement("thead", {}, head), makeElement("tbody", {}, ...body));
    if (caption !== "") {
        table.prepend(makeElement("caption", {textContent: caption}));
    }
    // What scrolls has to be in reach of the keyboard.
    return makeElement("div", {className: "table", tabIndex: 0}, table);
}

// Keeps the table in a details element as the time shown asks for, while it is open.
function keepTable(id, make) {
    const details = document.getElementById(id);
    let table = null;
    const renew = () => {
        if (details.open) {
            const next = make();
            if (table) {
                table.replaceWith(next);
            } else {
                details.append(next);
            }
            table = next;
        }
    };
    details.addEventListener("toggle", renew);
    timeWindow.listeners.push(renew);
}

const number = (valueOf) => (each) => formatCount(valueOf(each));
const badCount = (valueOf) => (each) =>
        (valueOf(each) > 0 ? {bad: true, text: formatCount(valueOf(each))} : "0");
const time = (valueOf) => (each) => formatTime(valueOf(each));

// The longest interval of a kind, with a link to its place.
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
    ["refused as told", number(([, counts]) => counts.refusedInjected), "number"],
];

const operationColumns = [
    ["operation", ([name]) => name],
    ["calls", number(([, operation]) => operation.calls), "number"],
    ["returned -1 as told", number(([, operation]) => operation.failedInjected), "number"],
    ["returned -1", badCount(([, operation]) => operation.failed), "number"],
    ["first in line", ([, operation]) => operation.firstFailedLine ?? "-", "number"],
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

function describeControl(control) {
    return Object.entries(control)
            .filter(([, value]) =>
                            (Array.isArray(value) ? value.some((each) => each !== 0) :
                                                    Boolean(value)))
            .map(([name, value]) => `${name} ${JSON.stringify(value)}`)
            .join(", ");
}

function listActive({initialised, openDescriptors, runs, spans, control, controlAtUninit}) {
    return [
        ...(initialised ? [{what: "the library is up"}] : []),
        ...(openDescriptors > 0 ?
                    [{what: `${countOf(openDescriptors, "open descriptor")} of the control node`}] :
                    []),
        ...(control ? [{what: `control: ${describeControl(control)}`}] : []),
        ...(controlAtUninit ?
                    [{what: `never reset before uninit: ${describeControl(controlAtUninit)}`}] :
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

function addTables() {
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
