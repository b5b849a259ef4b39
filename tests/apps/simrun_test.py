"""Runs hosts by `irmcore sim run`. Arguments: the command, the object that it preloads, a host without
the library and one with it (simrun_plainhost.cpp, simrun_libraryhost.cpp)."""

import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest

COMMAND, PRELOAD, PLAIN, LIBRARY = (sys.argv.pop(1) for _ in range(4))


def sanitizers():
    """The sanitizers' libraries that the object needs."""
    needed = subprocess.run(["ldd", PRELOAD], capture_output=True, text=True).stdout
    return re.findall(r"(\S*/lib[at]san\S*)", needed)


ENVIRONMENT = {k: v for k, v in os.environ.items() if k != "LD_PRELOAD"}
# The address sanitizer insists on being first in a process. The thread sanitizer must come after our calls:
# what runs within a call of its own it takes for the C library's, locks and all.
if any("libasan" in name for name in sanitizers()):
    ENVIRONMENT["LD_PRELOAD"] = ":".join(sanitizers())


class SimRun(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name).resolve()

    def run_(self, *words, **more):
        more = {"env": ENVIRONMENT, **more}
        return subprocess.run([COMMAND, "sim", "run", *map(str, words)], capture_output=True, text=True,
                              timeout=120, cwd=self.place, **more)

    def plain(self, *words, options=()):
        done = self.run_(*options, "--", PLAIN, *words)
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stdout.split("\n")[:-1]

    def script(self, *lines):
        path = self.place / "script"
        path.write_text("\n".join(lines))
        return path

    def testExitCodesAreTheHostsOrAShells(self):
        program = bytearray(pathlib.Path(PLAIN).read_bytes())
        offset, size = int.from_bytes(program[32:40], "little"), int.from_bytes(program[54:56], "little")
        for header in range(offset, offset + size * program[56], size):
            if program[header] == 3:  # PT_INTERP: without it the program is a static one
                program[header] = 0
        static, plainFile = self.place / "static", self.place / "file"
        static.write_bytes(program)
        static.chmod(0o755)
        plainFile.write_text("no program")
        hosts = [([PLAIN, "e", 0], 0), ([PLAIN, "e", 5], 5), ([PLAIN, "k", 15], 143),
                 (["/nowhere/host"], 127), (["no-such-host"], 127), ([""], 127),
                 ([plainFile], 126), ([self.place], 126)]
        if sys.maxsize > 2**32:
            hosts.append(([static], 2))
        if os.geteuid() == 0:
            other = self.place / "setuid"
            shutil.copy(PLAIN, other)
            os.chown(other, 1, 1)
            other.chmod(0o4755)
            if not sanitizers():
                hosts.append(([other], 0 if os.stat(other).st_uid == 0 else 2))
        for host, code in hosts:
            self.assertEqual(self.run_("--", *host).returncode, code, host)

    def testWrongUsageIsExit3AndNamesTheWord(self):
        for words, told in ((["--"], "HOST"), (["--clock", "moon", "x"], "'moon'"), (["--size", "1x1", "x"], "'1x1'"),
                            (["--scene", "uniform:x", "x"], "'x'"), (["--scene", "no.pgm", "x"], "'no.pgm'"),
                            (["--noise", "2K", "x"], "'2K'"), (["--warm-up", "1", "x"], "'1'"),
                            (["--port", "usb", "x"], "'usb'"), (["--lens", "7", "x"], "'7'"),
                            (["--camera", "nowhere", "x"], "'nowhere'"), (["--nonsense", "x"], "nonsense"),
                            (["--scenario", "none", "x"], "none: No such file")):
            done = self.run_(*words)
            self.assertEqual((done.returncode, done.stdout), (3, ""), words)
            self.assertIn(told, done.stderr)

    def testHostWorksInACameraDirectory(self):
        done = self.run_("--", PLAIN, "d")
        sample = done.stdout.strip()
        self.assertIn(sample, done.stderr)
        self.assertFalse(os.path.exists(sample))
        kept = self.run_("--keep", "--", PLAIN, "d").stdout.strip()
        self.assertTrue(os.path.exists(kept + "/etc/calc_len0_temp0.conf"))
        self.assertEqual(self.plain("d", options=["--camera", kept]), [kept])
        shutil.move(kept + "/etc", self.place)
        shutil.rmtree(kept)
        done = self.run_("--", PLAIN, "d")
        self.assertEqual((done.stdout.strip(), done.stderr), (str(self.place), ""))

    def testTheCameraIsTheHostsAloneWhateverItExecutes(self):
        wrapper = self.place / "wrapper"
        wrapper.write_text(f"#!/bin/sh\nexec '{PLAIN}' \"$@\"\n")
        wrapper.chmod(0o755)
        self.assertEqual(self.plain("r", 0x1C, "x", PLAIN, "r", 0x1C), ["6784", "6784"])
        self.assertEqual(self.run_("--", "./wrapper", "r", 0x1C).stdout, "6784\n")
        self.assertEqual(self.plain("c", PLAIN, "r", 0x1C), ["No such file or directory"])

    def testTheLibraryMeasuresUnchanged(self):
        for options in ([], ["--port", "pty"], ["--size", "160x120", "--noise", "50mK"],
                        ["--range", 1, "--lens", 1], ["--emissivity", 0.8, "--ambient", 10]):
            done = self.run_("--scene", "uniform:37", *options, "--", LIBRARY)
            self.assertEqual(done.returncode, 0, done.stderr)
            status, reading = done.stderr.splitlines()[-1].split()
            self.assertEqual(status, "OK")
            self.assertAlmostEqual(float(reading), 37, delta=0.3)

    def testSignalsReachTheHost(self):
        host = subprocess.Popen([COMMAND, "sim", "run", "--", PLAIN, "w"], stdout=subprocess.PIPE,
                                stderr=subprocess.DEVNULL, text=True, env=ENVIRONMENT)
        with host:
            self.assertEqual(host.stdout.readline(), "waiting\n")
            host.send_signal(signal.SIGTERM)
            self.assertEqual(host.wait(60), 7)

    def testSameSeedAndScriptGiveTheSameBytes(self):
        script = self.script("at 00:00:00.5 target cup at 40 40 size 20 20 temp 60",
                             "after 0.5 target cup move 300 200 over 1.5", "after 0 sensor 28")
        digest = lambda *options: self.plain("f", 70, options=["--noise", 3, *options])
        once = digest("--scenario", script)
        self.assertEqual(digest("--scenario", script), once)
        self.assertNotEqual(digest("--scenario", script, "--seed", 2), once)
        self.assertNotEqual(digest(), once)

    def testTheScriptIsPlayedOnTheCamerasClock(self):
        script = self.script("# a cup on its way", "at 00:00:01 target cup at 40 40 size 1 1 temp 60 # hot",
                             "after 1 target cup move 140 40 over 1", "at 00:00:04 device gone",
                             "after 0.5\tdevice back\r", "after 0.5 transfer fail 2 EBUSY")
        maximum = 0x50  # its column
        done = self.plain("r", maximum, "s", 1, "r", maximum, "s", 1.5, "r", maximum, "s", 1, "r", maximum,
                          "s", 0.5, "r", maximum, "s", 0.5, "r", maximum, "s", 0.6, "r", maximum, "r", maximum,
                          options=["--scene", "uniform:20", "--scenario", script])
        self.assertEqual(done, ["0", "40", "90", "140", "No such device", "140", "140",
                                "Device or resource busy"])

    def testErrorsInAScriptNameFileLineAndWord(self):
        for line, told in (("targt", "'targt' is neither"), ("at 00:10:30 targt", "'targt' is no command"),
                           ("at 10 inside 3", "'10' is no time"), ("at 00:60:00 inside 3", "'00:60:00' is no time"),
                           ("after x inside 3", "'x' is no number"), ("after 1", "missing after '1'"),
                           ("after 1 core slient", "'slient'"), ("after 1 core late", "missing after 'late'"),
                           ("after 1 core late 5 6", "'6' is not"), ("after 1 inside 900", "'900' is no number"),
                           ("after 1 lens 1.5", "'1.5' is no whole"), ("after 1 target cup move 1 2", "'cup'"),
                           ("after 1 target a at 1 2 size 0 4", "'0' is no"), ("after 1 scene no.pgm", "'no.pgm'"),
                           ("after 1 transfer fail 2 EFOO", "'EFOO'"), ("after 1 scene uniform", "'uniform'"),
                           ("at 00:00:04 inside 3", "before the line above")):
            script = self.script("at 00:00:05 freeze on", "", line)
            done = self.run_("--scenario", script, "--", PLAIN)
            self.assertEqual(done.returncode, 3, line)
            self.assertIn(f"{script}:3: ", done.stderr)
            self.assertIn(told, done.stderr)

    def testThePreloadedObjectShowsWhatItInterposesAndNothingElse(self):
        if sanitizers() or shutil.which("nm") is None:
            self.skipTest("a sanitizer brings names of its own, or there is no nm")
        names = subprocess.run(["nm", "-D", "--defined-only", PRELOAD], capture_output=True, text=True).stdout
        self.assertEqual({line.split()[-1] for line in names.splitlines()},
                         {"open", "open64", "openat", "openat64", "__open_2", "__open64_2", "__openat_2",
                          "__openat64_2", "lseek", "lseek64", "read", "__read_chk", "write", "close",
                          "tcgetattr", "tcsetattr", "tcflush", "usleep"})
        libraries = subprocess.run(["ldd", PRELOAD], capture_output=True, text=True).stdout
        self.assertEqual(set(re.findall(r"(lib[\w+]+)\.so", libraries)), {"libstdc++", "libm", "libgcc_s", "libc"})

    def testAnotherPreloadIsKept(self):
        if sanitizers():
            self.skipTest("the interpreter would need the sanitizer")
        done = self.run_("--", sys.executable, "-c", "import os; print(os.environ['LD_PRELOAD'])",
                         env={**ENVIRONMENT, "LD_PRELOAD": "libm.so.6"})
        self.assertEqual(done.stdout.strip(), "libm.so.6:" + os.path.realpath(PRELOAD))


if __name__ == "__main__":
    unittest.main()
