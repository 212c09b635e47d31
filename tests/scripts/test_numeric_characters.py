"""The table of numeric characters agrees with the one that comes with Python."""

import re
import unicodedata
import unittest
from pathlib import Path

TABLE = Path(__file__).resolve().parents[2] / "src/protocol/numeric_characters.cpp"


def numbers(name):
    body = re.search(name + r"\{(.*?)\};", TABLE.read_text(), re.S).group(1)
    return [int(number, 16) for number in re.findall(r"0x[0-9A-F]+", body)]


@unittest.skipUnless(unicodedata.unidata_version == "14.0.0", "another edition of Unicode")
class NumericCharacters(unittest.TestCase):
    def test_ranges(self):
        ends = numbers("kNumeric")
        table = {c for first, last in zip(ends[::2], ends[1::2]) for c in range(first, last + 1)}
        self.assertEqual(table, {c for c in range(0x110000)
                                 if unicodedata.numeric(chr(c), None) is not None})

    def test_zeros(self):
        table = {zero + digit: digit for zero in numbers("kZeros") for digit in range(10)}
        self.assertEqual(table, {c: unicodedata.decimal(chr(c)) for c in range(0x110000)
                                 if unicodedata.decimal(chr(c), None) is not None})


if __name__ == "__main__":
    unittest.main()
