// Tables of figures. A column is [heading, cell of a row, class].

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
    // A scrolling element has to be reachable by keyboard.
    return makeElement("div", {className: "table", tabIndex: 0}, table);
}

// While the details element is open, updates its table to the time shown.
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
