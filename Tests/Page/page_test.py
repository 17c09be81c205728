"""The pages of recordings, in a browser (Tests/Page/run)."""

import json
import os
import re
import subprocess
import tempfile
import unittest

from browser import Browser, Keys

VELTO = os.environ["VELTO"]
PICTURES = os.environ.get("VELTO_PICTURES")
RECORDINGS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../Recordings")
# A tap on K, a palm that becomes nothing, a hold that slides; then a tap on M.
STORY = ["--seed", "7", "tap:K", "palm", "slide:volume-up-volume-down", "tap:M"]
THRESHOLD = "Pipeline.Algs.ActivationThreshold=420"
DESCRIBED = re.compile(r"(\w+)= *-?\d+ +(-?\d+)(<==ON)?")
GROUP = re.compile(r"(\w+)= *(-?\d+)(<==ON)?")


def velto(*arguments):
    return subprocess.run([VELTO, *arguments], check=True, capture_output=True, text=True).stdout


class PageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.story = cls.recorded("story", *STORY)
        cls.page = cls.plotted(cls.story, "story")
        cls.browser = Browser()

    @classmethod
    def tearDownClass(cls):
        cls.browser.close()
        cls.folder.cleanup()

    @classmethod
    def path(cls, name):
        return os.path.join(cls.folder.name, name)

    @classmethod
    def recorded(cls, name, *steps):
        velto("simulate", *steps, "-o", cls.path(name + ".json"))
        return cls.path(name + ".json")

    @classmethod
    def plotted(cls, recording, name, *options):
        velto("plot", recording, *options, "-o", cls.path(name + ".html"))
        return cls.path(name + ".html")

    def open(self, page, **how):
        self.browser.open(page, **how)
        self.assertEqual(self.browser.messages(), [])
        self.assertEqual(self.browser.requests(), [f"file://{page}"])

    # Where things are.

    def chart(self):
        return self.browser.run("const r = document.querySelector('.chart').getBoundingClientRect();"
                                "return [r.left, r.top, r.width, r.height]")

    def hover(self, x, y=None):
        left, top, _, _ = self.chart()
        self.browser.mouse("mouseMoved", left + x, top + 60 if y is None else y)
        self.browser.rest()
        return float(self.browser.fact("time").split()[0])

    def x_at(self, time):
        """A place in the window, as the cursor's fact says."""
        left, _, width, _ = self.chart()
        begin, end = self.hover(120), self.hover(width - 20)
        return left + 120 + (time - begin) / (end - begin) * (width - 140)

    def y_of(self, title):
        return self.browser.run("""const r = [...document.querySelectorAll(".titles span")]
            .find((span) => span.textContent === arguments[0]).getBoundingClientRect(); return (r.top + r.bottom) / 2""", title)

    # What stands in the page is what the recognizer had.

    def test_columns_are_the_recognizers_values(self):
        for recording in (self.story, os.path.join(RECORDINGS, "disturbed-1.json"), os.path.join(RECORDINGS, "extreme-1.json")):
            with self.subTest(recording):
                page = self.plotted(recording, "values")
                with open(page, encoding="utf-8") as file:
                    data = json.loads(re.search(r'id="data">(.*?)</script>', file.read(), re.S)[1])
                self.browser.open(page)
                images = self.browser.driver.execute_async_script("""
                    const [data, done] = arguments;
                    readImages(data).then((images) => done({...images, ...Object.fromEntries(
                        ["time", "frame", "timeMs", "padsOn", "groupsOn", "signal", "strongest", "region"].map(
                            (name) => [name, [...images[name]]])),
                        ...Object.fromEntries(["touchScore", "onLevel", "offLevel"].map(
                            (name) => [name, [...images[name]].map(String)])),
                        pads: images.pads.map((c) => [...c]), groups: images.groups.map((c) => [...c])}))""",
                    data["plays"][0]["images"])
                frames = [json.loads(line) for line in velto("replay", "--jsonl", "--describe", recording).splitlines()]
                frames = [frame for frame in frames if frame["kind"] == "frame"]
                self.assertEqual(len(frames), images["count"])
                for row, frame in enumerate(frames):
                    self.assertEqual((frame["frame"], frame["timeMs"]), (images["frame"][row], images["timeMs"][row]))
                    pads, groups = DESCRIBED.findall(frame["touch"]), GROUP.findall(frame["virtual"].split("[")[1])
                    groups = [group for group in groups if group[0].isalpha() and group[0].isupper()]
                    self.assertEqual([int(pad[1]) for pad in pads], [column[row] for column in images["pads"]])
                    self.assertEqual([int(group[1]) for group in groups], [column[row] for column in images["groups"]])
                    self.assertEqual(sum(bool(pad[2]) << i for i, pad in enumerate(pads)), images["padsOn"][row])
                    self.assertEqual(sum(bool(group[2]) << i for i, group in enumerate(groups)), images["groupsOn"][row])
                    self.assertAlmostEqual(float(re.search(r"ts=([^,]+)", frame["touch"])[1]), float(images["touchScore"][row]),
                                           delta=2e-6)
                    # The strongest is on if it is above the level that it had to exceed, which is that of staying on if
                    # it was on in the image before.
                    pixel, level = images["strongest"][row], float(images["onLevel"][row])
                    self.assertEqual(level != level, row > 0 and bool(bits >> pixel & 1))
                    level = float(images["offLevel"][row]) if level != level else level
                    bits = images["padsOn"][row] | images["groupsOn"][row] << len(pads)
                    if level > 0:  # with a threshold below 0 all is the other way round
                        self.assertEqual(bool(bits >> pixel & 1), images["signal"][row] > level, f"row {row}")

    def test_a_stretch_shows_its_highest_value(self):
        self.browser.open(self.page)
        wrong = self.browser.run("""
            let wrong = 0;
            const column = Float32Array.from({length: 5000}, (_, i) => (i % 97 ? Math.sin(i * i) * 1000 : NaN));
            const pyramid = new Pyramid(column);
            for (let k = 0; k < 3000; ++k) {
              const first = (k * 7919) % 5000, last = Math.min(first + ((k * 104729) % 900), 4999);
              const all = column.slice(first, last + 1).filter((value) => value === value);
              if (pyramid.over(first, last) !== (all.length ? Math.max(...all) : -Infinity)) ++wrong;
            }
            return wrong""")
        self.assertEqual(wrong, 0)

    # What is seen.

    def test_widths_and_themes(self):
        for width, theme, is_light in ((1280, "light", True), (390, "light", True), (1280, "dark", False), (390, "dark", False)):
            with self.subTest(f"{width} {theme}"):
                self.open(self.page, width=width, theme=theme, height=1400)
                self.browser.press("c")
                self.assertEqual(self.browser.run("return document.documentElement.scrollWidth"), width)
                tap, rest = self.x_at(0.05), self.x_at(1.2)
                pixel = self.browser.picture(PICTURES and f"{PICTURES}/story-{width}-{theme}.png")
                self.assertEqual(sum(pixel(4, 4)) > 384, is_light)
                # The strong pad stands out against its rest, and the touch stands in its lane.
                y = self.y_of("K") - 2
                contrast = sum(abs(a - b) for a, b in zip(pixel(tap, y), pixel(rest, y)))
                self.assertGreater(contrast, 300)
                colour = self.browser.run("return getComputedStyle(document.documentElement).getPropertyValue('--tap')").strip()
                self.assertEqual("#%02x%02x%02x" % pixel(tap, self.y_of("touches")), colour)

    def test_a_new_width_is_drawn_at_once(self):
        self.open(self.page)
        drawn = self.browser.driver.execute_async_script("""
            const done = arguments[0], node = document.querySelector(".chart"), canvas = node.querySelector("canvas");
            let calls = 0;
            new ResizeObserver(() => {
              const {data} = canvas.getContext("2d").getImageData(0, 0, canvas.width, canvas.height);
              if (++calls === 2) done(data.some((value) => value > 0));
            }).observe(node);
            requestAnimationFrame(() => requestAnimationFrame(() => (document.querySelector("main").style.maxWidth = "900px")))""")
        self.assertTrue(drawn, "a blank frame")

    def test_the_pointer_shows_the_surface(self):
        self.open(self.page)
        x = self.x_at(0.05) - self.chart()[0]
        self.hover(x)
        self.assertRegex(self.browser.fact("strongest"), r"^\d{3} counts on K$")
        self.assertIn("K", self.browser.fact("on"))
        self.assertEqual(self.browser.fact("region"), "PlayPause")
        self.assertEqual(self.browser.run("return document.querySelectorAll('.plate.is-on').length"), 1)
        values = self.browser.run("return [...document.querySelectorAll('svg .value')].map((text) => text.textContent)")
        self.assertEqual(len(values), 23)
        self.assertIn(self.browser.fact("strongest").split()[0], values)

    def test_a_click_explains_a_touch(self):
        self.open(self.page)
        self.browser.click(self.x_at(0.5), self.y_of("touches"))
        explained = velto("explain", self.story).split("\n", 1)[1]
        self.assertIn(self.browser.text(".explanation pre"), explained)
        self.assertIn("because of the touch score", self.browser.text(".explanation pre"))

    def test_keys(self):
        self.open(self.page)
        self.browser.press("c")
        self.assertEqual(self.browser.text(".explanation h2"), "Why touch 2 became no gesture")
        self.browser.press("n")
        self.assertEqual(self.browser.text(".explanation h2"), "Why touch 3 became a hold")
        self.browser.press("0", "+", "+")
        begin, end = self.browser.range()
        self.browser.press(Keys.ARROW_RIGHT)
        self.assertAlmostEqual(self.browser.range()[0], begin + 0.1 * (end - begin), delta=0.01)
        frame = int(self.browser.fact("image"))
        self.browser.press(".")
        self.assertEqual(int(self.browser.fact("image")), frame + 1)
        self.browser.press("g")
        self.assertGreater(self.y_of("KLM"), 0)
        self.browser.press("?")
        self.assertTrue(self.browser.run("return document.querySelector('dialog').open"))

    def test_address_drag_pinch_and_wheel(self):
        self.open(self.page, address="#t=1,2", height=500)
        left, top, width, _ = self.chart()
        x, y = left + width / 2, top + 100
        time = lambda: self.hover(width / 2)
        self.assertTrue(1.4 < time() < 1.6)
        self.browser.drag(x, x - 200, y)
        begin, end = self.browser.range()
        self.assertTrue(begin > 1.15 and abs(end - begin - 1) < 0.01)
        self.browser.run("location.hash = '#t=1,2'")
        self.browser.rest()
        before = time()
        self.browser.wheel(x, y, -240, ctrl=True)
        begin, end = self.browser.range()
        self.assertLess(end - begin, 0.7)
        self.assertAlmostEqual(time(), before, delta=0.01)
        self.browser.wheel(x, y, 240)
        self.assertEqual(self.browser.range(), (begin, end))
        self.assertGreater(self.browser.run("return scrollY"), 100)
        self.browser.run("scrollTo(0, 0)")
        self.browser.pinch(x, y, [300, 220, 150])
        self.assertGreater(self.browser.range()[1] - self.browser.range()[0], 1.7 * (end - begin))

    def test_a_second_play_lies_over_the_first(self):
        self.open(self.plotted(self.story, "both", "--b", "Pipeline.Algs.EnableHoldSuppression=false", "--b", THRESHOLD))
        self.assertIn("1 touch is decided otherwise", self.browser.text("#summary"))
        self.browser.press("d")
        texts = self.browser.run("return [...document.querySelectorAll('.explanation pre')].map((pre) => pre.textContent)")
        self.assertEqual(["cancel" in texts[0], "hold " in texts[1].splitlines()[0]], [True, True])
        self.browser.run("scrollTo(0, 0)")
        x, y = self.x_at(0.18), self.y_of("otherwise")
        pixel = self.browser.picture(PICTURES and f"{PICTURES}/both-1280-light.png")
        self.assertTrue(any(sum(pixel(x + dx, y)) < 150 for dx in range(-12, 12)), "no mark")

    def test_hostile_recording_is_text(self):
        evil = "</script><script>document.title='owned'</script><img src=x onerror=alert(1)>"
        with open(self.story, encoding="utf-8") as file:
            recording = json.load(file)
        start = recording["Frames"][0]["Timestamp"]
        recording["Frames"] += [
            {"Type": "State", "Timestamp": start, "Key": evil, "Value": evil},
            {"Type": "Metadata", "Timestamp": start, "Key": "Label",
             "Value": {"gesture": evil, "region": evil, "startMs": 0, "endMs": 3000}}]
        name = "<script>alert(2)<&script>.json"
        with open(self.path(name), "w", encoding="utf-8") as file:
            json.dump(recording, file)
        page = self.plotted(self.path(name), "hostile")
        with open(page, encoding="utf-8") as file:
            self.assertEqual(file.read().count("</script>"), 2)
        self.open(page)
        self.hover(86)
        self.assertIn(f"{evil} = \"{evil}\"", self.browser.fact("here"))
        self.assertIn(evil, self.browser.run("return document.querySelector('.texts').textContent"))
        self.assertTrue(self.browser.text("h1").startswith(self.path(name)))
        self.assertIn(name, self.browser.run("return document.title"))
        self.assertEqual(self.browser.run("return document.images.length + document.scripts.length"), 1)
        owned = self.browser.run("""const script = document.createElement("script");
            script.textContent = "window.owned = true"; document.head.append(script); return window.owned""")
        self.assertIsNone(owned, "a script that is not ours runs")

    def test_a_score_as_a_page(self):
        evil = self.recorded("<img src=x>", "--seed", "5", "--random", "40")
        options = [self.story, evil, "--set", "Pipeline.Algs.ActivationThreshold=600"]
        lines = [json.loads(line) for line in velto("score", "--jsonl", "--html", self.path("score.html"), *options).splitlines()]
        velto("score", "--jobs", "1", "--html", self.path("one.html"), *options)
        with open(self.path("score.html"), "rb") as file, open(self.path("one.html"), "rb") as one:
            self.assertEqual(file.read(), one.read())
        faults = [line for line in lines if line["kind"] == "stray" or line.get("result", "found") not in ("found", "quiet")]
        self.assertGreater(len(faults), 5)
        for width in (1280, 390):
            self.open(self.path("score.html"), width=width)
            self.browser.wait(lambda: self.browser.run("return document.querySelector('details canvas')"))
            self.assertEqual(self.browser.run("return document.documentElement.scrollWidth"), width)
        cases = self.browser.run("return [...document.querySelectorAll('.case')].map((one) => one.textContent)")
        self.assertEqual(len(cases), len(faults))
        for fault, text in zip(sorted(faults, key=lambda one: (one["file"] == evil, one["startNs"])), cases):
            self.assertIn(f"{fault['startNs'] / 1e9:.2f} s", text)
            self.assertTrue(text.endswith(fault["file"]))
        row = self.browser.run("return [...document.querySelector('.wide tbody tr:last-child').cells].map((cell) => cell.textContent)")
        total = lines[-1]
        self.assertEqual(row, ["all"] + [str(total[name] or "-") for name in
                                         ("labels", "found", "wrongKind", "wrongRegion", "missed", "quiet", "false")])
        self.browser.run("document.querySelectorAll('summary')[1].focus()")
        self.browser.driver.switch_to.active_element.send_keys(Keys.ENTER)
        self.browser.wait(lambda: self.browser.run("return document.querySelectorAll('details canvas').length") == 2)

    def test_a_comparison_and_a_grid_as_pages(self):
        changed = velto("compare", self.story, "--b", "Pipeline.Algs.ActivationThreshold=9000", "--html", self.path("compare.html"))
        self.open(self.path("compare.html"))
        counts = self.browser.run("return [...document.querySelectorAll('.group')].map((one) => one.querySelectorAll('li').length)")
        self.assertIn(f"{counts[1]} fixed, {counts[0]} broken, {counts[2]} otherwise", changed)
        self.assertGreater(counts[0], 1)
        sweeps = ["ActivationThreshold=200,900,9000", "HoldTimeoutMilliseconds=300,500", "EnableTapSuppression=1,0"]
        lines = velto("tune", "--jsonl", self.story, *[word for each in sweeps for word in ("--sweep", "Pipeline.Algs." + each)],
                      "--html", self.path("tune.html")).splitlines()
        costs = [str(json.loads(line)["cost"]) for line in lines[:12]]
        self.open(self.path("tune.html"))
        for place in (0, 1):
            self.browser.run("""const select = document.querySelector("select"); select.value = arguments[0];
                select.dispatchEvent(new Event("change"))""", place)
            cells = self.browser.run("return [...document.querySelectorAll('.map td')].map((cell) => cell.firstChild.data)")
            self.assertEqual(cells, costs[place::2])
            self.assertEqual(self.browser.run("return document.querySelectorAll('.map .present').length"), 1 - place)
        self.assertGreater(len(set(costs)), 1)

    def test_the_worst_cases_lead_and_large_pictures_are_left_out(self):
        # A hold too long for a picture, then others; a label too long for the list; a recording that is cut off.
        few = self.recorded("few", "--seed", "1", "tap:K", "tap:M")
        many = self.recorded("many", "--seed", "2", "hold:volume-up:310000", "tap:K", "tap:M")
        with open(many, encoding="utf-8") as file:
            recording = json.load(file)
        start = recording["Frames"][0]["Timestamp"]
        recording["Frames"].append({"Type": "Metadata", "Timestamp": start, "Key": "Label",
                                    "Value": {"gesture": "tap", "region": "<" * 150_000, "startMs": 0, "endMs": 1}})
        recording["Frames"] += [{"Type": "State", "Timestamp": start + 310_300_000_000 + i, "Key": "K", "Value": "v" * 1_100_000}
                                for i in range(2)]
        with open(many, "w", encoding="utf-8") as file:
            json.dump(recording, file)
        cut = self.path("cut <b>.json")
        with open(many, "rb") as whole, open(cut, "wb") as file:
            file.write(whole.read(9000))
        page, options = self.path("worst.html"), ["--set", "Pipeline.Algs.ActivationThreshold=9000"]
        scored = subprocess.run([VELTO, "score", few, many, cut, *options, "--html", page], capture_output=True, text=True)
        self.assertEqual(scored.returncode, 1)
        self.open(page)
        self.browser.run("document.querySelectorAll('details').forEach((one) => (one.open = true))")
        self.browser.rest()
        groups = self.browser.run("""return [...document.querySelectorAll(".group")].map((group) =>
            [group.querySelector(".count").textContent, ...[...group.querySelectorAll("li")].map((item) =>
                [item.textContent, item.querySelectorAll("canvas").length])])""")
        (unread, (message, _)), (count, *cases) = groups
        self.assertEqual(unread, "1")
        self.assertIn(scored.stderr.split(": ", 2)[2].strip(), message)
        self.assertEqual(count, "6, the worst 5 are listed, 2 with a picture")
        self.assertEqual([many in text for text, _ in cases], [True] * 3 + [False] * 2)
        self.assertIn("No picture: 31", cases[0][0])
        self.assertIn("No picture: it would be too large", cases[1][0])
        self.assertEqual([canvas > 0 for _, canvas in cases], [False] * 3 + [True] * 2)
        # What it says to see a case shows the case.
        command, address = self.browser.run("return document.querySelector('li:last-child details > pre').textContent").split("\n")
        subprocess.run(command.replace("velto", VELTO, 1), shell=True, cwd=self.folder.name, check=True)
        self.open(self.path(address.split("#")[0]), address="#" + address.split("#")[1])
        self.browser.press("m", "m")
        self.assertEqual(self.browser.text(".explanation h2"), "Label 2, missed: tap VolumeDown")

    def test_a_reset_is_no_image_and_an_infinite_sample_no_scale(self):
        recording = self.recorded("reset", "--seed", "3", "tap:K", "reset", "tap:M")
        with open(recording, encoding="utf-8") as file:
            data = json.load(file)
        start = data["Frames"][0]["Timestamp"]
        data["Frames"] += [{"Type": "Metadata", "Timestamp": start + i * 10_000_000, "Key": "Accel", "Value": {"X": x, "Y": 0, "Z": 0.5}}
                           for i, x in enumerate((1e300, 1.75))]
        with open(self.path("reset.json"), "w", encoding="utf-8") as file:
            json.dump(data, file)
        lines = [json.loads(line) for line in velto("replay", "--jsonl", self.path("reset.json")).splitlines()]
        reset = next(line["timeNs"] for line in lines if line.get("gesture") == "firmwareReset") / 1e9
        self.open(self.plotted(self.path("reset.json"), "reset"), address=f"#t={reset - 0.001:.4f},{reset + 0.05:.4f}")
        images = re.search(r"images +(\d+)", velto("info", recording))[1]
        self.assertIn(f" {images} images", self.browser.text("#summary"))
        self.assertIn("1.75", self.browser.run("return [...document.querySelectorAll('.mark')].map((mark) => mark.textContent)"))
        self.browser.press(".")
        self.assertEqual((self.browser.fact("image"), self.browser.fact("strongest")), ("none: firmware reset", "–"))
        self.browser.press(".")
        self.assertRegex(self.browser.fact("image"), r"^\d+$")

    def test_a_part_says_that_it_is_one(self):
        self.open(self.plotted(self.story, "part", "--from", "0.1", "--to", "1.5"))
        self.assertIn("0.10 s to 1.50 s of 2.63 s, 141 images. 2 touches", self.browser.text("#summary"))

    def test_long_recordings(self):
        for name, gestures, least, most in (("ten minutes", 381, 60_000, 4_000_000), ("an hour", 2210, 360_000, 25_000_000)):
            page = self.plotted(self.recorded("long", "--seed", "3", "--random", str(gestures)), "long")
            size = os.path.getsize(page)
            self.open(page)
            images = int(re.search(r"(\d+) images", self.browser.text("#summary"))[1])
            ready = self.browser.run("return document.documentElement.dataset.ready")
            steps = [self.browser.pan(zooms) for zooms in (0, 3, 8)]
            print(f"{name}: {images} images, {size / 1e6:.2f} MB, ready in {ready} ms; a step takes (median, 95 %) " +
                  "; ".join(f"{costs[100]:.1f}, {costs[190]:.1f} ms" for costs in steps) + " at zoom 1, 8, 256", flush=True)
            self.assertGreater(images, least)
            self.assertLess(size, most)


if __name__ == "__main__":
    unittest.main(verbosity=2)
