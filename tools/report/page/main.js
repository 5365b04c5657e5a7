// Puts the page together.

const mostEventsListed = 50;

function describeSession() {
    const name = summary.session.split("/").at(-1);
    document.title = `${name} - VELKPerfCtrl`;
    document.getElementById("session-name").textContent = name;
    const parts = [
        `${countOf(summary.calls, "call")} on ${countOf(summary.threads, "thread")}`,
        `${formatTime(summary.recordedUs)} recorded`,
    ];
    if (summary.error) {
        parts.push(`ended early: ${summary.error}`);
    } else if (summary.interrupted) {
        parts.push("interrupted: what was played until then");
    } else if (summary.cutOff) {
        parts.push(`the recording was cut off at ${summary.cutOff}`);
    }
    document.getElementById("session-facts").textContent = parts.join(", ");
    document.getElementById("about").textContent =
            `Written by velk-replay ${
                    data.version}. Times count from the first call of the session, in recorded time. ` +
            `Charts by Chart.js ${Chart.version}, © Chart.js contributors, MIT licence.`;
}

// The worst interval of a row's kind and number, and a link to it.
function linkToWorst(kind, number) {
    const items = rows.filter((row) => row.kind === kind && row.number === number)
                          .flatMap((row) => row.items);
    const late = items.filter((item) => item.isOver);
    if (late.length === 0) {
        return "";
    }
    const worst =
            late.reduce((one, other) => (other.end - other.at > one.end - one.at ? other : one));
    return linkToTime(worst.at, worst.end, `the worst, ${formatTime(worst.end - worst.at)}`);
}

function pointsOfTargets() {
    const tasks = summary.tasks.map(
            (task) => ({
                over: task.overTarget,
                share: task.overTarget / task.ends,
                text: `Task ${task.task} ${task.name} missed its target of ${
                        formatTime(task.targetTimeUs)} in ${formatCount(task.overTarget)} of ${
                        countOf(task.ends, "run")} (${percentOf(task.overTarget, task.ends)}): `,
                link: () => linkToWorst("task", task.task),
            }));
    const anchors =
            summary.anchors.map((anchor) => ({
                                    over: anchor.overLatencyTarget,
                                    share: anchor.overLatencyTarget / anchor.passes,
                                    text: `Anchor ${anchor.anchor} missed its latency target of ${
                                            formatTime(anchor.latencyTargetUs)} in ${
                                            formatCount(anchor.overLatencyTarget)} of ${
                                            formatCount(anchor.passes)} passes (${
                                            percentOf(anchor.overLatencyTarget, anchor.passes)}): `,
                                    link: () => linkToWorst("anchor", anchor.anchor),
                                }));
    return [...tasks, ...anchors]
            .filter((point) => point.over > 0)
            .sort((one, other) => other.share - one.share)
            .map(({text, link}) => makeElement("li", {}, text, link()));
}

function pointsOfEvents() {
    const points = data.events.slice(0, mostEventsListed)
                           .map((event) => makeElement(
                                        "li", {}, `${describeEvent(event)}: `,
                                        linkToTime(
                                                event.atUs, event.atUs,
                                                `at ${formatMoment(event.atUs)}`)));
    const all = Object.values(data.eventCounts).reduce((sum, count) => sum + count, 0);
    if (all > points.length) {
        points.push(makeElement("li", {
            textContent: `and ${
                    formatCount(all - points.length)} more findings, refusals and failed calls`
        }));
    }
    return points;
}

function pointsOfEnd() {
    return listActive(summary.active)
            .filter((each) => each.sinceUs === undefined)
            .map((each) => makeElement("li", {textContent: `At the end: ${each.what}`}));
}

function addAttention() {
    const points = [...pointsOfTargets(), ...pointsOfEvents(), ...pointsOfEnd()];
    const nothing = makeElement("li", {
        textContent: "Nothing: every target was met, and the driver found fault with nothing."
    });
    document.getElementById("attention").append(...(points.length > 0 ? points : [nothing]));
}

describeSession();
addAttention();
setUpWindow();
setUpTimeline();
addLatencyCharts();
addLevelCharts();
addDistributions();
addTables();
drawCharts();
timeWindow.listeners.push(updateCharts);
window.matchMedia("(prefers-color-scheme: dark)").addEventListener("change", drawCharts);
followAddress();
timeWindow.announce();
