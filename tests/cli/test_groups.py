import json
import re

from suite import SuiteTest
from test_workers import timeless

HTML = "../webcontent/bi/v5DebugHTML/"


class Groups(SuiteTest):
    def pages(self):
        """Five pages with a new footer; two also share a price, and one has a change of its own."""
        for number in range(5):
            filler = "\n".join(f"<p>{number}.{line}</p>" for line in range(9))
            price = "<b>9</b>" if number in (1, 3) else f"<i>{number}</i>"
            total = f"<td>{number}84</td>"
            page = f"{total}\n{filler}\n{price}\n{filler}\n<hr/>Version 15.20 {{}}"
            other = page.replace("15.20", "16.20").replace("<b>9</b>", "<b>8</b>")
            if number == 3:
                other = other.replace(total, "<td>348</td>")
            self.report(f"P{number}", page, other)
            self.write(f"suite/Masters/CSV/P{number}.csv", f"a,{number}")  # without an output

    def outline(self, run):
        """What stands at the start of lines, and the names of pairs."""
        lines = [line for line in run.out.splitlines()
                 if re.match(r"\w|          (also|and|for|\.\.\.|    ) ?", line) and "P" in line
                 or re.match(r"\d+ (pairs,|different)|          and ", line)]
        return [re.sub(r"\S*/(\w+\.\w+) -> \S+|[0-9a-f]{8}", r"\1", line).strip() for line in lines]

    def test_rarest_first_and_each_pair_under_all_its_groups(self):
        self.pages()
        run = self.verify()
        self.assertEqual(run.status, 1)
        self.assertEqual(self.outline(run), [
            "differs  P3.html",
            "and 2 changes that other pairs show, too: groups ,",
            "2 pairs, same change: `9` \u2192 `8` (group )", "for example P1.html", "also P3.html",
            "5 pairs, same change: `15.20` \u2192 `16.20` (group )",
            "for example P0.html", "also P1.html", "P2.html",
            "5 pairs, missing from the same folder: `../webcontent/bi/v5DebugCSV` (group )",
            "for example P0.csv", "also P1.csv", "P2.csv",
            "4 different changes in 10 pairs; 1 of them in a single pair"])
        own = run.out[run.out.index("P3.html"):run.out.index("and 2 changes")]
        self.assertIn("348", own)
        self.assertNotIn("16.20", own)  # what others show, too
        self.assertIn("P4.html", self.verify("-v").out)
        plain = self.verify("--no-groups")
        self.assertEqual([len(plain.lines("differs", "missing")), plain.out.count("16.20")], [10, 5])

    def test_the_same_from_run_to_run(self):
        self.pages()
        outputs = {timeless(self.verify("-j", str(jobs), "--record", f"r{jobs}").out)
                   for jobs in (1, 2, 7)}
        self.assertEqual(len(outputs), 1)
        shown = self.run_program("show", "r2").out
        self.assertEqual(shown.splitlines()[:-1], outputs.pop().splitlines()[:-1])
        self.assertEqual(len(self.run_program("show", "--no-groups", "r2").lines("differs")), 5)
        wide = self.verify("--context", "40", "--record", "wide")  # one hunk for all of a page
        self.assertIn("2 pairs, same change: `9`", wide.out)
        self.assertEqual(*({change["group"] for line in
                            (self.work / record / "pairs.jsonl").read_text().splitlines()
                            for change in json.loads(line)["difference"]["changes"]}
                           for record in ("r2", "wide")))

    def test_a_change_is_the_same_whatever_is_around_it(self):
        rows = [  # format, two pairs of master and actual
            ("html", "a <b>old</b> b", "a <b>new</b> b",
             "c<p id=\"7\">c</p>old<br/>\r\nd", "c<p>c</p>new<br/>\nd"),
            ("html", "one two three", "one three", "x two", "x"),
            ("json", '{"a": 1}', '{"a":1}', '[1, 2]', '[1,2]'),
            ("csv", "a,b\n1,2\n", "a,b\n1,3\n", "c,d\n0,0\n2,5\n", "c,d\n0,0\n3,5\n"),
        ]
        folders = {"html": "", "csv": "CSV/", "json": "JSON/"}
        for number, (name, *contents) in enumerate(rows):
            with self.subTest(number):
                for index in range(2):
                    stem = f"N{number}_{index}"
                    self.report(stem)
                    self.write(f"suite/Masters/{folders[name]}{stem}.{name}", contents[2 * index])
                    self.write(f"webcontent/bi/v5Debug{name.upper()}/{stem}.{name}",
                               contents[2 * index + 1])
                run = self.verify("-f", name, locations=[f"../suite/N{number}_{i}.xml"
                                                         for i in range(2)])
                self.expect(run, 1, "2 pairs, same change: ", "1 different change in 2 pairs\n")
