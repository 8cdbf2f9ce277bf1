#!/usr/bin/env python3
"""Opens a report page from the file system in headless Chromium and uses it as a person would.

usage: report_browser_test.py VISTATRIM [SCREENSHOT.png [PHOTO...]]
  Without photographs it makes one with libvips' command-line tool. Exit status 77 tells that
  the browser or its driver is not installed.
"""
import os
import shutil
import subprocess
import sys
import tempfile

SKIPPED = 77

try:
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
except ImportError:
    print("python3-selenium is not installed")
    sys.exit(SKIPPED)
if not shutil.which("chromium") or not shutil.which("chromedriver"):
    print("chromium or chromium-driver is not installed")
    sys.exit(SKIPPED)


def make_photo(folder):
    """A bright square on a dark ramp."""
    path = os.path.join(folder, "square.png")
    run = lambda *words: subprocess.run(["vips", *words], check=True)
    ground, square = os.path.join(folder, "ground.v"), os.path.join(folder, "square.v")
    run("grey", ground + ".grey.v", "900", "600", "--uchar")
    run("bandjoin", f"{ground}.grey.v {ground}.grey.v {ground}.grey.v", ground)
    run("linear", ground, ground + ".dim.v", "0.2", "60", "--uchar")
    run("black", square + ".black.v", "160", "160", "--bands", "3")
    run("linear", square + ".black.v", square, "1", "240 80 40", "--uchar")
    run("insert", ground + ".dim.v", square, path, "200", "250")
    return path


def open_browser(profile):
    options = webdriver.ChromeOptions()
    options.binary_location = shutil.which("chromium")
    for flag in ("--headless", "--no-sandbox", "--disable-gpu", "--disable-quic",
                 "--no-first-run", "--disable-background-networking",
                 "--disable-component-update", "--disable-sync", "--window-size=1400,1000",
                 "--user-data-dir=" + profile):
        options.add_argument(flag)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=Service(shutil.which("chromedriver")), options=options)


def use(browser, photos):
    sections = browser.find_elements(By.CSS_SELECTOR, "section.photo")
    assert len(sections) == photos, len(sections)
    section = sections[0]
    chosen = lambda: [card.get_attribute("data-crop") for card in
                      section.find_elements(By.CSS_SELECTOR, ".card.chosen")]

    # Every picture is there, from inside the page.
    for image in section.find_elements(By.TAG_NAME, "img"):
        assert image.get_attribute("src").startswith("data:")
        assert browser.execute_script("return arguments[0].naturalWidth", image) > 0

    # Frames lie where the crops are: inside the photograph, and of the cards' number.
    stage = section.find_element(By.CSS_SELECTOR, ".stage").rect
    frames = section.find_elements(By.CSS_SELECTOR, ".frame")
    cards = section.find_elements(By.CSS_SELECTOR, ".card")
    assert len(frames) == len(cards) == 5
    for frame in frames:
        box = frame.rect
        assert box["x"] >= stage["x"] - 1 and box["y"] >= stage["y"] - 1
        assert box["x"] + box["width"] <= stage["x"] + stage["width"] + 1
        assert box["y"] + box["height"] <= stage["y"] + stage["height"] + 1

    # The best crop is chosen at first; a click on a card and on a frame chooses another one.
    assert chosen() == ["0"]
    cards[2].click()
    assert chosen() == ["2"]
    assert "chosen" in frames[2].get_attribute("class")
    frames[3].find_element(By.TAG_NAME, "span").click()
    assert chosen() == ["3"]
    # Clicks on the photograph go through the crops that lie under the pointer.
    middle = section.find_element(By.CSS_SELECTOR, "img.whole")
    # The driver clicks the middle of what of the photograph is in view, once it has scrolled there.
    middle.click()
    shown = browser.execute_script(
        "const box = arguments[0].getBoundingClientRect();"
        "return [Math.max(0, box.left), Math.min(innerWidth, box.right),"
        "        Math.max(0, box.top), Math.min(innerHeight, box.bottom)]", middle)
    x = (shown[0] + shown[1]) / 2
    y = (shown[2] + shown[3]) / 2
    boxes = browser.execute_script(
        "return arguments[0].map(frame => frame.getBoundingClientRect().toJSON())", frames)
    under = [number for number, box in enumerate(boxes)
             if box["left"] < x < box["right"] and box["top"] < y < box["bottom"]]
    assert len(under) >= 2, under
    seen = set()
    for _ in under:
        middle.click()
        seen.update(chosen())
    assert seen == {str(number) for number in under}, (seen, under)
    cards[3].click()
    assert chosen() == ["3"]
    # Arrow keys go on from there, round the end.
    cards[3].send_keys(Keys.ARROW_DOWN)
    assert chosen() == ["4"]
    cards[4].send_keys(Keys.ARROW_DOWN)
    assert chosen() == ["0"]

    # Bars tell the measures.
    bars = cards[0].find_elements(By.CSS_SELECTOR, ".bar")
    assert len(bars) >= 5
    for bar in bars:
        value = float(bar.find_element(By.TAG_NAME, "em").text)
        full = bar.find_element(By.TAG_NAME, "i").size["width"]
        filled = bar.find_element(By.TAG_NAME, "b").size["width"]
        assert abs(filled - value * full) <= 2, (filled, value, full)

    # A map can be laid over the photograph, changed for another, and taken away.
    buttons = section.find_elements(By.CSS_SELECTOR, "button[data-map]")
    assert len(buttons) == 10
    shown = lambda: [overlay.get_attribute("data-map") for overlay in
                     section.find_elements(By.CSS_SELECTOR, "img.map") if overlay.is_displayed()]
    assert shown() == []
    buttons[0].click()
    assert shown() == [buttons[0].get_attribute("data-map")]
    buttons[3].click()
    assert shown() == [buttons[3].get_attribute("data-map")]
    buttons[3].click()
    assert shown() == []

    errors = [entry for entry in browser.get_log("browser") if entry["level"] == "SEVERE"]
    assert not errors, errors
    return section, buttons


def main():
    program = sys.argv[1]
    screenshot = sys.argv[2] if len(sys.argv) > 2 else None
    with tempfile.TemporaryDirectory() as folder:
        photos = sys.argv[3:] or [make_photo(folder)]
        page = os.path.join(folder, "report.html")
        subprocess.run([program, "report", *photos, "-o", page], check=True)
        browser = open_browser(os.path.join(folder, "profile"))
        try:
            browser.get("file://" + page)
            section, buttons = use(browser, len(photos))
            if screenshot:
                browser.save_screenshot(screenshot)
                buttons[0].click()
                browser.save_screenshot(screenshot.replace(".png", "-map.png"))
        finally:
            browser.quit()
    print("the report page works")


if __name__ == "__main__":
    main()
