// The frame rate reported to the driver over time, and the rate at which anchors ended.

const stretches = summary.frames.toldRates.map((stretch) => ({
                                                   ...stretch,
                                                   from: stretch.fromUs - data.firstUs,
                                                   until: stretch.untilUs - data.firstUs,
                                               }));

function rateOf(stretch, anchor) {
    return stretch.anchors.find((each) => each.anchor === anchor)?.endsPerSecond ?? null;
}

// A gap between stretches is a gap in the line.
function rateLine(valueOf) {
    return stretches.flatMap((stretch) => {
        const y = valueOf(stretch);
        return [{x: stretch.from, y}, {x: stretch.until, y}, {x: stretch.until, y: null}];
    });
}

function framesConfig(anchors) {
    const lines = [
        ["told frame rate", (stretch) => stretch.fps, [6, 4]],
        ...anchors.map(
                (anchor) =>
                        [`ends of anchor ${anchor} per second`,
                         (stretch) => rateOf(stretch, anchor), []]),
    ];
    return {
        type: "line",
        data: {
            datasets: lines.map(
                    ([label, valueOf, borderDash], place) => ({
                        label,
                        data: rateLine(valueOf),
                        pointStyle: "line",
                        pointRadius: 0,
                        pointHitRadius: 6,
                        borderWidth: 2,
                        borderDash,
                        borderColor: colour(place === 0 ? "target" : `series-${place % 4 + 1}`),
                    })),
        },
        options: {
            scales: {x: timeAxis(), y: valueAxis("frames per second")},
            interaction: {mode: "nearest", intersect: false},
            plugins: {
                legend: legendAbove,
                tooltip: {
                    callbacks: {title: (all) => (all.length > 0 ? formatMoment(all[0].raw.x) : "")}
                },
            },
        },
        plugins: [momentMark],
    };
}

function tableOfFrames(anchors) {
    const rate = (value) => (value === null ? "-" : round(value, 2));
    return makeTable(
            "",
            [
                ["from", ({from, until}) => linkToTime(from, until, formatMoment(from)), "number"],
                ["to", ({until}) => formatMoment(until), "number"],
                ["told", ({fps}) => formatCount(fps), "number"],
                ...anchors.map(
                        (anchor) =>
                                [`ends of anchor ${anchor} per second`,
                                 (stretch) => rate(rateOf(stretch, anchor)), "number"]),
            ],
            stretches,
    );
}

function addFrameChart() {
    const place = document.getElementById("frames");
    if (stretches.length === 0) {
        place.append(makeElement("p", {textContent: "No frame rate was told."}));
        return;
    }
    const anchors = [...new Set(
            stretches.flatMap((stretch) => stretch.anchors.map((each) => each.anchor)))];
    const [box, canvas] =
            makeCanvas("frame-rates", "Frame rates over time. The table below has its contents.");
    const details = makeElement(
            "details", {id: "frame-rates-table"},
            makeElement("summary", {textContent: "Frame rates as a table"}));
    place.append(box);
    if (summary.frames.furtherToldRates > 0) {
        const left = formatCount(summary.frames.furtherToldRates);
        place.append(makeElement(
                "p", {className: "hint", textContent: `${left} later rates are left out.`}));
    }
    place.append(details);
    addChart(canvas, () => framesConfig(anchors), () => {});
    keepTable(details.id, () => tableOfFrames(anchors));
}
