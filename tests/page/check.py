"""Opens pages in Chromium: check.py BUILD FOLDER [SCREENSHOT]

Every chart has its data, zooming and clicking work, nothing is on the console, whatever the names in
the session are; and the page of a million calls is small.
"""

import json
import pathlib
import re
import subprocess
import sys
from collections import Counter

import sessions
from browser import Browser

SAMPLES = pathlib.Path("samples")
MOST_BYTES = 10_000_000


def expect(is_so, what):
    if not is_so:
        sys.exit(f"{what}")


def expect_equal(actual, expected, what):
    expect(actual == expected, f"{what}: {actual!r}, expected {expected!r}")


def make_page(program, folder, session, tuning=SAMPLES / "tuning"):
    page = folder / (session.stem + ".html")
    done = subprocess.run([program, session, "--tuning", tuning, "--quiet", "--format", "jsonl", "--report", page],
                          capture_output=True, text=True)
    expect(done.returncode in (0, 1), done.stderr)
    return page, json.loads(done.stdout)["summary"]


def expect_full_charts(browser):
    for name, sets in browser.datasets().items():
        expect(sum(sets.values()) > 0, f"{name} has no data: {sets}")


def check_charts(browser):
    expect_full_charts(browser)
    charts = browser.datasets()
    expect_equal(charts["latency-2"]["pass"] + charts["latency-2"]["pass over its target"], 150, "passes of anchor 2")
    expect_equal(charts["timeline"]["critical span"], 150, "critical spans on the timeline")
    expect_equal(charts["timeline"]["control that is active"], 7, "controls on the timeline")


def check_tables(browser, summary):
    rows = browser.table("Tasks")
    expect_equal([row[:3] for row in rows],
                 [[f"{task['task']} {task['name']}", str(task["starts"]), str(task["ends"])] for task in summary["tasks"]],
                 "the table of tasks")
    expect_equal([row[1] for row in browser.table("Anchors")], [str(each["passes"]) for each in summary["anchors"]],
                 "the table of anchors")
    expect_equal(browser.run("""
        return [...document.querySelectorAll('main details:not([hidden])')].map((each) => each.open = true).length"""),
                 len(browser.datasets()), "tables of charts")
    browser.settle()
    expect_equal(browser.run("return document.querySelectorAll('main details:not([hidden]):not(:has(td))').length"), 0,
                 "charts without a table")
    browser.run("document.querySelectorAll('details').forEach((each) => each.open = false)")


def check_moves(browser):
    whole = browser.time_shown()
    expect_equal(whole, [0, 5002000], "the time that is shown first")
    x, y = browser.place_of("timeline", "critical span")
    browser.mouse("mouseWheel", x, y, deltaX=0, deltaY=-100, modifiers=2)
    zoomed = browser.time_shown()
    expect(whole[0] < zoomed[1] - zoomed[0] < whole[1], f"zoomed by the wheel: {zoomed}")
    browser.press("latency-1", "++")
    narrower = browser.time_shown()
    expect_equal(round((zoomed[1] - zoomed[0]) / (narrower[1] - narrower[0])), 4, "zoomed by two keys")
    browser.press("timeline", ["\ue014"])
    later = browser.time_shown()
    expect(narrower[0] < later[0], f"moved by a key from {narrower} to {later}")
    x, y = browser.place_of("timeline", "critical span")
    browser.mouse("mousePressed", x, y)
    browser.mouse("mouseMoved", x - 90, y)
    browser.mouse("mouseReleased", x - 90, y, buttons=0)
    expect(later[0] < browser.time_shown()[0], f"dragged to {browser.time_shown()}")
    browser.press("timeline", "0")
    expect_equal(browser.time_shown(), whole, "the whole session again")


def check_clicks(browser):
    browser.click(*browser.place_of("timeline", "over its target"))
    expect("over the target of" in browser.text("selection"), f"selected: {browser.text('selection')}")
    link = browser.run("const link = document.querySelector('#attention a'); link.click(); return link.hash;")
    browser.settle()
    browser.settle()
    start, end = map(int, link.removeprefix("#time=").split("-"))
    expect_equal(browser.time_shown(), [start, end], "the time that a link leads to")
    browser.press("timeline", "0")


def check_sample(browser, program, folder, screenshot):
    page, summary = make_page(program, folder, SAMPLES / "capture-5s.jsonl")
    for scheme in ("light", "dark"):
        browser.set_scheme(scheme)
        browser.open(page)
        check_charts(browser)
        check_tables(browser, summary)
        check_moves(browser)
        check_clicks(browser)
        expect_equal(browser.console(), [], f"on the console, {scheme}")
    browser.set_scheme("light")
    check_charts(browser)
    if screenshot:
        browser.open(page)
        browser.driver.set_window_size(1200, 1500)
        browser.settle()
        browser.driver.save_screenshot(screenshot)


def check_hostile(browser, program, folder):
    tuning = sessions.copy_tuning_with_hostile_name(SAMPLES / "tuning", folder / "hostile-tuning")
    session = sessions.write(folder / "<i>hostile.jsonl", sessions.hostile())
    page, _ = make_page(program, folder, session, tuning)
    browser.open(page)
    expect_equal(browser.driver.title, "<i>hostile.jsonl - VELKPerfCtrl", "title")
    expect_equal(browser.run("return document.querySelectorAll('img, b, i').length"), 0, "elements made of names")
    browser.run("for (const id of ['events', 'latency-1-table']) document.getElementById(id).open = true")
    browser.settle()
    expect_equal(sum(int(row[2]) for row in browser.table("Passes by their start")), 1, "passes, one at the very end")
    expect_equal([row[3] for row in browser.table("call returned -1: 1")], ["notifyTaskEnd"], "the table of events")
    expect_equal(browser.datasets()["timeline"]["open at the end"], 2, "a run and a control without an end")
    row = browser.table("Tasks")[0]
    expect_equal([row[0], row[-1]], [f"2 {sessions.HOSTILE_TASK}", sessions.HOSTILE_THREAD], "names in the table")
    for words in ("Anchor 1: 1 unmatched end.", "notifyTaskEnd by", "control 5 never reset: notifySingleShotControl by"):
        expect(words in browser.text("attention"), f"attention: {browser.text('attention')}")
    expect_equal(browser.datasets()["timeline"]["finding, refusal or failed call"], 1, "events on the timeline")
    expect_equal(browser.console(), [], "on the console, hostile names")


def check_program(browser, build, folder):
    for what, facts in (("cycles", "12 calls on 1 thread"), ("", "0 calls on 0 threads")):
        page = folder / "program.html"
        subprocess.run([build / "tools/velk-run", "--quiet", "--report", page, "--",
                        build / "tests/run/velk_live_program", what], capture_output=True, check=False)
        browser.open(page)
        expect(browser.text("session-facts").startswith(facts), f"a program: {browser.text('session-facts')}")
        expect("velk-run" in browser.text("about"), f"the writer: {browser.text('about')}")
        expect_equal(browser.console(), [], "on the console, a program")


def check_fullest(browser, page):
    """With every cell of every row filled, which takes more calls than a check can make."""
    text = page.read_text()
    head, data, tail = re.split(r'(?<=id="session-data">)(.*?)(?=</script>)', text, maxsplit=1, flags=re.DOTALL)
    data = json.loads(data)
    for row in data["rows"]:
        row["cells"] = [[place, 1, 1, 1, 0] for place in range(2048)]
    page.write_text(head + json.dumps(data).replace("<", "\\u003c") + tail)
    browser.open(page)
    expect_full_charts(browser)
    expect_equal(browser.console(), [], "on the console, all cells filled")


def check_long(browser, program, folder):
    calls = list(sessions.long_session(250_000))
    session = sessions.write(folder / "long.jsonl", calls)
    page, _ = make_page(program, folder, session)
    session.unlink()
    expect(page.stat().st_size < MOST_BYTES, f"{page}: {page.stat().st_size} bytes")
    browser.open(page)
    shown = dict(browser.run("""
        const data = JSON.parse(document.getElementById('session-data').textContent);
        return [...data.rows.map((row) => [`${row.thread} ${row.number}`,
            row.exact.length + row.cells.reduce((sum, cell) => sum + cell[1], 0)]),
            ['left out', data.intervalsWithoutRow]];"""))
    made = Counter(f"{call['thread']} {call['task']}" for call in calls if call["call"] == "notifyTaskEnd")
    made[" 1"] = 250_000
    left_out = shown.pop("left out")
    expect_equal(shown, {row: count for row, count in made.items() if row in shown}, "intervals of each row")
    expect_equal(sum(shown.values()) + left_out, sum(made.values()), "intervals")
    expect("exact" in browser.text("aggregation"), "nothing is said of what was aggregated")
    browser.press("timeline", "++")
    expect_full_charts(browser)
    expect_equal(browser.console(), [], "on the console, a million calls")
    check_fullest(browser, page)
    page.unlink()


def main():
    build, folder = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    program = build / "tools/velk-replay"
    browser = Browser()
    try:
        check_sample(browser, program, folder, sys.argv[3] if len(sys.argv) > 3 else None)
        check_hostile(browser, program, folder)
        check_program(browser, build, folder)
        check_long(browser, program, folder)
    finally:
        browser.close()
    print("The pages of the sample, of hostile names, of programs and of a million calls hold what they should.")


main()
