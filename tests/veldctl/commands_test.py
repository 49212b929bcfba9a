"""Tests the commands of veldctl in a private gateway: commands_test.py VELDCTL..."""
import contextlib
import fcntl
import http.server
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import threading
import time
import unittest

from shared import FOLDERS, SMS as ROOT, wait_for, write_program

VELDCTL, sys.argv[1:] = sys.argv[1:], []
GUID = "2026010100000000"


def run(*words, text=None):
    """Returns the exit status, standard output and standard error."""
    ended = subprocess.run([*VELDCTL, *words], input=text, capture_output=True, timeout=60)
    return ended.returncode, ended.stdout.decode(), ended.stderr.decode()


def start(*words, stdin=subprocess.PIPE):
    return subprocess.Popen([*VELDCTL, *words], stdin=stdin, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)


def put(folder, guid=GUID, **keys):
    record = {"guid": guid, "recipient": "+491", "message": "text", **keys}
    (ROOT / "new").write_text(json.dumps(record))
    (ROOT / "new").rename(FOLDERS[folder] / guid)


def files():
    return sorted(str(file.relative_to(ROOT)) for file in ROOT.rglob("*") if not file.is_dir())


class CommandsTest(unittest.TestCase):
    def setUp(self):
        shutil.rmtree(ROOT, ignore_errors=True)
        for folder in FOLDERS.values():
            folder.mkdir(parents=True)

    def check(self, *rows):
        """Runs the words of each row. Compares the exit status and a part of the output; None means no output."""
        for words, status, part in rows:
            with self.subTest(words=words):
                actual, out, err = run(*words)
                self.assertEqual(actual, status, out + err)
                if part is None:
                    self.assertEqual(out + err, "")
                else:
                    self.assertIn(part, out + err)

    def test_an_error_names_the_wrong_word(self):
        self.check(
            ([], 64, "a command is missing\nSee veldctl --help"),
            (["sned", "1", "x"], 64, "unknown command 'sned'; the commands are send, wait, list"),
            (["list", "lost"], 64, "unknown folder 'lost'; the folders are received"),
            (["list", "-n", "x"], 64, "-n takes a number up to 4294967295, not 'x'\nSee veldctl list --help"),
            (["list", "--since", "1y"], 64, "not '1y'"),
            (["send", "1"], 64, "an argument is missing; usage: veldctl send NUMBER \"TEXT\""),
            (["send", "1", "two", "words"], 64, "unexpected argument 'words'"),
            (["send", "1", "x", "--state", "f"], 64, "send does not take --state"),
            (["send", "1", "x", "--wait", "1m"], 64, "--wait takes seconds up to 4294967295, not '1m'"),
            (["send", "1", "x", "--retries", "4294967296"], 64, "not '4294967296'"),
            (["send", "1", "-5"], 64, "unknown option '-5'; write -- before a text"),
            (["follow", "--ack", "--exec", "x"], 64, "exclude each other"))

    def test_help_names_commands_and_options(self):
        self.check(*[(words, 0, "--retries N") for words in (["send", "-h"], ["help", "send"], ["retry", "--help"])],
                   (["help"], 0, "  follow "), (["--version"], 0, "veldctl 1."))

    def test_send_refuses_a_wrong_number_or_text(self):
        self.check(
            (["send", "1; reboot", "x"], 1, "a number is 1 to 20 digits"), (["send", "1", ""], 1, "the text is empty"),
            (["send", "1", b"a\xc0\x80"], 1, "not valid UTF-8, at byte 2"))
        self.assertEqual(run("send", "1", "-", text=b"a\0b")[::2], (1, "veldctl: the text holds a NUL character, at byte 2\n"))
        self.assertEqual(files(), [])

    def test_send_refuses_an_endless_text(self):
        sending = start("send", "1", "-")
        with contextlib.suppress(BrokenPipeError):
            sending.stdin.write("x" * 80000)
            sending.stdin.flush()
        self.assertEqual(sending.wait(30), 1)  # although standard input is still open
        self.assertIn("the text is too long: 255 messages", sending.stderr.read())
        for stream in (sending.stdin, sending.stdout, sending.stderr):
            with contextlib.suppress(BrokenPipeError):
                stream.close()

    def test_send_queues_number_text_and_retries(self):
        status, guid, said = run("send", "+49", "-", "--retries", "4294967295", text=b"two\nlines\n")
        guid = guid.rstrip("\n")
        self.assertRegex(guid, time.strftime("^%Y%m%d") + r"\d{8}$")
        self.assertEqual(said, "veldctl: the daemon does not run: the message waits\n")
        self.assertEqual(files(), [f"outbox/sending/{guid}"])
        self.assertEqual(json.loads((FOLDERS["sending"] / guid).read_text()),
                         {"guid": guid, "recipient": "+49", "message": "two\nlines", "retries": 4294967295})
        shutil.rmtree(FOLDERS["sending"])
        self.check((["send", "1", "x"], 1, "outbox/sending"))

    def test_concurrent_senders_get_different_guids(self):
        script = 'for i in 1 2 3 4 5 6 7 8 9 10; do "$@" send 1 x 2>/dev/null; done'
        senders = [subprocess.Popen(["bash", "-c", script, "-", *VELDCTL], stdout=subprocess.PIPE) for _ in range(4)]
        guids = {guid for sender in senders for guid in sender.communicate()[0].split()}
        self.assertEqual(len(guids), 40)
        self.assertEqual(len(files()), 40)

    def test_send_names_the_lock_that_it_waits_for(self):
        outbox = os.open(ROOT / "outbox", os.O_RDONLY)
        fcntl.flock(outbox, fcntl.LOCK_EX)
        sending = start("send", "1", "x")
        self.assertEqual(sending.stderr.readline(), "veldctl: another program holds the lock on /var/config/sms/outbox: waiting\n")
        os.close(outbox)
        sending.communicate()
        self.assertEqual(sending.returncode, 0)

    def test_wait_returns_the_outcome(self):
        for folder, status, outcome in (("sent", 0, {"outcome": "sent"}),
                                        ("failed", 1, {"outcome": "failed", "reason": "the tool printed nothing"})):
            with self.subTest(folder=folder):
                sending = start("send", "1", "x", "--wait", "--json")
                wait_for(lambda: os.listdir(FOLDERS["sending"]))
                guid, = os.listdir(FOLDERS["sending"])
                (FOLDERS["sending"] / guid).rename(FOLDERS[folder] / guid)
                said = json.loads(sending.communicate()[0])
                self.assertEqual((sending.returncode, said.pop("guid")), (status, guid))
                self.assertRegex(said.pop("time"), r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d[+-]\d\d:\d\d$")
                self.assertEqual(said, outcome)
                self.assertEqual(run("wait", guid)[0], status)
        self.check((["send", "1", "x", "--wait", "0"], 3, "it is still queued"), (["wait", "7", "0"], 3, "no such message"))

    def test_list_prints_and_filters_a_table(self):
        put("failed", "2026010100000001", retries=1, message="first")
        put("received", "2026010100000002", source="+492", timestamp="2026/01/01 00:00:02", message="\x1b[2J \u202e")
        self.assertEqual(run("list", "received")[1].splitlines(), [
            "GUID              TIME                 STATE     LEFT  FROM/TO           TEXT",
            "2026010100000002  2026-01-01 00:00:02  received  -     from +492         #033[2J #342#200#256"])
        self.assertRegex(run("list", "-n", "2")[1].splitlines()[1], "  failed    1     to   \\+491         first$")
        for words, guids in ((["-n", "1"], ["2"]), (["--grep", "FIR"], ["1"]), (["--grep", "+492"], ["2"]),
                             (["--since", "1h"], ["1"]), (["--since", "2026-01-01 00:00:02"], ["1", "2"])):
            with self.subTest(words=words):
                self.assertEqual(run("list", "-q", *words)[1].split(), ["202601010000000" + guid for guid in guids])

    def test_a_dangerous_number_is_shown_as_a_fault_and_not_queued(self):
        put("failed", recipient="+491;touch /tmp/x;")
        self.check((["retry", GUID], 1, "its recipient is not a number"), (["list"], 0, "? its recipient is not a number"),
                   (["show", GUID], 1, "its recipient is not a number"), (["status"], 2, f"{GUID}: its recipient is not a number"))
        self.assertEqual(files(), [f"outbox/failed/{GUID}"])

    def test_retry_queues_failed_messages_again(self):
        put("failed", "1", retries=0, seen=True)
        put("failed", "2")
        put("sending", "3")
        put("sent", "4")
        put("sending", "2")
        self.check((["retry", "1", "--retries", "5"], 0, None), (["retry", "2"], 1, "2: it is queued already"),
                   (["retry", "3"], 1, "3: it is queued already"), (["retry", "4"], 1, "4: it was sent already"),
                   (["retry", "4", "--json"], 1, '{"fault":"it was sent already","guid":"4"}'),
                   (["retry", "9", "../4"], 1, "9: there is no such message\nveldctl: ../4: there is no such"))
        self.assertEqual(json.loads((FOLDERS["sending"] / "1").read_text()),
                         {"guid": "1", "recipient": "+491", "message": "text", "retries": 5})

    def test_a_failure_marked_as_seen_is_not_reported(self):
        put("failed")
        os.utime(FOLDERS["failed"] / GUID, ns=(1, 1234567890123456789))
        self.check((["status"], 2, f"look  1 failed permanently: {GUID}"), (["seen", GUID], 0, None),
                   (["status", "--prometheus"], 2, 'veld_failed{again="no"} 0\nveld_failed{again="seen"} 1'))
        self.assertEqual((FOLDERS["failed"] / GUID).stat().st_mtime_ns, 1234567890123456789)
        put("failed", retries=1)
        self.check((["seen", GUID], 1, "it will be sent again"))

    def test_any_file_in_a_folder_is_listed_in_one_line(self):
        folder = FOLDERS["received"]
        (folder / "text").write_text("no json")
        (folder / "null").write_text("null")
        (folder / "other").write_text('{"guid":"1"}')
        (folder / "object").write_text('{"guid":"object","source":{}}')
        (folder / "folder" / "file").mkdir(parents=True)
        os.mkfifo(folder / "fifo")
        (folder / "zero").symlink_to("/dev/zero")
        (folder / "big").touch()
        os.truncate(folder / "big", 1 << 30)
        (folder / os.fsdecode(b"\xff\n")).touch()
        faults = {"text": "it is not JSON: Line 1", "null": "it is not a JSON object", "other": "its guid is not",
                  "object": "its source is not a text", "folder": "it is a folder", "fifo": "it is not a regular file",
                  "zero": "it is a symbolic link", "big": "it has 1073741824 bytes", "#377#012": "it is not JSON"}
        said = {line.split()[0]: line for line in run("list")[1].splitlines()[1:]}
        self.assertEqual(sorted(said), sorted(faults))
        for name, fault in faults.items():
            self.assertIn("? " + fault, said[name])
        self.check((["status", "--prometheus"], 2, "veld_broken_files 9"), (["show", "text"], 1, "\nno json\n"),
                   (["remove", "folder", "zero", "fifo", "7"], 1, "7: there is no such message"))
        self.assertEqual(len(os.listdir(folder)), 6)
        self.assertTrue(os.path.exists("/dev/zero"))

    def test_missing_permissions_are_reported(self):
        """Runs veldctl as an unprivileged user, because root may read everything."""
        put("failed")
        ROOT.chmod(0o700)
        if subprocess.run(["setpriv", "--reuid", "65534", "true"], capture_output=True).returncode != 0:
            self.skipTest("this user cannot become another")
        VELDCTL[:0] = ["setpriv", "--reuid", "65534", "--clear-groups"]
        try:
            for words in (["show", GUID], ["remove", GUID], ["retry", GUID], ["list"], ["wait", GUID], ["follow"], ["send", "1", "x"]):
                self.check((words, 1, "Permission denied"))
            status, out, _ = run("status")
            self.assertEqual((status, out.count("ILL   received: /var/config/sms/inbox/received: Permission denied")), (2, 1))
        finally:
            del VELDCTL[:4]

    def test_reading_commands_change_no_file(self):
        put("sent")
        before = {file: os.stat(file).st_mtime_ns for file in ROOT.rglob("*")}
        self.check((["status"], 2, "the daemon does not run"), (["list"], 0, GUID), (["show", GUID], 0, "message"),
                   (["check"], 2, "the local API does not answer: /var/run/api/http.sock: No such file"),
                   (["check"], 2, "/var/config/sms is open to every user"), (["check"], 2, "there are no back-off timers"))
        self.assertEqual({file: os.stat(file).st_mtime_ns for file in ROOT.rglob("*")}, before)

    def test_status_prints_json_objects(self):
        put("sent")
        rows = [json.loads(line) for line in run("status", "--json")[1].splitlines()]
        for row in rows:
            self.assertLessEqual({"verdict", "text"}, set(row))
            self.assertNotRegex(row.get("metric", ""), "[{}]")
        self.assertIn({"metric": "messages", "folder": "sent", "value": 1, "verdict": 0, "text": "sent: 1"}, rows)
        self.assertEqual([row["guid"] for row in rows if row.get("metric") == "last_sent_time_seconds"], [GUID])


    def test_the_manuals_name_each_metric_and_option(self):
        put("sent")
        put("received")
        root = pathlib.Path(__file__).resolve().parents[2]
        manual, fleet = ((root / name).read_text() for name in ("packaging/man/veldctl.1", "docs/fleet.md"))
        metrics = set(re.findall(r"^veld_(\w+)", run("status", "--prometheus")[1], re.M))
        self.assertGreater(len(metrics), 10)
        self.assertLessEqual(metrics, set(re.findall(r"\w+", " ".join(re.findall(r"^\.It Sy (.*)", manual, re.M)))))
        self.assertLessEqual(metrics, set(re.findall(r"`veld_(\w+)", fleet)))
        for command in re.findall(r"^  ([a-z]+) ", run("help")[1], re.M):
            synopsis = re.search(rf"^\.Cm {command}\b.*?(?=^\.Nm|^\.Sh)", manual, re.M | re.S)[0]
            for short, option in re.findall(r"^  (?:-(.), )?--([a-z]+)", run("help", command)[1], re.M):
                if option != "help":
                    self.assertRegex(synopsis, rf"-{option}\b" + (rf"|Fl {short}\b" if short else ""), command)


class FollowTest(unittest.TestCase):
    setUp = CommandsTest.setUp
    state = pathlib.Path("/run/state")

    def tearDown(self):
        self.state.unlink(missing_ok=True)

    def event(self, follower):
        said = json.loads(follower.stdout.readline())
        self.assertEqual(sorted(said), ["event", "guid", "record", "time"])
        return said["event"] + " " + said["guid"]

    def end(self, follower):
        follower.kill()
        follower.communicate()

    def test_a_restart_neither_repeats_nor_misses_an_event(self):
        put("sent", "1")
        follower = start("follow", "--state", str(self.state))
        wait_for(self.state.exists)
        put("sent", "2")
        self.assertEqual(self.event(follower), "sent 2")
        put("received", "3", parts=["a", None])
        self.assertEqual(self.event(follower), "received 3")
        put("received", "3")
        self.assertEqual(self.event(follower), "completed 3")
        wait_for(lambda: re.search(r'"received/3":\[\d+,false\]', self.state.read_text()))
        status, _, said = run("follow", "--state", str(self.state))
        self.assertEqual((status, said), (1, "veldctl: another veldctl uses /run/state\n"))
        self.end(follower)
        put("failed", "4")
        follower = start("follow", "--state", str(self.state))
        self.assertEqual(self.event(follower), "failed 4")
        self.end(follower)

    def test_an_event_is_repeated_until_it_is_acknowledged(self):
        self.state.touch()
        put("sent", "1")
        put("sent", "2")
        words = ("follow", "--ack", "--state", str(self.state))
        for answers, reported in ((b"", ["1"]), (b"\n", ["1", "2"]), (b"\n\n", ["2"]), (b"", [])):
            with self.subTest(answers=answers):
                status, out, _ = run(*words, text=answers)
                self.assertEqual((status, [json.loads(line)["guid"] for line in out.splitlines()]), (0, reported))

    def test_a_program_is_run_until_it_succeeds(self):
        self.state.touch()
        put("received", "1", source="+49", message="first")
        put("sent", "2", message="second")
        hook = write_program("/run/hook", 'echo "$VELD_EVENT $VELD_GUID $VELD_NUMBER $VELD_TEXT" >>/run/reported\ncat >>/run/input\n'
                             '[ -e /run/good ] || { touch /run/good; exit 3; }\n')
        follower = start("follow", "--state", str(self.state), "--exec", str(hook))
        reported = ["received 1 +49 first"] * 2 + ["sent 2 +491 second"]
        wait_for(lambda: '"sent/2"' in self.state.read_text())
        self.assertEqual(pathlib.Path("/run/reported").read_text().splitlines(), reported)
        self.assertEqual([json.loads(line)["guid"] for line in pathlib.Path("/run/input").read_text().splitlines()], ["1", "1", "2"])
        self.assertEqual(follower.stderr.readline(), "veldctl: /run/hook ended with status 3 for 1; it runs again in 1 s\n")
        self.end(follower)

    def test_a_missing_folder_is_reported(self):
        shutil.rmtree(FOLDERS["sent"])
        self.assertEqual(run("follow"), (1, "", "veldctl: /var/config/sms/outbox/sent: No such file or directory\n"))


class ExamplesTest(unittest.TestCase):
    """Tests the example programs for --exec, and the completion for bash."""
    setUp = CommandsTest.setUp
    packaging = pathlib.Path(__file__).resolve().parents[2] / "packaging"

    def hook(self, name, event, number="+491", text="State?", **environment):
        variables = {"VELD_EVENT": event, "VELD_GUID": "1", "VELD_NUMBER": number, "VELD_TEXT": text, **environment}
        return subprocess.run([self.packaging / "examples" / name], input=b'{"guid": "1"}', timeout=60,
                              env={**os.environ, **variables}, capture_output=True).returncode

    def program(self, name, text):
        write_program("/run/bin/" + name, text)
        return {"PATH": f"/run/bin:{os.environ['PATH']}"}

    def test_only_a_question_from_a_number_is_answered(self):
        path = self.program("veldctl", 'exec ' + " ".join(VELDCTL) + ' "$@"')
        for event, number, text, answers in (("sent", "+491", "State?", 0), ("received", "+491", "hello", 0),
                                             ("received", "Bank", "State?", 0), ("received", "+491", "State? please", 1)):
            with self.subTest(event=event, number=number, text=text):
                self.assertEqual(self.hook("on-event-answer", event, number, text, **path), 0)
                self.assertEqual(len(files()), answers)

    def test_the_subject_of_a_mail_is_one_line(self):
        self.program("sendmail", "cat >/run/mail")
        self.assertEqual(self.hook("on-event-mail", "received", "1\nBcc: x", "Grüße", SENDMAIL="/run/bin/sendmail"), 0)
        head, _, body = pathlib.Path("/run/mail").read_text().partition("\n\n")
        self.assertEqual((head.splitlines()[1], body), ("Subject: SMS from 1Bcc x", "Grüße\n"))
        self.program("sendmail", "exit 75")
        self.assertEqual([self.hook("on-event-mail", event, SENDMAIL="/run/bin/sendmail") for event in ("received", "sent")], [75, 0])

    @unittest.skipUnless(shutil.which("curl"), "there is no curl")
    def test_the_webhook_fails_if_the_server_answers_with_an_error(self):
        class Handler(http.server.BaseHTTPRequestHandler):
            def do_POST(self):
                got.append(self.rfile.read(int(self.headers["Content-Length"])))
                self.send_response(statuses.pop(0))
                self.end_headers()

            def log_message(self, *_):
                pass

        got, statuses = [], [500, 200]
        with http.server.HTTPServer(("127.0.0.1", 0), Handler) as server:
            threading.Thread(target=server.serve_forever, daemon=True).start()
            url = {"WEBHOOK_URL": f"http://127.0.0.1:{server.server_port}/"}
            endings = [self.hook("on-event-webhook", "sent", **url) for _ in range(2)]
            server.shutdown()
        self.assertEqual((endings, got), ([22, 0], [b'{"guid": "1"}'] * 2))
        self.assertEqual(self.hook("on-event-webhook", "sent", **url), 7)

    def test_bash_completes_commands_options_and_guids(self):
        put("failed", "11")
        put("sending", "21")
        path = self.program("veldctl", 'exec ' + " ".join(VELDCTL) + ' "$@"')
        script = ('. "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _veldctl; echo "${COMPREPLY[*]}"')
        for words, completed in ((["s"], "send show seen status"), (["retry", "--"], "--retries --json --help"), (["list", "s"], "sending sent"),
                                 (["retry", ""], "11"), (["show", ""], "11 21"), (["wait", ""], "21"), (["help", "fo"], "follow")):
            with self.subTest(words=words):
                said = subprocess.run(["bash", "-c", script, "-", self.packaging / "veldctl.bash-completion", "veldctl", *words],
                                      capture_output=True, text=True, env={**os.environ, **path}).stdout
                self.assertEqual(said, completed + "\n")


unittest.main(verbosity=2)
