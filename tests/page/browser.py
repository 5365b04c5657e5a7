"""A headless Chromium with a page of velk-replay in it."""

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service

DATASETS = """
return [...document.querySelectorAll('canvas')].map((canvas) => [canvas.id,
    Object.fromEntries(Chart.getChart(canvas).data.datasets.map((set) => [set.label, set.data.length]))]);
"""
WHERE = """
const chart = Chart.getChart(arguments[0]);
const place = chart.data.datasets.findIndex((set) => set.label === arguments[1]);
const {x, y} = chart.getDatasetMeta(place).data[0].getCenterPoint();
chart.canvas.scrollIntoView({block: 'center'});
const box = chart.canvas.getBoundingClientRect();
return [box.left + x, box.top + y];
"""
NEXT_FRAMES = """
const done = arguments[0];
requestAnimationFrame(() => requestAnimationFrame(() => done()));
"""


class Browser:
    def __init__(self):
        options = Options()
        options.binary_location = "/usr/bin/chromium"
        # The pages are the project's own, and a sandbox needs what containers do not give.
        for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                         "--hide-scrollbars", "--window-size=1400,1000"):
            options.add_argument(argument)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        self.driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)

    def open(self, path):
        self.driver.get("about:blank")
        self.driver.get_log("browser")
        self.driver.get(path.resolve().as_uri())
        self.settle()

    def settle(self):
        self.driver.execute_async_script(NEXT_FRAMES)

    def console(self):
        return self.driver.get_log("browser")

    def set_scheme(self, scheme):
        media = {"features": [{"name": "prefers-color-scheme", "value": scheme}]}
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", media)
        self.settle()

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def datasets(self):
        """By the canvas's id: how many elements each of the chart's data sets has."""
        return dict(self.run(DATASETS))

    def time_shown(self):
        """In microseconds, as the axis of the timeline has it."""
        return self.run("const {min, max} = Chart.getChart('timeline').scales.x; return [min, max];")

    def place_of(self, chart, label):
        """Where the first element of a data set is on the screen."""
        return self.run(WHERE, chart, label)

    def mouse(self, kind, x, y, **more):
        event = {"type": kind, "x": x, "y": y, "button": "left", "buttons": 1, "clickCount": 1, **more}
        self.driver.execute_cdp_cmd("Input.dispatchMouseEvent", event)
        self.settle()

    def click(self, x, y):
        self.mouse("mousePressed", x, y)
        self.mouse("mouseReleased", x, y, buttons=0)

    def press(self, element_id, keys):
        element = self.driver.find_element("id", element_id)
        for key in keys:
            element.send_keys(key)
        self.settle()

    def text(self, element_id):
        return self.run("return document.getElementById(arguments[0]).textContent;", element_id)

    def table(self, caption):
        """The cells of the table whose caption begins so, row by row."""
        return self.run("""
            const table = [...document.querySelectorAll('table')].find(
                (each) => each.caption?.textContent.startsWith(arguments[0]));
            return [...table.tBodies[0].rows].map((row) => [...row.cells].map((cell) => cell.textContent));
        """, caption)

    def close(self):
        self.driver.quit()
