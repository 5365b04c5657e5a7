// The latency of each anchor over time, against its target.

// At most two items for each pixel of the chart: the longest and the first.
function thinOut(items, pixelUs) {
    const columns = new Map();
    for (const item of items) {
        const column = Math.floor(item.at / pixelUs);
        const kept = columns.get(column);
        if (!kept) {
            columns.set(column, {first: item, longest: item});
        } else if (item.end - item.at > kept.longest.end - kept.longest.at) {
            kept.longest = item;
        }
    }
    return [...columns.values()].flatMap(
            ({first, longest}) => (first === longest ? [first] : [first, longest]));
}

function latencyConfig(row) {
    const points = (label, name) => ({
        label,
        data: [],
        pointStyle: "circle",
        showLine: false,
        pointRadius: 2.5,
        pointHoverRadius: 5,
        backgroundColor: colour(name),
        borderColor: colour(name),
    });
    const line = (label, name, options) => ({
        label,
        data: [],
        pointStyle: "line",
        pointRadius: 0,
        pointHitRadius: 4,
        borderWidth: 1.5,
        borderColor: colour(name),
        backgroundColor: colour(name),
        ...options,
    });
    return {
        type: "line",
        data: {
            datasets: [
                line("latency target", "target", {borderDash: [6, 4], stepped: true}),
                points("pass", "pass"),
                points("pass over its target", "over"),
                line("mean of aggregated passes", "aggregated"),
                line("longest of aggregated passes", "open"),
            ],
        },
        options: {
            scales: {
                x: timeAxis(),
                y: valueAxis("latency", {
                    suggestedMax: 1.1 * largestOf(row.items.map((item) => item.target)),
                    ticks: {
                        callback(us) { return formatTick(us, this); },
                    },
                }),
            },
            interaction: {mode: "nearest", intersect: true},
            onClick(event, elements, chart) {
                const shown = elements.map(
                        ({datasetIndex, index}) =>
                                chart.data.datasets[datasetIndex].data[index].shown);
                if (shown[0]) {
                    select(shown[0]);
                }
            },
            plugins: {
                legend: {
                    ...legendAbove,
                    labels: {
                        ...legendAbove.labels,
                        filter: ({datasetIndex}, {datasets}) =>
                                datasets[datasetIndex].data.length > 0
                    }
                },
                tooltip: {
                    callbacks: {
                        title: (all) => (all.length > 0 ? formatMoment(all[0].raw.x) : ""),
                        label: ({dataset, raw}) =>
                                (raw.shown ? describeBar(raw.shown)[1] :
                                             `${dataset.label}: ${formatTime(raw.y)}`),
                    },
                },
            },
        },
        plugins: [momentMark],
    };
}

// The target wherever it changes, and at both ends of what is shown.
function targetLine(row) {
    const steps = [];
    for (const item of row.items) {
        if (item.target > 0 && (steps.length === 0 || steps.at(-1).y !== item.target)) {
            steps.push({x: item.at, y: item.target});
        }
    }
    if (steps.length > 0) {
        steps[0].x = 0;
        steps.push({x: sessionUs, y: steps.at(-1).y});
    }
    return steps;
}

function updateLatency(chart, row) {
    const {from, to} = timeWindow;
    const pixelUs = (to - from) / 1200;
    const points = (items) =>
            thinOut(items, pixelUs).map((item) => ({x: item.at, y: item.longest, shown: item}));
    const items = within(row.items, from, to);
    const cells = within(row.cells, from, to);
    const ofCells = (valueOf) =>
            cells.map((cell) => ({x: (cell.at + cell.end) / 2, y: valueOf(cell), shown: cell}));
    const lines = [
        targetLine(row),
        points(items.filter((item) => !item.isOver)),
        points(items.filter((item) => item.isOver)),
        ofCells((cell) => cell.total / cell.count),
        ofCells((cell) => cell.longest),
    ];
    chart.data.datasets.forEach((dataset, place) => {
        dataset.data = lines[place];
    });
}

// Divides the time shown into slices, so that the table stays short.
function tableOfLatency(row) {
    const slices = 20;
    const {from, to} = timeWindow;
    const list = Array.from({length: slices}, (_, place) => ({
                                                  from: from + ((to - from) * place) / slices,
                                                  to: from + ((to - from) * (place + 1)) / slices,
                                                  count: 0,
                                                  total: 0,
                                                  longest: 0,
                                                  over: 0,
                                              }));
    const add = (at, {count, total, longest, over}) => {
        // The end of the time shown is in the last slice.
        const place = at === to ? slices - 1 : Math.floor(((at - from) / (to - from)) * slices);
        const slice = list[place];
        if (slice) {
            slice.count += count;
            slice.total += total;
            slice.longest = Math.max(slice.longest, longest);
            slice.over += over;
        }
    };
    for (const each of [...row.items, ...row.cells]) {
        add(each.at, each);
    }
    return makeTable(
            "Passes by their start",
            [
                ["from", (slice) => formatMoment(slice.from), "number"],
                ["to", (slice) => formatMoment(slice.to), "number"],
                ["passes", (slice) => formatCount(slice.count), "number"],
                [
                    "mean latency",
                    (slice) => (slice.count > 0 ? formatTime(slice.total / slice.count) : "-"),
                    "number"
                ],
                [
                    "longest", (slice) => (slice.count > 0 ? formatTime(slice.longest) : "-"),
                    "number"
                ],
                ["over target", (slice) => formatCount(slice.over), "number"],
            ],
            list,
    );
}

function addLatencyCharts() {
    const place = document.getElementById("latencies");
    const anchors = rows.filter((row) => row.kind === "anchor");
    if (anchors.length === 0) {
        place.append(makeElement("p", {textContent: "No pass of an anchor ended."}));
    }
    for (const row of anchors) {
        const id = `latency-${row.number}`;
        const [box, canvas] = makeCanvas(
                id, `Latency of ${row.title} over time. The table below has its contents.`);
        const table =
                makeElement("details", {id: `${id}-table`}, makeElement("summary", {
                                textContent: `Latency of ${row.title} in the time shown, as a table`
                            }));
        place.append(
                makeElement("h3", {textContent: `Anchor ${row.number}`}),
                makeElement("p", {textContent: describeAnchor(row.number)}), box, table);
        addChart(canvas, () => latencyConfig(row), (chart) => updateLatency(chart, row));
        keepTable(table.id, () => tableOfLatency(row));
    }
}

function describeAnchor(number) {
    const anchor = summary.anchors.find((each) => each.anchor === number);
    if (!anchor) {
        return "";
    }
    const target = anchor.latencyTargetUs > 0 ? `target ${formatTime(anchor.latencyTargetUs)}` :
                                                "no target";
    const judged = (over, count) => `${formatCount(over)} over it (${percentOf(over, count)})`;
    return (`${formatCount(anchor.passes)} passes, ${target}, ${
                    judged(anchor.overLatencyTarget, anchor.passes)}; ` +
            `p50 ${formatTime(anchor.p50LatencyUs)}, p90 ${formatTime(anchor.p90LatencyUs)}, ` +
            `p99 ${formatTime(anchor.p99LatencyUs)}, longest ${
                    formatTime(anchor.longestLatencyUs)}.`);
}
