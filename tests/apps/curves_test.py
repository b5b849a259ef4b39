"""Runs `irmcore explain`, `diff` and `plot` as their users do. Arguments: the program, whether it draws (0 or
1), then a test's name or none. The environment's EMULATOR is the words to start the program with."""

import csv
import io
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

PROGRAM = [*os.environ.get("EMULATOR", "").split(), sys.argv.pop(1)]
DRAWS = sys.argv.pop(1) == "1"


def run(*words):
    return subprocess.run([*PROGRAM, *map(str, words)], capture_output=True, text=True, timeout=300)


def clean(*words):
    done = run(*words)
    assert (done.returncode, done.stderr) == (0, ""), (words, done)
    return done.stdout


def explained(*words):
    return json.loads(clean("explain", "--json", *words))


def columns(*words):
    rows = list(csv.reader(io.StringIO(clean("plot", *words, "--csv"))))
    return rows[0], {row[0]: [float(field) for field in row[1:]] for row in rows[1:]}


class Directories(unittest.TestCase):
    """Each test has a place with two sample directories, `a` and `b`."""

    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.a, self.b = (pathlib.Path(place.name) / name for name in "ab")
        for directory in (self.a, self.b):
            clean("sim", "camera", directory)
        self.table = pathlib.Path("etc/calc_len0_temp0.conf")

    def change(self, file, old, new):
        path = self.b / file
        text = path.read_text()
        self.assertIn(old, text)
        path.write_text(text.replace(old, new))


class Explain(Directories):
    def testThePrintedPartsAddUp(self):
        for words in (["--ad", 36000], ["--ad", 33000, "--emissivity", 0.6, "--distance", 80, "--delta", 0.7],
                      ["--temperature", 300, "--range", 1, "--lens", 1, "--offset", -2, "--shutter", 35]):
            e = explained(*words)
            self.assertEqual(e["ad"] + e["shutterTermCut"], e["correctedAd"])
            low, high = e["segment"]
            self.assertLessEqual(low["ad"], e["correctedAd"])
            self.assertLessEqual(e["correctedAd"], high["ad"])
            self.assertEqual(e["object"], e["observed"] - e["reflected"] - e["air"])
            v = e["object"] ** 0.25 - 273.15 + e["offset"] - e["deltaTemperature"]
            self.assertAlmostEqual(v, e["beforeLimits"], delta=1e-9)
            self.assertAlmostEqual(v, e["temperature"], delta=1e-4)
            self.assertAlmostEqual(e["waterVapour"] * e["carbonDioxide"], e["transmission"], delta=1e-7)
            effects = [term["effect"] for term in e["uncertainty"]["terms"]]
            self.assertAlmostEqual(sum(x * x for x in effects) ** 0.5, e["uncertainty"]["combined"])
            text = clean("explain", *words)
            self.assertIn(f"{e['temperature']:.4f} °C", text)
            self.assertIn(f"-> {e['uncertainty']['combined']:8.4f} °C", text)

    def testTemperaturesComeBackWithTheirStatus(self):
        for celsius, status in ((-25, "L"), (-21, "LE"), (80, "OK"), (151, "HE"), (160, "H")):
            e = explained("--temperature", celsius)
            self.assertEqual(e["status"], status)
            self.assertAlmostEqual(e["beforeLimits"], celsius, delta=0.02)
        e = explained("--ad", 65000)
        self.assertEqual((e["status"], e["temperature"], e["beforeLimits"], e["segment"]), ("H", 4001, None, []))
        self.assertIn("above the table", clean("explain", "--ad", 65000))

    def testTheColumnIsForPeople(self):
        text = clean("explain", "--ad", 36000, "--delta", 0.5, "--offset", -1)
        for line in (r"Count 36000, range 0, lens 0: 54\.39 °C, OK", r"  raw count +36000 AD   \S.*",
                     r"  \+ shutter term +-326 AD   .* of 26\.50 °C \(modify factor 1 .*", r"  = corrected count +35674 AD .*",
                     r"  table temperature +55\.8475 °C   .* 50 °C \(34953 AD\) and 60 °C \(36186 AD\)",
                     r"  seen temperature +54\.5006 °C   \S.*", r"  \+ reflected +-2\.8783 °C   3\.42 %.* 25 °C",
                     r"  = object +55\.8887 °C   96\.47 %.*", r"  \+ offset +-1\.0000 °C .*",
                     r"  - delta temperature +-0\.5000 °C .*", r"  = before the limits +54\.3887 °C",
                     r'  reading +54\.3887 °C   "OK": the range is -20 to 150 °C.*',
                     r"Transmission 0\.998465 = water vapour 0\.998844 x carbon dioxide 0\.999620",
                     r"  distance +1 m  -> +0\.0082 °C", r"  combined .*root of the sum of squares.*"):
            self.assertRegex(text, "(?m)^" + line + "$")
        for column in text.splitlines():
            self.assertEqual(column, column.rstrip())
        cold = clean("explain", "--ad", 29000, "--emissivity", 0.05, "--reflected", 100)
        self.assertRegex(cold, r"(?m)^  = object +none +it would have to be colder than absolute zero$")
        self.assertIn('-20.0000 °C   "L"', cold)

    def testParametersComeFromTheDirectoryUnlessGiven(self):
        for old, new in (("Emiss=0.95", "Emiss=0.5"), ("Distan=5", "Distan=200"), ("Humid=0.6", "Humid=0.25"),
                         ("Env=25", "Env=10"), ("Reflec=25", "Reflec=60"), ("TempRange=0", "TempRange=1")):
            self.change("Parameter/Setting", old, new)
        given = {"emissivity": 0.5, "distance": 200, "humidity": 0.25, "air": 10, "reflected": 60, "range": 1}
        options = [word for name, value in given.items() for word in (f"--{name}", value)]
        self.assertEqual(explained("--ad", 38000, "--directory", self.b), explained("--ad", 38000, *options))
        e = explained("--ad", 38000, "--directory", self.b, "--emissivity", 0.75, "--reflected-error", 0)
        self.assertEqual((e["emissivity"], e["distance"], e["range"]), (0.75, 200, 1))
        self.assertEqual(e["limits"], [0, 400])
        self.assertEqual({t["source"]: t["effect"] for t in e["uncertainty"]["terms"]}["reflected"], 0)

    def testInsideTemperatureAndModifyFactorMoveTheShutterTerm(self):
        (self.b / "Parameter/Modify").write_text("Averg_10=1.0\nAverg_30=1.02\n")
        e = explained("--ad", 32768, "--directory", self.b, "--shutter", 40, "--sensor", 44)
        self.assertAlmostEqual(e["shutterTemperature"], 42 * 1.02, delta=0.05)
        self.assertAlmostEqual(e["seenTemperature"], 42 * 1.02, delta=0.05)

    def testWrongUsageAndMissingFiles(self):
        for words in ([], ["--ad", 1, "--temperature", 1], ["--ad", 65536], ["--ad", 1.5], ["--ad", "x"],
                      ["--ad", 1, "--emissivity", 0], ["--ad", 1, "--humidity", "nan"], ["--ad", 1, "--lens", 7],
                      ["--ad", 1, "--air-error", -1], ["--ad", 1, "word"]):
            done = run("explain", *words)
            self.assertEqual((done.returncode, done.stdout), (3, ""), words)
            self.assertRegex(done.stderr, r"\Airmcore: [^\n]+\n\Z")
        for words in (["--ad", 1, "--directory", "/nowhere"], ["--ad", 1, "--lens", 5], ["--temperature", 900]):
            done = run("explain", *words)
            self.assertEqual((done.returncode, done.stdout), (2, ""), words)
            self.assertRegex(done.stderr, r"\Airmcore: [^\n]+\n\Z")


class Diff(Directories):
    def differences(self, *words):
        done = run("diff", "--json", self.a, self.b, *words)
        return done.returncode, [json.loads(line) for line in done.stdout.splitlines()]

    def testTheSameDirectoriesDifferByNothing(self):
        code, found = self.differences("--bound", 0)
        self.assertEqual(code, 0)
        self.assertEqual([(d["kind"], d["largest"]) for d in found], [("table", 0)] * 4)

    def testTablesFactorsAndParametersInDegreesLargestFirst(self):
        text = "[ParaSet]\nMinTemp=-20\nMaxTemp=400\nTempNum=2\n[Temp2AD]\n-20=7000\n400=%s\n"
        for directory, top in ((self.a, "B000"), (self.b, "B100")):
            (directory / self.table).write_text(text % top)
        (self.b / "etc/calc_len1_temp1.conf").unlink()
        (self.b / "etc/calc_len1_temp1_default.conf").unlink()
        (self.b / "Parameter/Modify").write_text("Averg_10=1.0\nAverg_30=1.02\n")
        self.change("Parameter/Setting", "Emiss=0.95", "Emiss=0.9")
        code, found = self.differences()
        self.assertEqual(code, 0)
        tables = [d for d in found if d["kind"] == "table"]
        self.assertEqual([(d["lens"], d["range"]) for d in tables], [(1, 1), (0, 0), (0, 1), (1, 0)])
        self.assertEqual((tables[0]["inFirst"], tables[0]["inSecond"]), (True, False))
        self.assertEqual((tables[1]["at"], tables[1]["counts"], tables[1]["onlySecond"]), (45056, 16385, 256))
        for key, value in (("largest", 6.36935), ("mean", 3.16972), ("first", 391.75936), ("second", 385.39002)):
            self.assertAlmostEqual(tables[1][key], value, delta=1e-4)
        factors = [d for d in found if d["kind"] == "modify"]
        self.assertEqual([(d["lens"], d["range"]) for d in factors], [(0, 0), (0, 1), (1, 0), (1, 1)])
        for inside, effect in ((-10, 0), (20, 0), (30, 0.6), (50, 1.0)):
            self.assertAlmostEqual({e["inside"]: e["effect"] for e in factors[0]["effects"]}[inside], effect,
                                   delta=1e-5)
        parameters = [d for d in found if d["kind"] == "parameter"]
        self.assertEqual([(d["name"], d["first"], d["second"], d["at"]) for d in parameters],
                         [("GlobalPara/Emiss", 0.95, 0.9, 150)])
        self.assertAlmostEqual(parameters[0]["largest"], 4.3607, delta=1e-3)
        text = clean("diff", self.a, self.b)
        for words in ("only the first has it", "6.369", "+0.600", "up to 4.361 °C, at 150 °C"):
            self.assertIn(words, text)

    def testTheBoundHoldsForEachKind(self):
        def code(bound):
            return self.differences("--bound", bound)[0]
        self.change("Parameter/Setting", "Emiss=0.95", "Emiss=0.9")
        self.assertEqual((code(4.37), code(4.35)), (0, 2))
        self.change("Parameter/Setting", "Emiss=0.9", "Emiss=0.95")
        (self.b / "Parameter/Modify").write_text("Averg_79.5=1.02\nAverg_79=1\n")
        self.assertEqual((code(1.6), code(1.58)), (0, 2))
        (self.b / "Parameter/Modify").unlink()
        for file in ("calc_len1_temp0.conf", "calc_len1_temp0_default.conf"):
            (self.b / "etc" / file).unlink()
        self.assertEqual(code(1000), 2)

    def testFallbacksCountAsTheLibraryReadsThem(self):
        (self.b / self.table).unlink()  # the fallback is alike
        (self.b / "etc/calc_len0_temp1.conf").write_text("[Temp2AD]\n0=7000\n")  # too few: fallback as well
        (self.b / "Parameter/Setting").write_text("[BiaoDing]\nIntTime1=200\n[GlobalPara]\nEnv=-5\n")
        before = sorted(str(path) for path in self.b.rglob("*"))
        code, found = self.differences()
        self.assertEqual({d["largest"] for d in found if d["kind"] == "table"}, {0})
        self.assertEqual([(d["name"], d["first"], d["second"]) for d in found if d["kind"] == "parameter"],
                         [("GlobalPara/Env", 25, -5), ("BiaoDing/IntTime0", 120, 100), ("BiaoDing/IntTime1", 210, 200)])
        self.assertEqual(sorted(str(path) for path in self.b.rglob("*")), before)  # nothing is written
        self.assertIn("none by itself", clean("diff", self.a, self.b))

    def testResultsThatCannotBeWrittenAreAnError(self):
        for words in (["explain", "--ad", "36000"], ["diff", self.a, self.b], ["plot", "table", "--csv"]):
            with open("/dev/full", "w") as full:
                done = subprocess.run([*PROGRAM, *map(str, words)], stdout=full, stderr=subprocess.PIPE, text=True,
                                      timeout=300)
            self.assertEqual(done.returncode, 2, words)
            self.assertRegex(done.stderr, r"\Airmcore: [^\n]+\n\Z")

    def testCsvIsCountByCount(self):
        rows = list(csv.DictReader(io.StringIO(clean("diff", "--csv", self.a, self.b))))
        first = rows[0]
        self.assertEqual((first["lens"], first["range"], first["ad"]), ("0", "0", "27934"))
        self.assertAlmostEqual(float(first["first"]), -35.26678, delta=1e-5)
        self.assertEqual({float(row["difference"]) for row in rows}, {0.0})

    def testWrongUsageAndMissingDirectories(self):
        for words in ([], [self.a], [self.a, self.b, self.a], [self.a, self.b, "--bound", -1],
                      [self.a, self.b, "--csv", "--json"]):
            self.assertEqual(run("diff", *words).returncode, 3, words)
        done = run("diff", self.a, "/nowhere")
        self.assertEqual((done.returncode, done.stdout), (2, ""))
        self.assertRegex(done.stderr, r"\Airmcore: [^\n]+\n\Z")


class Plot(Directories):
    def testNumbersOfEachKind(self):
        (self.b / "Parameter/Modify").write_text("Averg_10=1.0\nAverg_30=1.02\n")
        for words, abscissa, column, value, delta in (
                (["table"], "27934", 0, -40, 0), (["table"], "27934", 1, -35.26678, 1e-5),
                (["slope"], "55", 0, 128.1812, 0.02), (["slope"], "55", 1, 1 / 128.1812, 2e-6),
                (["drift"], "180", 5, 2882, 0), (["drift"], "-40", 0, 641, 0), (["drift"], "30", 0, 0, 0),
                (["modify", "--directory", self.b], "29.5", 0, 1, 0),
                (["modify", "--directory", self.b], "30", 0, 1.02, 1e-6),
                (["modify", "--directory", self.b], "30", 1, 0.6, 1e-5),
                (["transmission"], "500", 2, 0.862934, 1e-6), (["transmission"], "0", 4, 1, 0)):
            names, values = columns(*words)
            self.assertAlmostEqual(values[abscissa][column], value, delta=delta, msg=(words, abscissa))
            self.assertEqual(len(names), 1 + len(values[abscissa]))

    def testPicturesAreXmlWithAxesAndLegendAndRepeat(self):
        if not DRAWS:
            done = run("plot", "table", "--output", self.a / "x.svg")
            self.assertEqual(done.returncode, 2)
            self.assertIn("--csv", done.stderr)
            return
        curves = {"table": 2, "slope": 2, "drift": 6, "modify": 2, "transmission": 5}
        for kind, count in curves.items():
            pictures = []
            for name in ("1.svg", "2.svg"):
                self.assertEqual(clean("plot", kind, "--output", self.a / name), "")
                pictures.append((self.a / name).read_bytes())
            self.assertEqual(pictures[0], pictures[1], kind)
            texts = ["".join(element.itertext()).strip() for element in ElementTree.fromstring(pictures[0]).iter()
                     if element.tag.endswith("}text")]
            names, _ = columns(kind)
            self.assertEqual(len(names), 1 + count)
            for name in names:
                self.assertEqual(texts.count(name), 1, (kind, name, texts))
            quantities = {"table": ["temperature / °C"], "slope": ["slope / (AD/°C)", "resolution / (°C/AD)"],
                          "drift": ["correction of the count / AD"], "transmission": ["transmission"],
                          "modify": ["modify factor", "correction of the shutter temperature / °C"]}
            for title in quantities[kind]:
                self.assertIn(title, texts)
            self.assertGreater(sum(text.replace(".", "").lstrip("-").isdigit() for text in texts), 8, kind)

    def testHostileTablesAreDrawnAllTheSame(self):
        (self.b / self.table).write_text("[ParaSet]\nMinTemp=-20\nMaxTemp=20\nTempNum=5\n[Temp2AD]\n-20=FFFF\n"
                                         "-10=0\n0=0\n10=FFFF\n20=1\n")
        for kind in ("table", "slope", "drift"):
            words = ["plot", kind, "--csv", "--directory", self.b]
            if DRAWS:
                words += ["--output", self.b / "x.svg"]
            self.assertNotIn("inf", clean(*words))

    def testWrongUsageAndFilesThatCannotBeWritten(self):
        for words in ([], ["table"], ["nonsense", "--csv"], ["table", "slope", "--csv"], ["table", "--output", ""],
                      ["table", "--csv", "--range", "x"]):
            self.assertEqual(run("plot", *words).returncode, 3, words)
        done = run("plot", "table", "--output", "/nowhere/x.svg")
        self.assertEqual(done.returncode, 2)
        self.assertRegex(done.stderr, r"\Airmcore: [^\n]+\n\Z")


if __name__ == "__main__":
    unittest.main()
