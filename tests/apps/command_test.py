"""Runs the command `irmcore` as its users do. Arguments: the program, then a test's name or none."""

import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

PROGRAM = sys.argv.pop(1)
KEYS = {"what", "x", "y", "ad", "status", "temperature", "truth"}


def run(*words):
    return subprocess.run([PROGRAM, *words], capture_output=True, text=True, timeout=300)


def readings(done):
    return [json.loads(line) for line in done.stdout.splitlines()]


class Command(unittest.TestCase):
    def testWrongUsageIsExit3WithOneLineOnStandardError(self):
        for words in ([], ["nonsense"], ["demo", "--nonsense"], ["demo", "word"], ["demo", "--range", "2"],
                      ["demo", "--emissivity", "0,9"], ["demo", "--emissivity", "nan"],
                      ["demo", "--size", "1x1"], ["demo", "--scene", "/nowhere.pgm"], ["sim"],
                      ["sim", "camera"], ["sim", "camera", "--x"]):
            done = run(*words)
            self.assertEqual((done.returncode, done.stdout), (3, ""), words)
            self.assertIn("irmcore", done.stderr)

    def testHelpIsExit0(self):
        for words in (["--help"], ["demo", "--help"], ["sim", "--help"]):
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
            done = subprocess.run(["sh", "-c", f'"$0" demo {redirection}', PROGRAM],
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
