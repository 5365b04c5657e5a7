// What all charts share: colours, axes, redrawing.

const charts = [];       // {canvas, make, update, chart}
const leftOfAxes = 190;  // of all charts over time, so that they are aligned

function colour(name) {
    return getComputedStyle(document.documentElement).getPropertyValue(`--${name}`).trim();
}

// A canvas in a box of its own. `label` is what a screen reader says.
function makeCanvas(id, label) {
    const canvas = makeElement("canvas", {id, tabIndex: 0});
    canvas.setAttribute("role", "img");
    canvas.setAttribute("aria-label", label);
    return [makeElement("div", {className: "chart"}, canvas), canvas];
}

// `make` returns the configuration with the current colours; `update` updates a chart over time.
function addChart(canvas, make, update = null) {
    const entry = {canvas, make, update, chart: null};
    charts.push(entry);
    if (update) {
        attachMoves(canvas, () => entry.chart);
    }
}

function drawCharts() {
    Object.assign(
            Chart.defaults,
            {color: colour("faint"), borderColor: colour("grid"), animation: false});
    Chart.defaults.font.family = getComputedStyle(document.body).fontFamily;
    Object.assign(Chart.defaults, {responsive: true, maintainAspectRatio: false});
    Object.assign(Chart.defaults.plugins.tooltip, {
        backgroundColor: colour("text"),
        titleColor: colour("back"),
        bodyColor: colour("back"),
        displayColors: false,
    });
    for (const entry of charts) {
        entry.chart?.destroy();
        entry.chart = new Chart(entry.canvas, entry.make());
    }
    updateCharts();
}

function updateCharts() {
    for (const {chart, update} of charts) {
        if (update) {
            Object.assign(chart.options.scales.x, {min: timeWindow.from, max: timeWindow.to});
            update(chart);
            chart.update("none");
        }
    }
}

// A legend whose samples are drawn like the data.
const legendAbove = {
    position: "top",
    align: "start",
    labels: {usePointStyle: true, boxHeight: 7},
};

// All ticks of an axis have the same unit.
function formatTick(us, {min, max}) {
    const [unit, name] = max - min >= 2e6 ? [1e6, "s"] : max >= 2e3 ? [1e3, "ms"] : [1, "µs"];
    return `${round(us / unit, 3)} ${name}`;
}

function timeAxis(options = {}) {
    return {
        type: "linear",
        ticks: {
            maxRotation: 0,
            autoSkipPadding: 24,
            includeBounds: false,
            callback(us) { return formatTick(us, this); },
        },
        ...options,
    };
}

function valueAxis(title, options = {}) {
    return {
        min: 0,
        title: {display: true, text: title},
        afterFit(scale) { scale.width = leftOfAxes; },
        ...options,
    };
}

// Marks the time that a link selected.
const momentMark = {
    id: "momentMark",
    afterDraw(chart) {
        const {markUs, from, to} = timeWindow;
        if (markUs !== null && markUs >= from && markUs <= to) {
            drawLine(chart, chart.scales.x.getPixelForValue(markUs), colour("over"), []);
        }
    },
};

function drawLine(chart, x, strokeStyle, dash) {
    const {ctx, chartArea} = chart;
    ctx.save();
    Object.assign(ctx, {strokeStyle, lineWidth: 1.5});
    ctx.setLineDash(dash);
    ctx.beginPath();
    ctx.moveTo(x, chartArea.top);
    ctx.lineTo(x, chartArea.bottom);
    ctx.stroke();
    ctx.restore();
}
