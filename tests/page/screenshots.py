"""Makes the manual's pictures of the control room's page: docs/manual/images/."""

import os
import pathlib
import sys

from browser import open_browser, set_width
from selenium.webdriver.common.by import By
from station import Station

IMAGES = pathlib.Path(__file__).resolve().parents[2] / "docs/manual/images"


def shoot(browser, station, name, path="", width=1100, height=760, dark=False,
          state="[data-output=HTTP1].ok"):
    set_width(browser, width, height)
    browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {
        "features": [{"name": "prefers-color-scheme", "value": "dark" if dark else "light"}]})
    browser.get("about:blank")
    browser.get(station.url() + path)
    css = state if path else ".card"
    Station.await_(lambda: browser.find_elements(By.CSS_SELECTOR, css), f"{css} of {name}")
    browser.save_screenshot(str(IMAGES / name))
    print(IMAGES / name)


def main():
    IMAGES.mkdir(parents=True, exist_ok=True)
    station = Station(os.environ.get("ZEB_PROGRAMS", "build/dev"))
    browser = open_browser()
    try:
        station.add_file()
        station.add_http()
        station.settings("", NumberServices="2")
        station.settings("Service2", ServiceName="Demo Classics", InfoSourceType=51,
                         InfoSourceFileName="/playout/now.asc")
        station.start()
        station.connect()
        station.send('SET_SHOW REFERENCE="MORN" TITLE="The Early Tide"',
                     'SET_PRESENTER REFERENCE="nell" FULLNAME="Nell Okafor"')
        for title, artist in [("Saltwater Radio", "The Harbour Lights"), ("Rain on Slate", "Gwen ap Rhys"),
                              ("Paper Moons", "Ada Quill")]:
            station.song(title, artist)
            Station.await_(lambda: station.page().exists() and title in station.page().read_text(), title)
        station.send('SET_NEXT_ITEM IType=7 ITitle="Wherever the Signal Goes" AName1="Long Wave"')
        shoot(browser, station, "control-room-stations.png", height=420)
        shoot(browser, station, "control-room-station.png", "#/1", height=1000)
        shoot(browser, station, "control-room-dark.png", "#/1", width=420, height=900, dark=True)
        station.taker.stop()
        station.song("Wherever the Signal Goes", "Long Wave")
        browser.get(station.url() + "#/1")
        Station.await_(lambda: browser.find_elements(By.CSS_SELECTOR, "[data-output=HTTP1].failing"), "a failure")
        shoot(browser, station, "control-room-failing.png", "#/1", height=1000,
              state="[data-output=HTTP1].failing")
    finally:
        browser.quit()
        station.close()
    return 0


if __name__ == "__main__":
    sys.exit(main())
