// What the timeline shows, as tables and text.

function rowInWindow(row) {
    const items = within(row.items, timeWindow.from, timeWindow.to);
    const cells = within(row.cells, timeWindow.from, timeWindow.to);
    const longest = largestOf(
            [...items.map((item) => item.end - item.at), ...cells.map((cell) => cell.longest)]);
    const sum = (list, valueOf) => list.reduce((total, each) => total + valueOf(each), 0);
    return {
        title: row.title,
        what: row.nouns,
        count: items.length + sum(cells, (cell) => cell.count),
        over: items.filter((item) => item.isOver).length + sum(cells, (cell) => cell.over),
        longest,
        total: sum(items, (item) => item.end - item.at) + sum(cells, (cell) => cell.total),
        aggregated: sum(cells, (cell) => cell.count),
        open: items.filter((item) => item.isOpen).length,
    };
}

function tableOfRows() {
    return makeTable(
            "",
            [
                ["row", (row) => row.title],
                ["what", (row) => row.what],
                ["count", (row) => formatCount(row.count), "number"],
                ["over target", (row) => formatCount(row.over), "number"],
                ["longest", (row) => formatTime(row.longest), "number"],
                ["in all", (row) => formatTime(row.total), "number"],
                ["open at the end", (row) => formatCount(row.open), "number"],
                ["of all, aggregated", (row) => formatCount(row.aggregated), "number"],
            ],
            rows.map(rowInWindow).filter((row) => row.count > 0),
    );
}

function tableOfLongest() {
    const mostShown = 100;
    const excess = (item) => (item.isOver ? 1e15 : 0) + item.end - item.at;
    const items = rows.flatMap((row) => within(row.items, timeWindow.from, timeWindow.to));
    return makeTable(
            "Those over their target first",
            [
                ["row", (item) => item.row.title],
                ["at", (item) => linkToTime(item.at, item.end, formatMoment(item.at)), "number"],
                ["time", (item) => formatTime(item.end - item.at), "number"],
                ["target", (item) => (item.target > 0 ? formatTime(item.target) : "-"), "number"],
                ["judgement", (item) => barKinds[kindOf(item)].text],
            ],
            items.sort((one, other) => excess(other) - excess(one)).slice(0, mostShown),
    );
}

function describeAggregation() {
    const cells = rows.flatMap((row) => row.cells);
    const aggregated = cells.reduce((sum, cell) => sum + cell.count, 0);
    const late = cells.reduce((sum, cell) => sum + cell.over, 0);
    const exact = rows.reduce((sum, row) => sum + row.items.length, 0);
    const sentences = [];
    if (aggregated > 0) {
        const widest = largestOf(cells.map((cell) => cell.end - cell.at));
        sentences.push(
                `${formatCount(exact)} intervals are exact: in each row the longest, and before these the ones over their target. ` +
                        `The other ${formatCount(aggregated)}, ${
                                formatCount(
                                        late)} of them over their target, are counted in cells of ` +
                        `${formatTime(widest)} or less; the table of rows says how many each row has.`,
        );
    } else {
        sentences.push("Every interval is exact.");
    }
    if (summary.boosts.furtherControls > 0) {
        const left = formatCount(summary.boosts.furtherControls);
        sentences.push(`The first controls have bars; ${left} later ones are left out.`);
    }
    if (data.intervalsWithoutRow > 0) {
        sentences.push(`There is no room for more rows: ${
                formatCount(data.intervalsWithoutRow)} intervals of others are left out.`);
    }
    return sentences.join(" ");
}
