#!/usr/bin/env python3
"""Holds the number comparison to a second statement of its rule, on generated pairs of texts.

usage: float_oracle.py DRIVER [PAIRS] [SEED]
"""

import collections
import math
import random
import re
import subprocess
import sys
import tempfile

NUMBER = re.compile(rb"([+-]?(?:[0-9]+\.?[0-9]*|\.[0-9]+))([eE][+-]?[0-9]*)?")
LENGTHS = (0, 1, 2, 3, 5, 8, 30)


def values(text):
    for mantissa, exponent in NUMBER.findall(text):
        yield float(mantissa + (exponent if exponent[-1:].isdigit() else b""))


def agree(master, actual):
    if master == actual:
        return True
    if math.isinf(master):
        return False
    exponent = math.floor(math.log10(abs(master))) if master else 0
    return 10.0 ** (exponent - 14) >= abs(master - actual)


def verdict(master, actual):
    masters, actuals = list(values(master)), list(values(actual))
    if not all(map(agree, masters, actuals)):
        return "value"
    return "pass" if len(masters) == len(actuals) else "count"


def number(rng):
    def digits(most):
        return "".join(rng.choices("0123456789", k=rng.randint(1, most)))

    longest = rng.choice([1, 3, 17, 17, 40]) if rng.random() < 0.98 else 400
    mantissa = rng.choice([digits(longest), digits(longest) + ".", "." + digits(longest),
                           digits(4) + "." + digits(longest)])
    exponent = rng.choice(["", "", "", "e", "E+", "e-", "e" + digits(2), "E-" + digits(3),
                           "e+" + digits(3), "e-3%02d" % rng.randint(0, 30)])
    return rng.choice(["", "-", "+"]) + mantissa + exponent


def near(rng, text):
    """The number of `text`, or one beside it: a little inside, on, or outside its tolerance."""
    value = next(values(text.encode()))
    if rng.random() < 0.3 or math.isinf(value):
        return text
    tolerance = 10.0 ** (math.floor(math.log10(abs(value))) - 14) if value else 1e-14
    scale = rng.choice([0.1, 0.5, 0.9, 0.9, 0.99, 1.0] * 6 + [1.01, 1.1, 2.0])
    moved = value + rng.choice([-1, 1]) * scale * tolerance
    return text if math.isinf(moved) else rng.choice(["%r", "%.17e", "%.20g"]) % moved


def junk(rng):
    words = ["inf", "-nan", "INFINITY", "--", "+", "-.", "..", "e", "E+", "0x", "2020-01-02",
             "1.2.3", "\n", "\r\n", "\t", ",", "<td>", "\u0663", "\u00b2", "x" * 70, "7" * 70]
    return rng.choice(words)


def pair(rng):
    master, actual = [], []
    for _ in range(rng.choice(LENGTHS)):
        text = number(rng)
        between = rng.choice([" ", " ", ";", "", "-", junk(rng)])
        master += [text, between]
        actual += [near(rng, text), between if rng.random() < 0.98 else junk(rng)]
    if rng.random() < 0.15:
        rng.choice([master, actual]).append(number(rng))
    return "".join(master).encode(), "".join(actual).encode()


def main(driver, count="10000", seed="1"):
    rng = random.Random(int(seed))
    pairs = [pair(rng) for _ in range(int(count))]
    with tempfile.NamedTemporaryFile() as file:
        file.write(b"".join(master + b"\0" + actual + b"\0" for master, actual in pairs))
        file.flush()
        run = subprocess.run([driver, file.name], stdout=subprocess.PIPE, check=True, text=True)
    ours = run.stdout.split()
    expected = [verdict(*texts) for texts in pairs]
    wrong = [row for row in zip(pairs, ours, expected) if row[1] != row[2]]
    for (master, actual), our, other in wrong[:10]:
        print("master %r\nactual %r\nours %s, oracle %s\n" % (master, actual, our, other))
    tally = collections.Counter(expected)
    print(len(ours), "pairs,", len(wrong), "disagreements;", dict(tally))
    rare = [word for word in ("pass", "value", "count") if tally[word] * 20 < len(pairs)]
    return 1 if wrong or rare or len(ours) != len(pairs) else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
