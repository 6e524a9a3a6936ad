"""How files of each kind are shown to differ, through the real program."""
import unittest

from suite import SuiteTest


class Kinds(SuiteTest):
    def test_each_kind_says_where_and_what(self):
        self.write("work/there/a.csv")
        head = b"\x89PNG\r\n\x1a\n\0\0\0\rIHDR"
        rows = (
            ("csv", "Id,Price\n1,5\n2,6\n", "Id,Price\n0,4\n1,5\n2,7\n",
             "          row 2, only in the output\n           2 + 0,4\n"
             "          row 3 (4 in the output), Price\n          3   - 6\n            4 + 7\n"),
            ("json", '{"a": [1, 2]}', '{"a": [1, 3]}',
             "          $.a[1]\n          1   - 2\n            1 + 3\n"),
            ("json", "[\x1b[2J", "[1]", "the master cannot be read as JSON: parse error at line 1"),
            ("html-png", head, head[:-1] + b"S",
             "          1 byte at offset 15 (0xf)\n"
             "          - 00000000  89 50 4e 47 0d 0a 1a 0a 00 00 00 0d 49 48 44 52  |.PNG........IHDR|\n"
             + " " * 67 + "^^\n"),
            ("ctx-metadata", "<a/>", "<a>\n<\u8868>x</b>\n",
             "          line 2, column 7\n           1   <a>\n           2 + <\u8868>x</b>\n"
             + " " * 22 + "^\n"),
            ("csv", "1\n", None, "          a.csv in there differs only in case\n"),
        )
        for format_name, master, output, expected in rows:
            with self.subTest(format_name, output=output):
                self.write("work/m", master)
                if output is not None:
                    self.write("work/o", output)
                run = self.run_program("diff", format_name, "m", "o" if output is not None else "there/A.csv")
                self.expect(run, 1, expected)
                self.assertNotIn("\x1b", run.out)

    def test_what_a_script_prints_is_its_difference(self):
        self.write("work/m", "x")
        path = self.interpreter("seq 100; exit 1")
        run = self.run_program("diff", "pdf", "m", "m", PATH=path)
        self.expect(run, 1, "          printed by the comparison script\n            1\n            2\n",
                    "60 more lines\n")
        self.assertNotIn(" 100\n", run.out)


if __name__ == "__main__":
    unittest.main()
