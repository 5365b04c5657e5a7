// The time that all charts over time show.

const narrowestUs = 20;

const timeWindow = {
    from: 0,
    to: sessionUs,
    markUs: null,  // a time to mark
    listeners: [],
    isPending: false,

    show(from, to) {
        const width = Math.min(Math.max(to - from, Math.min(narrowestUs, sessionUs)), sessionUs);
        this.from = Math.min(Math.max(from, 0), sessionUs - width);
        this.to = this.from + width;
        this.announce();
    },

    zoom(factor, aroundUs = (this.from + this.to) / 2) {
        this.show(
                aroundUs - (aroundUs - this.from) * factor,
                aroundUs + (this.to - aroundUs) * factor);
    },

    // Moves by a fraction of the time shown.
    move(parts) {
        const us = (this.to - this.from) * parts;
        this.show(this.from + us, this.to + us);
    },

    // At most once per frame.
    announce() {
        if (this.isPending) {
            return;
        }
        this.isPending = true;
        requestAnimationFrame(() => {
            this.isPending = false;
            for (const listener of this.listeners) {
                listener();
            }
        });
    },
};

const moves = {
    "zoom-in": () => timeWindow.zoom(0.5),
    "zoom-out": () => timeWindow.zoom(2),
    earlier: () => timeWindow.move(-0.25),
    later: () => timeWindow.move(0.25),
    whole: () => timeWindow.show(0, sessionUs),
};

const moveOfKey = {
    "+": "zoom-in",
    "=": "zoom-in",
    "-": "zoom-out",
    ArrowLeft: "earlier",
    ArrowRight: "later",
    Home: "whole",
    0: "whole",
};

function timeAt(chart, event) {
    const x = event.clientX - chart.canvas.getBoundingClientRect().left;
    return chart.scales.x.getValueForPixel(x);
}

// Lets a chart over time be moved and zoomed. `chartOf` gives the chart of the canvas.
function attachMoves(canvas, chartOf) {
    let drag = null;
    canvas.addEventListener("keydown", (event) => {
        const move = moveOfKey[event.key];
        if (move && !event.ctrlKey && !event.metaKey && !event.altKey) {
            event.preventDefault();
            moves[move]();
        }
    });
    canvas.addEventListener(
            "wheel",
            (event) => {
                if (event.ctrlKey || event.metaKey) {
                    event.preventDefault();
                    timeWindow.zoom(event.deltaY > 0 ? 1.25 : 0.8, timeAt(chartOf(), event));
                }
            },
            {passive: false},
    );
    canvas.addEventListener("dblclick", (event) => timeWindow.zoom(0.25, timeAt(chartOf(), event)));
    canvas.addEventListener("pointerdown", (event) => {
        drag = {x: event.clientX, from: timeWindow.from, to: timeWindow.to};
    });
    canvas.addEventListener("pointermove", (event) => {
        if (drag && event.buttons & 1) {
            const {left, right} = chartOf().chartArea;
            const us = ((drag.x - event.clientX) / (right - left)) * (drag.to - drag.from);
            if (Math.abs(drag.x - event.clientX) > 3) {
                canvas.setPointerCapture(event.pointerId);
                timeWindow.show(drag.from + us, drag.to + us);
            }
        }
    });
    canvas.addEventListener("pointerup", () => {
        drag = null;
    });
}

// The address holds the time shown, so that links and the browser's back button restore it.
function followAddress() {
    const match = /^#time=(\d+)-(\d+)$/.exec(location.hash);
    if (match) {
        timeWindow.show(Number(match[1]), Number(match[2]));
    }
}

function setUpWindow() {
    for (const button of document.querySelectorAll("[data-move]")) {
        button.addEventListener("click", () => moves[button.dataset.move]());
    }
    document.addEventListener("click", (event) => {
        const link = event.target.closest?.("a[data-at]");
        if (link) {
            timeWindow.markUs = Number(link.dataset.at);
            document.getElementById("timeline-head").scrollIntoView();
            if (link.hash === location.hash) {
                followAddress();  // the address stays the same, so no event follows
            }
        }
    });
    window.addEventListener("hashchange", followAddress);
    timeWindow.listeners.push(() => {
        const {from, to} = timeWindow;
        const width = formatTime(to - from);
        document.getElementById("shown-time").value =
                `${formatMoment(from)} to ${formatMoment(to)} (${width})`;
    });
}
