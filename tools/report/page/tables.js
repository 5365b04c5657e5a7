// Tables of figures. A column is [head, what stands in a row, class].

function makeTable(caption, columns, list) {
    const head = makeElement(
            "tr", {},
            ...columns.map(
                    ([text, , className = ""]) =>
                            makeElement("th", {scope: "col", className, textContent: text})));
    const body = list.map((each) => {
        const cells = columns.map(([, valueOf, className = ""], place) => {
            const cell = makeElement(place === 0 ? "th" : "td", {className});
            const value = valueOf(each);
            cell.append(value?.bad ? value.text : (value ?? "-"));
            cell.classList.toggle("bad", Boolean(value?.bad));
            return cell;
        });
        cells[0].scope = "row";
        return makeElement("tr", {}, ...cells);
    });
    const table = makeElement(
            "table", {}, makeElement("thead", {}, head), makeElement("tbody", {}, ...body));
    if (caption !== "") {
        table.prepend(makeElement("caption", {textContent: caption}));
    }
    // What scrolls has to be in reach of the keyboard.
    return makeElement("div", {className: "table", tabIndex: 0}, table);
}

// Keeps the table in a details element as the time shown asks for, while it is open.
function keepTable(id, make) {
    const details = document.getElementById(id);
    let table = null;
    const renew = () => {
        if (details.open) {
            const next = make();
            if (table) {
                table.replaceWith(next);
            } else {
                details.append(next);
            }
            table = next;
        }
    };
    details.addEventListener("toggle", renew);
    timeWindow.listeners.push(renew);
}
