#!/usr/bin/env python3
"""Opens report pages from the file system in headless Chromium and uses them as a person would.

usage: report_browser_test.py VISTATRIM [CASE...]
  Without cases it runs all of them but `accessibility`, which needs AXE_MIN_JS in the environment:
  the path of axe.min.js, as scripts/install_axe.sh installs it. Exit status 77 means that something
  is not installed.
"""
import base64
import contextlib
import json
import os
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import time

SKIPPED = 77

try:
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.action_chains import ActionChains
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
except ImportError:
    print("python3-selenium is not installed")
    sys.exit(SKIPPED)
if not shutil.which("chromium") or not shutil.which("chromedriver"):
    print("chromium or chromium-driver is not installed")
    sys.exit(SKIPPED)

# A path that would end a script and start an element if it were ever written unescaped.
HOSTILE_FOLDER = "odd <"
HOSTILE_NAME = "script><img src=x onerror=document.title='broken'>\"&amp; $HOME 'it`s.png"

# Bytes; a kB of a page is a thousand of them.
LIMIT_WITH_MAPS = 150_000
LIMIT_WITHOUT_MAPS = 60_000


# ---- Photographs

def vips(*words):
    subprocess.run(["vips", *words], check=True)


def make_square(folder, path, width, height, left, top, side):
    """A bright square on a dark ramp."""
    at = lambda name: os.path.join(folder, name)
    vips("grey", at("grey.v"), str(width), str(height), "--uchar")
    vips("bandjoin", " ".join([at("grey.v")] * 3), at("ground.v"))
    vips("linear", at("ground.v"), at("dim.v"), "0.2", "60", "--uchar")
    vips("black", at("black.v"), str(side), str(side), "--bands", "3")
    vips("linear", at("black.v"), at("square.v"), "1", "240 80 40", "--uchar")
    vips("insert", at("dim.v"), at("square.v"), path, str(left), str(top))


def make_noise(folder, path, width, height):
    """The picture that compresses worst."""
    at = lambda name: os.path.join(folder, name)
    for band in "rgb":
        vips("gaussnoise", at(band + ".v"), str(width), str(height), "--mean", "128",
             "--sigma", "60", "--seed", str(ord(band)))
    vips("bandjoin", " ".join(at(band + ".v") for band in "rgb"), at("noise.v"))
    vips("cast", at("noise.v"), at("noise8.v"), "uchar")
    vips("copy", at("noise8.v"), path, "--interpretation", "srgb")


class Sample:
    """The photographs, what `suggest` prints for them, and reports on them."""

    def __init__(self, program, folder):
        self.program = program
        self.folder = folder
        scratch = os.path.join(folder, "scratch")
        photos = os.path.join(folder, "photos")
        os.makedirs(scratch)
        os.makedirs(os.path.join(photos, HOSTILE_FOLDER))
        self.large = os.path.join(photos, "large.png")
        self.hostile = os.path.join(photos, HOSTILE_FOLDER, HOSTILE_NAME)
        self.broken = os.path.join(photos, "broken.jpg")
        self.noise = os.path.join(photos, "noise.png")
        # Much larger than the picture in the page, with sides that are not multiples of its own.
        make_square(scratch, self.large, 3011, 2003, 700, 800, 560)
        make_square(scratch, self.hostile, 1500, 2400, 700, 800, 450)
        make_noise(scratch, self.noise, 2100, 1500)
        with open(self.broken, "w", encoding="utf-8") as file:
            file.write("no photograph")
        self.photos = [self.large, self.hostile, self.broken, self.noise]
        self.wish = "650,750,700,700"
        self.page = self.report("page.html", "--keep", self.wish, *self.photos, status=1)
        lines = subprocess.run(
            [program, "suggest", "--json", "--keep", self.wish, *self.photos],
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False).stdout
        self.lines = [json.loads(line) for line in lines.decode().splitlines()]

    def report(self, name, *words, status=0):
        path = os.path.join(self.folder, name)
        done = subprocess.run([self.program, "report", "-q", "-o", path, "--force", *words],
                              stderr=subprocess.PIPE, check=False)
        assert done.returncode == status, done.stderr.decode()
        return path

    def many(self, count):
        """A folder of `count` photographs, all of them links to one."""
        folder = os.path.join(self.folder, "many")
        os.makedirs(folder, exist_ok=True)
        for number in range(count):
            link = os.path.join(folder, f"photo {number:02}.png")
            if not os.path.exists(link):
                os.link(self.hostile, link)
        return folder


# ---- The browser

class Browser:
    def __init__(self, folder):
        self.downloads = os.path.join(folder, "downloads")
        os.makedirs(self.downloads)
        options = webdriver.ChromeOptions()
        options.binary_location = shutil.which("chromium")
        for flag in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-quic",
                     "--no-first-run", "--disable-background-networking",
                     "--disable-component-update", "--disable-sync", "--hide-scrollbars",
                     "--window-size=1400,1000",
                     "--user-data-dir=" + os.path.join(folder, "profile")):
            options.add_argument(flag)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        self.driver = webdriver.Chrome(service=Service(shutil.which("chromedriver")),
                                       options=options)
        self.driver.set_script_timeout(60)
        self.command("Browser.setDownloadBehavior", behavior="allow", downloadPath=self.downloads)
        self.size(1400, 1000)

    def command(self, name, **words):
        return self.driver.execute_cdp_cmd(name, words)

    def size(self, width, height, dark=False, media="", phone=False):
        self.command("Emulation.setDeviceMetricsOverride", width=width, height=height,
                     deviceScaleFactor=1, mobile=phone)
        self.command("Emulation.setTouchEmulationEnabled", enabled=phone)
        scheme = "dark" if dark else "light"
        self.command("Emulation.setEmulatedMedia", media=media,
                     features=[{"name": "prefers-color-scheme", "value": scheme}])

    def open(self, page, photo=None):
        self.driver.get("about:blank")
        self.driver.get("file://" + page + (f"#photo-{photo}" if photo else ""))
        if photo:
            self.wait(lambda: self.one("#viewer").is_displayed())

    # A page can load before the browser has stored the choice.
    def open_until_chosen(self, page, count, photo=None):
        def is_so():
            self.open(page, photo)
            return self.one("#choice-count").text == count
        self.wait(is_so, count)

    def run(self, script, *words):
        return self.driver.execute_script(script, *words)

    def one(self, selector):
        return self.driver.find_element(By.CSS_SELECTOR, selector)

    def all(self, selector):
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def shown(self, selector):
        return [element for element in self.all(selector) if element.is_displayed()]

    def press(self, *keys):
        for key in keys:
            ActionChains(self.driver).send_keys(key).perform()

    def focused(self):
        return self.driver.switch_to.active_element

    def box(self, element):
        return self.run("const b = arguments[0].getBoundingClientRect();"
                        "return [b.left, b.top, b.width, b.height]", element)

    def wait(self, is_so, what="the page"):
        end = time.monotonic() + 20
        while not is_so():
            assert time.monotonic() < end, f"waited in vain for {what}"
            time.sleep(0.05)

    def pasted(self):
        """The text on the clipboard, read by pasting it."""
        self.run("const field = document.createElement('textarea'); field.id = 'paste';"
                 "document.body.append(field); field.focus()")
        ActionChains(self.driver).key_down(Keys.CONTROL).send_keys("v").key_up(
            Keys.CONTROL).perform()
        text = self.run("const field = document.getElementById('paste'); const text = field.value;"
                        "field.remove(); return text")
        return text


def shown_crop(browser):
    checked = browser.all("#strip [aria-checked=true]")
    assert len(checked) == 1, len(checked)
    frames = browser.all("#frames .frame")
    strong = [rank for rank, frame in enumerate(frames) if "shown" in frame.get_attribute("class")]
    assert strong == [int(checked[0].get_attribute("data-rank"))], strong
    return strong[0]


def near(a, b, tolerance):
    return all(abs(x - y) <= tolerance for x, y in zip(a, b))


def expected_box(stage, crop, line):
    left, top, width, height = stage
    return [left + crop["x"] / line["width"] * width, top + crop["y"] / line["height"] * height,
            crop["width"] / line["width"] * width, crop["height"] / line["height"] * height]


def glow(value):
    """The colour of a map's grey value."""
    stops = [(60, 0, 120, 0), (200, 20, 110, 150), (255, 110, 20, 215), (255, 240, 90, 255)]
    below = min(2, value // 85)
    share = (value - 85 * below) / 85
    return [int(a + (b - a) * share + 0.5) for a, b in zip(stops[below], stops[below + 1])]


# ---- Cases: each opens what it needs

def overview_comes_first(browser, sample):
    browser.open(sample.page)
    assert browser.one("#overview").is_displayed() and not browser.one("#viewer").is_displayed()
    tiles = browser.all("#tiles > li")
    assert len(tiles) == 4
    names = [tile.find_element(By.CSS_SELECTOR, ".name").text for tile in tiles]
    assert names[0] == "large.png" and names[2] == "broken.jpg", names
    assert tiles[2].find_element(By.CSS_SELECTOR, ".about").text == sample.lines[2]["error"]
    assert browser.one("#search-count").text == "4 photographs"

    # The photograph that failed keeps its place in the row and is as high as the others.
    boxes = [browser.box(tile.find_element(By.CSS_SELECTOR, ".stage")) for tile in tiles]
    assert boxes[1][0] < boxes[2][0] < boxes[3][0], boxes
    for side in (1, 3):
        sides = [box[side] for box in boxes]
        assert max(sides) - min(sides) <= 1, boxes

    # A tile leads to its photograph, and Back leads to the tile.
    tiles[1].find_element(By.TAG_NAME, "a").click()
    browser.wait(lambda: browser.one("#viewer").is_displayed())
    assert not browser.one("#overview").is_displayed()
    assert browser.focused().get_attribute("id") == "viewer-title"
    browser.driver.back()
    browser.wait(lambda: browser.one("#overview").is_displayed())
    assert browser.focused().get_attribute("href").endswith("#photo-2")

    # Next skips what cannot be read.
    browser.open(sample.page, photo=2)
    browser.one("#to-next").click()
    browser.wait(lambda: browser.one("#viewer-title").text == "noise.png")
    assert browser.one("#to-next").get_attribute("aria-disabled") == "true"
    assert browser.one("#to-next").get_attribute("href") is None

    # A page of one photograph starts with it.
    single = sample.report("single.html", sample.large)
    browser.open(single)
    browser.wait(lambda: browser.one("#viewer").is_displayed())
    assert not browser.one("#to-overview").is_displayed()


def thirty_photographs_fit_on_a_few_screens(browser, sample):
    page = sample.report("thirty.html", "-n", "2", "--maps", "no", sample.many(30))
    for width, height, most in ((1400, 1000, 3500), (390, 844, 7000)):
        browser.size(width, height, phone=width < 500)
        browser.open(page)
        assert len(browser.shown("#tiles > li")) == 30
        tall = browser.run("return document.documentElement.scrollHeight")
        assert height < tall < most, tall
    # The tiles of a row have the same height.
    rows = {}
    for stage in browser.all("#tiles .stage"):
        rows.setdefault(round(browser.box(stage)[1]), []).append(browser.box(stage)[3])
    assert 2 <= len(rows) < 30, rows
    for heights in rows.values():
        assert max(heights) - min(heights) <= 1, heights


def narrow_photographs_make_no_tall_rows(browser, sample):
    narrow = os.path.join(sample.folder, "narrow.png")
    make_square(sample.folder, narrow, 6, 1500, 1, 700, 4)
    page = sample.report("narrow.html", "--maps", "no", sample.large, narrow)
    for width, most in ((1400, 360), (390, 220)):
        browser.size(width, 844, phone=width < 500)
        browser.open(page)
        heights = [browser.box(stage)[3] for stage in browser.all("#tiles .stage")]
        assert len(heights) == 2 and 20 < min(heights) and max(heights) < most, heights


def search_finds_names(browser, sample):
    browser.open(sample.page)
    field = browser.one("#search")
    visible = lambda: [tile.find_element(By.CSS_SELECTOR, ".name").text
                       for tile in browser.shown("#tiles > li")]
    field.send_keys("LARGE")
    assert visible() == ["large.png"], visible()
    assert browser.one("#search-count").text == "1 of 4 photographs"
    field.clear()
    field.send_keys("png s")  # both words, in any order
    assert len(visible()) == 2, visible()
    field.send_keys(" nowhere")
    assert visible() == []
    assert browser.one("#search-count").text == "0 of 4 photographs"
    field.send_keys(Keys.ESCAPE)
    assert len(visible()) == 4 and field.get_attribute("value") == ""
    # Next and previous stay among the photographs found.
    field.send_keys("large")
    browser.shown("#tiles a")[0].click()
    browser.wait(lambda: browser.one("#viewer").is_displayed())
    assert browser.one("#to-next").get_attribute("aria-disabled") == "true"


def frames_lie_where_the_crops_are(browser, sample):
    for width, height in ((1400, 1000), (390, 844)):
        browser.size(width, height, phone=width < 500)
        for number in (1, 2, 4):
            line = sample.lines[number - 1]
            browser.open(sample.page, photo=number)
            stage = browser.box(browser.one("#stage"))
            assert near([stage[2] / stage[3]], [line["width"] / line["height"]], 0.01)
            assert near(browser.box(browser.one("#whole")), stage, 0.01)
            frames = browser.all("#frames .frame")
            assert len(frames) == len(line["crops"]) == 5
            for frame, crop in zip(frames, line["crops"]):
                # Half a screen pixel, because boxes are not rounded to whole pixels.
                assert near(browser.box(frame), expected_box(stage, crop, line), 0.5), (
                    browser.box(frame), expected_box(stage, crop, line))
            wish = [int(number) for number in sample.wish.split(",")]
            if number == 1:
                region = browser.one("#regions .region")
                box = dict(zip(("x", "y", "width", "height"), wish))
                assert near(browser.box(region), expected_box(stage, box, line), 0.5)
                assert region.text == "keep"
    # The picture in the page is smaller than the photograph; otherwise this would prove nothing.
    browser.size(1400, 1000)
    browser.open(sample.page, photo=1)
    assert browser.run("return document.getElementById('whole').naturalWidth") < 1100


def regions_are_drawn_and_listed(browser, sample):
    line = sample.lines[0]
    # A crop that leaves something out.
    rank, crop = next((rank, crop) for rank, crop in enumerate(line["crops"])
                      if crop["width"] < line["width"] - 40)
    right, bottom = crop["x"] + crop["width"], crop["y"] + crop["height"]
    beside = right if right < line["width"] - 20 else crop["x"] - 20
    held = {"x": crop["x"], "y": crop["y"], "width": 200, "height": 150}
    cut = {"x": right - 99, "y": bottom - 120, "width": 100, "height": 100}
    left_out = {"x": beside, "y": crop["y"], "width": 20, "height": 80}
    path = os.path.join(sample.folder, "regions.json")
    hostile = "</script><i>Ada</i>"
    with open(path, "w", encoding="utf-8") as file:
        json.dump({"file": sample.large, "regions": [
            {**held, "kind": "face", "label": hostile, "wish": "none"},
            {**cut, "kind": "animal", "wish": "none"},
            {**left_out, "kind": "face", "wish": "none"},
            {**left_out, "y": left_out["y"] + 300, "kind": "face", "wish": "none"}]}, file)
    browser.open(sample.report("regions.html", "--keep", sample.wish, "--regions", path,
                               sample.large))
    browser.wait(lambda: browser.one("#viewer").is_displayed())
    browser.all("#strip button")[rank].click()
    stage = browser.box(browser.one("#stage"))
    assert near(browser.box(browser.all("#frames .frame")[rank]),
                expected_box(stage, crop, line), 0.5)
    regions = browser.shown("#regions .region")
    assert [region.text for region in regions] == [hostile, "animal", "face", "face", "keep"]
    for region, box in zip(regions, (held, cut, left_out)):
        assert near(browser.box(region), expected_box(stage, box, line), 0.5), region.text
    listed = browser.one("#details-regions").text
    assert listed == f"Holds: {hostile}, keep · Cuts: animal · Leaves out: face × 2", listed
    browser.one("#show-regions").click()
    assert not browser.shown("#regions .region")


def badges_are_at_corners_of_their_frames(browser, sample):
    for width in (1400, 390):
        browser.size(width, 900, phone=width < 500)
        for number in (1, 2, 4):
            browser.open(sample.page, photo=number)
            boxes = []
            for frame in browser.all("#frames .frame"):
                left, top, wide, high = browser.box(frame)
                badge = frame.find_element(By.CSS_SELECTOR, ".badge")
                x, y, w, h = browser.box(badge)
                assert min(abs(x - left), abs(x + w - left - wide)) < 1, (number, badge.text)
                assert min(abs(y - top), abs(y + h - top - high)) < 1, (number, badge.text)
                assert w >= 24 and h >= 24
                for a, b, c, d in boxes:
                    assert x >= a + c or a >= x + w or y >= b + d or b >= y + h, number
                boxes.append((x, y, w, h))


def only_the_shown_crop_stands_out(browser, sample):
    browser.open(sample.page, photo=1)
    opacity = lambda: [float(browser.run(
        "return getComputedStyle(arguments[0], '::after').opacity", frame))
        for frame in browser.all("#frames .frame")]
    settled = lambda expected: browser.wait(lambda: opacity() == expected, f"outlines {expected}")
    # Off the stage: pointing at it would outline all.
    ActionChains(browser.driver).move_to_element(browser.one("h1")).perform()
    settled([1, 0, 0, 0, 0])
    assert "9999px" in browser.run("return getComputedStyle(arguments[0]).boxShadow",
                                   browser.all("#frames .frame")[0])
    # Pointing at a card outlines its frame; pointing at the photograph outlines all.
    cards = browser.all("#strip button")
    ActionChains(browser.driver).move_to_element(cards[3]).perform()
    settled([1, 0, 0, 1, 0])
    ActionChains(browser.driver).move_to_element(browser.one("#stage")).perform()
    settled([1, .8, .8, .8, .8])
    ActionChains(browser.driver).move_to_element(browser.one("h1")).perform()
    settled([1, 0, 0, 0, 0])
    browser.one("#outlines").click()
    ActionChains(browser.driver).move_to_element(browser.one("h1")).perform()
    settled([1, .8, .8, .8, .8])


def clicks_choose_what_is_shown(browser, sample):
    browser.open(sample.page, photo=1)
    assert shown_crop(browser) == 0
    browser.all("#strip button")[2].click()
    assert shown_crop(browser) == 2
    browser.all("#frames .badge")[3].click()
    assert shown_crop(browser) == 3
    assert browser.one("#details-title").text.startswith("Crop 4 · ")
    # Clicks on the photograph cycle through the crops under the pointer.
    stage = browser.one("#stage")
    x, y, width, height = browser.box(stage)
    middle = (x + width / 2, y + height / 2)
    under = [rank for rank, frame in enumerate(browser.all("#frames .frame"))
             if browser.box(frame)[0] < middle[0] < sum(browser.box(frame)[0::2]) and
             browser.box(frame)[1] < middle[1] < sum(browser.box(frame)[1::2])]
    assert len(under) >= 2, under
    seen = []
    for _ in under:
        ActionChains(browser.driver).move_to_element(stage).click().perform()
        seen.append(shown_crop(browser))
    assert sorted(seen) == under, (seen, under)


def keys_reach_everything(browser, sample):
    browser.open(sample.page)
    # Tab alone leads from the start of the page to a photograph.
    reached = []
    for _ in range(12):
        browser.press(Keys.TAB)
        reached.append(browser.focused().get_attribute("id") or
                       browser.focused().get_attribute("href") or browser.focused().text)
        if str(reached[-1]).endswith("#photo-1"):
            break
    assert "search" in reached and "choose-first" in reached, reached
    assert reached[0].endswith("#main"), reached
    browser.press(Keys.ENTER)
    browser.wait(lambda: browser.one("#viewer").is_displayed())

    # Tab reaches every control of the view except the badges, because the cards choose the same
    # crops; in a radio group it reaches the selected one.
    wanted = set(browser.run(
        "return [...document.querySelectorAll('#viewer :is(button, select, input, a, summary)')]"
        ".filter(e => e.offsetParent && !e.disabled && e.tabIndex >= 0 &&"
        "             !e.hasAttribute('aria-disabled'))"
        ".map(e => e.id || e.dataset.rank || e.dataset.view || e.parentElement.dataset.score)"))
    assert {"choose", "copy-coordinates", "copy-command", "thirds", "map-choice", "place",
            "composition", "0"} <= wanted, wanted
    seen = set()
    for _ in range(len(wanted) + 12):
        browser.press(Keys.TAB)
        name = browser.run("const e = document.activeElement; return e.id || e.dataset.rank ||"
                           "e.dataset.view || e.parentElement.dataset.score")
        seen.add(name)
        # The focus is visible.
        assert browser.run("return getComputedStyle(document.activeElement).outlineStyle") != \
            "none" or name in ("main", None), name
    assert wanted <= seen, wanted - seen

    # Arrow keys move within the cards and wrap around; digits work anywhere.
    browser.run("document.querySelector('#strip [tabindex=\"0\"]').focus()")
    browser.press(Keys.ARROW_RIGHT)
    assert shown_crop(browser) == 1
    assert browser.focused().get_attribute("data-rank") == "1"
    browser.press(Keys.ARROW_LEFT, Keys.ARROW_LEFT)
    assert shown_crop(browser) == 4
    browser.press(Keys.HOME)
    assert shown_crop(browser) == 0
    browser.run("document.activeElement.blur()")
    browser.press("3")
    assert shown_crop(browser) == 2
    browser.press("x")
    assert browser.one("#choose").get_attribute("aria-pressed") == "true"
    browser.press("x")
    assert browser.one("#choose").get_attribute("aria-pressed") == "false"
    browser.press("v")
    assert browser.one("#alone").is_displayed()
    browser.press("v", "v")
    assert browser.one("#stage").is_displayed()
    browser.press("t")
    assert browser.shown("#frames .thirds")
    browser.press("r")
    assert not browser.shown("#regions .region")
    browser.press(Keys.ARROW_RIGHT)
    browser.wait(lambda: "script>" in browser.one("#viewer-title").text)
    browser.press(Keys.ARROW_LEFT)
    browser.wait(lambda: browser.one("#viewer-title").text == "large.png")

    # A score opens by key and stays open for the next crop.
    browser.run("document.querySelector('[data-score=coverage] summary').focus()")
    browser.press(Keys.ENTER)
    assert browser.shown("[data-score=coverage] p")
    browser.press("2")
    assert browser.shown("[data-score=coverage] p") and shown_crop(browser) == 1

    # Single keys can be turned off; Escape still leads back.
    browser.run("document.getElementById('keys-on').click()")
    browser.press("4")
    assert shown_crop(browser) == 1
    browser.press(Keys.ESCAPE)
    browser.wait(lambda: browser.one("#overview").is_displayed())


def scores_are_explained(browser, sample):
    browser.open(sample.page, photo=1)
    crop = sample.lines[0]["crops"][0]
    rows = browser.all("#scores .score")
    assert len(rows) >= 6
    if "expectedOverlap" in crop or "expectedOverlap" in crop["scores"]:
        assert rows[0].get_attribute("data-score") == "expectedOverlap"
    for row in rows:
        name = row.get_attribute("data-score")
        value = crop.get(name, crop["scores"].get(name))
        assert row.find_element(By.TAG_NAME, "b").text == f"{value:.2f}", name
        full = browser.box(row.find_element(By.CSS_SELECTOR, ".track"))[2]
        filled = browser.box(row.find_element(By.CSS_SELECTOR, ".track i"))[2]
        assert abs(filled - min(1, value) * full) <= 1, (name, filled, value, full)
        sentence = row.find_element(By.TAG_NAME, "p")
        assert not sentence.is_displayed()
        row.find_element(By.TAG_NAME, "summary").click()
        assert sentence.is_displayed() and len(sentence.text) > 30
        assert re.search(r"[a-z)]\. |[a-z)]\.$|\d\.$", sentence.text), sentence.text


def ratios_have_their_common_names(browser, sample):
    # As requested, not in the smallest terms.
    for requested, shown, never in (("21x9", "21:9", "7:3"), ("16/10", "16:10", "8:5")):
        page = sample.report("ratios.html", "--aspect", requested, "-n", "2", sample.large)
        browser.open(page)
        browser.wait(lambda: browser.one("#viewer").is_displayed())
        assert browser.one("#details-title").text == "Crop 1 · " + shown
        # What people read, including the plain list; the data keep the exact terms.
        texts = browser.run("return [document.body.innerText,"
                            "        document.querySelector('#photo-1 .list').textContent]")
        assert shown in texts[0] and shown in texts[1], texts
        assert not [text for text in texts if never in text], texts


def assert_shows(browser, canvas, crop):
    """The canvas shows this crop of large.png, with the part of the bright square inside it."""
    width, height = browser.run("return [arguments[0].width, arguments[0].height]", canvas)
    assert abs(width / height - crop["width"] / crop["height"]) < 0.02
    # Inside the corners of the bright square, and around it, as far as the crop goes.
    scale = width / crop["width"]
    seen = []
    for x, y, bright in ((740, 840, True), (1220, 840, True), (740, 1320, True),
                         (1220, 1320, True), (660, 1000, False), (1000, 760, False),
                         (1300, 1000, False), (1000, 1400, False)):
        at = [(x - crop["x"]) * scale, (y - crop["y"]) * scale]
        if not (1 <= at[0] < width - 1 and 1 <= at[1] < height - 1):
            continue
        seen.append(bright)
        red = browser.run(
            "return arguments[0].getContext('2d').getImageData(arguments[1], arguments[2], 1, 1)"
            ".data[0]", canvas, int(at[0]), int(at[1]))
        assert (red > 180) == bright, (x, y, red)
    assert len(seen) >= 4 and len(set(seen)) == 2, (crop, seen)


def crops_are_cut_from_the_picture(browser, sample):
    browser.open(sample.page, photo=1)
    line = sample.lines[0]
    for rank in (0, 4):
        browser.all("#strip button")[rank].click()
        browser.one('[data-view="crop"]').click()
        canvas = browser.one("#alone canvas")
        assert_shows(browser, canvas, line["crops"][rank])
        label = canvas.get_attribute("aria-label")
        assert label.startswith(f"Crop {rank + 1} of large.png, "), label
        browser.one('[data-view="place"]').click()


def compare_shows_both(browser, sample):
    browser.open(sample.page, photo=1)
    browser.one('[data-view="compare"]').click()
    assert not browser.one("#stage").is_displayed()
    figures = browser.shown("#alone figure")
    assert [figure.text for figure in figures] == ["Original", "Crop 1"]
    boxes = [browser.box(figure) for figure in figures]
    assert boxes[0][0] + boxes[0][2] <= boxes[1][0], boxes
    assert browser.run("return document.querySelector('#alone img').naturalWidth") > 500
    browser.size(390, 844, phone=True)
    boxes = [browser.box(figure) for figure in browser.shown("#alone figure")]
    assert boxes[0][1] + boxes[0][3] <= boxes[1][1], boxes


def thirds_divide_the_crop(browser, sample):
    browser.open(sample.page, photo=1)
    assert not browser.shown(".thirds")
    browser.one("#thirds").click()
    assert browser.one("#thirds").get_attribute("aria-pressed") == "true"
    for view in ("place", "crop"):
        browser.one(f'[data-view="{view}"]').click()
        lines = browser.shown(".thirds i")
        assert len(lines) == 4
        frame = browser.box(browser.one("#frames .frame.shown" if view == "place"
                                        else "#alone .shot"))
        for line, share, axis in zip(lines, (1 / 3, 2 / 3, 1 / 3, 2 / 3), (0, 0, 1, 1)):
            box = browser.box(line)
            assert abs(box[axis] - frame[axis] - share * frame[axis + 2]) <= 1, (view, box)
            assert abs(box[3 - axis] - frame[3 - axis]) <= 0.5, (view, box)  # from side to side


def maps_are_coloured_in_the_page(browser, sample):
    browser.open(sample.page, photo=1)
    choice = browser.one("#map-choice")
    options = choice.find_elements(By.TAG_NAME, "option")
    assert len(options) == 11 and options[0].get_attribute("value") == ""
    assert "Colour contrast" in [option.text for option in options]
    assert not browser.one("#map").is_displayed()
    pictures = browser.run(
        "return JSON.parse(document.querySelector('#photo-1 script.maps').textContent)")
    assert len(pictures) == 10
    assert all(entry["picture"].startswith("data:image/webp;base64,") for entry in pictures)
    for option in options[1:]:
        name = option.get_attribute("value")
        option.click()
        browser.wait(lambda: browser.one("#map").get_attribute("data-map") == name and
                     browser.one("#map").is_displayed(), name)
        assert near(browser.box(browser.one("#map")), browser.box(browser.one("#stage")), 0.01)
        assert len(browser.one("#map-text").text) > 20
    # Colours follow the grey picture; the square differs from the border and glows.
    browser.one("#map-choice option[value=ContrastMap]").click()
    browser.wait(lambda: browser.one("#map").get_attribute("data-map") == "ContrastMap")
    picture = next(entry["picture"] for entry in pictures if entry["name"] == "ContrastMap")
    width, height, drawn, grey = browser.driver.execute_async_script(
        "const done = arguments[1]; const picture = new Image(); picture.src = arguments[0];"
        "picture.decode().then(() => {"
        "  const map = document.getElementById('map'), copy = document.createElement('canvas');"
        "  copy.width = map.width; copy.height = map.height;"
        "  copy.getContext('2d').drawImage(picture, 0, 0);"
        "  const read = c => [...c.getContext('2d').getImageData(0, 0, c.width, c.height).data];"
        "  done([map.width, map.height, read(map), read(copy)]); })", picture)
    assert abs(width / height - 3011 / 2003) < 0.02
    assert len(set(grey[0::4])) > 20
    for at in range(0, len(grey), 4 * 97):
        # A canvas keeps colours multiplied by their opacity, so faint ones are coarse.
        red, green, blue, alpha = glow(grey[at])
        assert drawn[at + 3] == alpha, (grey[at], drawn[at:at + 4])
        if alpha > 0:
            assert near(drawn[at:at + 3], (red, green, blue), 128 / alpha + 1), grey[at]
    inside = 4 * (int(1080 / 2003 * height) * width + int(980 / 3011 * width))
    assert grey[inside] > 200 and drawn[inside + 3] > 200, drawn[inside:inside + 4]
    # Strength sets how opaque the map is.
    browser.run("const s = document.getElementById('strength'); s.value = 40;"
                "s.dispatchEvent(new Event('input'))")
    assert browser.run("return getComputedStyle(document.getElementById('map')).opacity") == "0.4"
    options[0].click()
    assert not browser.one("#map").is_displayed()


def coordinates_and_commands_are_copied(browser, sample):
    browser.open(sample.page, photo=1)
    crop = sample.lines[0]["crops"][1]
    browser.all("#strip button")[1].click()
    browser.one("#copy-coordinates").click()
    text = "{x},{y},{width},{height}".format(**crop)
    browser.wait(lambda: text in browser.one("#said").text)
    assert browser.pasted() == text

    # The command makes exactly this crop, whatever the photograph is called.
    browser.open(sample.page, photo=2)
    crop = sample.lines[1]["crops"][2]
    browser.all("#strip button")[2].click()
    browser.one("#copy-command").click()
    browser.wait(lambda: browser.one("#said").text != "")
    command = browser.pasted()
    line = {**sample.lines[1],
            "crops": [{side: crop[side] for side in ("x", "y", "width", "height")}]}
    words = shlex.split(command)
    assert json.loads(words[2]) == line, words
    assert words[3:] == ["|", "vistatrim", "crop", "--from", "-", "-o", "crops"], words

    # The shell reads it as intended.
    piped = subprocess.run(["sh", "-c", command.split(" | vistatrim ")[0]], stdout=subprocess.PIPE,
                           check=True).stdout
    assert json.loads(piped) == line, piped
    output = os.path.join(sample.folder, "cut")
    os.makedirs(output, exist_ok=True)
    tools = os.path.join(sample.folder, "bin")
    os.makedirs(tools, exist_ok=True)
    with contextlib.suppress(FileExistsError):
        os.symlink(os.path.abspath(sample.program), os.path.join(tools, "vistatrim"))
    done = subprocess.run(["sh", "-c", command], cwd=output, stderr=subprocess.PIPE, check=False,
                          env={**os.environ, "PATH": tools + ":" + os.environ["PATH"]})
    assert done.returncode == 0, (command, done.stderr.decode())
    # Besides the crop there is the hidden record of options, which --resume compares.
    written = [os.path.join(path, name) for path, _, names in os.walk(output) for name in names
               if not name.startswith(".")]
    assert len(written) == 1, written
    size = subprocess.run(["vipsheader", "-f", "width", written[0]], stdout=subprocess.PIPE,
                          check=True).stdout, subprocess.run(
                              ["vipsheader", "-f", "height", written[0]],
                              stdout=subprocess.PIPE, check=True).stdout
    assert [int(side) for side in size] == [crop["width"], crop["height"]], size


def a_choice_is_saved_as_suggest_writes_it(browser, sample):
    browser.open(sample.page)
    save = browser.one("#choice-save")
    assert not save.is_enabled() and browser.one("#choice-count").text == "No crop chosen"
    browser.open(sample.page, photo=1)
    for rank in (3, 0):
        browser.all("#strip button")[rank].click()
        browser.one("#choose").click()
    assert browser.one("#choose").get_attribute("aria-pressed") == "true"
    assert "chosen" in browser.all("#strip button")[3].get_attribute("aria-label")
    browser.open_until_chosen(sample.page, "2 crops chosen", photo=2)
    browser.all("#strip button")[1].click()
    browser.one("#choose").click()
    assert browser.one("#choice-count").text == "3 crops chosen"
    target = os.path.join(browser.downloads, "choice.json")
    browser.one("#choice-save").click()
    browser.wait(lambda: os.path.exists(target) and os.path.getsize(target) > 0, target)
    with open(target, encoding="utf-8") as file:
        saved = [json.loads(line) for line in file.read().splitlines()]
    expected = [{**sample.lines[0], "crops": [sample.lines[0]["crops"][rank] for rank in (0, 3)]},
                {**sample.lines[1], "crops": [sample.lines[1]["crops"][1]]}]
    for line, wanted in zip(saved, expected):
        assert line == {key: wanted[key] for key in ("file", "width", "height", "crops")}, line
    assert len(saved) == 2

    # The tiles show the choice; one click chooses a crop of each photograph that has none.
    browser.open_until_chosen(sample.page, "3 crops chosen")
    abouts = [about.text for about in browser.all("#tiles .about")]
    assert abouts[0] == "✓ 2 of 5 crops chosen" and abouts[3] == "5 crops", abouts
    # A page with other crops of the same photographs has its own choice.
    other = sample.report("other.html", "--aspect", "1:1", *sample.photos, status=1)
    browser.open(other)
    assert browser.one("#choice-count").text == "No crop chosen"
    browser.one("#choose-first").click()
    browser.open_until_chosen(sample.page, "3 crops chosen")
    browser.one("#choose-first").click()
    assert browser.one("#choice-count").text == "4 crops chosen"
    browser.one("#choice-clear").click()
    assert browser.one("#choice-count").text == "No crop chosen"
    browser.open_until_chosen(sample.page, "No crop chosen")


def nothing_is_fetched_and_names_are_text(browser, sample):
    browser.driver.get_log("performance")
    browser.driver.get_log("browser")
    for photo in (None, 1, 2):
        browser.open(sample.page, photo=photo)
    requests = set()
    for entry in browser.driver.get_log("performance"):
        message = json.loads(entry["message"])["message"]
        if message["method"] == "Network.requestWillBeSent":
            requests.add(message["params"]["request"]["url"])
    other = [url for url in requests if not url.startswith(("data:", "about:", "blob:")) and
             url.split("#")[0] != "file://" + sample.page]
    assert not other, other
    assert any(url.startswith("file:") for url in requests), "nothing was logged"
    assert browser.one("#viewer-title").text == HOSTILE_NAME
    assert browser.driver.title == HOSTILE_NAME + " – crop report"
    assert not browser.all("img[src=x]")
    # A script that is not the page's own does not run, even if it gets into the page.
    ran = browser.run("const s = document.createElement('script');"
                      "s.textContent = 'window.intruder = true'; document.head.append(s);"
                      "return window.intruder === true")
    assert not ran
    errors = [entry for entry in browser.driver.get_log("browser") if entry["level"] == "SEVERE"
              and "Content Security Policy" not in entry["message"]]
    assert not errors, errors


def texts_hold_no_paths(browser, sample):
    browser.open(sample.page, photo=1)
    browser.one('[data-view="compare"]').click()
    texts = browser.run(
        "return [...document.querySelectorAll('*')].flatMap(e =>"
        "  ['alt', 'aria-label', 'title'].map(n => e.getAttribute(n) || ''))"
        ".concat([document.body.innerText])")
    assert any("Photograph large.png" == text for text in texts)
    assert not [text for text in texts if sample.folder in text]
    missing = browser.run("return [...document.images].filter(i => !i.hasAttribute('alt')).length")
    assert missing == 0


def phones_need_no_sideways_scrolling(browser, sample):
    for dark in (False, True):
        browser.size(390, 844, dark=dark, phone=True)
        for photo in (None, 1, 2, 4):
            browser.open(sample.page, photo=photo)
            for view in ("place", "crop", "compare") if photo else ("",):
                if view:
                    browser.one(f'[data-view="{view}"]').click()
                wide = browser.run("return document.documentElement.scrollWidth")
                assert wide <= 390, (photo, view, wide)
        # Fingers need larger targets.
        browser.open(sample.page, photo=1)
        for button in browser.shown("#viewer button:not(.badge)"):
            assert browser.box(button)[3] >= 44, button.text


def paper_gets_the_plain_list(browser, sample):
    def printed(photo):
        browser.open(sample.page, photo=photo)
        pdf = browser.command("Page.printToPDF", paperWidth=8.27, paperHeight=11.69)
        return len(re.findall(rb"/Type\s*/Page\b", base64.b64decode(pdf["data"])))

    assert printed(1) == 1
    assert printed(None) in (2, 3), printed(None)

    browser.open(sample.page, photo=1)
    browser.size(700, 1000, dark=True, media="print")
    browser.run("dispatchEvent(new Event('beforeprint'))")
    assert [article.get_attribute("id") for article in browser.shown(".photo")] == ["photo-1"]
    assert not browser.shown("button:not(.badge), select, nav, details, #viewer, #overview")
    assert browser.run("return getComputedStyle(document.body).backgroundColor") == \
        "rgb(255, 255, 255)"
    line = sample.lines[0]
    items = browser.all("#photo-1 .list li")
    assert len(items) == len(line["crops"]) == 5
    for rank, (item, crop) in enumerate(zip(items, line["crops"])):
        canvas = item.find_element(By.CSS_SELECTOR, "canvas")
        assert canvas.is_displayed()
        assert_shows(browser, canvas, crop)
        label = canvas.get_attribute("aria-label")
        assert label.startswith(f"Crop {rank + 1} of large.png, "), label
    assert browser.run("return document.documentElement.scrollWidth") <= 700
    stage = browser.box(browser.one("#photo-1 .stage"))
    numbers = []
    for frame, crop in zip(browser.all("#photo-1 .frame"), line["crops"]):
        assert near(browser.box(frame), expected_box(stage, crop, line), 0.5)
        x, y, w, h = browser.box(frame.find_element(By.CSS_SELECTOR, ".badge"))
        assert not [other for other in numbers
                    if x < other[0] + w and other[0] < x + w and
                    y < other[1] + h and other[1] < y + h], "numbers hide each other"
        numbers.append((x, y))
    browser.run("dispatchEvent(new Event('afterprint'))")
    assert not browser.all("#photo-1 canvas")


def pages_are_readable_without_scripts(browser, sample):
    browser.command("Emulation.setScriptExecutionDisabled", value=True)
    try:
        browser.open(sample.page)
        for number, line in enumerate(sample.lines, 1):
            article = browser.one(f"#photo-{number}")
            assert article.is_displayed()
            if "error" in line:
                assert line["error"] in article.text
                continue
            stage = browser.box(article.find_element(By.CSS_SELECTOR, ".stage"))
            frames = article.find_elements(By.CSS_SELECTOR, ".frame")
            items = article.find_elements(By.CSS_SELECTOR, ".list li")
            assert len(frames) == len(items) == len(line["crops"])
            for frame, item, crop in zip(frames, items, line["crops"]):
                assert near(browser.box(frame), expected_box(stage, crop, line), 0.5)
                assert "{width} × {height} at {x}, {y}".format(**crop) in item.text, item.text
        assert not browser.shown("button, input, select")
        assert "base64" not in browser.one("body").text
        assert browser.run("return document.documentElement.scrollWidth") <= 1400
    finally:
        browser.command("Emulation.setScriptExecutionDisabled", value=False)


def photographs_stay_small(browser, sample):
    """Noise is the worst case for the size of a photograph in the page."""
    def sizes(page):
        with open(page, "rb") as file:
            return [len(part) for part in
                    re.findall(rb"<article class=.*?</article>\n", file.read(), re.DOTALL)]

    with_maps = sizes(sample.page)
    without = sizes(sample.report("bare.html", "--maps", "no", *sample.photos, status=1))
    assert len(with_maps) == len(without) == 4
    assert max(with_maps) <= LIMIT_WITH_MAPS, with_maps
    assert max(without) <= LIMIT_WITHOUT_MAPS, without
    print("  largest photograph:", max(with_maps), "bytes with maps,", max(without), "without")
    browser.open(os.path.join(sample.folder, "bare.html"), photo=1)
    assert not browser.one("#map-tools").is_displayed()
    assert not browser.all("script.maps")
    # But the picture is not too small to judge.
    assert browser.run("return document.getElementById('whole').naturalWidth") >= 900


def small_photographs(sample):
    """A page of many small crops of four photographs, two of which have the same name, and the
    lines of `suggest --json --explain` for them."""
    folder = os.path.join(sample.folder, "small")
    page = os.path.join(sample.folder, "small.html")
    paths = [os.path.join(folder, name) for name in
             ("one/Café 1.png", "two/Café 1.png", "wide.png", "two/late.png")]
    words = ["-n", "12", "--faces", "off", "--keep", "60,60,30,30"]
    if not os.path.exists(page):
        for path in paths:
            os.makedirs(os.path.dirname(path), exist_ok=True)
        make_square(folder, paths[0], 300, 200, 60, 60, 40)
        make_square(folder, paths[1], 200, 300, 50, 150, 60)
        make_square(folder, paths[2], 320, 200, 200, 60, 70)
        make_square(folder, paths[3], 280, 210, 90, 100, 50)
        sample.report("small.html", *words, *paths)
    done = subprocess.run([sample.program, "suggest", "--json", "--explain", *words, *paths],
                          stdout=subprocess.PIPE, check=True)
    return page, [json.loads(line) for line in done.stdout.decode().splitlines()]


def names_of_tiles(browser):
    return [name.text for name in browser.shown("#tiles > li .name")]


def photographs_with_the_same_name_show_their_folder(browser, sample):
    page, _ = small_photographs(sample)
    browser.open(page)
    names = ["one/Café 1.png", "two/Café 1.png", "wide.png", "late.png"]
    assert names_of_tiles(browser) == names, names_of_tiles(browser)
    # The search includes the folder, ignores accents and counts what it found.
    for text, found in (("CAFE", names[:2]), ("two", names[1:2]), ("cafe 2", []),
                        ("a", names[:2] + names[3:])):
        browser.one("#search").clear()
        browser.one("#search").send_keys(text)
        assert names_of_tiles(browser) == found, (text, names_of_tiles(browser))
        assert browser.one("#search-count").text == f"{len(found)} of 4 photographs"
    # Next and previous skip the third, which was not found.
    browser.shown("#tiles a")[1].click()
    browser.wait(lambda: browser.one("#viewer-title").text == names[1])
    assert browser.driver.title == names[1] + " – crop report"
    assert browser.one("#step-count").text == "2 of 4"
    browser.press(Keys.ARROW_RIGHT)
    browser.wait(lambda: browser.one("#viewer-title").text == names[3])
    assert browser.one("#step-count").text == "4 of 4"
    browser.press(Keys.ARROW_LEFT)
    browser.wait(lambda: browser.one("#viewer-title").text == names[1])
    browser.one("#to-next").click()
    browser.wait(lambda: browser.one("#viewer-title").text == names[3])
    browser.one("#to-previous").click()
    browser.wait(lambda: browser.one("#viewer-title").text == names[1])
    assert browser.one("#whole").get_attribute("alt") == "Photograph " + names[1]
    # A slash leads back to the search; its letter does not get into the field.
    browser.press("/")
    browser.wait(lambda: browser.one("#overview").is_displayed() and
                 browser.focused().get_attribute("id") == "search")
    assert browser.one("#search").get_attribute("value") == "a"
    assert browser.driver.title == "Crop report"
    # The printed page has the photographs found.
    browser.size(700, 1000, media="print")
    browser.run("dispatchEvent(new Event('beforeprint'))")
    assert [a.get_attribute("id") for a in browser.shown(".photo")] == \
        ["photo-1", "photo-2", "photo-4"]
    browser.run("dispatchEvent(new Event('afterprint'))")
    # An address without a photograph leads to the overview.
    browser.size(1400, 1000)
    browser.run("location.hash = '#photo-12'")
    browser.wait(lambda: browser.one("#overview").is_displayed())


def every_crop_is_described_by_its_numbers(browser, sample):
    page, lines = small_photographs(sample)
    for number in (1, 2):
        line = lines[number - 1]
        browser.open(page, photo=number)
        assert browser.one("#viewer-size").text == "{width} × {height}".format(**line)
        cards = browser.all("#strip button")
        assert len(cards) == len(line["crops"]) == 12
        for rank, crop in enumerate(line["crops"]):
            ratio = browser.run("return JSON.parse(document.querySelector('#photo-' + arguments[0]"
                                " + ' script.data').textContent).ratios[arguments[1]]",
                                number, rank)
            text = cards[rank].text
            assert text.startswith(f"{rank + 1} · {ratio}"), text
            assert f"{crop['expectedOverlap']:.2f}" in text, (text, crop["expectedOverlap"])
            drawn = browser.run(
                "const svg = arguments[0].querySelector('svg.where'), r = svg.firstChild;"
                "return [svg.getAttribute('viewBox'), ...['x', 'y', 'width', 'height']"
                ".map(n => Number(r.getAttribute(n)))]", cards[rank])
            assert drawn == ["0 0 {width} {height}".format(**line)] + \
                [crop[side] for side in ("x", "y", "width", "height")], drawn
        for rank in (0, 4, 11):
            crop = line["crops"][rank]
            cards[rank].click()
            ratio = cards[rank].text.split("\n")[0].split(" · ")[1]
            assert browser.one("#details-title").text == f"Crop {rank + 1} · {ratio}"
            share = 100 * crop["width"] * crop["height"] / (line["width"] * line["height"])
            described = browser.one("#details-text").text
            wanted = "{width} × {height} at {x}, {y} · ".format(**crop)
            assert described.startswith(wanted), (described, wanted)
            assert abs(int(described[len(wanted):].split(" %")[0]) - share) <= 0.5, described
            assert described.endswith(" · covers the content") == crop["coversContent"], described
            for name, part in crop["explain"]["ranks"].items():
                score = browser.one(f"[data-score={name}] p").get_attribute("textContent")
                count = f"{line['explain']['passing']:,}"
                assert score.endswith(f" This crop is at least as good as {int(100 * part)} % of "
                                      f"the {count} crops tried."), (score, part)
            browser.one('[data-view="compare"]').click()
            assert browser.shown("#alone figcaption")[1].text == f"Crop {rank + 1}"
            assert browser.one("#alone canvas").get_attribute("aria-label").endswith(ratio)
            browser.one('[data-view="place"]').click()
    # The next photograph starts with its first crop.
    browser.one("#to-next").click()
    browser.wait(lambda: browser.one("#viewer-title").text == "wide.png")
    assert shown_crop(browser) == 0


def single_keys_do_what_the_page_lists(browser, sample):
    page, _ = small_photographs(sample)
    browser.open(page, photo=1)
    pressed = lambda name: browser.one("#" + name).get_attribute("aria-pressed")
    for key, name in (("t", "thirds"), ("o", "outlines"), ("r", "show-regions")):
        before = [pressed(other) for other in ("thirds", "outlines", "show-regions")]
        browser.press(key)
        after = [pressed(other) for other in ("thirds", "outlines", "show-regions")]
        changed = [other for other, a, b in zip(("thirds", "outlines", "show-regions"),
                                                before, after) if a != b]
        assert changed == [name], (key, changed)
        browser.press(key.upper())
        assert [pressed(other) for other in ("thirds", "outlines", "show-regions")] == before
    # M cycles through all maps and back to none; the next photograph keeps the map.
    chosen = lambda: browser.one("#map-choice").get_attribute("value")
    names = [option.get_attribute("value") for option in browser.all("#map-choice option")]
    seen = []
    for _ in names:
        assert browser.one("#strength").is_enabled() == (chosen() != "")
        browser.press("m")
        seen.append(chosen())
    assert seen == names[1:] + [""], seen
    browser.press("m", "m")
    browser.press(Keys.ARROW_RIGHT)
    browser.wait(lambda: browser.one("#viewer-title").text == "two/Café 1.png" and
                 browser.one("#map").is_displayed())
    assert chosen() == names[2]
    mode = lambda: browser.one("#views [aria-checked=true]").get_attribute("data-view")
    seen = []
    for _ in range(3):
        browser.press("v")
        seen.append(mode())
    assert seen == ["crop", "compare", "place"], seen
    # Shortcuts of the browser still work, and End goes to the last crop.
    browser.press("5")
    assert shown_crop(browser) == 4
    ActionChains(browser.driver).key_down(Keys.ALT).send_keys("3").key_up(Keys.ALT).perform()
    assert shown_crop(browser) == 4
    browser.run("document.querySelector('#strip [tabindex=\"0\"]').focus()")
    browser.press(Keys.END)
    assert shown_crop(browser) == 11
    browser.run("document.activeElement.blur()")
    browser.press("x")
    assert [card.get_attribute("data-rank") for card in browser.all("#strip .picked")] == ["11"]
    badges = browser.all("#frames .badge")
    assert [rank for rank, badge in enumerate(badges)
            if "picked" in badge.get_attribute("class").split()] == [11]
    assert browser.one("#choose").text == "✓ Chosen"
    browser.one("#copy-coordinates").click()
    browser.wait(lambda: browser.one("#said").text.startswith("Copied: "))
    browser.press("1")
    assert browser.one("#said").text == ""
    assert browser.one("#choose").text == "Choose crop"
    browser.one("#choice-clear").click()
    # A digit beyond the last crop does nothing.
    few = sample.report("few.html", "-n", "2", "--faces", "off",
                        os.path.join(sample.folder, "small", "wide.png"))
    browser.open(few)
    browser.wait(lambda: browser.one("#viewer").is_displayed())
    browser.press("2", "3")
    assert shown_crop(browser) == 1
    assert not browser.one("#show-regions").is_displayed()  # there are none
    assert browser.one("#outlines").is_displayed()


def a_choice_is_cut_by_the_program(browser, sample):
    page, lines = small_photographs(sample)
    browser.open(page, photo=1)
    for rank in (10, 1, 9):
        browser.all("#strip button")[rank].click()
        browser.one("#choose").click()
        assert shown_crop(browser) == rank
    browser.run("location.hash = '#overview'")
    browser.wait(lambda: browser.one("#overview").is_displayed())
    # A tile shows the frames of the chosen crops, or else of the first one.
    stage = browser.box(browser.all("#tiles .stage")[0])
    frames = lambda tile: [browser.box(frame) for frame in browser.all(
        f"#tiles > li:nth-child({tile + 1}) .frame")]
    wanted = [expected_box(stage, lines[0]["crops"][rank], lines[0]) for rank in (1, 9, 10)]
    assert len(frames(0)) == 3
    assert all(near(a, b, 0.5) for a, b in zip(frames(0), wanted)), (frames(0), wanted)
    assert len(frames(1)) == 1
    # "Choose first" applies to the photographs found; saving, to everything chosen.
    browser.one("#search").send_keys("late")
    browser.one("#choose-first").click()
    assert browser.one("#choice-count").text == "4 crops chosen"
    browser.one("#search").clear()
    browser.one("#search").send_keys("one")
    browser.one("#choose-first").click()
    assert browser.one("#choice-count").text == "4 crops chosen"
    browser.one("#search").clear()
    browser.one("#search").send_keys("wide")
    target = os.path.join(browser.downloads, "choice.json")
    if os.path.exists(target):
        os.remove(target)
    browser.one("#choice-save").click()
    browser.wait(lambda: os.path.exists(target) and os.path.getsize(target) > 0, target)
    manifest = os.path.join(sample.folder, "chosen.json")
    subprocess.run([sample.program, "crop", "--from", target, "--manifest", manifest, "-o",
                    os.path.join(sample.folder, "chosen")], stdout=subprocess.PIPE, check=True)
    with open(manifest, encoding="utf-8") as file:
        cut = json.load(file)
    chosen = {0: (1, 9, 10), 3: (0,)}
    assert [line["file"] for line in cut] == [lines[number]["file"] for number in chosen]
    for line, (number, ranks) in zip(cut, chosen.items()):
        assert len(line["crops"]) == len(ranks)
        for crop, rank in zip(line["crops"], ranks):
            for name in ("x", "y", "width", "height", "aspect", "scores", "coversContent"):
                assert crop[name] == lines[number]["crops"][rank][name], (number, rank, name)
            assert [crop["files"][0][side] for side in ("width", "height")] == \
                [crop[side] for side in ("width", "height")]
    # Clearing includes photographs that the search hides.
    browser.one("#choice-clear").click()
    browser.open_until_chosen(page, "No crop chosen")


def a_photograph_without_crops_says_why(browser, sample):
    small_photographs(sample)
    # A square of 205 pixels fits the first, which is 210 high, but not the second.
    words = ["--aspect", "1:1", "--faces", "off", "--must-keep", "0,50,205,20", "-n", "2"]
    words += [os.path.join(sample.folder, "small", name) for name in ("two/late.png", "wide.png")]
    page = sample.report("none.html", *words)
    done = subprocess.run([sample.program, "suggest", "--json", "--explain", *words],
                          stdout=subprocess.PIPE, check=True)
    lines = [json.loads(line) for line in done.stdout.decode().splitlines()]
    assert lines[0]["crops"] and not lines[1]["crops"], [len(line["crops"]) for line in lines]
    for number in (1, 2, 1):
        line = lines[number - 1]
        if "none.html" not in browser.driver.current_url:
            browser.open(page)
        browser.run(f"location.hash = '#photo-{number}'")
        title = os.path.basename(line["file"])
        browser.wait(lambda: browser.one("#viewer-title").text == title)
        assert browser.one("#details").is_displayed() == bool(line["crops"])
        assert len(browser.all("#strip button")) == len(line["crops"])
        assert browser.one("#viewer-note").text == line["explain"]["note"]
        assert browser.one("#outlines").is_displayed() == (len(line["crops"]) > 1)
        assert browser.one("#viewer-size").text == "{width} × {height}".format(**line)
        browser.press("x", "1")  # harmless without crops
        if line["crops"]:
            browser.press("x")
    assert browser.one("#choice-count").text == "No crop chosen"


def accessibility(browser, sample):
    """axe-core finds no violation in any view, light or dark, wide or narrow."""
    path = os.environ.get("AXE_MIN_JS", "")
    if not os.path.exists(path):
        print("axe-core is not installed: run scripts/install_axe.sh")
        sys.exit(SKIPPED)
    with open(path, encoding="utf-8") as file:
        axe = file.read()

    def check(what):
        browser.run(axe)
        found = browser.driver.execute_async_script(
            "const done = arguments[0];"
            "axe.run(document, {runOnly: {type: 'tag', values: ['wcag2a', 'wcag2aa', 'wcag21a',"
            "  'wcag21aa', 'wcag22aa', 'best-practice']}}).then(result => done({"
            "  passes: result.passes.length, violations: result.violations.map(v => [v.id, v.help,"
            "  v.nodes.map(n => n.html.slice(0, 200) + ' ' + n.failureSummary)])}))")
        assert found["passes"] > 20, found
        assert not found["violations"], (what, found["violations"])

    for dark in (False, True):
        for width, height in ((1400, 1000), (390, 844)):
            browser.size(width, height, dark=dark, phone=width < 500)
            browser.open(sample.page)
            check("overview")
            browser.one("#choose-first").click()
            browser.one("#search").send_keys("a")
            check("overview with a choice")
            browser.one("#choice-clear").click()
            browser.open(sample.page, photo=1)
            check("photograph")
            browser.run("for (const d of document.querySelectorAll('details')) d.open = true")
            for name in ("choose", "thirds", "outlines", "copy-command"):
                browser.one("#" + name).click()
            browser.all("#map-choice option")[1].click()
            check("photograph with everything on")
            browser.one('[data-view="compare"]').click()
            check("comparison")
            browser.one("#choice-clear").click()
    browser.size(1400, 1000, media="print")
    browser.open(sample.page)
    check("paper")


CASES = [overview_comes_first, thirty_photographs_fit_on_a_few_screens,
         narrow_photographs_make_no_tall_rows, search_finds_names,
         frames_lie_where_the_crops_are, regions_are_drawn_and_listed,
         badges_are_at_corners_of_their_frames,
         only_the_shown_crop_stands_out, clicks_choose_what_is_shown, keys_reach_everything,
         scores_are_explained, ratios_have_their_common_names, crops_are_cut_from_the_picture,
         compare_shows_both, thirds_divide_the_crop, maps_are_coloured_in_the_page,
         coordinates_and_commands_are_copied, a_choice_is_saved_as_suggest_writes_it,
         nothing_is_fetched_and_names_are_text, texts_hold_no_paths,
         phones_need_no_sideways_scrolling, paper_gets_the_plain_list,
         pages_are_readable_without_scripts, photographs_stay_small,
         photographs_with_the_same_name_show_their_folder, every_crop_is_described_by_its_numbers,
         single_keys_do_what_the_page_lists, a_choice_is_cut_by_the_program,
         a_photograph_without_crops_says_why]


def main():
    program = sys.argv[1]
    named = {case.__name__: case for case in CASES + [accessibility]}
    cases = [named[name] for name in sys.argv[2:]] or CASES
    failed = 0
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as folder:
        sample = Sample(program, folder)
        browser = Browser(folder)
        try:
            for case in cases:
                browser.size(1400, 1000)
                try:
                    case(browser, sample)
                    print("ok  ", case.__name__, flush=True)
                except Exception:  # a case that throws fails, and the others still run
                    failed += 1
                    print("FAIL", case.__name__, flush=True)
                    import traceback
                    traceback.print_exc(file=sys.stdout)
        finally:
            browser.driver.quit()
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
