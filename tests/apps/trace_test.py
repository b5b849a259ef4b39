"""Runs `irmcore trace` as its users do. Arguments: the program, the plain host."""

import json
import os
import re
import subprocess
import sys
import tempfile
import unittest

PROGRAM, HOST = sys.argv.pop(1), sys.argv.pop(1)


def trace(*words):
    return subprocess.run([PROGRAM, "trace", *words], capture_output=True, text=True, timeout=100)


# A host that asks for the VSK on the port, as a terminal without lines.
ASKS = """
import os, termios
port = os.open('/dev/ttyS1', os.O_RDWR)
attributes = termios.tcgetattr(port)
attributes[:4] = [0, 0, attributes[2], 0]
attributes[6][termios.VMIN], attributes[6][termios.VTIME] = 0, 100
termios.tcsetattr(port, termios.TCSANOW, attributes)
os.write(port, bytes.fromhex('ffa57700775a'))
answer = b''
while len(answer) < 9:
    answer += os.read(port, 64)
print(answer.hex())
"""


class Trace(unittest.TestCase):
    def testTransfersAreLinesOnStandardErrorAndTheHostKeepsItsOwn(self):
        done = trace("--sim", "--inside", "30", "--", HOST, "r", "0x1c", "r", "0x62", "e", "7")
        self.assertEqual((done.returncode, done.stdout), (7, "7680\n0\n"))
        lines = [re.sub(" +", " ", line) for line in done.stderr.splitlines()[-3:]]
        self.assertRegex(lines[0], r"^ 0.000000 - fpga open descriptor \d+$")
        self.assertEqual(lines[1:], [" 0.000000 R 0x001c shutterTemp 30 °C ok", " 0.000000 R 0x0062 level 0 AD ok"])

    def testJsonIsCompleteWhenTheHostIsKilled(self):
        with tempfile.TemporaryDirectory() as place:
            name = os.path.join(place, "log")
            done = trace("--json", "--output", name, "--registers", "frame", "--", HOST, "f", "3", "k", "9")
            self.assertEqual(done.returncode, 137)
            with open(name, encoding="utf-8") as log:
                lines = [json.loads(line) for line in log]
        self.assertEqual([line["values"][0]["value"] for line in lines], [1, 2, 3, 4, 5, 6, 7, 8] * 3)
        self.assertEqual({(line["name"], line["length"], line["result"]) for line in lines}, {("frame", 27648, 27648)})
        self.assertEqual(lines[-1]["time"], 0.12)

    def testAPtysTransfersAreSeenToo(self):
        done = trace("--port", "pty", "--only", "port", "--json", "--", sys.executable, "-c", ASKS)
        self.assertEqual((done.returncode, done.stdout), (0, "7fa50077025307215a\n"), done.stderr)
        lines = [json.loads(line) for line in done.stderr.splitlines() if line.startswith("{")]
        calls = [line["call"] for line in lines if line["call"] != "getAttributes"]
        self.assertEqual(calls[:4], ["open", "setAttributes", "write", "read"])
        self.assertIn({"name": "vsk", "value": 1875}, lines[-1]["values"])

    def testALogThatEndsBeforeTheHostIsSaidToEnd(self):
        done = trace("--", sys.executable, "-c", "import os, time; os.closerange(3, 1000); time.sleep(2)")
        self.assertEqual(done.returncode, 0)
        self.assertIn("the host has closed the descriptor that its transfers come by", done.stderr)

    @unittest.skipIf(os.path.exists("/dev/DM365-FPGA"), "there is a camera")
    def testWithoutADeviceTheRealOneIsSeenToBeMissing(self):
        done = trace("--real", "--", HOST, "r", "0x1c")
        self.assertEqual(done.stdout, "No such file or directory\n")
        self.assertRegex(done.stderr, r"on the real devices .*\n +0\.000000  -  fpga +open +ENOENT\n$")

    def testWrongUsageAndWrongFilesAreToldApart(self):
        for code, words in ((3, ["--only", "x", "--", HOST]), (3, ["--registers", "pointAd[17]", "--", HOST]),
                            (3, ["--real", "--sim", "--", HOST]), (3, []), (2, ["--output", "/no/where", "--", HOST]),
                            (2, ["--output", "/dev/full", "--", HOST, "r", "0"]), (127, ["--", "/no/where"])):
            self.assertEqual(trace(*words).returncode, code, words)


if __name__ == "__main__":
    unittest.main()
