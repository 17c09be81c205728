"""A browser without a window, and what tests ask of a page in it."""

import io
import json
import time

from PIL import Image
from selenium import webdriver
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

# From the first key to what the screen is given, 200 times: the cost of a step in milliseconds.
PAN = """
const done = arguments[arguments.length - 1], costs = [];
const press = (key) => document.dispatchEvent(new KeyboardEvent("keydown", {key, bubbles: true}));
function step() {
  let begin;
  requestAnimationFrame(() => (begin = performance.now()));
  press(costs.length % 40 < 20 ? "ArrowRight" : "ArrowLeft");
  requestAnimationFrame(() => {
    const channel = new MessageChannel();
    channel.port1.onmessage = () => {
      costs.push(performance.now() - begin);
      if (costs.length < 200) step();
      else done(costs.sort((a, b) => a - b));
    };
    channel.port2.postMessage(0);
  });
}
press("0");
for (let i = 0; i < arguments[0]; ++i) press("+");
step();
"""


class Browser:
    def __init__(self):
        options = webdriver.ChromeOptions()
        for argument in ("--headless=new", "--no-sandbox", "--hide-scrollbars", "--disable-dev-shm-usage"):
            options.add_argument(argument)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        service = webdriver.chrome.service.Service("/usr/bin/chromedriver")
        self.driver = webdriver.Chrome(service=service, options=options)
        self.driver.set_script_timeout(120)

    def close(self):
        self.driver.quit()

    def open(self, path, width=1280, height=1000, theme="light", address=""):
        """Shows a page and returns when it is ready. It must say nothing to the console and ask nothing of anybody."""
        self.driver.get("about:blank")
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {
            "features": [{"name": "prefers-color-scheme", "value": theme}]})
        self.messages(), self.requests()
        self.driver.get(f"file://{path}{address}")
        self.wait(lambda: self.run("return document.documentElement.dataset.ready"))
        self.rest()

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def wait(self, holds, seconds=60):
        end = time.monotonic() + seconds
        while not holds():
            if time.monotonic() > end:
                raise AssertionError("waited in vain")
            time.sleep(0.02)

    def rest(self):
        """Until what was asked for is drawn."""
        self.driver.execute_async_script("const done = arguments[0];"
                                         "requestAnimationFrame(() => requestAnimationFrame(() => setTimeout(done, 300)))")

    def messages(self):
        return [entry["message"] for entry in self.driver.get_log("browser")]

    def requests(self):
        sent = [json.loads(entry["message"])["message"] for entry in self.driver.get_log("performance")]
        return [event["params"]["request"]["url"] for event in sent if event["method"] == "Network.requestWillBeSent"]

    def press(self, *keys):
        for key in keys:
            self.driver.find_element(By.CSS_SELECTOR, ".chart").send_keys(key)
        self.rest()

    def text(self, selector):
        return self.run("return document.querySelector(arguments[0]).textContent", selector)

    def fact(self, term):
        return self.run("""return [...document.querySelectorAll(".facts dt")]
            .find((dt) => dt.textContent === arguments[0]).nextElementSibling.textContent""", term)

    def mouse(self, kind, x, y, **more):
        self.driver.execute_cdp_cmd("Input.dispatchMouseEvent", {"type": kind, "x": x, "y": y, **more})

    def click(self, x, y):
        self.mouse("mousePressed", x, y, button="left", clickCount=1)
        self.mouse("mouseReleased", x, y, button="left", clickCount=1)
        self.rest()

    def drag(self, x, to, y):
        self.mouse("mousePressed", x, y, button="left", clickCount=1)
        for part in range(1, 6):
            self.mouse("mouseMoved", x + (to - x) * part / 5, y, button="left", buttons=1)
        self.mouse("mouseReleased", to, y, button="left", clickCount=1)
        self.rest()

    def pinch(self, x, y, distances):
        """Two fingers, side by side around x, at one distance after the other."""
        touch = lambda kind, points: self.driver.execute_cdp_cmd("Input.dispatchTouchEvent", {
            "type": kind, "touchPoints": [{"x": at, "y": y, "id": i} for i, at in enumerate(points)]})
        for i, distance in enumerate(distances):
            touch("touchStart" if i == 0 else "touchMove", [x - distance / 2, x + distance / 2])
        touch("touchEnd", [])
        self.rest()

    def wheel(self, x, y, delta, ctrl=False):
        self.mouse("mouseWheel", x, y, deltaX=0, deltaY=delta, modifiers=2 if ctrl else 0)
        self.rest()

    def range(self):
        """What the address says, seconds."""
        address = self.run("return location.hash")
        return tuple(map(float, address[3:].split(","))) if address.startswith("#t=") else None

    def pan(self, zooms):
        return self.driver.execute_async_script(PAN, zooms)

    def picture(self, path=None):
        """What is seen, as a function of a place that gives red, green and blue. `path` keeps it."""
        png = self.driver.get_screenshot_as_png()
        if path:
            with open(path, "wb") as file:
                file.write(png)
        image = Image.open(io.BytesIO(png)).convert("RGB")
        return lambda x, y: image.getpixel((int(x), int(y)))


__all__ = ["Browser", "Keys"]
