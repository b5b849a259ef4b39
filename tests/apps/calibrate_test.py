"""Runs `irmcore calibrate` as its users do. Arguments: the program, then a test's name or none. The
environment's EMULATOR is the words to start the program with."""

import json
import math
import os
import pathlib
import random
import re
import subprocess
import sys
import tempfile
import unittest

PROGRAM = [*os.environ.get("EMULATOR", "").split(), sys.argv.pop(1)]
TABLE = re.compile(r"^(-?\d+)=0x([0-9A-F]+)$", re.M)
GAIN = (100, 30)
SPAN = ((-20, 150), (0, 400))


def run(*words, given=None):
    return subprocess.run([*PROGRAM, *map(str, words)], input=given, capture_output=True, timeout=120)


def curve(celsius, detector):
    """A detector's count of a surface of emissivity 0.95 before 25 °C, 32768 at 30 °C."""
    b = 1430
    planck = lambda t: 1 / (math.exp(b / (t + 273.15)) - 1)
    e = math.exp(b / 303.15)
    return 32768 + GAIN[detector] * (planck(celsius) - planck(30)) / (b / 303.15**2 * e / (e - 1)**2)


def table_space(celsius, emissivity=1.0, reflected=25.0):
    fourth = lambda t: (t + 273.15)**4
    w = emissivity * fourth(celsius) + (1 - emissivity) * fourth(reflected)
    return ((w - 0.05 * fourth(25)) / 0.95)**0.25 - 273.15


def black_bodies(detector, temperatures, shift=361.88, emissivity=1.0, reflected=25.0):
    """Points as (°C, raw count); raw counts lie anywhere beside the table's."""
    return [(t, curve(table_space(t, emissivity, reflected), detector) + shift) for t in temperatures]


def text(points, line="{0},{1:.3f}\n"):
    return "".join(line.format(*p) for p in points)


class Calibrate(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)

    def calibrate(self, points, *options, code=0):
        given = points if isinstance(points, bytes) else points.encode()
        done = run("calibrate", *options, "-", given=given)
        self.assertEqual(done.returncode, code, (options, done.stderr))
        return done.stdout.decode(), done.stderr.decode("utf-8", "replace")

    def table(self, points, *options):
        out = self.calibrate(points, *options)[0]
        return {int(t): int(ad, 16) for t, ad in TABLE.findall(out)}

    def residuals(self, points, *options):
        out = self.calibrate(points, "--json", "--output", self.place / "t.conf", *options)[0]
        return [json.loads(line) for line in out.splitlines()]

    def testTheTableIsTheDetectorsCurve(self):
        for detector, (low, high) in enumerate(SPAN):
            evenly = range(low, high + 1, 10)
            odd = [low, low + 3.7, *(low + 13.3 * i for i in range(1, 99) if low + 13.3 * i < high), high]
            for temperatures in (evenly, odd, range(low, high + 1, 34 if detector == 0 else 40)):
                found = self.table(text(black_bodies(detector, temperatures)), "--range", detector)
                ends = ((-40, 180), (-20, 420))[detector]
                self.assertEqual(list(found), list(range(ends[0], ends[1] + 1, 10)))
                self.assertEqual(found[30], 32768)
                for t, ad in found.items():
                    self.assertAlmostEqual(ad, curve(t, detector), delta=3, msg=(detector, t))
        # Another emissivity or reflected temperature of the source gives the same table.
        points = black_bodies(0, range(-20, 151, 10), 0, 0.9, 40)
        found = self.table(text(points), "--emissivity", "0.9", "--reflected", "40", "--extrapolate", "40")
        self.assertLess(max(abs(ad - curve(t, 0)) for t, ad in found.items()), 3)
        # The source of the table's own definition: its temperatures are those of the entries.
        points = [(t, curve(t, 0)) for t in range(-20, 151, 10)]
        found = self.table(text(points), "--emissivity", "0.95", "--reflected", "25")
        self.assertLess(max(abs(ad - curve(t, 0)) for t, ad in found.items()), 3)

    def testWhatTheDetectorBendsIsFollowedAndNeverFalls(self):
        # A detector whose counts leave the law by up to 2 °C, smoothly.
        bent = [(t, ad + 200 * math.sin(t / 30)) for t, ad in black_bodies(0, range(-20, 151, 10))]
        found = self.table(text(bent))
        at = lambda t: curve(t, 0) + 200 * math.sin(source / 30)
        for source in (0, 40, 70, 110, 140):
            t = table_space(source)
            low = math.floor(t / 10) * 10
            ad = found[low] + (found[low + 10] - found[low]) * (t - low) / 10
            expected = at(t) - 200 * math.sin(29.76 / 30) + (curve(30, 0) - 32768)
            self.assertAlmostEqual(ad, expected, delta=25, msg=source)
        rough = random.Random(7)
        for _ in range(20):  # rising by steps of any size
            ad, points = 20000.0, []
            for t in range(-20, 151, 10):
                points.append((t, ad))
                ad += rough.choice((60, 300, 1500, 4000))
            out = run("calibrate", "-", given=text(points).encode())
            if out.returncode == 0:
                values = [int(v, 16) for _, v in TABLE.findall(out.stdout.decode())]
                self.assertEqual(values, sorted(set(values)))
            else:
                self.assertRegex(out.stderr.decode(), "at -?[0-9]+ °C the table would hold")

    def testRepeatedPointsAreAveragedAndTheirScatterTold(self):
        points = black_bodies(0, range(-20, 151, 10))
        noisy = [(t, ad + off) for t, ad in points for off in ((-3, 0, 3) if t == 50 else (0,))]
        random.Random(1).shuffle(noisy)
        found = self.residuals(text(noisy))
        self.assertEqual([r["points"] for r in found], [3 if t == 50 else 1 for t, _ in points])
        self.assertAlmostEqual(found[7]["scatter"], 3.0, delta=0.01)
        self.assertAlmostEqual(found[7]["ad"], points[7][1], delta=0.01)
        self.assertEqual(found[8]["scatter"], 0)
        for r, (t, _) in zip(found, points):
            self.assertAlmostEqual(r["temperature"], t, delta=0.001)
            self.assertLess(abs(r["law"]), 0.01)
            # What straight lines between entries leave.
            self.assertTrue(-0.18 < r["table"] <= 0.02, r)

    def testAnOutlierShows(self):
        points = [(t, ad + (150 if t == 90 else 0)) for t, ad in black_bodies(0, range(-20, 151, 10))]
        found = {round(r["temperature"]): r for r in self.residuals(text(points))}
        self.assertEqual(max(found.values(), key=lambda r: abs(r["law"])), found[90])
        self.assertAlmostEqual(found[90]["lawAd"], 150, delta=40)
        self.assertAlmostEqual(found[90]["law"], found[90]["lawAd"] / 161, delta=0.1)

    def testTheFileSaysWhatIsExtrapolated(self):
        points = text(black_bodies(0, range(-20, 151, 10)))
        out, err = self.calibrate(points, "--lens", "1")
        self.assertEqual(out.splitlines()[:2], ["; etc/calc_len1_temp0.conf, from 18 points",
                                                "; extrapolated: -40 -30 160 170 180"])
        self.assertIn("extrapolated: -40 -30 160 170 180", err)
        few = text(black_bodies(0, range(0, 101, 10)))
        err = self.calibrate(few, code=2)[1]
        self.assertIn("to -40 °C, 38.5 beyond the lowest point; extrapolated are 30 °C at most", err)
        self.assertEqual(len(self.table(few, "--extrapolate", "80")), 23)

    def testEveryFormOfCsvIsRead(self):
        points = black_bodies(0, range(-20, 151, 10))
        plain = self.table(text(points))
        swapped = [(ad, t) for t, ad in points]
        for given in ("temperature,ad\n" + text(points), "# a comment\n\n" + text(points, "{0};{1:.3f}\r\n"),
                      "\ufeffad;remark;temperature\n" + text(swapped, "{0:.3f};x, y;{1}\n"),
                      "T\tRaw\n" + text(points, " {0} \t {1:.3f} , \n").replace(" , ", ""),
                      text(points).rstrip("\n")):
            self.assertEqual(self.table(given), plain, given[:40])

    def testBadPointsAreRefused(self):
        good = black_bodies(0, range(-20, 151, 10))
        lines = text(good)
        flat = [(t, ad if t != 60 else good[7][1]) for t, ad in good]
        for given, wrong in (
                ("", "0 temperatures are too few"), ("# nothing\n", "0 temperatures are too few"),
                (text(good[:4]), "4 temperatures are too few"),
                (text([(30 + i / 100, 33000 + i) for i in range(9)]), "1 temperatures are too few"),
                (text(flat), "counts do not rise from 50.00 to 60.00 °C"),
                (text([(t, 65000 - ad) for t, ad in good]), "counts do not rise"),
                (text(black_bodies(0, range(40, 151, 10))), "30 °C is not within the points"),
                (text(black_bodies(0, range(-20, 21, 5))), "30 °C is not within the points"),
                (lines + "1\n", "19: a temperature and a count are expected"),
                (lines + "nan,3\n", "19: 'nan' is no temperature"), (lines + "1e400,3\n", "no temperature"),
                (lines + "2000,3\n", "no temperature"), (lines + "5,inf\n", "'inf' is no count"),
                (lines + "5,65536\n", "no count"), (lines + "5,-1\n", "no count"), (lines + "5,0x20\n", "no count"),
                (lines + "5,65535\n", "the converter's end"), (lines + "5,0\n", "the converter's end"),
                ("temperature;ad\n30,5;33000\n", "2: '30,5' is no temperature"),
                ("celsius,volt\n1,2\n", "1: 'celsius' is no temperature"),
                ("\0" * 100, "1: "), (bytes(range(128, 256)) * 50, "1: "), ("," * 100000, "1: '' is no temperature"),
                (b"7" * 200000, "a temperature and a count"), ("1,2\n" * 300000, "more than a megabyte"),
                ("1,2\n" * 20000, "more than 10000 points"),
                (text([(t, 33130 + 1.35 * (ad - good[5][1])) for t, ad in good]), "at 180 °C the table would hold 66")):
            out, err = self.calibrate(given, code=2)
            self.assertEqual(out, "")
            self.assertRegex(err, r"\Airmcore: [^\n]+\n\Z")
            self.assertIn(wrong, err)
        rng = random.Random(3)  # any bytes: an answer, never a crash
        for _ in range(60):
            bytes_ = bytearray(lines.encode())
            for _ in range(rng.randrange(1, 8)):
                bytes_[rng.randrange(len(bytes_))] = rng.choice(b"\0\n,;.-e9\xff#x")
            self.assertIn(run("calibrate", "-", given=bytes(bytes_)).returncode, (0, 2), bytes(bytes_))

    def testWrongUsageIsExit3(self):
        for words in ([], ["a", "b"], ["--simulate", "a"], ["--range", "2", "-"], ["--lens", "7", "-"],
                      ["--seed", "1", "-"], ["--trials", "1", "-"], ["--simulate", "--emissivity", "0.9"],
                      ["--emissivity", "0", "-"], ["--extrapolate", "-1", "-"], ["--simulate", "--trials", "0"]):
            done = run("calibrate", *words)
            self.assertEqual((done.returncode, done.stdout), (3, b""), words)
            self.assertRegex(done.stderr.decode(), r"\Airmcore: [^\n]+\n\Z", words)
        for words in (["/nowhere/p.csv"], ["/"], ["--simulate", "--output", "/nowhere/t"],
                      ["--simulate", "--save-points", "/nowhere/p"]):
            self.assertEqual(run("calibrate", *words).returncode, 2, words)

    def testReadingsWithATableFromNoisyPointsAreRight(self):
        done = run("calibrate", "--simulate", "--trials", "4", "--seed", "88", "--json")
        self.assertEqual(done.returncode, 0, done.stdout)
        found = [json.loads(line) for line in done.stdout.splitlines()]
        self.assertEqual([(f["range"], f["tables"], f["readings"]) for f in found], [(0, 4, 19200), (1, 4, 19200)])
        for f in found:
            self.assertTrue(0.05 < f["worst"] < 0.3, f)
            self.assertLessEqual(f["mean"], f["worst"])

    def testTheLibraryLoadsTheFile(self):
        points = self.place / "points.csv"
        for seed in (1, 2):
            self.assertEqual(run("calibrate", "--simulate", "--seed", seed, "--save-points", points, "--output",
                                 self.place / "t").returncode, 0)
            rows = [line for line in points.read_text().splitlines() if line[0] not in "#t"]
            self.assertEqual([float(r.split(",")[0]) for r in rows], list(range(-20, 151, 10)))
            for row in rows:
                t, ad = map(float, row.split(","))
                own = curve(table_space(t), 0) - curve(26.5, 0) + 32768  # but for the shutter's own shift
                self.assertAlmostEqual(ad, own + (curve(26.5, 0) - curve(table_space(26.5), 0)), delta=10)
        camera = self.place / "camera"
        self.assertEqual(run("sim", "camera", camera).returncode, 0)
        # From 90 °C on counts are 800 too high: what is hotter reads colder by so much, the rest right.
        wrong = [(t, ad + (800 if t >= 90 else 0)) for t, ad in black_bodies(0, range(-20, 151, 10))]
        (camera / "etc/calc_len0_temp0.conf").write_text(self.calibrate(text(wrong))[0])
        for truth in (-10, 37, 60, 115, 140):
            low, high = -20.0, 200.0  # the temperature whose count is that of the truth less 800
            while high - low > 0.001:
                middle = (low + high) / 2
                below = curve(table_space(middle), 0) + (800 if truth > 90 else 0) < curve(table_space(truth), 0)
                low, high = (middle, high) if below else (low, middle)
            done = run("measure", "--directory", camera, "--scene", f"uniform:{truth}", "--spot", "9,9", "--json")
            self.assertAlmostEqual(json.loads(done.stdout)["temperature"], low, delta=0.25)


if __name__ == "__main__":
    unittest.main()
