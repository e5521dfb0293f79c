"""Debian's Chromium without a window, driven by its chromedriver."""

import shutil

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service


def open_browser(width=1280, height=900, dark=False):
    options = Options()
    for argument in ["--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                     "--no-first-run", "--disable-background-networking", "--lang=en-GB",
                     f"--window-size={width},{height}"]:
        options.add_argument(argument)
    if dark:
        options.add_argument("--force-dark-mode")
        options.add_argument("--blink-settings=preferredColorScheme=0")
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=Service(shutil.which("chromedriver")), options=options)


def set_width(browser, width, height=900):
    browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                            {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})
