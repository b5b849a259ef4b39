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
NEEDED = subprocess.run(["ldd", PRELOAD], capture_output=True, text=True).stdout
SANITIZERS = re.findall(r"(\S*/lib[at]san\S*)", NEEDED)
ENVIRONMENT = {k: v for k, v in os.environ.items() if k != "LD_PRELOAD"}
# The address sanitizer insists on being first in a process. The thread sanitizer must come after our calls:
# what runs within a call of its own it takes for the C library's, locks and all.
if any("libasan" in name for name in SANITIZERS):
    ENVIRONMENT["LD_PRELOAD"] = ":".join(SANITIZERS)


class SimRun(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory()
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name).resolve()

    def run_(self, *words, variables=(), **more):
        return subprocess.run([COMMAND, "sim", "run", *map(str, words)], capture_output=True, text=True, timeout=120,
                              cwd=self.place, env={**ENVIRONMENT, **dict(variables)}, **more)

    def plain(self, *words, options=()):
        done = self.run_(*options, "--", PLAIN, *words)
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stdout.split("\n")[:-1]

    def file(self, *lines, mode=0o755):
        path = self.place / "file"
        path.write_text("\n".join(lines))
        path.chmod(mode)
        return path

    def testForksAndDescriptorsClosedBehindItsBack(self):
        self.assertEqual(self.plain("p", 100), ["100"])
        self.assertRegex(self.plain("c", 0)[0], "^[0-9]+ irmcore-plainho$")

    def testExitCodesAreTheHostsOrAShells(self):
        program = bytearray(pathlib.Path(PLAIN).read_bytes())
        program[18] ^= 0xFF  # the machine
        (self.place / "other").write_bytes(program)
        (self.place / "other").chmod(0o755)
        hosts = [([PLAIN, "e", 0], 0), ([PLAIN, "e", 5], 5), ([PLAIN, "k", 15], 143), (["/nowhere/host"], 127),
                 (["no-such-host"], 127), ([""], 127), ([self.file("text", mode=0o644)], 126), ([self.place], 126),
                 (["./other"], 2)]
        if os.path.exists("/sbin/ldconfig"):
            hosts.append((["/sbin/ldconfig", "-p"], 2))  # is linked statically everywhere
        if os.geteuid() == 0 and not SANITIZERS:
            shutil.copy(PLAIN, self.place / "setuid")
            os.chown(self.place / "setuid", 1, 1)
            os.chmod(self.place / "setuid", 0o4755)
            hosts.append((["./setuid"], 2))
        for host, code in hosts:
            self.assertEqual(self.run_("--", *host).returncode, code, host)
        ignored = lambda: signal.signal(signal.SIGCHLD, signal.SIG_IGN)
        self.assertEqual(self.run_("--", PLAIN, "e", 5, preexec_fn=ignored).returncode, 5)
        lost = self.run_("--", PLAIN, "e", 5, variables={"IRMCORE_SIM": "nowhere.so"})
        self.assertEqual((lost.returncode, lost.stderr), (2, f"irmcore: {self.place}/nowhere.so cannot be read\n"))

    def testHostWorksInACameraDirectory(self):
        done = self.run_("--", "sh", "-c", "pwd; mkdir deep; chmod 0 deep")
        sample = done.stdout.strip()
        self.assertIn(sample, done.stderr)
        self.assertFalse(os.path.exists(sample))
        kept = self.run_("--keep", "--", "pwd").stdout.strip()
        self.assertTrue(os.path.exists(kept + "/etc/calc_len0_temp0.conf"))
        self.assertEqual(self.run_("--camera", kept, "--", "pwd").stdout, kept + "\n")
        shutil.move(kept + "/etc", self.place)
        shutil.rmtree(kept)
        done = self.run_("--", "pwd")
        self.assertEqual((done.stdout.strip(), done.stderr), (str(self.place), ""))

    def testTheCameraIsTheHostsAloneWhateverItExecutes(self):
        wrapper = self.file("#!/bin/sh", f"'{PLAIN}' \"$@\"", f"exec '{PLAIN}' \"$@\"")
        self.assertEqual(self.run_("--", f"./{wrapper.name}", "r", 0x1C).stdout, "No such file or directory\n6784\n")

    def testTheLibraryMeasuresUnchanged(self):
        for options in ([], ["--port", "pty"], ["--size", "160x120", "--noise", "50mK"],
                        ["--range", 1, "--lens", 1], ["--emissivity", 0.8, "--ambient", 10]):
            done = self.run_("--scene", "uniform:37", *options, "--", LIBRARY)
            self.assertEqual(done.returncode, 0, done.stderr)
            status, reading = done.stderr.splitlines()[-1].split()
            self.assertEqual(status, "OK")
            self.assertAlmostEqual(float(reading), 37, delta=0.3)

    def testSignalsReachTheHost(self):
        with subprocess.Popen([COMMAND, "sim", "run", "--", PLAIN, "w", "0"], stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, text=True, env=ENVIRONMENT) as host:
            self.assertEqual(host.stdout.readline(), "waiting\n")
            host.send_signal(signal.SIGTERM)
            self.assertEqual(host.wait(60), 7)

    def testTheScriptIsPlayedOnTheCamerasClockTheSameEveryTime(self):
        script = self.file("# a cup on its way", "at 00:00:01 target cup at 40 40 size 1 1 temp 60 # hot",
                           "after 1 target cup move 140 40 over 1", "at 00:00:04 device gone",
                           "after 0.5\tdevice back\r", "after 0.5 transfer fail 2 EBUSY")
        maximum = 0x50  # its column
        done = self.plain("r", maximum, "s", 1, "r", maximum, "s", 1.5, "r", maximum, "s", 1, "r", maximum,
                          "s", 0.5, "r", maximum, "s", 0.5, "r", maximum, "s", 0.6, "r", maximum, "r", maximum,
                          options=["--scene", "uniform:20", "--scenario", script])
        self.assertEqual(done, ["0", "40", "90", "140", "No such device", "140", "140", "Device or resource busy"])
        digest = lambda *options: self.plain("f", 70, options=["--noise", 3, *options])
        once = digest("--scenario", script)
        self.assertEqual(digest("--scenario", script), once)
        self.assertNotEqual(digest("--scenario", script, "--seed", 2), once)
        self.assertNotEqual(digest(), once)

    def testEveryEventIsSeenFromItsTimeOn(self):
        vsk, maximum, column, gone = "7fa50077025307215a", 0x40, 0x50, "No such device"
        for event, look, before, after in (
                ("scene gradient 0 60", ("r", column), 0, 383), ("target a at 7 5 size 1 1 temp 60", ("r", column), 0, 7),
                ("inside 30", ("r", 0x1C), 6784, 7680), ("inside 30", ("r", 0x1E), 6784, 7680),
                ("sensor 28", ("r", 0x1E), 6784, 7168), ("sensor 28", ("r", 0x1C), 6784, 6784),
                ("shutter 25", ("r", 0x1C), 6784, 6400), ("warm-up 45 0", ("r", 0x1E), 6784, 11520),
                ("ambient 10", ("r", 0x8C), 6466, 4966), ("lens 1", ("r", 0x0F), 131, 133), ("freeze on", ("r", 0x14), 0, 1),
                ("range 1", ("s", 0.4, "r", maximum), 33826, 33066), ("core silent", ("q", 0), vsk, ""),
                ("core late 0.5", ("q", 0), vsk, ""), ("core garbled 1", ("q", 0), vsk, vsk.replace("a5", "5a", 1)),
                ("port gone", ("q", 0), vsk, "Input/output error"), ("device gone", ("r", maximum), 33826, gone),
                ("transfer fail 1 EAGAIN from-then-on", ("r", maximum), 33826, "Resource temporarily unavailable")):
            script = self.file("at 00:00:01 " + event)
            for seconds, seen in ((0.5, before), (1, after)):
                done = self.plain("s", seconds, *look, options=["--scene", "uniform:37", "--scenario", script])
                self.assertEqual(done, [str(seen)], event)

    def testWrongUsageAndScriptsAreExit3AndNameTheWord(self):
        cases = [(words.split(), told) for words, told in (
            ("--", "HOST"), ("--clock moon x", "'moon'"), ("--size 1x1 x", "'1x1'"), ("--scene uniform:x x", "'x'"),
            ("--scene no.pgm x", "'no.pgm'"), ("--noise 2K x", "'2K'"), ("--warm-up 1 x", "'1'"),
            ("--port usb x", "'usb'"), ("--lens 7 x", "'7'"), ("--camera nowhere x", "'nowhere'"),
            ("--nonsense x", "nonsense"), ("--scenario none x", "none: No such file"))]
        for number, (line, told) in enumerate((
                ("targt", "'targt' is neither"), ("at 00:10:30 targt", "'targt' is no command"),
                ("at 10 inside 3", "'10' is no time"), ("at 00:60:00 inside 3", "'00:60:00' is no time"),
                ("after x inside 3", "'x' is no number"), ("after 1", "missing after '1'"),
                ("after 1 core slient", "'slient'"), ("after 1 core late", "missing after 'late'"),
                ("after 1 core late 5 6", "'6' is not"), ("after 1 inside 900", "'900' is no number"),
                ("after 1 lens 1.5", "'1.5' is no whole"), ("after 1 target cup move 1 2", "'cup'"),
                ("after 1 target a at 1 2 size 0 4", "'0' is no"), ("after 1 scene no.pgm", "'no.pgm'"),
                ("after 1 transfer fail 2 EFOO", "'EFOO'"), ("after 1 scene uniform", "'uniform'"),
                ("after 36000000 inside 3", "'36000000' leads beyond"), ("a\0\x1b[", "'a??[' is neither"),
                ("at 00:00:04 inside 3", "'00:00:04' is before the line above"))):
            (self.place / f"script{number}").write_text(f"at 00:00:05 freeze on\n\n{line}")
            cases.append((["--scenario", f"script{number}", PLAIN], f"script{number}:3: {told}"))
        for words, told in cases:
            done = self.run_(*words)
            self.assertEqual((done.returncode, done.stdout), (3, ""), words)
            self.assertRegex(done.stderr, re.escape(told).replace(":3:\\ ", ":3: .*"))

    @unittest.skipIf(SANITIZERS or shutil.which("nm") is None, "a sanitizer brings names of its own, or there is no nm")
    def testThePreloadedObjectIsNoMoreThanItsCallsBesideOthers(self):
        names = subprocess.run(["nm", "-D", "--defined-only", PRELOAD], capture_output=True, text=True).stdout
        self.assertEqual(" ".join(sorted(line.split()[-1] for line in names.splitlines())),
                         "__open64_2 __open_2 __openat64_2 __openat_2 __read_chk close lseek lseek64 open open64 "
                         "openat openat64 read tcflush tcgetattr tcsetattr usleep write")
        self.assertEqual(set(re.findall(r"(lib[\w+]+)\.so", NEEDED)), {"libstdc++", "libm", "libgcc_s", "libc"})
        done = self.run_("--", "sh", "-c", "echo $LD_PRELOAD", variables={"LD_PRELOAD": "libm.so.6"})
        self.assertEqual(done.stdout.strip(), "libm.so.6:" + os.path.realpath(PRELOAD))


if __name__ == "__main__":
    unittest.main()
