#!/usr/bin/python3
"""Prints what a browser needs to show HTML reports, as JSON: medians, in seconds where they are
times. Needs Debian's python3-selenium and chromium-driver.

    page_figures.py REPORT LARGE

LARGE is a report whose first pair is opened.
"""

import json
import pathlib
import statistics
import sys
import time

from selenium import webdriver
from selenium.webdriver.chrome.service import Service

RUNS = 9
PAINT = (
    "return performance.getEntriesByType('paint').find((e) => e.name === 'first-paint')?.startTime"
)
NODES = "return document.getElementsByTagName('*').length"
REQUESTS = "return performance.getEntriesByType('resource').length"
# Until the next frame has been made: what the reader sees then is the answer.
KEY = """const done = arguments[0], field = document.getElementById("query"), start = performance.now();
field.value = "footer"; field.dispatchEvent(new Event("input"));
requestAnimationFrame(() => setTimeout(() => done(performance.now() - start)));"""
# The hunks of the pages that show a change of their own, all opened.
OPEN_ALL = """for (const each of document.querySelectorAll("details.group")) each.open = true"""
FILLED = """return [...document.querySelectorAll("details.group")].every((each) => each.querySelector(".foot"))"""
SCREENS = """const own = [...document.querySelectorAll("details.group")].filter((each) =>
  each.querySelector(".count").textContent === "1 pair" && each.querySelector(".format").textContent === "html");
return own.reduce((sum, each) => sum + each.getBoundingClientRect().height, 0) / 800"""
OPEN = """const done = arguments[0], start = performance.now();
document.querySelector("table.list a").click();
const look = () => document.querySelector("main.page:not([hidden]) h1") ? setTimeout(() => done(performance.now() - start))
  : requestAnimationFrame(look);
look();"""


def visit(browser, file):
    browser.get("about:blank")
    browser.get(pathlib.Path(file).resolve().as_uri())
    while not (
        browser.execute_script("return document.querySelector('table.list a')")
        and browser.execute_script(PAINT)
    ):
        time.sleep(0.01)


def main():
    options = webdriver.ChromeOptions()
    for option in ("--headless=new", "--no-sandbox", "--disable-gpu", "--window-size=1280,800"):
        options.add_argument(option)
    browser = webdriver.Chrome(options=options, service=Service("/usr/bin/chromedriver"))
    report, large = sys.argv[1:]
    paints, keys, opens = [], [], []
    visit(browser, report)  # once to warm up
    for _ in range(RUNS):
        visit(browser, report)
        paints.append(browser.execute_script(PAINT) / 1e3)
        nodes, requests = browser.execute_script(NODES), browser.execute_script(REQUESTS)
        keys.append(browser.execute_async_script(KEY) / 1e3)
        visit(browser, large)
        opens.append(browser.execute_async_script(OPEN) / 1e3)
    visit(browser, report)
    browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                            {"width": 1280, "height": 800, "deviceScaleFactor": 1, "mobile": False})
    browser.execute_script(OPEN_ALL)
    while not browser.execute_script(FILLED):
        time.sleep(0.01)
    screens = browser.execute_script(SCREENS)
    browser.quit()
    print(
        json.dumps(
            {
                "paint": statistics.median(paints),
                "nodes": nodes,
                "requests": requests,
                "screens": screens,
                "key": statistics.median(keys),
                "open": statistics.median(opens),
            }
        )
    )


if __name__ == "__main__":
    main()
