"""Runs the command `irmcore` as its users do. Arguments: the program, then a test's name or none. The
environment's EMULATOR is the words to start the program with."""

import json
import os
import pathlib
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib

PROGRAM = [*os.environ.get("EMULATOR", "").split(), sys.argv.pop(1)]
KEYS = {"what", "x", "y", "ad", "status", "temperature", "truth"}


def run(*words):
    return subprocess.run([*PROGRAM, *words], capture_output=True, text=True, timeout=300)


def readings(done):
    return [json.loads(line) for line in done.stdout.splitlines()]


class Command(unittest.TestCase):
    def testWrongUsageIsExit3WithOneLineOnStandardError(self):
        self.assertEqual(run().returncode, 3)  # with the whole help
        for words in (["nonsense"], ["demo", "--nonsense"], ["demo", "word"], ["demo", "--range", "2"],
                      ["demo", "--emissivity", "0,9"], ["demo", "--emissivity", "nan"],
                      ["demo", "--size", "1x1"], ["demo", "--scene", "/nowhere.pgm"], ["sim"],
                      ["sim", "camera"], ["sim", "camera", "--x"], ["palettes"], ["demo", "--palette", "grey"],
                      ["demo", "--picture", "x", "--palette", "nope"], ["demo", "--picture", "x", "--limits", "9:3"],
                      ["demo", "--picture", "x", "--mode", "fusion"], ["demo", "--picture", "x", "--json"]):
            done = run(*words)
            self.assertEqual((done.returncode, done.stdout), (3, ""), words)
            self.assertRegex(done.stderr, r"\Airmcore: [^\n]+\n\Z", words)

    def testHelpIsExit0(self):
        for words in (["--help"], ["demo", "--help"], ["sim", "--help"], ["palettes", "--help"],
                      ["sim", "run", "--help"], ["trace", "--help"], ["measure", "--help"], ["calibrate", "--help"], ["record", "--help"], ["replay", "--help"]):
            done = run(*words)
            self.assertEqual((done.returncode, done.stderr), (0, ""), words)
            self.assertIn("Usage: ", done.stdout)

    def testDemoReadsKnownBlackBodies(self):
        for size in ("384x288", "160x120"):
            done = run("demo", "--json", "--size", size)
            self.assertEqual(done.returncode, 0, done.stdout)
            found = {r["what"]: r for r in readings(done)}
            for what, truth in (("spot black body 0", 0), ("spot black body 37", 37),
                                ("spot black body 140", 140), ("hottest point", 140),
                                ("coldest point", -10), ("scale bottom", -10)):
                self.assertEqual(set(found[what]), KEYS)
                self.assertEqual(found[what]["status"], "OK")
                self.assertAlmostEqual(found[what]["truth"], truth, delta=0.01)
                self.assertAlmostEqual(found[what]["temperature"], truth, delta=0.2)
            self.assertIsNone(found["scale top"]["x"])
            self.assertEqual(len(found), 17)

    def testTheHighRangeMarksWhatIsTooCold(self):
        done = run("demo", "--json", "--range", "1")
        self.assertEqual(done.returncode, 0, done.stdout)
        found = {r["what"]: r for r in readings(done)}
        self.assertEqual(found["coldest point"]["status"], "L")
        self.assertEqual(found["coldest point"]["temperature"], 0)

    def testTracesGoToStandardErrorOnlyWhenAskedFor(self):
        quiet, loud = run("demo"), run("demo", "--verbose")
        self.assertEqual(quiet.stdout, loud.stdout)
        self.assertNotIn("Set all AD table", quiet.stdout + quiet.stderr)
        self.assertIn("Set all AD table successed", loud.stderr)

    def testResultsThatCannotBeWrittenAreAnError(self):
        for redirection in (">/dev/full", ">&-"):
            done = subprocess.run(["sh", "-c", f'"$@" demo {redirection}', "sh", *PROGRAM],
                                  capture_output=True, text=True, timeout=300)
            self.assertEqual(done.returncode, 2, redirection)
            self.assertIn("irmcore: ", done.stderr)

    def testHardConditionsStayWithinTheirBound(self):
        done = run("demo", "--emissivity", "0.8", "--distance", "60", "--humidity", "0.7",
                   "--reflected", "35")
        self.assertEqual(done.returncode, 0, done.stdout)
        self.assertIn("17 readings, 0 outside", done.stdout)

    def testCameraDirectoryIsWrittenOnceAndNeverOver(self):
        with tempfile.TemporaryDirectory() as place:
            self.assertEqual(run("sim", "camera", place).returncode, 0)
            setting = pathlib.Path(place, "Parameter/Setting")
            setting.write_text("mine")
            self.assertEqual(run("sim", "camera", place).returncode, 2)
            self.assertEqual(setting.read_text(), "mine")


def png(file):
    """Rows of (red, green, blue) of a PNG with three bytes a pixel."""
    data = pathlib.Path(file).read_bytes()
    width, height, depth, kind = struct.unpack(">IIBB", data[16:26])
    assert (depth, kind) == (8, 2)
    packed, at = b"", 8
    while at < len(data):
        size = int.from_bytes(data[at:at + 4], "big")
        packed += data[at + 8:at + 8 + size] if data[at + 4:at + 8] == b"IDAT" else b""
        at += size + 12
    raw, rows, above, long = zlib.decompress(packed), [], bytes(3 * width), 3 * width + 1
    for start in range(0, height * long, long):
        how, line = raw[start], bytearray(raw[start + 1:start + long])
        if how == 2:
            line = bytearray((b + x) & 255 for b, x in zip(above, line))
        elif how:
            for i in range(long - 1):
                a, b, c = (line[i - 3], above[i], above[i - 3]) if i > 2 else (0, above[i], 0)
                guess = a if how == 1 else (a + b) // 2 if how == 3 else min(
                    (a, b, c), key=lambda n: abs(a + b - c - n))
                line[i] = (line[i] + guess) & 255
        rows.append(list(zip(line[0::3], line[1::3], line[2::3])))
        above = line
    return rows


class Pictures(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.file = os.path.join(place.name, "picture.png")

    def draw(self, *words):
        done = run(*words)
        if "has no pictures" in done.stderr:
            self.assertEqual(done.returncode, 2)
            self.skipTest(done.stderr.strip())
        return done

    def testShowsTheSceneWithItsBarSpotsAndReadings(self):
        done = self.draw("demo", "--size", "160x120", "--picture", self.file)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        rows = png(self.file)
        self.assertEqual(len(rows[0]), 640)
        self.assertGreater(len(rows), 480)  # a strip lies below the screen
        self.assertEqual(rows[122][82], (255, 255, 255))  # the cross on the black body of -10 °C
        for x0, x1, y0, y1 in ((90, 140, 114, 130), (570, 631, 92, 109), (8, 500, 484, 505)):
            letters = sum(min(rows[y][x]) > 180 for y in range(y0, y1) for x in range(x0, x1))
            self.assertGreater(letters, 20, "its reading, the bar's end, the caption")
        self.assertGreater(len({rows[y][620] for y in range(112, 368)}), 200)  # the bar

    def testAFileThatCannotBeWrittenIsAnError(self):
        for words in (["demo", "--picture"], ["palettes"]):
            done = self.draw(*words, "/nowhere/picture.png")
            self.assertEqual(done.returncode, 2)
            self.assertIn("cannot write /nowhere/picture.png: No such", done.stderr)

    def testTheSheetShowsNinePalettes(self):
        self.assertEqual(self.draw("palettes", self.file).returncode, 0)
        rows = png(self.file)
        quarters = {rows[50 + 304 * row][96 + 336 * column] for row in range(3) for column in range(3)}
        self.assertEqual(len(quarters), 9)  # the bars' colours a quarter of the way up


@unittest.skipUnless("IRMCORE_SCENES" in os.environ, "IRMCORE_SCENES names no folder of frames")
class Scenes(unittest.TestCase):
    def testEveryRealFrameIsReadRight(self):
        frames = sorted(pathlib.Path(os.environ["IRMCORE_SCENES"]).glob("*.pgm"))
        self.assertGreaterEqual(len(frames), 8)
        for frame in frames:
            done = run("demo", "--json", "--scene", str(frame))
            self.assertEqual(done.returncode, 0, f"{frame}\n{done.stdout}{done.stderr}")
            self.assertEqual(len(readings(done)), 14)
            if frame.name.startswith("steam_valves"):  # a third of it is above the low range
                hottest = next(r for r in readings(done) if r["what"] == "hottest point")
                self.assertEqual(hottest["status"], "OK")


if __name__ == "__main__":
    unittest.main()
