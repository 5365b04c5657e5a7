// The timeline: a row for each anchor, and for each task of each thread.

const rowHeight = 20;
const mostLanes = 6;  // of an anchor, as its passes may overlap

const barKinds = {
    onTime: {text: "run within its target", colour: "on-time"},
    pass: {text: "pass of an anchor", colour: "pass"},
    over: {text: "over its target", colour: "over"},
    control: {text: "control that is active", colour: "control"},
    span: {text: "critical span", colour: "span"},
    open: {text: "open at the end", colour: "open"},
    aggregated: {text: "several, aggregated", colour: "aggregated"},
    event: {text: "finding, refusal or failed call", colour: "over"},
};

// Assigns every interval a lane in which it overlaps no other, as long as there are lanes.
function assignLanes(row) {
    const ends = [];
    row.items.sort((one, other) => one.at - other.at);
    for (const item of row.items) {
        const free = ends.findIndex((end) => end <= item.at);
        item.lane = free >= 0 ? free : Math.min(ends.length, mostLanes - 1);
        ends[item.lane] = item.end;
    }
    return Math.max(ends.length, 1);
}

// Assigns every row its line from the top. Returns the labels of all lines.
function layOutRows() {
    const labels = data.events.length > 0 ? ["findings, failures"] : [];
    for (const row of rows) {
        row.place = labels.length;
        const lanes = assignLanes(row);
        for (let lane = 0; lane < lanes; ++lane) {
            labels.push(lane === 0 ? row.title : "");
        }
    }
    return labels;
}

function kindOf(item) {
    if (item.isCell) {
        return "aggregated";
    }
    if (item.isOpen) {
        return "open";
    }
    if (item.isOver) {
        return "over";
    }
    return {task: "onTime", anchor: "pass", span: "span", control: "control"}[item.row.kind];
}

function addToGroup(group, item) {
    group.end = Math.max(group.end, item.end);
    group.count += item.count;
    group.total += item.total;
    group.longest = Math.max(group.longest, item.longest);
    group.over += item.over;
}

// Joins neighbours of the same lane and kind when both they and the gap are below the grain.
function joinNarrow(items, grainUs) {
    const joined = [];
    const last = new Map();  // by lane and kind
    for (const item of items) {
        const key = `${item.lane} ${kindOf(item)}`;
        const before = last.get(key);
        const isNarrow = item.end - item.at < grainUs;
        if (before && isNarrow && item.at - before.end < grainUs &&
            item.end - before.at < 2 * grainUs) {
            addToGroup(before, item);
            continue;
        }
        const group = {...item};
        if (isNarrow) {
            last.set(key, group);
        }
        joined.push(group);
    }
    return joined;
}

// The bars of the rows in the time shown, no more than a browser draws smoothly: the grain is a
// pixel, or coarser when there would be more bars.
function joinedIntervals(pixelUs) {
    const mostBars = 6000;
    const {from, to} = timeWindow;
    const lists = rows.flatMap((row) => [within(row.cells, from, to), within(row.items, from, to)]);
    let joined = [];
    for (let grainUs = pixelUs;; grainUs *= 2) {
        joined = lists.flatMap((list) => joinNarrow(list, grainUs));
        if (joined.length <= mostBars || grainUs > to - from) {
            return joined;
        }
    }
}

// The bars of each kind in the time shown.
function barsInWindow(pixelUs) {
    const {from, to} = timeWindow;
    const bars = Object.fromEntries(Object.keys(barKinds).map((kind) => [kind, []]));
    const add = (kind, place, shown) => {
        // Where there is room, a gap of a pixel separates adjacent bars.
        const gapUs = shown.count === 1 && !shown.isCell && shown.end - shown.at > 6 * pixelUs ?
                pixelUs :
                0;
        bars[kind].push(
                {x: [Math.max(shown.at, from), Math.min(shown.end - gapUs, to)], y: place, shown});
    };
    for (const event of data.events) {
        if (event.atUs >= from && event.atUs <= to) {
            add("event", 0, {at: event.atUs, end: event.atUs, event});
        }
    }
    for (const shown of joinedIntervals(pixelUs)) {
        add(kindOf(shown), shown.row.place + shown.lane, shown);
    }
    return bars;
}

// The tooltip of a bar: its row, and lines about it.
function describeBar({at, end, count, total, longest, over, target, isOpen, event, row, note}) {
    if (event) {
        return [eventKinds[event.kind], [describeEvent(event), `at ${formatMoment(at)}`]];
    }
    const times = `from ${formatMoment(at)} to ${formatMoment(end)}`;
    const notes = note && count === 1 ? [note] : [];
    if (isOpen) {
        return [row.title, [`${row.noun} without an end`, ...notes, times]];
    }
    if (count > 1) {
        const late = over > 0 ? `, ${formatCount(over)} over the target` : "";
        const mean = formatTime(total / count);
        return [
            row.title,
            [
                `${formatCount(count)} ${row.nouns}${late}`,
                `mean ${mean}, longest ${formatTime(longest)}`, times
            ]
        ];
    }
    const excess = end - at - target;
    const judged = target > 0 ?
            `, ${formatTime(Math.abs(excess))} ${excess > 0 ? "over" : "below"} the target of ${
                    formatTime(target)}` :
            "";
    return [row.title, [`${row.noun} of ${formatTime(longest)}${judged}`, ...notes, times]];
}

function select(shown) {
    const [title, lines] = describeBar(shown);
    const place = document.getElementById("selection");
    place.textContent = `${title}\n${lines.join("; ")} `;
    place.append(linkToTime(shown.at, shown.end, "show it"));
}

function timelineConfig(labels) {
    return {
        type: "bar",
        data: {
            datasets: Object.entries(barKinds).map(([kind, {text, colour: name}]) => ({
                                                       label: text,
                                                       kind,
                                                       data: [],
                                                       backgroundColor: colour(name),
                                                       grouped: false,
                                                       barThickness: rowHeight - 6,
                                                       minBarLength: kind === "event" ? 4 : 1.5,
                                                   })),
        },
        options: {
            indexAxis: "y",
            scales: {
                x: timeAxis({position: "top"}),
                y: {
                    type: "linear",
                    min: -0.5,
                    max: labels.length - 0.5,
                    reverse: true,
                    grid: {
                        drawTicks: false,
                        color: (line) => (labels[line.tick?.value] ? colour("grid") : "transparent")
                    },
                    afterBuildTicks(scale) { scale.ticks = labels.map((_, value) => ({value})); },
                    ticks: {
                        autoSkip: false,
                        color: colour("text"),
                        callback: (place) => shorten(labels[place], 26)
                    },
                    afterFit(scale) { scale.width = leftOfAxes; },
                },
            },
            interaction: {mode: "nearest", intersect: true},
            onClick(event, elements, chart) {
                if (elements.length > 0) {
                    const {datasetIndex, index} = elements[0];
                    select(chart.data.datasets[datasetIndex].data[index].shown);
                }
            },
            plugins: {
                legend: {display: false},
                tooltip: {
                    callbacks: {
                        title: (points) =>
                                (points.length > 0 ? describeBar(points[0].raw.shown)[0] : ""),
                        label: (point) => describeBar(point.raw.shown)[1],
                    },
                },
            },
        },
        plugins: [momentMark],
    };
}

function updateTimeline(chart) {
    const pixels = Math.max(chart.chartArea?.right - chart.chartArea?.left || 0, 400);
    const bars = barsInWindow((timeWindow.to - timeWindow.from) / pixels);
    for (const dataset of chart.data.datasets) {
        dataset.data = bars[dataset.kind];
    }
}

function setUpTimeline() {
    const labels = layOutRows();
    document.getElementById("timeline-box").style.height =
            `${Math.max(labels.length, 3) * rowHeight + 44}px`;
    document.getElementById("aggregation").textContent = describeAggregation();
    const used = barsInWindow(sessionUs / 1000);
    for (const [kind, {text, colour: name}] of Object.entries(barKinds)) {
        if (used[kind].length > 0) {
            const sample = makeElement("span");
            sample.style.background = `var(--${name})`;
            document.getElementById("timeline-legend").append(makeElement("li", {}, sample, text));
        }
    }
    addChart(document.getElementById("timeline"), () => timelineConfig(labels), updateTimeline);
    keepTable("timeline-rows", tableOfRows);
    keepTable("timeline-longest", tableOfLongest);
}
