"""The HTML report in a real browser, from disk, as its readers open it."""

import base64
import json
import os
import pathlib
import shutil
import struct
import sys
import unittest

SOURCE = pathlib.Path(os.environ["ORVDIFF_SOURCE_DIR"])
sys.path += [str(SOURCE / "tests/cli"), str(SOURCE / "tests/browser")]

from records import difference, line, pair, pdf, png, span, text_hunk, value_hunk, write_record  # noqa: E402
from suite import SuiteTest  # noqa: E402

AXE = pathlib.Path(os.environ.get("ORVDIFF_AXE", "/usr/share/nodejs/axe-core/axe.min.js"))
REQUIRED = "ORVDIFF_REQUIRE_TOOLS" in os.environ
THERE = shutil.which("chromium") and shutil.which("chromedriver")


def setUpModule():
    global browser, By, Keys, Wait
    if not THERE and not REQUIRED:
        raise unittest.SkipTest("needs chromium, chromium-driver and python3-selenium")
    try:
        from selenium import webdriver
        from selenium.webdriver.common.by import By
        from selenium.webdriver.common.keys import Keys
        from selenium.webdriver.support.ui import WebDriverWait as Wait
    except ImportError:
        if REQUIRED:
            raise
        raise unittest.SkipTest("needs python3-selenium") from None
    options = webdriver.ChromeOptions()
    for option in ("--headless=new", "--no-sandbox", "--disable-dev-shm-usage", "--disable-gpu"):
        options.add_argument(option)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    service = webdriver.chrome.service.Service(shutil.which("chromedriver"))
    browser = webdriver.Chrome(options=options, service=service)
    browser.set_window_size(1280, 900)
    unittest.addModuleCleanup(browser.quit)


class Page(SuiteTest):
    def open(self, pairs, fragment="", **run):
        """Writes a record and its report, and opens that."""
        write_record(self.work / "record", pairs, **run)
        self.expect(self.run_program("report", "record", "--html", "report.html"), 0)
        self.visit("report.html", fragment)

    def visit(self, name, fragment=""):
        browser.get("about:blank")
        browser.get(f"file://{self.work}/{name}{fragment}")
        self.wait(lambda: self.all("table.list tbody tr, .notice, .status:not(:empty)"))

    def tearDown(self):
        self.assertEqual(browser.get_log("browser"), [])  # errors, and what the policy refused
        self.assertEqual(self.script("return performance.getEntriesByType('resource').length"), 0)

    def wait(self, condition):
        Wait(browser, 20, 0.02).until(lambda _: condition())

    def script(self, code):
        return browser.execute_script(code)

    def all(self, selector):
        return browser.find_elements(By.CSS_SELECTOR, selector)

    def text(self, selector="#app"):
        return browser.find_element(By.CSS_SELECTOR, selector).text

    def press(self, *keys):
        browser.switch_to.active_element.send_keys(*keys)

    def button(self, words):
        return browser.find_element(By.XPATH, f"//button[normalize-space()='{words}']")

    def names(self):
        return [link.text for link in self.all("table.list a")]

    def open_pair(self, name):
        browser.find_element(By.LINK_TEXT, name).click()
        self.wait(lambda: self.all("main.page h1") and name in self.text("main.page h1"))


def mixed():
    """A pair of each kind that comes without pictures."""
    texts = [text_hunk("a1", 33, "net", "gross\t", ("IdAttribute", ' id="x"')), text_hunk("a1", 90, "net", "gross\t")]
    cells = [value_hunk("b1", "row 17, Price", "15.20", "16.20"), value_hunk("b2", "row 17, Name", "a", "b"),
             value_hunk("b3", "row 40, only in the output", None, "x;y")]
    return [pair("Ada"), pair("Ben", verdict="differs", difference=difference("text", texts, count=7)),
            pair("Cid", "csv", "differs", "a b", seconds=3,
                 difference=difference("csv", cells, ["another separator"])),
            pair("Dan", "json", "differs",
                 difference=difference("json", [value_hunk("d1", "$.rows[3].total", "1", "2")])),
            pair("Eva", verdict="missing", message="the actual output does not exist"),
            pair("Fay", "xml", "failed", message="no valid document", printed="at 3:9: " + "wrong tag " * 5000)]


class Table(Page):
    def test_filters_orders_and_addresses(self):
        self.open(mixed())
        self.assertIn("5 of 6 pairs did not pass", self.text("h1"))
        rows = [("", "Ada Ben Cid Dan Eva Fay"), ("-verdict:passed", "Ben Cid Dan Eva Fay"),
                ("verdict:missing,failed", "Eva Fay"), ("format:csv", "Cid"), ('folder:"../suite/a b"', "Cid"),
                ("group:d1", "Dan"), ("-verdict:passed group:none", "Eva Fay"), ("GROSS", "Ben"), ("ben cid", "")]
        field = browser.find_element(By.ID, "query")
        for query, expected in rows:
            with self.subTest(query):
                field.clear()
                field.send_keys(query or " ")
                self.assertEqual([name[:3] for name in self.names()], expected.split())
                address = browser.current_url
                self.visit("report.html", "#" + address.partition("#")[2])
                self.assertEqual([name[:3] for name in self.names()], expected.split())
                field = browser.find_element(By.ID, "query")
        self.button("All pairs").click()
        for heading, first in [("Time", "Cid"), ("Changes", "Ben"), ("Changes", "Fay"), ("Changes", "Ada")]:
            self.button(heading).click()
            self.assertEqual(self.names()[0][:3], first)

    def test_keys(self):
        self.open(mixed())
        body = browser.find_element(By.TAG_NAME, "body")
        body.send_keys("/")
        self.press(Keys.CONTROL, "a")
        self.press(Keys.NULL, "verdict:differs")
        self.assertEqual(len(self.names()), 3)
        self.press(Keys.ESCAPE)
        for _ in range(6):  # past the changes
            self.press("j")
        self.press("j", "k", Keys.ENTER)
        self.wait(lambda: self.all("main.page h1"))
        first = self.text("main.page h1")
        self.press("j")
        self.wait(lambda: self.text("main.page h1") != first)
        self.press("/")
        self.wait(lambda: browser.switch_to.active_element.get_attribute("id") == "query")
        browser.back()
        self.wait(lambda: self.all("main.page:not([hidden])"))
        self.press("?")
        self.assertTrue(self.all("dialog[open]"))
        self.press(Keys.ESCAPE)
        browser.find_element(By.TAG_NAME, "body").send_keys(Keys.ESCAPE)
        self.wait(lambda: not self.all("main.page:not([hidden])"))
        self.assertEqual(len(self.names()), 3)
        browser.back()
        self.wait(lambda: self.all("main.page:not([hidden])"))

    def test_a_hundred_thousand_pairs(self):
        self.open([pair(f"Pair{i:06}", verdict="passed" if i % 3 else "missing", folder=f"f{i % 50}")
                   for i in range(100_000)])
        self.assertLess(self.script("return document.querySelectorAll('*').length"), 3000)
        field = browser.find_element(By.ID, "query")
        field.clear()
        field.send_keys("Pair099999")
        self.assertEqual(self.names(), ["Pair099999.html"])
        self.open_pair("Pair099999.html")
        self.assertIn("f49/Pair099999.xml", self.text("dl.facts"))


class Pairs(Page):
    def test_each_kind_of_difference(self):
        self.open(mixed())
        rows = [("Ben.html", ["31 lines without a difference", "54 lines not shown", "net", "gross→",
                              "IdAttribute (2)", "5 more places differ",
                              "orvdiff diff html ../suite/sales/Masters/Ben.html",
                              f"orvdiff verify --failed {self.work}/record"]),
                ("Cid.csv", ["another separator", "Row Price Name\nrow 17\n15.20 → 16.20\na → b\n", "absent",
                             "x;y", "'../suite/a b/Masters/Cid.csv'"]),
                ("Dan.json", ["$.rows[3].total"]),
                ("Eva.html", ["the actual output does not exist"]),
                ("Fay.html", ["no valid document", "wrong tag", "Show 30,008 more characters"])]
        for name, texts in rows:
            with self.subTest(name):
                self.open_pair(name)
                for text in texts:
                    self.assertIn(text, self.text("main.page"))
                browser.find_element(By.ID, "back").click()
                self.wait(lambda: not self.all("main.page:not([hidden])"))
        self.open_pair("Ben.html")
        self.assertTrue(self.all("table.split"))
        self.press("s")
        self.wait(lambda: self.all("table.unified"))
        self.assertIn("view=unified", browser.current_url)
        self.assertIn('id="x"', self.text("main.page table.hunks"))
        browser.find_element(By.ID, "mask-switch").click()
        self.assertNotIn('id="x"', self.text("main.page table.hunks"))
        self.assertIn("⟨IdAttribute⟩", self.text("main.page table.hunks"))

    def test_a_pass_that_rests_on_a_mask(self):
        mask = {"file": "output", "rule": "ScriptElement", "bytes": 9, "percent": 61.5, "firstLine": 3, "lastLine": 1200}
        together = {name: value for name, value in mask.items() if name != "rule"} | {"file": "master"}
        self.open([pair("Ada", mask=mask), pair("Ben", mask=together), pair("Cid")])
        for name, text in [("Ada", "One match of ScriptElement masks 61.5 % of the output (lines 3 to 1,200)"),
                           ("Ben", "The rules together mask 61.5 % of the master")]:
            self.open_pair(f"{name}.html")
            self.assertIn(text, self.text(".notice.odd"))
            browser.back()
            self.wait(lambda: not self.all("main.page:not([hidden])"))
        self.open_pair("Cid.html")
        self.assertEqual(self.all(".notice"), [])

    def test_what_is_known_and_why_a_suite_has_a_rule(self):
        reason = {"why": "as planned", "until": "2999-12-31", "link": "https://x/1", "place": "orvdiff.toml:9:1"}
        hunk = text_hunk("a1", 33, "net", "gross", ("stamp", "Build 1"))
        known = pair("Ada", verdict="known", known={"verdict": "differs", "reasons": [reason]},
                     difference=difference("text", [hunk]))
        patterns = [{"name": "stamp", "why": "the server stamps", "place": "orvdiff.toml:2:1"}]
        self.open([known, pair("Ben")], status=0, config={"file": "/s/orvdiff.toml", "hash": "0", "patterns": patterns})
        self.assertEqual(self.text(".stamp"), "≈All passed but what is known")
        self.assertEqual(self.text("h1"), "1 of 2 pairs passed, 1 known")
        self.assertEqual(self.all("table.list [data-fix], .groups details"), [])
        self.visit("report.html", "#q=verdict:known")
        self.assertEqual(self.names(), ["Ada.html"])
        self.open_pair("Ada.html")
        for text in ("differs, known until 2999-12-31: as planned", "orvdiff.toml:9:1, https://x/1"):
            self.assertIn(text, self.text(".notice.odd"))
        self.assertEqual(self.all(".masked")[0].get_attribute("title"),
                         "not compared: stamp: the server stamps (orvdiff.toml:2:1)")

    def test_folds_open(self):
        lines = [f"<p>line {number}</p>" for number in range(1, 201)]
        lines[2] = "x" * 1000
        master = "\r\n".join(lines).encode().replace(b"line 30<", b"\xff<")
        output = master.replace(b"line 90<", b"row 90<").replace(b"line 150<", b"row 150<")
        self.report("Ada", master, output, xls=True)
        self.verify("--record", "record", "--html", "own.html")
        self.expect(self.run_program("report", "record", "--html", "report.html"), 0)
        self.verify("--html", "none.html")
        folds = ["87 lines without a difference", "55 lines without a difference", "48 lines without a difference"]
        for name in ("own", "report"):
            self.visit(f"{name}.html")
            self.open_pair("Ada.html")
            for view in ("split", "unified"):
                self.assertEqual([fold.text for fold in self.all("tr.fold button")], ["▸ " + text for text in folds])
                self.all("tr.fold button")[0].send_keys(Keys.ENTER)
                opened = self.text("main.page table.hunks")
                for text in ("As in the master:\n1 <p>line 1</p>\n2 ", "3 " + "x" * 300 + "…\n",
                             "20 <p>line 20</p>\n47 more lines\n68 <p>line 68</p>", "87 <p>line 87</p>\n88"):
                    self.assertIn(text, opened)
                self.press("s")
                self.wait(lambda: not self.all(f"main.page table.{view}"))
            self.all("tr.fold button")[2].click()
            self.assertIn("200 <p>line 200</p>", self.text("main.page table.hunks"))
        self.visit("none.html")
        self.open_pair("Ada.html")
        self.assertEqual(self.all("tr.fold button"), [])
        self.assertIn(folds[1], self.text("main.page"))

    def test_pictures(self):
        wide = b"\x89PNG\r\n\x1a\n\0\0\0\rIHDR" + struct.pack(">IIBBBBB", 30_000, 30_000, 8, 2, 0, 0, 0)
        rows = {"Dots": (png(40, 20), png(40, 20, [(3, 4), (5, 9)]),
                         "2 pixels of 40 × 20 pixels differ (0.25 %), between 3,4 and 5,9."),
                "Grown": (png(40, 20), png(40, 21), "40 pixels of master 40 × 20, output 40 × 21"),
                "Bytes": (png(9, 9), png(9, 9) + b"\0", "the pixels are the same"),
                "Wide": (wide, wide + b"x", "it declares 30,000 × 30,000 pixels"),
                "Damaged": (png(9, 9), b"GIF89a", "it is no PNG file")}
        for name, (master, output, _) in rows.items():
            self.write(f"suite/{name}.xml")
            self.write(f"suite/Masters/{name}.png", master)
            self.write(f"webcontent/bi/v5DebugHTML/{name}.png", output)
        self.verify("--html", "report.html", "-f", "html-png")
        self.visit("report.html")
        for name, (_, _, text) in rows.items():
            with self.subTest(name):
                self.open_pair(f"{name}.png")
                self.wait(lambda: text in self.text("main.page"))
                browser.back()
                self.wait(lambda: not self.all("main.page:not([hidden])"))
        self.open_pair("Dots.png")
        for mode, pictures in [("Overlay", 2), ("Blink", 2), ("Difference", 1), ("Side by side", 2)]:
            self.wait(lambda: self.all(".stage canvas"))
            self.button(mode).click()
            self.assertEqual(len(self.all(".stage canvas")), pictures)
        pixel = self.script("const output = document.querySelectorAll('.stage canvas')[1];"
                            "return [...output.getContext('2d').getImageData(3, 4, 1, 1).data]")
        self.assertEqual(pixel, [255, 0, 0, 255])
        self.button("+").click()
        self.assertEqual(self.all(".stage canvas")[0].size["width"], 80)

    def test_pages_of_documents_and_pictures_that_are_gone(self):
        self.pair("Doc", "PDF", "Doc.pdf", pdf("net"), pdf("gross"))
        self.pair("Bad", "PDF", "Bad.pdf", "no document", "x")
        for name in ("Gone", "Changed"):
            self.write(f"suite/{name}.xml")
            self.write(f"suite/Masters/{name}.png", png(9, 9))
            self.write(f"webcontent/bi/v5DebugHTML/{name}.png", png(9, 8 + len(name)))
        self.run_program("verify", "--record", "record", "../suite", PATH=self.interpreter("exit 1\n"))
        records = [json.loads(text) for text in (self.work / "record/pairs.jsonl").read_text().splitlines()]
        outputs = {pathlib.Path(each["output"]).stem: each["outputFile"]["hash"]
                   for each in records if each["format"] == "html-png"}
        (self.work / "record/evidence" / outputs["Gone"]).unlink()
        (self.work / "record/evidence" / outputs["Changed"]).write_bytes(b"changed")
        rows = [("Bad.pdf", "pdftoppm could not render the document"),
                ("Gone.png", "of the output is not in this report"),
                ("Changed.png", "is not what was recorded")]
        if shutil.which("pdftoppm") or REQUIRED:
            rows.append(("Doc.pdf", "Page 1"))
        self.expect(self.run_program("report", "record", "--html", "report.html"), 0)
        self.visit("report.html")
        for name, text in rows:
            with self.subTest(name):
                self.open_pair(name)
                self.wait(lambda: text in self.text("main.page"))
                browser.back()
                self.wait(lambda: not self.all("main.page:not([hidden])"))


def changed(name, *groups, verdict="differs", **more):
    """A pair that shows these changes, with the hashes of its files."""
    hunks = [text_hunk(group, 9 * (at + 1), group, "new") for at, group in enumerate(groups)]
    files = {side: {"size": 9, "hash": (name + side).encode().hex()[:32]} for side in ("masterFile", "outputFile")}
    return pair(name, verdict=verdict, difference=difference("text", hunks), **(files | more))


class Deciding(Page):
    def setUp(self):
        super().setUp()
        self.pairs = [changed("Ada", "g1"), changed("Ben", "g1"), changed("Cid", "g1", "g2"),
                      changed("Dan", "g1", masterFile={"size": 9}), changed("Eva", "g1", verdict="partly"),
                      pair("Fay", verdict="missing"), pair("Gus")]
        browser.execute_cdp_cmd("Browser.setDownloadBehavior",
                                {"behavior": "allow", "downloadPath": str(self.work)})

    def decided(self):
        """What the filter finds for each decision, by the first letters of the pairs."""
        field = browser.find_element(By.ID, "query")
        found = []
        for query in ("decision:accept", "decision:fault"):
            field.clear()
            field.send_keys(query)
            found.append("".join(name[0] for name in self.names()))
        return found

    def choose(self, words, within):
        self.wait(lambda: within.find_elements(By.CSS_SELECTOR, ".decide"))
        self.click(within.find_element(By.XPATH, f".//div[contains(@class, 'decide')]//button[.='{words}']"))

    def click(self, element):
        """Clicks where the bar of decisions does not stand before it."""
        browser.execute_script("arguments[0].scrollIntoView({block: 'center'})", element)
        element.click()

    def test_groups_and_pairs(self):
        self.open(self.pairs)
        rare, common = self.all("details.group")
        self.assertEqual(self.all(".decisions:not([hidden])"), [])
        self.choose("Accept", common)
        self.assertIn("3 pairs to accept; 2 left: they show other changes too", common.text)
        self.assertEqual(self.decided(), ["ABD", ""])
        self.choose("Real fault", rare)
        self.assertEqual(self.decided(), ["ABD", "C"])
        self.script("document.querySelector('#query').value = ''; document.querySelector('#query').dispatchEvent(new Event('input'))")
        for row, fix in [(1, "fault"), (3, "accept"), (5, "fault")]:  # single pairs go before groups
            self.click(self.all(f"table.list tbody tr:nth-child({row + 1}) [data-fix={fix}]")[0])
        self.assertEqual(self.all("table.list tbody tr:nth-child(n + 5):nth-child(-n + 6) [data-fix=accept]"), [])
        self.assertEqual(self.all("table.list tbody tr:nth-child(7) [data-fix]"), [])
        self.visit("report.html")
        self.assertEqual(self.text(".decisions [role=status]"), "1 pair to accept, 3 real faults.")
        self.assertEqual(self.decided(), ["A", "BCF"])
        self.button("Forget all").click()
        self.assertEqual(self.decided(), ["", ""])

    def test_the_saved_file(self):
        odd = changed("Odd", "g9") | {"output": {"hex": "ff41"}}
        self.open([*self.pairs, odd])
        for item in self.all("details.group"):
            if "g2" not in item.text:
                self.choose("Accept", item)
        self.click(self.all("table.list tbody tr:nth-child(6) [data-fix=fault]")[0])
        self.button("Save as decisions.jsonl").click()
        file = self.work / "decisions.jsonl"
        self.wait(file.exists)
        lines = {each["report"].rpartition("/")[2][:3]: each for each in map(json.loads, file.read_text().splitlines())}
        self.assertEqual({name: each["fix"] for name, each in lines.items()},
                         {"Ada": "accept", "Ben": "accept", "Odd": "accept", "Fay": "fault"})
        self.assertEqual(lines["Ada"], {
            "fix": "accept", "report": "../suite/sales/Ada.xml", "format": "html",
            "path": "../suite/sales/Masters/Ada.html", "output": "../webcontent/bi/v5Debug/Ada.html",
            "masterHash": b"AdamasterFile".hex()[:32], "outputHash": b"AdaoutputFile".hex()[:32], "group": "g1"})
        self.assertEqual(lines["Odd"]["output"], {"hex": "ff41"})
        self.wait(lambda: "1 pair not saved: the record lacks the hashes" in self.text(".decisions"))
        self.assertIn(f"orvdiff accept --from {self.work}/record --list decisions.jsonl", self.text(".decisions"))

    def test_the_saved_file_is_what_accept_takes(self):
        for name in ("Ada", "Ben", "Cid"):
            self.report(name, "net 1", f"gross {name}")
        for shard in "12":
            self.verify("--shard", f"{shard}/2", "--record", shard)
        self.run_program("merge", "1", "2", "-o", "all")
        self.run_program("report", "all", "--html", "report.html")
        self.visit("report.html")
        for row, fix in [(0, "accept"), (1, "fault")]:
            self.click(self.all(f"table.list tbody tr:nth-child({row + 1}) [data-fix={fix}]")[0])
        self.button("Save as decisions.jsonl").click()
        self.wait((self.work / "decisions.jsonl").exists)
        (self.outputs / "Ada.html").unlink()  # the joined record has it
        run = self.run_program("accept", "--from", "all", "--list", "decisions.jsonl", "-y")
        self.expect(run, 0, "Accepted 1 output")
        masters = {name: (self.server / f"suite/Masters/{name}.html").read_text() for name in ("Ada", "Ben", "Cid")}
        self.assertEqual(masters, {"Ada": "gross Ada", "Ben": "net 1", "Cid": "net 1"})

    def test_by_keys_and_what_was_viewed(self):
        self.open(self.pairs)
        self.open_pair("Ada.html")
        self.press("a", "j")
        self.wait(lambda: "Ben" in self.text("main.page h1"))
        self.press("f", "v")
        self.press(Keys.ESCAPE)
        self.wait(lambda: not self.all("main.page:not([hidden])"))
        self.press("j", "a", "v", "v")  # the row that has the focus
        self.assertEqual(self.decided(), ["AC", "B"])
        self.visit("report.html", "#q=viewed:yes")
        self.assertEqual(self.names(), ["Ben.html"])
        self.assertTrue(self.all("tr.is-viewed"))

    def test_commands_need_one_record(self):
        self.report("Ada", "old", "new")
        self.verify("--html", "none.html")
        self.verify("--html", "one.html", "--record", "r")
        for index in (1, 2):
            write_record(self.work / f"s{index}", [changed(f"Ada{index}", "g1")],
                         shards={"indices": [index], "count": 2})
        self.expect(self.run_program("report", "s1", "s2", "--html", "two.html"), 0)
        rows = [("none", "add --record FOLDER to orvdiff verify", 0),
                ("one", f"orvdiff accept --from {self.work}/r ../suite/Ada.xml", 2),
                ("two", f"orvdiff merge {self.work}/s1 {self.work}/s2 -o merged", 2)]
        for name, command, choices in rows:
            with self.subTest(name):
                self.visit(f"{name}.html")
                self.script("document.querySelectorAll('details').forEach((each) => (each.open = true))")
                self.wait(lambda: self.all(".group table"))
                self.assertEqual(len(self.all(".group [title*='--group']")), choices // 2)
                self.all("table.list a")[0].click()
                self.wait(lambda: command in self.text(".commands"))
                self.assertEqual("orvdiff review" in self.text(".commands"), choices > 0)
                self.assertEqual(len(self.all("main.page [data-fix]")), choices)


HOSTILE = ("</script><script>window.hacked = 1</script><img src=x onerror='window.hacked = 1'>"
           "&lt;\u202e\x1b[31m\0 @title@")


class Hostile(Page):
    def test_nothing_of_an_output_runs_or_hides(self):
        hunks = [{"place": HOSTILE, "groups": ["g"], "lines": [
            line("removed", 1, 0, span(HOSTILE, "changed"), span(HOSTILE, "masked", rule=HOSTILE)),
            line("added", 0, 1, span({"hex": "ff41"}, "changed")), line("context", 2, 2, span(HOSTILE))]}]
        change = difference("text", hunks, [HOSTILE])
        change["changes"] = [{"group": "g", "removed": HOSTILE, "added": {"hex": "ff41"}, "count": 1}]
        self.open([pair(HOSTILE, verdict="differs", folder=HOSTILE, message=HOSTILE, printed=HOSTILE,
                        rules=[HOSTILE], difference=change),
                   pair({"hex": "ff3c623e"}, verdict="missing")], notes=[HOSTILE], unverified=[HOSTILE], host=HOSTILE,
                  workingFolder=HOSTILE, commandLine=[HOSTILE])
        self.assertIn("\\xFF", self.text("table.list"))
        self.script("document.querySelectorAll('details').forEach((each) => (each.open = true))")
        self.wait(lambda: self.all(".group table"))
        self.all("table.list a")[0].click()
        self.wait(lambda: self.all("main.page h1"))
        for view in ("split", "unified"):
            self.wait(lambda: self.all(f"table.{view}"))
            page = self.text("main.page")
            for shown in ("<script>window.hacked", "\\u{202E}\\x1B[31m\\x00", "\\xFFA", "&lt;"):
                self.assertIn(shown, page)
            self.press("s")
        everything = self.script(
            "const told = [...document.querySelectorAll('[title], [aria-label], option')];"
            "return document.body.innerText + told.map((e) => e.title + e.ariaLabel + e.text).join()")
        self.assertNotRegex(everything.replace("\n", "").replace("\t", ""), "[\x00-\x1f\u202e]")
        self.assertIsNone(self.script("return window.hacked ?? null"))
        self.assertEqual(self.all("img"), [])
        self.script("const script = document.createElement('script');"
                    "script.textContent = 'window.hacked = 1'; document.body.append(script)")
        self.assertIsNone(self.script("return window.hacked ?? null"))
        refused = [each["message"] for each in browser.get_log("browser")]
        self.assertEqual(["Content Security Policy" in each for each in refused], [True], refused)

    def test_records_that_are_not_whole(self):
        rows = [({"complete": False, "end": ""}, "Incomplete"),
                ({"shards": {"indices": [1, 3], "count": 4}, "suite": "x"}, "shard 2, 4 of 4"),
                ({"status": 2}, "Not everything was verified")]
        for number, (run, text) in enumerate(rows):
            with self.subTest(text):
                write_record(self.work / f"r{number}", [pair("Ada")], **run)
                self.expect(self.run_program("report", f"r{number}", "--html", "report.html"), 0)
                self.visit("report.html", "#pair=unknown")
                self.assertIn("holds no pair unknown", self.text())
                self.visit("report.html")
                self.assertIn(text, self.text())
        whole = (self.work / "report.html").read_text()
        (self.work / "cut.html").write_text(whole[:whole.index('id="details0"') + 60])
        self.visit("cut.html")
        self.button("All pairs").click()
        self.all("table.list a")[0].click()
        self.wait(lambda: "This pair cannot be shown" in self.text())

    def test_long_texts_are_cut_with_a_note(self):
        hunk = text_hunk("g", 5, "x" * 3_000_000, "y")
        self.open([pair("Long", verdict="differs", printed="p" * 2_000_000,
                        difference=difference("text", [hunk] * 3))])
        self.assertLess((self.work / "report.html").stat().st_size, 200_000)
        self.open_pair("Long.html")
        for text in ("bytes more are not in this report", "more characters"):
            self.assertIn(text, self.text("main.page"))


class Night(Page):
    """300 pairs with one change, 16 with others, among 3,000."""

    def setUp(self):
        super().setUp()
        self.many = []
        for i in range(3000):
            footer, other = i % 10 == 3, i % 187 == 4
            change = ("f0", 120, "11.1", "11.2") if footer else (f"o{i}", 9, f"old{i}", "new")
            found = {"verdict": "differs", "difference": difference("text", [text_hunk(*change)])}
            self.many.append(pair(f"Page{i:04}", **(found if footer or other else {})))

    def test_one_change_of_many_pairs_and_the_others(self):
        self.open(self.many)
        self.assertIn("300 of 316 pairs that did not pass show the same change: 11.1 → 11.2. "
                      "The other 16 changes", self.text())
        self.assertLess((self.work / "report.html").stat().st_size, 1_500_000)
        self.assertLess(self.script("return document.querySelectorAll('*').length"), 3000)
        items = self.all("details.group")
        self.assertEqual([item.text[:6] for item in items], ["1 pair"] * 16 + ["300 pa"])
        browser.set_window_size(1280, 900)
        self.assertLess(items[15].location["y"] + items[15].size["height"], 800)
        items[16].find_element(By.TAG_NAME, "summary").click()
        self.wait(lambda: "Show all 300 pairs" in items[16].text)
        self.button("Show all 300 pairs").click()
        self.wait(lambda: "300 of 3,000 pairs" in self.text("p.status"))
        self.open_pair(self.names()[0])
        browser.find_element(By.XPATH, "//button[contains(., 'in 299 other pairs')]").click()
        self.wait(lambda: self.script("return Math.abs(pairs.getBoundingClientRect().top)") < 50)
        paper = base64.b64decode(browser.execute_cdp_cmd("Page.printToPDF", {})["data"])
        self.assertGreater(paper.count(b"/Type /Page\n"), 6)  # all rows, not only those that were there
        self.script("scrollTo(0, document.body.scrollHeight)")
        self.wait(lambda: len(self.names()) > 60)

    @unittest.skipUnless(AXE.exists() or REQUIRED, "needs axe-core")
    def test_nothing_serious_for_those_who_see_or_point_otherwise(self):
        self.open(mixed() + self.many[:20])
        links = [link.get_attribute("href") for link in self.all("table.list a")[:4]]
        run = ("const done = arguments[0]; axe.run().then((result) =>"
               "done(result.violations.map((each) => [each.id, each.nodes[0].html])))")
        for scheme in ("light", "dark"):
            feature = {"name": "prefers-color-scheme", "value": scheme}
            browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [feature]})
            for fragment in ["", *("#" + link.partition("#")[2] for link in links)]:
                with self.subTest(scheme + fragment):
                    self.visit("report.html", fragment)
                    self.wait(lambda: not fragment or self.all("main.page h1"))
                    self.script("document.querySelectorAll('details').forEach((each) => (each.open = true))")
                    self.script(AXE.read_text())
                    self.assertEqual(browser.execute_async_script(run), [])


if __name__ == "__main__":
    unittest.main()
