"""Tests private-gateway (the launcher), and the simulator's command line and console: gateway_test.py LAUNCHER GATEWAY"""
import os
import pty
import re
import select
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

from shared import wait_for, write_program

LAUNCHER, GATEWAY = (os.path.realpath(sys.argv.pop(1)) for _ in range(2))


def run(command, text="", **options):
    """Returns the command's status, standard output and standard error."""
    done = subprocess.run(command, input=text, capture_output=True, text=True, timeout=60, **options)
    return done.returncode, done.stdout, done.stderr


def exists(command):
    return subprocess.run(["pgrep", "-fx", command], stdout=subprocess.DEVNULL).returncode == 0


def modes():
    """Returns the ways in which this machine can create a private gateway."""
    def allows(*options):
        return run(["bwrap", "--unshare-pid", *options, "--bind", "/", "/", "--proc", "/proc", "true"])[0] == 0
    return (["proot"] + ["root"] * (os.geteuid() == 0 and allows()) + ["userns"] * allows("--unshare-user"))


class LauncherTest(unittest.TestCase):
    def setUp(self):
        self.folder = self.enterContext(tempfile.TemporaryDirectory(dir="/tmp"))
        with open(self.folder + "/file", "w") as file:
            file.write("kept\n")

    def inside(self, mode, *command, launcher=LAUNCHER, cwd=None, **options):
        environment = dict(os.environ, PRIVATE_GATEWAY=mode)
        return run([launcher, *command], env=environment, cwd=cwd or self.folder, **options)

    def test_each_mode_gives_a_private_gateway(self):
        named = self.folder + "/file"
        rows = [  # name, options, script, status, output
            ("the launcher exits with the status of its command", {}, "exit 7", 7, ""),
            ("the command gets the input and prints to the output", {"text": "typed"}, "cat", 0, "typed"),
            ("/run contains only one file", {}, "ls /run", 0, "private-gateway\n"),
            ("/var/run is a link to /run", {}, "cd /var/run && pwd -P", 0, "/run\n"),
            ("the working folder is visible", {}, "cat file", 0, "kept\n"),
            ("the devices work", {}, "echo lost >/dev/null; head -c 2 /dev/zero | tr '\\0' k", 0, "kk"),
        ]
        for mode in modes():
            for name, options, script, status, output in rows:
                with self.subTest(name, mode=mode):
                    self.assertEqual(self.inside(mode, "sh", "-c", script, **options)[:2], (status, output))
            with self.subTest("a file that an argument names is visible", mode=mode):
                self.assertEqual(self.inside(mode, "cat", named, cwd="/")[1], "kept\n")
            with self.subTest("files that the command writes do not exist outside", mode=mode):
                paths = [f"{folder}/{os.getpid()}" for folder in ("/var/log", "/run", "/tmp", "/dev/shm", "/dev")]
                self.assertEqual(self.inside(mode, "touch", *paths, cwd="/")[0], 0)
                self.assertEqual([path for path in paths if os.path.exists(path)], [])

    def test_a_checkout_below_tmp_can_run_several_programs_at_once(self):
        os.makedirs(self.folder + "/checkout/simulator")
        os.makedirs(self.folder + "/checkout/build")
        launcher = shutil.copy(LAUNCHER, self.folder + "/checkout/simulator")
        program = shutil.copy(shutil.which("cat"), self.folder + "/checkout/build/program")
        open(self.folder + "/checkout/build/CMakeCache.txt", "w").close()
        for mode in modes():
            started = [subprocess.Popen([launcher, program, self.folder + "/file"], cwd="/", text=True,
                                        env=dict(os.environ, PRIVATE_GATEWAY=mode), stdout=subprocess.PIPE)
                       for _ in range(4)]
            with self.subTest(mode=mode):
                self.assertEqual([one.communicate()[0] for one in started], ["kept\n"] * 4)

    def test_all_processes_end_with_the_launcher(self):
        for mode in modes():
            left, killed = (f"sleep {number}.{os.getpid()}" for number in (7654, 8765))
            with self.subTest("a process in the background", mode=mode):
                script = f"setsid {left} >/dev/null 2>&1 & until pgrep -fx '{left}' >/dev/null; do :; done"
                self.assertEqual(self.inside(mode, "sh", "-c", script)[0], 0)
                self.assertFalse(exists(left))
            with self.subTest("the command, on SIGTERM", mode=mode):
                launcher = subprocess.Popen([LAUNCHER, *killed.split()], env=dict(os.environ, PRIVATE_GATEWAY=mode))
                wait_for(lambda: exists(killed))
                launcher.terminate()
                self.assertEqual(launcher.wait(30), 143)
                self.assertFalse(exists(killed))

    def test_an_error_names_the_missing_proot(self):
        for tool in ("bash", "realpath", "grep", "env"):
            os.symlink(shutil.which(tool), self.folder + "/" + tool)
        environment = {"PATH": self.folder, "PRIVATE_GATEWAY": "proot"}
        self.assertEqual(run([LAUNCHER, "true"], env=environment)[1:], (
            "", "private-gateway: this machine allows no namespaces, and proot is not installed: "
                "run scripts/setup simulator\n"))


class CommandLineTest(unittest.TestCase):
    def test_a_real_machine_is_refused(self):
        self.assertEqual(run([GATEWAY])[::2], (
            1, "simulator: this is a real machine; start the simulator with simulator/private-gateway\n"))

    def test_the_options(self):
        await_program = "start\nawait program\nexpect status 0\n"
        snippet = ('until veldctl status | grep -q "daemon runs"; do :; done; veldctl send +491 hello --wait 100 &&'
                   ' find /var/config/sms -printf "%m %f\\n" | sort -u')
        api = ("import http.server, socketserver\n"
               "class Api(http.server.BaseHTTPRequestHandler):\n"
               "  def do_GET(self):\n"
               "    open('/run/asked', 'w').close()\n"
               "socketserver.UnixStreamServer('/var/run/api/http.sock', Api).serve_forever()\n")
        folders = "750 sms", "777 failed", "777 inbox", "777 outbox", "777 received", "777 sending", "777 sent"
        rows = [  # name, arguments, script, status, lines of the output
            ("--with: the exit status is the program's status", ["--with", "exit 3"], "", 3, []),
            ("--with: a missing program", ["--with", "no-such-program"], "", 127, []),
            ("--with: a program that a signal kills", ["--with", "kill -9 $$"], "", 137, []),
            ("--with: a failing script exits with 1", ["--with", "exit 3"], "nonsense", 1, []),
            ("--with: the script waits for the program", ["--with", "veldctl list; echo done"], "", 0, ["done"]),
            ("--with: no wait for the background", ["--with", "sleep 100 >/dev/null 2>&1 &"], "", 0, []),
            ("--with: passes run while a script waits", ["--with", snippet], await_program, 0, folders),
            ("--tool", ["--tool", "./own-sms"], "start\n", 0, ["own tool: list unread", "own tool: list read"]),
            ("--tool: a file that cannot be run", ["--tool", "/nothing"], "", 2, []),
            ("--api none", ["--api", "none", "--with", f"echo \"{api}\" | /usr/bin/python3 - & until [ -e /run/asked ];"
                            " do :; done"], "await api\nfault api gone\nexpect-wrong --api none\nstart\n"
             "expect status 1\nexpect-exit 1\n", 0, ["The API's socket is there."]),
            ("an unknown option", ["--bogus"], "", 2, []),
            ("an unexpected word", ["bogus"], "", 2, []),
            ("--script: a missing file", ["--script", "/nothing"], "", 2, []),
        ]
        with tempfile.TemporaryDirectory(dir=os.getcwd()) as folder:
            write_program(folder + "/own-sms", 'echo "own tool: $*" >>/run/calls\n')
            for name, arguments, script, status, lines in rows:
                with self.subTest(name):
                    command = 'status=0; "$@" || status=$?; cat /run/calls 2>/dev/null; exit $status'
                    actual, output, errors = run([LAUNCHER, "sh", "-c", command, "sh", GATEWAY, *arguments], script,
                                                 cwd=folder)
                    self.assertEqual(actual, status, errors)
                    self.assertLessEqual(set(lines), set(output.splitlines()))


class Terminal:
    """Runs the console in a pseudo-terminal."""

    def __init__(self, home):
        self.screen, self.searched = "", 0
        self.pid, self.terminal = pty.fork()
        if self.pid == 0:
            os.execve(LAUNCHER, [LAUNCHER, GATEWAY], dict(os.environ, HOME=home, TERM="xterm"))

    def shows(self, text, seconds=90.0):
        """Waits until the console prints the text after the text of the last call. Returns False after `seconds`."""
        end = time.monotonic() + seconds
        while (at := self.screen.find(text, self.searched)) < 0:
            if not select.select([self.terminal], [], [], max(0.0, end - time.monotonic()))[0]:
                return False
            self.screen += os.read(self.terminal, 4096).decode(errors="replace")
        self.searched = at + len(text)
        return True

    def type(self, text):
        os.write(self.terminal, text.encode())

    def interrupt(self, line, text):
        """Types the line and Ctrl-C until the console prints the text. Returns False after 100 attempts. Ctrl-C may come too
        early to have an effect, or may discard the line before the console has read the line."""
        for _ in range(100):
            self.type(line)
            if line.endswith("\n"):
                self.shows(line.strip(), 1.0)
            self.type("\003")
            if self.shows(text, 0.2):
                return True
        return False


class ConsoleTest(unittest.TestCase):
    def test_completion_colours_and_ctrl_c(self):
        home = self.enterContext(tempfile.TemporaryDirectory(dir=os.getcwd()))
        console = Terminal(home)
        steps = [  # the typed text, and the text that appears then
            ("", "gateway> "),
            ("start\n", "The daemon runs"),
            ('rece\t+4917012345 "p secret #reboot ä"\n', "The modem has 1 message from +4917012345."),
            ("pass 2\n", "\033[33mWARNING VELD: [WARNING] SMS commands executing command\033[0m"),
            ("pass\n", "gateway> "),
            ("modem sent\n", '"text":"The gateway has rebooted."'),
        ]
        for typed, expected in steps:
            console.type(typed)
            self.assertTrue(console.shows(expected), f"{typed!r}: no {expected!r} in {console.screen!r}")
        for _ in range(50):  # Ctrl-C arrives in different states of the line editor
            self.assertTrue(console.interrupt("never run", "gateway> "), console.screen)
        console.type("faults\n")
        self.assertTrue(console.shows("Everything works."), console.screen)
        self.assertTrue(console.interrupt("await tool\n", "Interrupted."), console.screen)
        console.type("nonsense\n")
        self.assertTrue(console.shows('There is no command "nonsense"'))
        self.assertEqual(re.findall('no command "never', console.screen), [])
        with self.assertRaises(OSError):  # when the console has closed the terminal; Ctrl-U deletes a Ctrl-D that is too early
            for _ in range(100):
                console.type("\025\004")
                console.shows("a text that never appears", 0.5)
        self.assertEqual(os.waitstatus_to_exitcode(os.waitpid(console.pid, 0)[1]), 0)
        with open(home + "/.veld-gateway-history") as history:
            self.assertIn("receive", history.read())


unittest.main(verbosity=2)
