// How the run times of each task are distributed, against its target.

function barsOf({fromUs, widthUs, counts, above}) {
    const bars = counts.map(
            (count, place) =>
                    ({from: fromUs + place * widthUs, to: fromUs + (place + 1) * widthUs, count}));
    if (above > 0) {
        bars.push({from: bars.at(-1).to, to: null, count: above});
    }
    return bars;
}

function nameOfBar({from, to}) {
    return to === null ? `${formatTime(from)} and more` :
                         `${formatTime(from)} to ${formatTime(to)}`;
}

function targetMark(targetUs) {
    return {
        id: "targetMark",
        afterDatasetsDraw(chart) {
            drawLine(chart, chart.scales.x.getPixelForValue(targetUs), colour("target"), [5, 3]);
        },
    };
}

function distributionConfig(task, source) {
    const {widthUs} = source;
    const bars = barsOf(source);
    return {
        type: "bar",
        data: {
            datasets: [
                {
                    label: "runs",
                    // A bar without a run must have no height.
                    data: bars.map(
                            (bar) => ({x: bar.from + widthUs / 2, y: bar.count || null, bar})),
                    backgroundColor: bars.map(
                            (bar) => colour(bar.from >= task.targetTimeUs ? "over" : "on-time")),
                    barThickness: "flex",
                    barPercentage: 1,
                    categoryPercentage: 0.92,
                    minBarLength: 2,
                },
            ],
        },
        options: {
            scales: {
                x: timeAxis({
                    min: source.fromUs,
                    max: bars.at(-1).from + widthUs,
                    offset: false,
                    grid: {display: false}
                }),
                y: {beginAtZero: true, ticks: {precision: 0}, title: {display: true, text: "runs"}},
            },
            interaction: {mode: "nearest", axis: "x", intersect: false},
            plugins: {
                legend: {display: false},
                tooltip: {
                    callbacks: {title: (all) => (all.length > 0 ? nameOfBar(all[0].raw.bar) : "")}
                },
            },
        },
        plugins: [targetMark(task.targetTimeUs)],
    };
}

function describeTask(task) {
    return (`Target ${formatTime(task.targetTimeUs)} (dashed), ${formatCount(task.overTarget)} of ${
                    countOf(task.ends, "run")} over it ` +
            `(${percentOf(task.overTarget, task.ends)}); p50 ${formatTime(task.p50RunUs)}, p90 ${
                    formatTime(task.p90RunUs)}, ` +
            `p99 ${formatTime(task.p99RunUs)}, longest ${formatTime(task.longestRunUs)}.`);
}

function addDistributions() {
    const place = document.getElementById("distributions");
    summary.tasks.forEach((task, number) => {
        const title = `${task.task} ${task.name}`;
        const article = makeElement(
                "article", {}, makeElement("h3", {textContent: title}),
                makeElement("p", {className: "hint", textContent: describeTask(task)}));
        place.append(article);
        if (task.ends === 0) {
            return;
        }
        const [box, canvas] = makeCanvas(
                `distribution-${task.task}`,
                `Run times of task ${title}. The table below has its contents.`);
        const source = data.runBars[number];
        const bars = barsOf(source).filter((bar) => bar.count > 0);
        const table = makeTable(
                "", [["run time", nameOfBar], ["runs", (bar) => formatCount(bar.count), "number"]],
                bars);
        article.append(
                box,
                makeElement(
                        "details", {}, makeElement("summary", {textContent: "As a table"}), table));
        addChart(canvas, () => distributionConfig(task, source));
    });
    if (summary.tasks.length === 0) {
        place.append(makeElement("p", {textContent: "No task was registered."}));
    }
}
