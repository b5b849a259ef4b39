"""Runs `irmcore-view` as its users do, without a display. Arguments: the program, `irmcore`, then a test's name or
none."""

import configparser
import os
import pathlib
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unittest
import zlib

VIEW, COMMAND = sys.argv.pop(1), sys.argv.pop(1)
RECORDING = pathlib.Path(__file__).parent.parent / "data/bench160.irmrec"
SMALL = ["--size", "160x120"]
# What another program may have left there, besides what is right.
SETTINGS = """[General]
calibrates=false
marks=nonsense
range=1
tools=spot 1 10 20 10 20, spot 1 30 30 30 30, spot 2 400 20 400 20, line 3 0 0 159 119, circle 1 1 1 1 1
[parameters]
emissivity=0.5
distance=nan
offset=-2.5
[look]
palette=77
mode=2
"""


def environment(place):
    return {**os.environ, "QT_QPA_PLATFORM": "offscreen", "XDG_CONFIG_HOME": str(place),
            "XDG_RUNTIME_DIR": str(place)}


def start(place, *words, program=(VIEW,)):
    return subprocess.Popen([*program, *map(str, words)], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                            env=environment(place), cwd=place)


def finish(process):
    try:
        out, err = process.communicate(timeout=120)
    finally:
        process.kill()
    return process.returncode, out, err


def pixels(file):
    """Width and height of a PNG, and the bytes of its filtered rows."""
    data, at, packed = pathlib.Path(file).read_bytes(), 8, b""
    assert data[:8] == b"\x89PNG\r\n\x1a\n"
    while at < len(data):
        size = int.from_bytes(data[at:at + 4], "big")
        packed += data[at + 8:at + 8 + size] if data[at + 4:at + 8] == b"IDAT" else b""
        at += size + 12
    return *struct.unpack(">II", data[16:24]), zlib.decompress(packed)


class Place(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)
        self.conf = self.place / "irmcore/irmcore-view.conf"

    def view(self, *words):
        return finish(start(self.place, *words))

    def under_way(self, *words, program=(VIEW,), after=0.5):
        """Starts it, and waits until some time after it has entered the camera's directory."""
        process = start(self.place, *words, program=program)
        patience = time.monotonic() + 60
        while os.path.samefile(f"/proc/{process.pid}/cwd", self.place) and time.monotonic() < patience:
            time.sleep(0.05)
        time.sleep(after)
        return process

    def ended(self, number, *words, program=(VIEW,)):
        process = self.under_way(*words, program=program)
        process.send_signal(number)
        return finish(process)

    def settings(self):
        parser = configparser.ConfigParser(strict=False)
        parser.read(self.conf)
        return parser


class Program(Place):
    def testHelpAndVersionNeedNoDisplay(self):
        for word, text in (("--help", "--screenshot <file>"), ("--version", "irmcore-view ")):
            done = subprocess.run([VIEW, word], capture_output=True, text=True, timeout=60, env={
                **os.environ, "QT_QPA_PLATFORM": "none-such"})
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.assertIn(text, done.stdout)

    def testWrongUsageIsExit3(self):
        for words in (["word"], ["--bogus"], ["--recording", "/nowhere"], ["--recording", "/tmp"], ["--recording"],
                      ["--camera", "/nowhere"], ["--real", "--recording", RECORDING], ["--real", "--noise", "2AD"],
                      ["--recording", RECORDING, *SMALL], ["--range", "2"], ["--lens", "9"], ["--size", "1x1"],
                      ["--scene", "uniform:x"], ["--scenario", "/nowhere"], ["--screenshot"], ["--clock", "x"]):
            code, out, err = self.view(*words)
            self.assertEqual((code, out), (3, ""), words)
            self.assertRegex(err, r"\Airmcore-view: [^\n]+\n\Z", words)
        self.assertFalse(self.conf.exists())

    def testAPictureThatCannotBeTakenIsExit2(self):
        nothing = self.place / "nothing.irmrec"
        nothing.write_bytes(RECORDING.read_bytes()[:200])
        picture = self.place / "x.png"
        unwritable = start(self.place, *SMALL, "--screenshot", "/nowhere/x.png")
        broken_off = self.under_way(*SMALL, "--screenshot", picture)
        broken_off.send_signal(signal.SIGTERM)
        code, out, err = finish(unwritable)
        self.assertEqual((code, out), (2, ""))
        self.assertIn("irmcore-view: cannot write /nowhere/x.png", err)
        self.assertEqual(finish(broken_off)[:2], (2, ""))
        self.assertFalse(picture.exists())

    def testSignalsEndItAlsoWhileTheCoreIsSilent(self):
        silent = self.place / "silent"
        silent.write_text("at 00:00:00 core silent\n")
        for number, words in ((signal.SIGINT, []), (signal.SIGTERM, ["--scenario", silent]), (signal.SIGHUP, [])):
            process = self.under_way(*SMALL, *words, after=2.0)
            begun = time.monotonic()
            process.send_signal(number)
            self.assertEqual(finish(process)[0], 0, number)
            self.assertLess(time.monotonic() - begun, 18.0)  # a silent core is waited for 20 s
            self.assertTrue(self.conf.exists())
            self.conf.unlink()

    def testSettingsStayFromRunToRun(self):
        self.conf.parent.mkdir()
        self.conf.write_text(SETTINGS)
        self.assertEqual(self.ended(signal.SIGTERM, *SMALL)[0], 0)
        for run in (1, 2):
            kept = self.settings()
            for group, key, value in (("General", "calibrates", "false"), ("General", "range", "1"),
                                      ("parameters", "emissivity", "0.5"), ("parameters", "distance", "5"),
                                      ("parameters", "offset", "-2.5"), ("parameters", "humidity", "0.6"),
                                      ("look", "palette", "0"), ("look", "mode", "2"),
                                      ("General", "tools", "spot 1 10 20 10 20, line 3 0 0 159 119")):
                self.assertEqual(kept[group][key], value, (run, group, key))
            self.assertEqual(self.ended(signal.SIGTERM, *SMALL)[0], 0)
        # What is given counts, and is there the next time.
        self.assertEqual(self.ended(signal.SIGTERM, *SMALL, "--range", "0")[0], 0)
        self.assertEqual(self.settings()["General"]["range"], "0")

    def testFreshLeavesSettingsAlone(self):
        self.assertEqual(self.ended(signal.SIGTERM, *SMALL, "--fresh")[0], 0)
        self.assertFalse(self.conf.exists())
        self.conf.parent.mkdir(exist_ok=True)
        self.conf.write_text(SETTINGS)
        self.assertEqual(self.ended(signal.SIGTERM, *SMALL, "--fresh")[0], 0)
        self.assertEqual(self.conf.read_text(), SETTINGS)


class Pictures(Place):
    def testTheWindowIsDrawnWhateverItLooksAt(self):
        cameras = {"simulated": (["--scene", "gradient:10:60"], (VIEW,)),
                   "small": (SMALL, (VIEW,)),
                   "recorded": (["--recording", RECORDING], (VIEW,)),
                   "devices": (["--real", *SMALL], (COMMAND, "sim", "run", *SMALL, "--clock", "wall", "--", VIEW))}
        self.conf.parent.mkdir()
        self.conf.write_text(SETTINGS)
        # Each of them plots some seconds first.
        running = {name: start(self.place, *words, "--screenshot", self.place / name, program=program)
                   for name, (words, program) in cameras.items()}
        for name, process in running.items():
            code, out, err = finish(process)
            self.assertEqual((code, out), (0, ""), (name, err))
            self.assertNotIn("irmcore-view:", err, name)
        rows = {name: pixels(self.place / name) for name in cameras}
        for name, (width, height, raw) in rows.items():
            self.assertEqual((width, height), (1280, 800), name)
            self.assertEqual(len(raw) % height, 0, name)
            self.assertGreater(len(set(raw)), 200, name)
        self.assertEqual(len({raw for _, _, raw in rows.values()}), len(rows))
        self.assertEqual(self.conf.read_text(), SETTINGS)


class OnDevices(Place):
    def testTheCoreHasItsShutterBack(self):
        log = self.place / "log"
        tracing = start(self.place, "trace", *SMALL, "--clock", "wall", "--output", log, "--", VIEW, "--real", *SMALL,
                        program=(COMMAND,))
        def orders():
            lines = log.read_text().splitlines() if log.exists() else []
            return [line.split("autoShutter")[1].split(",")[0].split() for line in lines if "autoShutter  " in line
                    and " W " in line]

        patience = time.monotonic() + 60
        while not orders() and time.monotonic() < patience:
            time.sleep(0.2)
        tracing.send_signal(signal.SIGTERM)
        code, _, err = finish(tracing)
        self.assertEqual(code, 0, err)
        self.assertEqual(orders(), [["on", "0"], ["on", "1"]])


if __name__ == "__main__":
    unittest.main()
