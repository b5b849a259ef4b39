"""Breaks a good camera directory in one place at a time and has `irmcore check` find it. Arguments: the
program, then a test's name or none. The environment's EMULATOR is the words to start the program with."""

import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

PROGRAM = [*os.environ.get("EMULATOR", "").split(), sys.argv.pop(1)]

S = "Parameter/Setting"
M = "Parameter/Modify"
M1 = "Parameter/Modify_1_Temp_1"
T = "etc/calc_len0_temp0.conf"  # -40 °C in line 10, 180 °C in line 32
H = "etc/calc_len0_temp1.conf"  # -20 °C in line 10, 420 °C in line 54
DEFAULT = "etc/calc_len0_temp0_default.conf"
NO_TABLE = 'a table without entries: readings "L"'
FALLBACK = "a file without keys: the fallback is next"
REFUSED = "; emissivity, distance and offset of the file are all refused"


def put(file, old, new):
    """Replaces a text that stands there once."""
    def edit(top):
        path = top / file
        text = path.read_bytes()
        assert text.count(old.encode()) == 1, (file, old)
        path.write_bytes(text.replace(old.encode(), new.encode("utf-8")))
    return edit


def whole(file, change):
    return lambda top: (top / file).write_bytes(change((top / file).read_bytes()))


def add(file, text):
    return whole(file, lambda old: old + text.encode())


def add_file(file, text=""):
    return lambda top: (top / file).write_text(text)


def remove(*files):
    return lambda top: [(top / file).unlink() for file in files]


def rename(file, new):
    return lambda top: (top / file).rename(top / new)


def folder(file):
    def edit(top):
        (top / file).unlink()
        (top / file).mkdir()
    return edit


def entries(file, rename, extent):
    """Renames the entries of a table, or leaves them out, and gives MinTemp, MaxTemp and TempNum to it."""
    def edit(top):
        kept = []
        for line in (top / file).read_text().splitlines():
            key, equals, value = line.partition("=")
            if key.lstrip("-").isdigit():
                key = rename(int(key))
            if key in ("MinTemp", "MaxTemp", "TempNum"):
                value = extent.split()[("MinTemp", "MaxTemp", "TempNum").index(key)]
            if key is not None:
                kept.append(f"{key}{equals}{value}\n")
        (top / file).write_text("".join(kept))
    return edit


LENS_7 = [(M, "Parameter/Modify_7_Temp_0"), (M, "Parameter/Modify_7_Temp_1"), (T, "etc/calc_len7_temp0.conf"),
          (H, "etc/calc_len7_temp1.conf")]

# What is done, and what is to be found: file, line, severity, code, what is taken (where it is worth checking).
E, W, N = "error", "warning", "note"
FAULTS = [
    # Values of the settings.
    (put(S, "Emiss=0.95", "Emiss=0,95"), (S, 12, E, "comma", "0 and refused, then 0.95" + REFUSED)),
    (put(S, "Emiss=0.95", "Emiss=abc"), (S, 12, E, "not-a-number", "0 and refused, then 0.95" + REFUSED)),
    (put(S, "Emiss=0.95", "Emiss="), (S, 12, E, "not-a-number", "0 and refused, then 0.95" + REFUSED)),
    (put(S, "Emiss=0.95", "Emiss=1.2"), (S, 12, E, "out-of-range", "0.95" + REFUSED)),
    (put(S, "Emiss=0.95", "Emiss=0.05"), (S, 12, W, "unlikely", None)),
    (put(S, "Distan=5", "Distan=5 m"), (S, 13, E, "not-a-number", "0")),
    (put(S, "Distan=5", "Distan=-5"), (S, 13, E, "out-of-range", "5" + REFUSED)),
    (put(S, "Offset=0", "Offset=200"), (S, 14, E, "out-of-range", "0" + REFUSED)),
    (put(S, "Env=25", "Env=298.15"), (S, 15, W, "unlikely", "298.15, with the vapour of 49 °C")),
    (put(S, "Humid=0.6", "Humid=60"), (S, 16, E, "humidity-in-percent", "6000 %")),
    (put(S, "Humid=0.6", "Humid=0"), (S, 16, E, "out-of-range", "0 %")),
    (put(S, "Reflec=25", "Reflec=-300"), (S, 17, E, "out-of-range", "-300")),
    (put(S, "TempRange=0", "TempRange=1.0"), (S, 6, E, "not-a-number", "0")),
    (put(S, "IntTime1=210", "IntTime1=70000"), (S, 8, E, "more-than-16-bits", "4464")),
    (put(S, "VSKValue_Range0=1875", "VSKValue_Range0=0x753"), (S, 2, E, "not-a-number", "0")),
    (put(S, "IntTime1=210\nVSKTemp=40", "IntTime1=210\nVSKTemp=1000"), (S, 9, W, "unlikely", None)),
    (put(S, "TempRange=0", "TempRange=5"),
     *((f"Parameter/Modify{n}_Temp_5", None, W, "fallback-taken", M) for n in ("_1", "")),
     (S, 5, N, "missing-key", "190"), (S, 6, E, "out-of-range", "5, a range that the detector core does not know"),
     *((f"etc/calc_len{n}_temp5.conf", None, E, "missing-table", NO_TABLE) for n in (0, 1))),
    (put(S, "Distan=5", "Distan=0.5"), (S, 13, W, "unlikely", None)),
    (put(S, "Humid=0.6", "Humid=6e2"), (S, 16, E, "out-of-range", "60000 %")),
    # Names of the settings.
    (put(S, "Emiss=", "Emissivity="), (S, 12, E, "misspelt-key", "0.95")),
    (put(S, "Humid=", "humid="), (S, 16, E, "misspelt-key", "0.6")),
    (put(S, "[GlobalPara]", "[Globalpara]"), (S, 11, E, "misspelt-group", "a file without [GlobalPara]")),
    (put(S, "\n[GlobalPara]\nEmiss", "Emiss=0.7\n\n[GlobalPara]\nNone"),
     (S, 10, E, "wrong-group", "0.95"), (S, 13, N, "unknown-key", None)),
    (add(S, "Emiss=0.8\n"), (S, 12, W, "duplicate-key", "0.8")),
    (add(S, "[BiaoDing]\nIntTime2=190\n"), (S, 18, N, "duplicate-group", None)),
    (add(S, "[Screen]\nColour=3\n"), (S, 18, N, "unknown-group", None)),
    (put(S, "Humid=0.6\n", ""), (S, 11, N, "missing-key", "0.6")),
    # The format.
    (put(S, "Offset=0", "Offset=0\n# my own"), (S, 15, W, "line-not-read", None)),
    (put(S, "[GlobalPara]", "[GlobalPara"), (S, 11, W, "group-line", "[GlobalPara]")),
    (put(S, "Reflec=25", 'Reflec="25'), (S, 17, E, "joined-lines", "25")),
    (add(S, 'Humid="\n\033[0m'), (S, 16, W, "duplicate-key", '\n\033[0m'), (S, 18, E, "joined-lines", None)),
    (put(S, "Humid=0.6\nReflec=25\n", "Humid=0.6 \\\nReflec=25\n"),
     (S, 16, E, "joined-lines", "0.6 Reflec=25")),
    (whole(T, lambda old: b"\xef\xbb\xbf" + old), (T, 1, N, "byte-order-mark", None)),
    (whole(S, lambda old: old.replace(b"\n", b"\r\n")), (S, 1, N, "carriage-return", None)),
    (whole(S, lambda old: old.decode().encode("utf-16")), (S, None, E, "encoding", "a file without keys")),
    (put(S, "VSKTemp=40\nVSKValue_Range0", "BiaoDing\\IntTime1=1\nVSKValue_Range0"),
     (S, 1, W, "slash-in-key", None), (S, 1, W, "duplicate-key", "210")),
    (put(S, "Emiss", "Emi%73s"),),  # one way to write it, nothing wrong
    (put(S, "Humid=0.6", "Humid = \"0.6\" ; percent / 100"),),
    # Files.
    (remove(S), (S, None, W, "missing-file", "a file without keys: every default")),
    (put(S, "[GlobalPara]", ";" * 32769 + "\n[GlobalPara]"), (S, None, E, "too-large", "a file without keys")),
    (folder(S), (S, None, E, "not-a-file", "a file without keys")),
    (rename(S, "Parameter/Settings"), (S, None, W, "missing-file", "a file without keys: every default"),
     ("Parameter/Settings", None, W, "stray-file", None)),
    (remove(T), (T, None, W, "fallback-taken", DEFAULT)),
    (remove(T, DEFAULT), (T, None, E, "missing-table", NO_TABLE)),
    (rename(T, "etc/calc_lens0_temp0.conf"), (T, None, W, "fallback-taken", DEFAULT),
     ("etc/calc_lens0_temp0.conf", None, W, "stray-file", None)),
    (add_file("etc/calc_len0_temp0.conf.bak"), ("etc/calc_len0_temp0.conf.bak", None, N, "stray-file", None)),
    (add_file("Parameter/Modify_0_Temp_1"), ("Parameter/Modify_0_Temp_1", None, N, "stray-file", None)),
    (lambda top: ((top / T).unlink(), os.mkfifo(top / T)), (T, None, E, "not-a-file", FALLBACK),
     (T, None, W, "fallback-taken", DEFAULT)),
    (lambda top: ((top / T).unlink(), (top / T).symlink_to("nowhere")), (T, None, W, "fallback-taken", DEFAULT)),
    (add_file("Parameter/Modify_Temp_3", "Averg_20=1\n"),
     *(("Parameter/Modify_1_Temp_3", None, W, "fallback-taken", M),
       ("Parameter/Modify_Temp_3", None, W, "range-never-selected", None)),
     *((f"etc/calc_len{n}_temp3.conf", None, E, "missing-table", NO_TABLE) for n in (0, 1))),
    (remove(M1), (M1, None, W, "fallback-taken", M)),
    (lambda top: [shutil.copy(top / file, top / copy) for file, copy in LENS_7],
     *((copy, None, W, "lens-never-selected", None) for _, copy in LENS_7)),
    (lambda top: shutil.rmtree(top / "Parameter"), ("Parameter", None, E, "missing-folder", "a folder without files"),
     (S, None, W, "missing-file", "a file without keys: every default")),
    # Tables.
    (put(T, "100=0xA42E", "100=0xA4G2"), (T, 24, E, "not-hexadecimal", "0x0000")),
    (put(T, "100=0xA42E", "100=428680"), (T, 24, E, "more-than-16-bits", "0x8680")),
    (put(T, "100=0xA42E", "100=0x742E"), (T, 24, E, "table-not-rising", "the first segment that holds a count")),
    (put(T, "100=0xA42E", "100=0xA4E2"), (T, 24, W, "entry-off-curve", None)),
    (put(T, "\n100=0xA42E", ""), (T, 7, E, "count-too-high", "a table with 1 of count 0 at 0 °C at its end"),
     (T, 24, W, "missing-entry", "a straight line across")),
    (put(T, "TempNum=23", "TempNum=20"), (T, 7, E, "count-too-low", "the entries up to 150 °C")),
    (put(T, "TempNum=23", "TempNum=70"), (T, 7, E, "out-of-range", "60"),
     (T, 7, E, "count-too-high", "a table with 37 of count 0 at 0 °C at its end")),
    (put(T, "TempNum=23", "Tempnum=23"), (T, 7, E, "misspelt-key", "0")),
    (put(T, "TempNum=23\n", ""), (T, 1, E, "missing-key", "0")),
    (put(T, "MinTemp=-40", "MinTemp=-20"), (T, 7, E, "count-too-high", "a table with 2 of count 0 at 0 °C at its end"),
     (T, 10, E, "entry-outside", None)),
    (put(T, "MinTemp=-40\nMaxTemp=180", "MinTemp=180\nMaxTemp=-40"),
     (T, 5, E, "limits-swapped", "a table without entries")),
    (put(T, "MaxAD=0xFFFF", "MaxAD=0xA42E"), (T, 2, W, "limit-cuts-table", "a table that ends above 100.0 °C")),
    (put(T, "MaxAD=0xFFFF\nMinAD=0", "MaxAD=0\nMinAD=0xFFFF"),
     (T, 3, E, "limits-swapped", "no count that can be converted")),
    (put(T, "\n100=", "\n100.0="), (T, 7, E, "count-too-high", "a table with 1 of count 0 at 0 °C at its end"),
     (T, 24, W, "never-read", "nothing; write 100"), (T, 25, W, "missing-entry", "a straight line across")),
    (put(T, "[Temp2AD]", "[Temp2Ad]"), (T, None, W, "fallback-taken", DEFAULT),
     (T, 9, E, "misspelt-group", "a file without [Temp2AD]")),
    (put(T, "MaxTemp=180\nTempNum=23", "MaxTemp=140\nTempNum=19"), (T, 29, E, "entry-outside", None)),
    (put(T, "MinTemp=-40", "MinTemp=-35"),
     (T, 7, E, "count-too-high", "a table with 23 of count 0 at 0 °C at its end"),
     (T, 10, E, "entry-outside", "nothing"), (T, 11, E, "entry-off-step", "nothing")),
    (put(T, "MinTemp=-40", "MinTemp=-40000"), (T, 5, E, "out-of-range", "the entries that 16 bits hold")),
    (put(T, "TempNum=23", "TempNum=4294967319"), (T, 7, E, "out-of-range", "23")),
    (put(T, "MaxAD=0xFFFF", "MaxAD=0xFFFG"), (T, 2, E, "not-hexadecimal", "0x0000")),
    (put(T, "BaseTemp=30", "BaseTemp=30,5"), (T, 4, E, "comma", "0")),
    (put(T, "-40=", "-50="), (T, 7, E, "count-too-high", "a table with 1 of count 0 at 0 °C at its end"),
     (T, 10, E, "entry-outside", "nothing"), (T, 11, W, "missing-entry", "a table from -30 °C on")),
    (entries(DEFAULT, lambda t: None, "-40 180 23"), (DEFAULT, 9, E, "too-few-entries", NO_TABLE)),
    # Modify files.
    (put(M, "Averg_25=", "Averg_25.0="), (M, 91, W, "never-read", "nothing"), (M, 92, N, "factor-gap", None)),
    (put(M, "Averg_25=0.9994", "Averg_25=0,9994"), (M, 91, E, "comma", "0, that is none: 0.9992")),
    (put(M, "Averg_25=0.9994", "Averg_25=0"), (M, 91, W, "factor-zero", "0.9992")),
    (put(M, "Averg_25=0.9994", "Averg_25=3.5"), (M, 91, E, "factor-out-of-bounds", "3.5"),
     (M, 91, W, "factor-step", None)),
    (put(M, "Averg_25=0.9994", "Averg_25=1.05"), (M, 91, W, "factor-step", None)),
    (put(M, "Averg_25=", "[General]\nAverage_25="), (M, 92, E, "misspelt-key", "nothing"),
     (M, 93, N, "factor-gap", None)),
    (whole(M, lambda old: b"[Factors]\n" + old), (M, 2, E, "wrong-group", "nothing")),
    (whole(M, lambda old: b"Averg_-20=0\n"), (M, 1, W, "factor-zero", "1"),
     (M, 1, E, "factor-stays-zero", "a shutter of 0 °C there")),
    (whole(M, lambda old: b"Averg_79=0\n"), (M, 1, W, "factor-zero", "1"), (M, 1, E, "factor-stays-zero", None)),
    (whole(M, lambda old: b"Averg_10=1.0\nAverg_30=1.1\n"), (M, 2, W, "factor-step", None)),
    (whole(M, lambda old: b"Averg_10=1.0\nAverg_30=1.01\n"),),
    (add(M, "Averg_20.3=1\nAverg_2O=1\nnotes=1\n"), (M, 201, W, "entry-off-step", "nothing"),
     (M, 202, E, "misspelt-key", "nothing"), (M, 203, N, "unknown-key", None)),
    (add(M, "Averg_80=1.02\n"), (M, 201, W, "entry-outside", "nothing")),
    # Range and range.
    (entries(T, lambda t: t if t >= -20 else None, "-20 180 21"), (T, 5, W, "range-not-covered", None)),
    (entries(T, lambda t: t if t <= 140 else None, "-40 140 19"), (T, 6, W, "range-not-covered", None)),
    (entries(H, lambda t: t if t >= 190 else None, "190 420 24"), (H, 5, W, "range-not-covered", None),
     (H, 10, E, "ranges-apart", None)),
    (entries(H, lambda t: t - 10, "-30 410 45"), (H, 10, W, "range-jump", None)),  # every key a step off
]


class Check(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)
        self.good = self.place / "good"
        subprocess.run([*PROGRAM, "sim", "camera", str(self.good)], check=True, timeout=100)
        factors = "".join(f"Averg_{k / 2 - 20:g}={1 + 0.0004 * (k / 2 - 26.5 - 20):.6g}\n" for k in range(200))
        for name in (M, "Parameter/Modify_Temp_1", "Parameter/Modify_1_Temp_0", M1):
            (self.good / name).write_text(factors)

    def check(self, *words):
        return subprocess.run([*PROGRAM, "check", *words], capture_output=True, text=True, timeout=100)

    def testAGoodDirectoryIsCleanAndEveryFaultIsNamed(self):
        done = self.check(str(self.good))
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "errors: 0, warnings: 0, notes: 0\n", ""))
        for number, (edit, *expected) in enumerate(FAULTS):
            with self.subTest(number):
                top = self.place / f"fault{number}"
                shutil.copytree(self.good, top)
                edit(top)
                done = self.check("--json", str(top))
                found = [json.loads(line) for line in done.stdout.splitlines()]
                got = [(f["file"][len(str(top)) + 1:], f["line"], f["severity"], f["code"], f["taken"])
                       for f in found]
                self.assertEqual([g[:4] for g in got], [e[:4] for e in expected], done.stdout)
                for (*_, taken), (*_, right) in zip(got, expected):
                    self.assertEqual(taken, right if right is not None else taken)
                self.assertEqual(done.returncode, 2 if {E, W} & {e[2] for e in expected} else 0)
                text = self.check(str(top)).stdout.splitlines()
                self.assertEqual(len(text), len(found) + 1)
                for line, f in zip(text, found):
                    place = f["file"] + (f":{f['line']}" if f["line"] else "")
                    self.assertTrue(line.startswith(f"{place}: {f['severity']}: {f['message']}"), line)

    def testWhatCannotBeCheckedIsSaid(self):
        for words, code in (([], 3), ([str(self.place / "nowhere")], 3), (["--nope", str(self.good)], 3),
                            ([str(self.good), str(self.good)], 3), (["--help"], 0)):
            done = self.check(*words)
            self.assertEqual(done.returncode, code, words)
            if code:
                self.assertRegex(done.stderr, r"\Airmcore: [^\n]+\n\Z")
        (self.good / "etc").rename(self.good / "Etc")
        self.assertIn("/good/etc: error: there is no such folder; is 'Etc' meant to be it?",
                      self.check(str(self.good)).stdout)
        empty = self.place / "empty"
        empty.mkdir()
        codes = [line.rsplit("[")[-1] for line in self.check(str(empty)).stdout.splitlines()]
        self.assertEqual(codes[:4], ["missing-folder]", "missing-file]", "missing-folder]", "missing-table]"])

    def testTheDocumentHasEveryCodeAndNoOther(self):
        top = pathlib.Path(__file__).resolve().parents[2]
        page = (top / "docs/check.md").read_text()
        documented = {code for line in page.splitlines() if line.startswith("| `")
                      for code in re.findall("`([a-z0-9-]+)`", line.split("|")[1])}
        found = {e[3] for _, *expected in FAULTS for e in expected}
        # No test makes a disk fail, and the last is there in case QSettings changes.
        self.assertEqual(documented, found | {"cannot-be-read", "key-not-located"})


unittest.main()
