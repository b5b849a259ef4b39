"""Runs `irmcore measure` as its users do. Arguments: the program, then a test's name or none. The
environment's EMULATOR is the words to start the program with."""

import csv
import io
import json
import os
import pathlib
import re
import signal
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib

PROGRAM = [*os.environ.get("EMULATOR", "").split(), sys.argv.pop(1)]
WIDTH, HEIGHT = 160, 120
GONE = "at 00:00:03 device gone\nat 00:00:07.5 device back\n"


def run(*words, env=None):
    return subprocess.run([*PROGRAM, *map(str, words)], capture_output=True, text=True, timeout=120,
                          env={**os.environ, **(env or {})})


def words(pgm):
    """Comment lines and big-endian words of a PGM of ours."""
    head, size, top, pixels = re.fullmatch(
        rb"P5\n((?:#[^\n]*\n)*)(\d+ \d+)\n(\d+)\n(.*)", pathlib.Path(pgm).read_bytes(), re.S).groups()
    assert (size, top) == (b"160 120", b"65535")
    return head.decode(), struct.unpack(f">{WIDTH * HEIGHT}H", pixels)


def greyscale(file):
    """The text and the words of a greyscale PNG of 16 bits."""
    data, at, packed, text = pathlib.Path(file).read_bytes(), 8, b"", b""
    assert struct.unpack(">IIBB", data[16:26]) == (WIDTH, HEIGHT, 16, 0)
    while at < len(data):
        size, kind = int.from_bytes(data[at:at + 4], "big"), data[at + 4:at + 8]
        body = data[at + 8:at + 8 + size]
        packed += body if kind == b"IDAT" else b""
        if kind == b"zTXt":
            text += zlib.decompress(body.split(b"\0", 1)[1][1:])
        text += body if kind == b"tEXt" else b""
        at += size + 12
    raw, above, rows = zlib.decompress(packed), bytes(2 * WIDTH), b""
    for start in range(0, len(raw), 2 * WIDTH + 1):
        how, line = raw[start], bytearray(raw[start + 1:start + 1 + 2 * WIDTH])
        for i in range(2 * WIDTH):
            a, b, c = (line[i - 2], above[i], above[i - 2]) if i > 1 else (0, above[i], 0)
            guess = (0, a, b, (a + b) // 2, min((a, b, c), key=lambda n: abs(a + b - c - n)))[how]
            line[i] = (line[i] + guess) & 255
        rows += line
        above = line
    return text.decode(), struct.unpack(f">{WIDTH * HEIGHT}H", rows)


class Place(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)

    def measure(self, *options, code=0, env=None):
        done = run("measure", *options, env=env)
        self.assertEqual(done.returncode, code, (options, done.stderr))
        return done

    def found(self, *options, code=0):
        return [json.loads(line) for line in self.measure("--json", *options, code=code).stdout.splitlines()]

    def file(self, name, text):
        (self.place / name).write_text(text)
        return self.place / name

    def scene(self, *marks):
        """A scene of 20 °C and a little more in each row, with marks (x, y, °C)."""
        pixels = [29315 + 5 * (i // WIDTH) for i in range(WIDTH * HEIGHT)]
        for x, y, celsius in marks:
            pixels[y * WIDTH + x] = round((celsius + 273.15) * 100)
        file = self.place / "scene.pgm"
        file.write_bytes(b"P5\n160 120\n65535\n" + struct.pack(f">{len(pixels)}H", *pixels))
        return file, pixels


class Simulated(Place):
    def testReadsEveryPlaceWhereItIs(self):
        scene, _ = self.scene((30, 40, 90), (35, 44, -5), (100, 20, 140), (5, 110, -15))
        got = self.found("--scene", scene, "--spot", "30,40", "--spot", "35,44", "--hottest", "--coldest",
                         "--area", "50,60,25,35", "--area", "0,0,9,9")
        self.assertEqual([(f["what"], f.get("number")) for f in got],
                         [("spot", 1), ("spot", 2), ("hottest", None), ("coldest", None), ("area", 1),
                          ("area", 2)])
        area, flat = got[4], got[5]
        self.assertEqual(area["place"], [25, 35, 50, 60])
        for value, x, y, truth in ((got[0], 30, 40, 90), (got[1], 35, 44, -5), (got[2], 100, 20, 140),
                                   (got[3], 5, 110, -15), (area["max"], 30, 40, 90), (area["min"], 35, 44, -5)):
            self.assertEqual((value["x"], value["y"], value["status"]), (x, y, "OK"))
            self.assertAlmostEqual(value["temperature"], truth, delta=0.2)
        self.assertAlmostEqual(flat["mean"]["temperature"], 20.225, delta=0.15)

    def testALineIsEveryPixelOfTheFrameOnIt(self):
        frame = self.place / "frame.csv"
        lines = {(0, 0, 5, 2): [(0, 0), (1, 0), (2, 1), (3, 1), (4, 2), (5, 2)],
                 (7, 9, 7, 6): [(7, 9), (7, 8), (7, 7), (7, 6)],
                 (12, 4, 9, 10): [(12, 4), (12, 5), (11, 6), (10, 7), (10, 8), (9, 9), (9, 10)],
                 (3, 3, 3, 3): [(3, 3)]}
        options = [word for line in lines for word in ("--line", ",".join(map(str, line)))]
        got = self.found("--scene", "gradient:0:100", "--size", "160x120", "--frame", frame, *options)
        cells = [row.split(",") for row in frame.read_text().splitlines()]
        self.assertEqual((len(cells), {len(row) for row in cells}), (HEIGHT, {WIDTH}))
        for finding, (line, pixels) in zip(got, lines.items()):
            self.assertEqual(finding["place"], list(line))
            profile = [(p["x"], p["y"]) for p in finding["profile"]]
            # Where a line passes midway between two pixels, either is right.
            self.assertEqual((len(profile), profile[0], profile[-1]), (len(pixels), pixels[0], pixels[-1]))
            for (x, y), (u, v), p in zip(profile, pixels, finding["profile"]):
                self.assertLessEqual(abs(x - u) + abs(y - v), 1)
                self.assertAlmostEqual(p["temperature"], float(cells[y][x]), delta=0.0051)
                self.assertAlmostEqual(p["temperature"], 100 * x / 159, delta=0.2)

    def testFramesHoldWhatTheCameraSees(self):
        scene, pixels = self.scene((8, 9, 120), (0, 0, -10))
        names = [self.place / ("frame." + ending) for ending in ("pgm", "csv", "png")]
        drawn = run("measure", "--scene", scene, "--frame", names[2])
        draws = "this build has no pictures" not in drawn.stderr
        self.assertEqual(drawn.returncode, 0 if draws else 2)
        files = [word for name in names[:3 if draws else 2] for word in ("--frame", name)]
        done = self.measure("--scene", scene, *files)
        self.assertIn("celsius = value / 100 - 273.15", done.stderr)
        comment, pgm = words(names[0])
        text, png = greyscale(names[2]) if draws else (comment, pgm)
        for note in (comment, text):
            self.assertIn("hundredths of a kelvin: celsius = value / 100 - 273.15", note)
            self.assertIn("0 of 19200 pixels are not OK", note)
        self.assertEqual(pgm, png)
        self.assertLess(max(abs(a - b) for a, b in zip(pgm, pixels)), 20)
        cells = names[1].read_text().replace("\n", ",").split(",")[:-1]
        self.assertLess(max(abs(float(c) - w / 100 + 273.15) for c, w in zip(cells, pgm)), 0.0101)
        # What was written is a scene again.
        again = self.found("--scene", names[0], "--spot", "8,9")
        self.assertAlmostEqual(again[0]["temperature"], 120, delta=0.4)
        for scale, low, high in (("decikelvin", 3926, 3936), ("counts", 42000, 52000)):
            self.measure("--scene", scene, "--scale", scale, *files)
            self.assertTrue(low < words(names[0])[1][9 * WIDTH + 8] < high, scale)
        self.assertEqual(names[1].read_text().split(",")[0], str(words(names[0])[1][0]))

    def testWhatIsNotOkIsMarked(self):
        scene, _ = self.scene((0, 0, -40), (1, 0, -21), (2, 0, 151), (3, 0, 160))
        frame = self.place / "f.csv"
        got = self.found("--scene", scene, "--range", "0", "--line", "0,0,4,0", "--frame", frame)
        self.assertEqual([p["status"] for p in got[0]["profile"]], ["L", "LE", "HE", "H", "OK"])
        self.assertEqual(got[0]["profile"][3]["temperature"], 150)
        self.assertEqual(frame.read_text().split(",")[:4], ["L", "LE", "HE", "H"])
        self.assertEqual(got[1]["notOk"], 4)
        self.assertAlmostEqual(got[1]["max"]["temperature"], 26, delta=0.2)  # of those that are OK
        hot = self.measure("--scene", "uniform:390", "--size", "160x120", "--range", "1", "--frame",
                           self.place / "hot.pgm")
        self.assertIn("19200 pixels of reading 1 are beyond the scale's end", hot.stderr)
        self.assertEqual(set(words(self.place / "hot.pgm")[1]), {65535})

    def testParametersAreTheSettingsOrTheOptions(self):
        camera = self.place / "camera"
        self.assertEqual(run("sim", "camera", camera).returncode, 0)
        setting = camera / "Parameter/Setting"
        setting.write_text(setting.read_text().replace("Emiss=0.95", "Emiss=0.5"))
        spot = ("--scene", "uniform:80", "--spot", "9,9")
        for options, expected in (([], 80), (["--offset", "5"], 85), (["--emissivity", "0.7"], 80),
                                  (["--directory", camera], 80), (["--range", "1"], 80),
                                  (["--directory", camera, "--range", "1", "--lens", "1"], 80),
                                  (["--distance", "50", "--air", "35", "--reflected", "60", "--emissivity", "0.6",
                                    "--humidity", "0.9"], 80)):
            self.assertAlmostEqual(self.found(*spot, *options)[0]["temperature"], expected, delta=0.35,
                                   msg=options)
        # The count tells what the camera saw: less of the object at a lower emissivity.
        ads = [self.found(*spot, *o)[0]["ad"] for o in ([], ["--directory", camera], ["--emissivity", "0.5"])]
        self.assertLess(ads[1], ads[0] - 1000)
        self.assertEqual(ads[1], ads[2])

    def testTimesGoOnAndCarryTheOffset(self):
        rows = list(csv.DictReader(io.StringIO(self.measure(
            "--every", "2.5", "--count", "4", "--csv", env={"TZ": "XYZ-05:30"}).stdout)))
        self.assertEqual(list(rows[0]), ["time", "cameraTime", "reading", "what", "number", "x", "y", "ad",
                                         "status", "temperature"])
        self.assertEqual([(r["reading"], r["cameraTime"]) for r in rows if r["what"] == "spot"],
                         [("1", "1.540"), ("2", "4.040"), ("3", "6.540"), ("4", "9.040")])
        self.assertRegex(rows[0]["time"], r"\A\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}\+05:30\Z")
        self.assertRegex(self.measure(env={"TZ": "UTC"}).stdout, r"\A\S+\.\d{3}\+00:00  camera 1\.540 s\n")

    def testEveryReadingIsOfAnotherFrame(self):
        ads = [f["ad"] for f in self.found("--noise", "80mK", "--every", "1", "--count", "50", "--spot", "5,5")]
        mean = sum(ads) / 50
        deviation = (sum((ad - mean)**2 for ad in ads) / 49)**0.5
        self.assertTrue(5 < deviation < 12, ads)  # 8 AD

    def testReadingsStayRightWhileTheCameraWarmsUp(self):
        got = self.found("--scene", "uniform:90", "--spot", "9,9", "--warm-up", "20:45", "--every", "60",
                         "--count", "30")
        self.assertEqual(len(got), 30)
        for reading in got:
            self.assertAlmostEqual(reading["temperature"], 90, delta=0.3)

    def testFramesOfASeriesAreNumbered(self):
        for name, expected in (("a.csv", ["a-0001.csv", "a-0002.csv"]), ("b%d.csv", ["b1.csv", "b2.csv"]),
                               ("c%03d-%d.csv", ["c001-%d.csv", "c002-%d.csv"])):
            before = set(os.listdir(self.place))
            self.measure("--size", "160x120", "--every", "1", "--count", "2", "--frame", self.place / name)
            self.assertEqual(sorted(set(os.listdir(self.place)) - before), expected)

    def testACameraThatGoesAwayIsAnErrorAndTriedAgain(self):
        once = self.measure("--scenario", self.file("s", "at 00:00:01 device gone\n"), code=2)
        self.assertEqual(once.stdout, "")
        self.assertIn("irmcore: the camera went away", once.stderr)
        done = self.measure("--scenario", self.file("s", GONE), "--every", "1", "--count", "9", "--spot",
                            "5,5", "--csv", code=2)
        numbers = [int(r["reading"]) for r in csv.DictReader(io.StringIO(done.stdout))]
        # Readings at 1.5, 2.5, ... s; from 7.5 s on a start-up takes 1.5 s.
        self.assertEqual(numbers, [1, 2, 7, 8, 9])
        self.assertEqual(done.stderr.count("irmcore: the camera went away"), 1)
        self.assertEqual(done.stderr.count("irmcore: the camera is back"), 1)

    def testTransfersThatFailGiveNoReading(self):
        # Every transfer of the start-up and of one reading in turn: the reading is right, or there is none.
        scene, _ = self.scene((30, 40, 90))
        lost = 0
        for when, nth in [(second, n) for second in (0, 1, 2) for n in range(1, 41)]:
            script = self.file("s", f"at 00:00:0{when} transfer fail {nth} EIO\n")
            done = run("measure", "--scene", scene, "--scenario", script, "--every", "1", "--count", "3",
                       "--json", "--spot", "30,40", "--area", "20,30,40,50", "--line", "30,40,30,40")
            lines = [json.loads(line) for line in done.stdout.splitlines()]
            self.assertEqual(done.returncode, 0 if len(lines) == 9 else 2, (when, nth))
            self.assertIn(len(lines), (0, 6, 9), (when, nth))
            lost += len(lines) < 9
            for line in lines:
                value = line["profile"][0] if "profile" in line else line.get("max", line)
                self.assertEqual((value["x"], value["y"]), (30, 40), (when, nth))
                self.assertAlmostEqual(value["temperature"], 90, delta=0.2, msg=(when, nth))
        self.assertGreater(lost, 30)

    def testWhatCannotMeasureIsExit2(self):
        empty = self.place / "empty"
        empty.mkdir()
        for options, text in ((["--directory", empty], "no usable calibration table"),
                              (["--frame", "/nowhere/x.pgm"], "cannot write /nowhere/x.pgm"),
                              (["--scenario", self.file("s", "at 00:00:00 core silent\n")], "core does not answer"),
                              (["--scenario", self.file("t", "at 00:00:00 device gone\n")], "no camera")):
            done = self.measure(*options, code=2)
            self.assertEqual(done.stdout, "", options)
            self.assertIn(text, done.stderr)

    def testWrongUsageIsExit3(self):
        spots = [word for i in range(13) for word in ("--spot", f"{i},0")]
        for options in (["word"], ["--spot", "1"], ["--spot", "384,0"], ["--spot", "-1,0"], ["--spot", "1,2,3"],
                        ["--area", "1,2,3"], ["--line", "0,0,0,288"], ["--spot", "99999999999,1"], spots,
                        ["--count", "3"], ["--every", "1", "--count", "0"], ["--every", "0"], ["--every", "nan"],
                        ["--frame", "x.gif"], ["--scale", "mm"], ["--json", "--csv"], ["--real", "--noise", "2AD"],
                        ["--real", "--scenario", "x"], ["--emissivity", "2"], ["--air", "50"], ["--range", "2"],
                        ["--lens", "3"], ["--directory", "/nowhere"], ["--size", "1x1"]):
            done = self.measure(*options, code=3)
            self.assertEqual(done.stdout, "")
            self.assertRegex(done.stderr, r"\Airmcore: [^\n]+\n\Z", options)

    def testAnInterruptionEndsBetweenTwoReadings(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            with subprocess.Popen([*PROGRAM, "measure", "--every", "0.05", "--clock", "wall", "--csv", "--spot",
                                   "1,1", "--spot", "2,2"], stdout=subprocess.PIPE, text=True) as process:
                first = [process.stdout.readline() for _ in range(4)]
                process.send_signal(number)
                rest = process.stdout.read()
                self.assertEqual(process.wait(timeout=60), 0)
            rows = list(csv.DictReader(io.StringIO("".join(first) + rest)))
            self.assertEqual(len(rows) % 2, 0)
            self.assertTrue(rest == "" or rest.endswith("\n"))
            self.assertEqual([r["reading"] for r in rows], [str(i // 2 + 1) for i in range(len(rows))])


class OnDevices(Place):
    """`--real`, where the devices are those of `irmcore sim run`."""

    def real(self, *options, camera=(), code=0):
        done = run("sim", "run", "--size", "160x120", *camera, "--", PROGRAM[-1], "measure", "--real",
                   "--size", "160x120", *options)
        self.assertEqual(done.returncode, code, done.stderr)
        return done

    def testMeasuresAsWithTheSimulatedOne(self):
        frame = self.place / "f.pgm"
        done = self.real("--json", "--spot", "9,9", "--emissivity", "0.6", "--frame", frame,
                         camera=("--scene", "uniform:60", "--emissivity", "0.6"))
        spot = json.loads(done.stdout.splitlines()[0])
        self.assertNotIn("cameraTime", spot)
        self.assertAlmostEqual(spot["temperature"], 60, delta=0.2)
        self.assertAlmostEqual(words(frame)[1][0], 33315, delta=20)
        # The same object taken for one of 0.95: 0.6 of what it has more than its surroundings.
        wrong = json.loads(self.real("--json", "--spot", "9,9", "--emissivity", "0.95", camera=(
            "--scene", "uniform:60", "--emissivity", "0.6")).stdout)
        self.assertAlmostEqual(wrong["temperature"], 48.41, delta=0.2)

    def testSwitchesTheRangeAndGivesTheShutterBack(self):
        log = self.place / "log"
        done = run("trace", "--scene", "uniform:300", "--output", log, "--", PROGRAM[-1], "measure", "--real",
                   "--range", "1", "--spot", "9,9", "--json")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertAlmostEqual(json.loads(done.stdout)["temperature"], 300, delta=0.3)
        shutters = [line for line in log.read_text().splitlines() if "autoShutter" in line
                    or "automatic shutter" in line.lower()]
        self.assertGreaterEqual(len(shutters), 2, log.read_text()[-2000:])

    def testAMissingCameraIsAnErrorAndOneThatReturnsIsFound(self):
        done = run("measure", "--real", "--directory", self.place)
        if not os.path.exists("/dev/DM365-FPGA"):
            self.assertEqual((done.returncode, done.stdout), (2, ""))
            self.assertIn("irmcore: no camera: /dev/DM365-FPGA: No such file", done.stderr)
        # Away from 4 to 5.5 s of the wall clock, a second each reading: seconds to start, and to come back.
        script = self.file("s", "at 00:00:16 device gone\nat 00:00:22 device back\n")
        done = self.real("--every", "1", "--count", "9", "--csv", "--spot", "5,5", code=2,
                         camera=("--scenario", script, "--clock", "wall:4"))
        numbers = [int(r["reading"]) for r in csv.DictReader(io.StringIO(done.stdout))]
        self.assertEqual((numbers[0], numbers[-1]), (1, 9))
        self.assertLess(len(numbers), 9)
        self.assertEqual(done.stderr.count("irmcore: the camera went away"), 1)


if __name__ == "__main__":
    unittest.main()
