// The merged levels of the controls over time.

const levelNames = (place) => (place === 0 ? "percent level" : `uclamp of cluster ${place - 1}`);

// Indices that hold a level at any time: 0 is the percent level, 1 the first uclamp level.
function usedLevels() {
    const places = (data.levels[0] ?? []).slice(1).map((_, place) => place);
    return places.filter((place) => data.levels.some((change) => change[place + 1] !== 0));
}

function levelLine(place) {
    const points = data.levels.map((change) => ({x: change[0], y: change[place + 1]}));
    const last = points.at(-1)?.y ?? 0;
    return [{x: 0, y: 0}, ...points, {x: sessionUs, y: last}];
}

function levelsConfig(places, title) {
    const highest = places[0] === 0 ?
            100 :
            largestOf(data.levels.flatMap((change) => places.map((place) => change[place + 1])));
    return {
        type: "line",
        data: {
            datasets: places.map((place, number) => ({
                                     label: levelNames(place),
                                     data: levelLine(place),
                                     stepped: true,
                                     pointStyle: "line",
                                     pointRadius: 0,
                                     pointHitRadius: 6,
                                     borderWidth: 2,
                                     borderColor: colour(`series-${(number % 4) + 1}`),
                                     backgroundColor: colour(`series-${(number % 4) + 1}`),
                                 })),
        },
        options: {
            scales: {x: timeAxis(), y: valueAxis(title, {max: highest})},
            interaction: {mode: "nearest", axis: "x", intersect: false},
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

function tableOfLevels(places) {
    const mostShown = 200;
    const {from, to} = timeWindow;
    const shown = data.levels.filter((change) => change[0] >= from && change[0] <= to);
    const caption = shown.length > mostShown ?
            `The first ${mostShown} of ${formatCount(shown.length)} changes in the time shown` :
            "Changes in the time shown";
    return makeTable(
            caption,
            [
                [
                    "at", (change) => linkToTime(change[0], change[0], formatMoment(change[0])),
                    "number"
                ],
                ...places.map(
                        (place) =>
                                [levelNames(place), (change) => formatCount(change[place + 1]),
                                 "number"]),
            ],
            shown.slice(0, mostShown),
    );
}

function addLevelCharts() {
    const place = document.getElementById("levels");
    const used = usedLevels();
    if (used.length === 0) {
        place.append(makeElement("p", {textContent: "No control asked for a level."}));
        return;
    }
    const percents = used.filter((each) => each === 0);
    const uclamps = used.filter((each) => each > 0);
    for (const [id, places, title] of [
                 ["levels-percent", percents, "percent"],
                 ["levels-uclamp", uclamps, "uclamp"],
    ]) {
        if (places.length > 0) {
            const [box, canvas] = makeCanvas(
                    id, `Merged levels over time, ${title}. The table below has its contents.`);
            place.append(box);
            addChart(canvas, () => levelsConfig(places, title), () => {});
        }
    }
    if (data.levelsLeftOut > 0) {
        place.append(makeElement("p", {
            className: "hint",
            textContent: `${
                    formatCount(
                            data.levelsLeftOut)} changes close to others are left out; of these the highest and the last levels stay.`
        }));
    }
    place.append(makeElement(
            "details", {id: "levels-table"},
            makeElement("summary", {textContent: "Merged levels as a table"})));
    keepTable("levels-table", () => tableOfLevels(used));
}
