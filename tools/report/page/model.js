// The data of the page, and its formatting. Times are in microseconds since the first call.

const data = JSON.parse(document.getElementById("session-data").textContent);
const summary = data.report.summary;
const sessionUs = Math.max(summary.recordedUs, 1);

// The calls of a program are numbered; those of a session have lines.
const isProgram = summary.program !== undefined;
const unit = isProgram ? "call" : "line";

const numberFormat = new Intl.NumberFormat("en");

function formatCount(count) { return numberFormat.format(count); }

// For nouns with a plural in s.
function countOf(count, noun) { return `${formatCount(count)} ${noun}${count === 1 ? "" : "s"}`; }

function round(value, digits) {
    return Number(value.toFixed(digits)).toLocaleString("en", {maximumFractionDigits: digits});
}

// A duration in a unit of suitable size.
function formatTime(us) {
    if (us === null || us === undefined) {
        return "-";
    }
    if (Math.abs(us) < 1000) {
        return `${round(us, 1)} µs`;
    }
    return Math.abs(us) < 1e6 ? `${round(us / 1e3, 3)} ms` : `${round(us / 1e6, 4)} s`;
}

// A point in time, in the unit of the table of commands.
function formatMoment(us) { return `${(us / 1e3).toFixed(3)} ms`; }

function percentOf(part, whole) {
    return whole > 0 ? `${((100 * part) / whole).toFixed(1)} %` : "-";
}

// Not with Math.max(...list), because there are limits to the number of arguments.
function largestOf(list) { return list.reduce((largest, each) => Math.max(largest, each), 0); }

function shorten(text, length) {
    return text.length > length ? `${text.slice(0, length - 1)}…` : text;
}

function makeElement(tag, properties = {}, ...children) {
    const element = document.createElement(tag);
    Object.assign(element, properties);
    element.append(...children);
    return element;
}

// A link that makes the charts show this time, with a margin.
function linkToTime(atUs, untilUs, text) {
    const marginUs = Math.max((untilUs - atUs) * 1.5, sessionUs / 400, 20);
    const from = Math.max(Math.floor(atUs - marginUs), 0);
    const to = Math.min(Math.ceil(untilUs + marginUs), sessionUs);
    const link = makeElement("a", {href: `#time=${from}-${to}`, textContent: text});
    link.dataset.at = atUs;
    return link;
}

// --- Rows of the timeline
// ---------------------------------------------------------------------------

const rowTexts = {
    control: {noun: "control", nouns: "controls", title: (row) => `control ${row.number}`},
    anchor: {noun: "pass", nouns: "passes", title: (row) => `anchor ${row.number}`},
    task: {noun: "run", nouns: "runs", title: (row) => `${row.thread} · ${row.number} ${row.name}`},
    span: {
        noun: "critical span",
        nouns: "critical spans",
        title: (row) => `${row.thread} · critical`
    },
};

// Gives an exact interval the figures of an aggregated one.
function makeItem(row, at, end, target, isOpen = false) {
    const longest = end - at;
    const isOver = target > 0 && longest > target;
    return {
        row,
        at,
        end,
        target,
        isOpen,
        isOver,
        count: 1,
        total: longest,
        longest,
        over: isOver ? 1 : 0
    };
}

function makeRow(source) {
    const row = {...source, ...rowTexts[source.kind]};
    row.title = row.title(source);
    row.items = (source.exact ??
                 []).map(([at, duration, target]) => makeItem(row, at, at + duration, target));
    row.cells = (source.cells ?? []).map(([place, count, total, longest, over]) => ({
                                             at: place * source.cellUs,
                                             end: Math.min((place + 1) * source.cellUs, sessionUs),
                                             count,
                                             total,
                                             longest,
                                             over,
                                             isCell: true,
                                             lane: 0,
                                             row,
                                         }));
    return row;
}

// What has not ended lasts until the end of the session.
function addOpenIntervals(rows) {
    const open = [
        ...summary.active.runs.map((run) => ({...run, kind: "task", number: run.task})),
        ...summary.active.spans.map((span) => ({...span, kind: "span", number: 0, name: ""})),
    ];
    for (const {kind, thread, number, name, sinceUs} of open) {
        let row = rows.find(
                (each) => each.kind === kind && each.thread === thread && each.number === number);
        if (!row) {
            row = makeRow({kind, thread, number, name});
            rows.push(row);
        }
        row.items.push(makeItem(row, sinceUs - data.firstUs, sessionUs, 0, true));
    }
}

function describeControl(control) {
    const wishes = [
        control.percentLevel === null ? "" : `percent level ${control.percentLevel}`,
        control.uclampLevels.length > 0 ? `uclamps ${control.uclampLevels.join(", ")}` : "",
        ...control.criticalTaskUclamps.map(([task, uclamp]) => `task ${task} at ${uclamp}`),
    ];
    const asked = wishes.filter((wish) => wish !== "").join("; ") || "no level";
    return `${control.call} by ${control.thread} in ${unit} ${control.line} asks for ${asked}`;
}

// A row for each category of controls.
function controlRows() {
    const rows = new Map();
    for (const control of summary.boosts.controls) {
        const {category, fromUs, untilUs, end} = control;
        if (!rows.has(category)) {
            rows.set(category, makeRow({kind: "control", thread: "", number: category, name: ""}));
        }
        const row = rows.get(category);
        const item = makeItem(row, fromUs - data.firstUs, untilUs - data.firstUs, 0, end === null);
        row.items.push({...item, note: describeControl(control)});
    }
    return [...rows.values()];
}

function makeRows() {
    const rows = [...controlRows(), ...data.rows.map(makeRow)];
    addOpenIntervals(rows);
    const threads = [...new Set(rows.map((row) => row.thread))];
    const placeOf = (row) => ({control: -2, anchor: -1})[row.kind] ?? threads.indexOf(row.thread);
    return rows.sort((one, other) => placeOf(one) - placeOf(other) || one.number - other.number);
}

const eventKinds = {
    finding: "finding of the driver",
    refusal: "refused as the driver was told to",
    failure: "call returned -1",
};

function describeEvent({kind, what, thread, line, text}) {
    const more = text === "" ? "" : `: ${text}`;
    return `${what} by ${thread} in ${unit} ${line}: ${eventKinds[kind]}${more}`;
}

const rows = makeRows();

// The intervals of a list, ordered by time, that overlap the time shown.
function within(intervals, from, to) {
    return intervals.filter((interval) => interval.end >= from && interval.at <= to);
}
