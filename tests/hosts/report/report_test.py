#!/usr/bin/env python3
"""report_test.py QORFACES AXE: the report of a run that is made here, in a browser, without a network.

QORFACES is the program; AXE the script of axe-core, or a file that is not there. Skipped, with a line, where there
is no browser to drive.
"""

# Selenium's functions have no types.
# mypy: disable-error-code="no-untyped-call"

import json
import pathlib
import shutil
import struct
import subprocess
import sys
import tempfile
import time
import unittest
import zlib
from typing import Any, ClassVar

try:
    from selenium import webdriver
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
    from selenium.webdriver.chrome.options import Options
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.remote.webelement import WebElement
    from selenium.webdriver.support.wait import WebDriverWait
except ImportError:
    print("skipped: python3-selenium is not installed")
    sys.exit(77)

CHROMIUM = shutil.which("chromium")
DRIVER = shutil.which("chromedriver")
QORFACES = ""
AXE = pathlib.Path()
SLOW = 300  # seconds; nothing waits so long but on a machine that has no time for it

SCRIPT_NAME = "<script>document.title='caught'</script><img src=x onerror=\"document.title='caught'\">.png"
FLAGS = (
    "--headless=new --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking "
    "--disable-component-update --disable-sync --disable-dev-shm-usage --hide-scrollbars"
).split()


def png(width: int, height: int) -> bytes:
    """A grey picture."""

    def chunk(name: bytes, content: bytes) -> bytes:
        check = zlib.crc32(name + content)
        return struct.pack(">I", len(content)) + name + content + struct.pack(">I", check)

    rows = (b"\0" + b"\x60" * width) * height
    head = struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b"")


def face(left: float, **more: Any) -> dict[str, Any]:
    result: dict[str, Any] = {
        "box": {"left": left, "top": 0.25, "right": left + 0.1, "bottom": 0.5},
        "noseBridge": {"x": left + 0.05, "y": 0.35},
        "chin": {"x": left + 0.05, "y": 0.5},
        "headCentre": {"x": left + 0.05, "y": 0.36},
        "headTopMeasured": True,
    }
    result["landmarks"] = [{"x": left + 0.001 * i, "y": 0.3 + 0.002 * i} for i in range(68)]
    result.update(more)
    return result


def make_run(run: pathlib.Path) -> None:
    """0 to 8 faces, one that failed, two to look at, names of every kind; then enough for three pages."""
    photos = run / "photos"
    (run / "thumbnails").mkdir(parents=True)
    photos.mkdir()
    (run / "thumbnails" / "one.png").write_bytes(png(32, 24))
    lines: list[dict[str, Any]] = []

    def add(name: str, faces: list[dict[str, Any]] | None, width: int = 400, height: int = 300, **more: Any) -> None:
        (photos / name).write_bytes(png(4, 3))
        line: dict[str, Any] = {
            "version": 1,
            "path": str(photos / name),
            "size": 1000 * (len(lines) + 1),
            "mtime": 1700000000000000,
            "name": name,
        }
        if faces is None:
            line.update(status="failed", error="cannot be read as a picture")
        else:
            line.update(status="ok", width=width, height=height, damaged=False, found=len(faces), faces=faces)
            line["thumbnail"] = "thumbnails/one.png"
        line.update(more)
        lines.append(line)

    for number in range(9):
        add(f"a{number} faces.png", [face(0.1 * i) for i in range(number)])
    add("b failed.png", None)
    add("c assumed.png", [face(0.2, headTopMeasured=False)])
    add("d damaged.png", [], damaged=True)
    add("e große Straße 100%#?.png", [face(0.3)], width=4000, height=3000)
    add("f" + SCRIPT_NAME.replace("/", "\u2215"), [face(0.4)])
    for number in range(140):
        add(f"z{number:03}.png", [])
    with open(run / "faces.ndjson", "w", encoding="utf-8") as journal:
        # An earlier line for a photograph does not count, and one without an end neither.
        journal.write(json.dumps({**lines[0], "status": "failed", "error": "earlier"}) + "\n")
        for line in lines:
            journal.write(json.dumps(line, ensure_ascii=False) + "\n")
        journal.write('{"version":1,"path":"/torn')


def start_chromium(profile: pathlib.Path) -> subprocess.Popen[bytes]:
    """The driver would give the browser one minute to start, which is not enough for a busy machine."""
    flags = [*FLAGS, f"--user-data-dir={profile}", "--remote-debugging-port=0", "about:blank"]
    return subprocess.Popen([str(CHROMIUM), *flags], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def address_of(chromium: subprocess.Popen[bytes], profile: pathlib.Path) -> str:
    port = profile / "DevToolsActivePort"
    while not (port.is_file() and port.read_text(encoding="ascii").count("\n")):
        if chromium.poll() is not None:
            raise RuntimeError(f"chromium ended with {chromium.returncode}")
        time.sleep(0.1)
    return "127.0.0.1:" + port.read_text(encoding="ascii").splitlines()[0]


class Report(unittest.TestCase):
    place: ClassVar[tempfile.TemporaryDirectory[str]]
    run_folder: ClassVar[pathlib.Path]
    chromium: ClassVar[subprocess.Popen[bytes]]
    browser: ClassVar[webdriver.Chrome]

    @classmethod
    def setUpClass(cls) -> None:
        # The browser may write to its profile for a moment after it was told to end.
        cls.place = tempfile.TemporaryDirectory(prefix="qorfaces-report-", ignore_cleanup_errors=True)
        folder = pathlib.Path(cls.place.name)
        cls.run_folder = folder / "run"
        make_run(cls.run_folder)
        subprocess.run([QORFACES, "report", str(cls.run_folder)], check=True)
        cls.chromium = start_chromium(folder / "profile")
        options = Options()
        options.debugger_address = address_of(cls.chromium, folder / "profile")
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        cls.browser = webdriver.Chrome(service=Service(str(DRIVER)), options=options)
        cls.browser.set_script_timeout(SLOW)
        cls.browser.set_page_load_timeout(SLOW)

    @classmethod
    def tearDownClass(cls) -> None:
        cls.browser.quit()
        cls.chromium.terminate()
        cls.chromium.wait()
        cls.place.cleanup()

    def setUp(self) -> None:
        self.resize(1400, 1000)
        self.open("")

    def resize(self, width: int, height: int) -> None:
        self.browser.execute_cdp_cmd(
            "Emulation.setDeviceMetricsOverride",
            {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": width < 500},
        )

    def open(self, address: str) -> None:
        self.browser.get("about:blank")
        self.browser.get((self.run_folder / "report" / "index.html").as_uri() + address)
        self.wait(lambda: self.browser.execute_script("return document.documentElement.dataset.ready") == "true")

    def wait(self, condition: Any) -> Any:
        return WebDriverWait(self.browser, SLOW, poll_frequency=0.05).until(lambda _: condition())

    def find(self, selector: str) -> WebElement:
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def texts(self, selector: str) -> list[str]:
        script = "return [...document.querySelectorAll(arguments[0])].map((each) => each.textContent)"
        return list(self.browser.execute_script(script, selector))

    def names(self) -> list[str]:
        return self.texts("#grid .name")

    def press(self, *keys: str) -> None:
        self.browser.switch_to.active_element.send_keys(*keys)

    def choose(self, filter_name: str) -> list[str]:
        self.find(f"#filters button[value='{filter_name}']").click()
        return self.names()

    def show_large(self, place: int) -> None:
        self.browser.find_elements(By.CSS_SELECTOR, "#grid button")[place].click()
        self.wait(lambda: self.texts("#numbers p"))

    # --- What is shown ----------------------------------------------------------------------------------

    def test_counts_faces_and_photographs(self) -> None:
        self.assertEqual(self.find("#title").text, "39 faces in 154 photographs")

    def test_shows_pages_of_sixty(self) -> None:
        self.assertEqual(len(self.names()), 60)
        self.assertEqual(self.find("#page-count").text, "3")
        self.find("#last-page").click()
        self.assertEqual(len(self.names()), 34)

    def test_filters_by_the_number_of_faces(self) -> None:
        self.assertEqual(len(self.choose("0")), 60)
        self.assertIn("142 photographs", self.find("#status").text)
        self.assertEqual(self.choose("2"), ["a2 faces.png"])
        self.assertEqual(self.choose("3-5"), ["a3 faces.png", "a4 faces.png", "a5 faces.png"])
        self.assertEqual(self.choose("more"), ["a6 faces.png", "a7 faces.png", "a8 faces.png"])

    def test_filters_what_failed_and_what_is_to_be_looked_at(self) -> None:
        self.assertEqual(self.choose("failed"), ["b failed.png"])
        self.assertEqual(self.choose("look"), ["c assumed.png", "d damaged.png"])

    def test_searches_names(self) -> None:
        self.find("#search").send_keys("STRASSE", Keys.BACKSPACE * 7, "große")
        self.wait(lambda: self.names() == ["e große Straße 100%#?.png"])

    def test_sorts(self) -> None:
        self.find("#descending").click()
        self.assertEqual(self.names()[0], "z139.png")
        for order, first in (("faces", "a8 faces.png"), ("pixels", "e große Straße 100%#?.png"), ("bytes", "z139.png")):
            self.find(f"#sort option[value='{order}']").click()
            self.assertEqual(self.names()[0], first, order)

    def test_draws_a_box_for_each_face(self) -> None:
        self.choose("3-5")
        self.wait(lambda: len(self.texts("#grid .box")) == 3 + 4 + 5)
        self.find("#boxes").click()
        self.assertFalse(self.find("#grid .box").is_displayed())

    def test_draws_landmarks_when_they_are_asked_for(self) -> None:
        self.choose("2")
        self.assertEqual(len(self.texts("#grid path.points")), 0)
        self.find("#landmarks").click()
        path = self.wait(lambda: self.browser.find_elements(By.CSS_SELECTOR, "#grid path.points"))[0]
        self.assertEqual(str(path.get_attribute("d")).count("M"), 2 * 68)

    def test_shows_thumbnails(self) -> None:
        script = "const one = document.querySelector('#grid img'); return one && one.naturalWidth"
        self.wait(lambda: self.browser.execute_script(script) == 32)

    def test_takes_names_for_text(self) -> None:
        self.choose("1")
        shown = [name for name in self.names() if name.startswith("f")]
        self.assertEqual(len(shown), 1)
        self.assertIn("<script>", shown[0])
        self.show_large(len(self.names()) - 1)
        self.assertIn("<script>", self.find("#large-name").text)
        self.assertNotEqual(self.browser.title, "caught")
        self.assertEqual(self.texts("main script, dialog script"), [])

    # --- One photograph large ---------------------------------------------------------------------------

    def test_shows_a_photograph_large_with_its_numbers(self) -> None:
        self.choose("1")
        self.show_large(0)
        self.assertEqual(self.find("#large-name").text, "a1 faces.png")
        numbers = self.texts("#numbers dd")
        self.assertEqual(numbers, ["0, 75", "40, 75", "20, 105", "20, 150", "20, 108"])
        self.wait(lambda: self.browser.execute_script("return document.querySelector('#large-picture img').naturalWidth") == 4)

    def test_shows_photographs_with_odd_names(self) -> None:
        self.find("#search").send_keys("100%#?")
        self.wait(lambda: len(self.names()) == 1)
        self.show_large(0)
        self.wait(lambda: self.browser.execute_script("return document.querySelector('#large-picture img').naturalWidth") == 4)

    def test_shows_the_thumbnail_where_the_photograph_is_gone(self) -> None:
        gone = self.run_folder / "photos" / "a1 faces.png"
        contents = gone.read_bytes()
        gone.unlink()
        self.addCleanup(gone.write_bytes, contents)
        self.choose("1")
        self.show_large(0)
        self.wait(lambda: self.browser.execute_script("return document.querySelector('#large-picture img').naturalWidth") == 32)

    def test_says_why_a_photograph_failed_and_why_to_look(self) -> None:
        self.choose("failed")
        self.show_large(0)
        self.assertIn("Failed: cannot be read as a picture", self.texts("#numbers p"))
        self.press(Keys.ESCAPE)
        self.choose("look")
        self.show_large(0)
        self.assertIn("Look: the top of the head is assumed.", self.texts("#numbers p"))

    # --- Keyboard ---------------------------------------------------------------------------------------

    def test_goes_through_photographs_by_keyboard_alone(self) -> None:
        self.find("body").send_keys("/")
        self.assertEqual(self.browser.switch_to.active_element.get_attribute("id"), "search")
        self.press("faces")
        self.wait(lambda: len(self.names()) == 9)
        for _ in range(20):
            if self.browser.execute_script("return document.activeElement.closest('#grid') !== null"):
                break
            self.press(Keys.TAB)
        self.press(Keys.ARROW_RIGHT)
        self.press(Keys.ENTER)
        self.wait(lambda: self.find("#large-name").text == "a1 faces.png")
        self.press(Keys.ARROW_RIGHT)
        self.wait(lambda: self.find("#large-name").text == "a2 faces.png")
        self.press(Keys.END)
        self.wait(lambda: self.find("#large-name").text == "a8 faces.png")
        self.press(Keys.ARROW_LEFT)
        self.wait(lambda: self.find("#large-name").text == "a7 faces.png")
        self.press(Keys.ESCAPE)
        self.wait(lambda: not self.find("#large").is_displayed())
        self.assertIn("a7 faces.png", self.browser.switch_to.active_element.text)

    # --- For everybody ----------------------------------------------------------------------------------

    def test_fits_a_phone(self) -> None:
        self.resize(390, 844)
        self.open("")
        script = "return document.documentElement.scrollWidth"
        self.assertLessEqual(self.browser.execute_script(script), 390)
        self.show_large(3)
        self.assertLessEqual(self.browser.execute_script(script), 390)

    def test_has_no_serious_finding_by_axe_core(self) -> None:
        if not AXE.is_file():
            self.skipTest("axe-core is not there")
        for scheme in ("light", "dark"):
            self.browser.execute_cdp_cmd(
                "Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": scheme}]}
            )
            for width, height in ((1400, 1000), (390, 844)):
                self.resize(width, height)
                self.open("#with=look")
                self.check_with_axe(f"{scheme}, {width}, grid")
                self.show_large(0)
                self.check_with_axe(f"{scheme}, {width}, large")

    def check_with_axe(self, what: str) -> None:
        # Through the debugger, which the page's own rules do not bind.
        self.browser.execute_cdp_cmd("Runtime.evaluate", {"expression": AXE.read_text(encoding="utf-8")})
        script = "const done = arguments[arguments.length - 1]; axe.run(document).then((found) => done(found.violations))"
        serious = [
            f"{each['id']}: {node['html']}"
            for each in self.browser.execute_async_script(script)
            if each["impact"] in ("serious", "critical")
            for node in each["nodes"]
        ]
        self.assertEqual(serious, [], what)

    def test_loads_nothing_from_elsewhere_and_complains_of_nothing(self) -> None:
        self.browser.get_log("browser")  # what other tests have caused
        self.open("")
        script = "return performance.getEntriesByType('resource').map((each) => each.name)"
        for source in self.browser.execute_script(script):
            self.assertTrue(source.startswith("file:"), source)
        self.assertEqual(self.browser.get_log("browser"), [])


if __name__ == "__main__":
    if CHROMIUM is None or DRIVER is None:
        print("skipped: chromium or chromium-driver is not installed")
        sys.exit(77)
    QORFACES = sys.argv[1]
    AXE = pathlib.Path(sys.argv[2])
    unittest.main(argv=sys.argv[:1], verbosity=2)
