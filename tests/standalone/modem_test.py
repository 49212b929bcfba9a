"""Tests the tool `sms` in a private gateway: modem_test.py GATEWAY SMS. The modem is virtual; the daemon and ModemManager
are the real programs."""
import json
import os
import pathlib
import queue
import re
import secrets
import shutil
import socket
import subprocess
import sys
import threading
import time
import unittest

import pdu
from documents import Gateway
from manager import Manager, wait_for
from shared import FOLDERS, remove_messages, write_program
from virtual_modem import VirtualModem

SMS = os.path.abspath(sys.argv.pop(1))
CONFIG = pathlib.Path("/run/smsconfig")
os.environ["SMS_CONFIG"] = str(CONFIG)
STATE = pathlib.Path("/run/veld-sms/state")
ALL_OF_GSM = pdu.ALPHABET.replace("\x1b", "") + "".join(pdu.EXTENSIONS)
TEXTS = [
    ("+4917011111", "Hello"), ("+4917011111", ALL_OF_GSM), ("+4917011111", "Привет, мир"), ("+4917011111", "中文短信" * 40),
    ("+4917011111", "🙂" * 100), ("+4917022222", "l" * 39000), ("My Bank", "Your code"), ("findex", "A name as a marker"),
    ("017033333", "  leading blanks"), ("+4917011111", r"\x41 \\n \x1be"), ("+4917011111", "smsc-addr: +1"),
    ("+4917011111", "addr: +1"), ("+4917011111", 'index: 1\nuser-data: "x"'), ("+4917011111", "{[\\|]}^~€" * 60),
    ("+4917011111", 'He said "no"\r\n'), ("+4917011111", "ж\x08\x04\x01\t"), ("+4917011111", "a" * 160), ("+4917011111", "a" * 161),
    ("+4917011111", "€" * 77 + "ä€" * 30), ("+4917011111", "x🙂" * 66),
]
OUTGOING = [text for _, text in TEXTS if text != "Hello"]


class CommonTests:
    """Tests that run twice: with the modem on a serial port, and with ModemManager. A subclass connects the modem."""

    places = (10, 400)

    def setUp(self):
        STATE.unlink(missing_ok=True)
        self.modem = VirtualModem(self.places)
        self.addCleanup(self.modem.unplug)
        pathlib.Path("/dev/log").unlink(missing_ok=True)
        log = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        log.bind("/dev/log")
        self.lines = queue.SimpleQueue()
        threading.Thread(target=self.keep_log, args=(log,), daemon=True).start()
        remove_messages()
        self.configure("")
        self.plug_in()

    def sms(self, *words, status=0):
        call = subprocess.run([SMS, *words], capture_output=True)
        if status is not None:
            self.assertEqual(call.returncode, status, (words, call.stderr.decode()))
        return call.stderr.decode() if status else call.stdout.decode()

    def texts(self, *words):
        return re.findall(r'^user-data: "(.*)"$', self.sms(*words), re.M)

    def keep_log(self, log):
        """Keeps the tool's log lines, and discards others: ModemManager would block if nobody read its log lines."""
        while line := log.recv(4000).decode():
            if found := re.match(r"<\d+>.* sms\[\d+\]: (.*)", line):
                self.lines.put(found[1])

    def logged(self):
        """Returns the next line that the tool logs."""
        return self.lines.get(timeout=10)

    def send(self, text, status=0, number="+4917011111"):
        file = pathlib.Path("/tmp/text")
        file.write_bytes(text.encode() if isinstance(text, str) else text)
        return self.sms("--verbose", "send", "-f", str(file), number, status=status)

    def deliver(self, *messages):
        """Delivers the messages one after the other, so that ModemManager misses none."""
        for message in messages:
            self.modem.receive(message)
            self.settle()

    def receive(self, text):
        self.deliver(*pdu.deliveries("+4917011111", text))

    def give_pins(self):
        self.configure("pin = 1111")
        for _ in range(2):
            self.assertIn(self.refused_pin, self.sms("list", "unread", status=1))
        self.configure("pin = 1234")
        self.sms("list", "unread")
        self.assertEqual(self.modem.pins, ["1111", "1234"])

    def daemon(self, gateway):
        """Makes the real daemon use the tool under test."""
        pathlib.Path("/dev/log").unlink()  # the gateway creates its own
        write_program("/run/gateway/bin/sms", f"SMS_CONFIG={CONFIG} exec {SMS} \"$@\"\n")
        gateway.run("start")

    def test_every_text_is_received(self):
        for reference, (sender, text) in enumerate(TEXTS):
            for message in pdu.deliveries(sender, text, reference, wide=reference % 2 == 0):
                self.modem.receive(message)
        self.fetch_again()
        with Gateway() as gateway:
            self.daemon(gateway)
            gateway.run("pass")
        records = [json.loads(file.read_text()) for file in sorted(FOLDERS["received"].iterdir())]
        self.assertCountEqual([(record["source"], record["message"]) for record in records],
                              [(sender.replace("findex", "fIndex"), text) for sender, text in TEXTS])
        self.assertEqual(self.modem.held(), 0)

    def test_every_text_is_sent(self):
        with Gateway() as gateway:
            self.daemon(gateway)
            for i, text in enumerate(OUTGOING):
                record = {"guid": f"20260101000000{i:02}", "recipient": "+4917011111", "message": text}
                (FOLDERS["sending"] / record["guid"]).write_text(json.dumps(record))
            gateway.run("pass")
        sent = [text for _, text in pdu.texts_of(self.modem.sent)]
        self.assertCountEqual(sent, OUTGOING)
        self.assertEqual(len(list(FOLDERS["sent"].iterdir())), len(OUTGOING))

    def test_root_leaves_the_state_to_its_owner(self):
        """The daemon may run as its own user, and a person may run the tool as root."""
        folder = STATE.parent
        folder.mkdir(mode=0o700, exist_ok=True)
        for path in (folder, *folder.iterdir()):
            os.chown(path, 65534, 65534)
        (folder / "lock").unlink(missing_ok=True)
        self.receive("one")
        self.sms("list", "unread")
        self.assertEqual({(path.name, path.stat().st_uid) for path in folder.iterdir()}, {("lock", 65534), ("state", 65534)})
        shutil.rmtree(folder)

    def test_a_wrong_command_line_prints_the_usage(self):
        for words in ([], ["list"], ["list", "unread", "x"], ["delete", "unread"], ["send", "-f", "x"], ["status", "x"]):
            self.assertIn("usage: sms", self.sms(*words, status=2))

    def test_delete_removes_only_listed_messages(self):
        self.receive("one")
        self.assertEqual([self.texts("list", "unread"), self.texts("list", "read")], [["one"], ["one"]])
        self.receive("two")
        self.sms("delete", "read")
        self.assertEqual([self.texts("list", "read"), self.texts("list", "unread")], [[], ["two"]])
        self.sms("delete", "read")
        self.assertEqual(self.texts("list", "read"), ["two"])

    def test_a_listing_without_a_reader_deletes_nothing(self):
        self.receive("one")
        self.sms("list", "unread")
        reader, writer = os.pipe()
        os.close(reader)
        subprocess.run([SMS, "list", "read"], stdout=writer)
        os.close(writer)
        self.sms("delete", "read")
        self.assertEqual(self.modem.held(), 1)

    def test_an_incomplete_message_is_listed_after_72_hours(self):
        now = time.time()
        parts = pdu.deliveries("+4917011111", "p" * 300)
        self.deliver(parts[0], pdu.deliveries("+4917022222", "o" * 300, 2, when=now - 71 * 3600)[0],
                     pdu.deliveries("+4917033333", "q" * 300, 3, when=now - 73 * 3600)[1])
        [line] = self.texts("list", "unread")
        self.assertIn("Incomplete message", line)
        self.deliver(parts[1])
        self.assertEqual(self.texts("list", "unread"), ["p" * 300])
        self.assertEqual(len(self.texts("list", "read")), 2)
        self.sms("delete", "read")
        self.assertEqual(self.modem.held(), 1)

    def test_data_is_listed_in_hex(self):
        self.deliver(pdu.deliver("+49", b"\x01\x00\xff", 4),
                     pdu.deliver("+49", b"\x01\x06\x01\xbe\x00", 4, bytes.fromhex("05040b8423f0")))
        self.assertEqual(self.texts("list", "unread"),
                         ["8-bit data, octets 0100FF", "MMS notification, octets 010601BE00"])

    def test_drafts_and_sent_messages_are_not_touched(self):
        for kind in (2, 3):
            self.modem.memories["SM"].put("0001000A9171110000000000", kind)
        self.fetch_again()
        self.assertEqual([self.texts("list", "unread"), self.texts("list", "read")], [[], []])
        self.sms("delete", "read")
        self.assertEqual(self.modem.held(), 2)

    def test_a_failed_send_prints_the_reason(self):
        for what, number in ((b"\xff", "+49"), (b"a\0b", "+49"), ("text", "Bank")):
            self.send(what, 1, number)
        self.assertEqual(self.modem.sent, [])
        self.modem.refusal_to_send = "+CMS ERROR: 38"
        self.assertIn(self.refusal, self.send("text", 1))

    def test_problems_are_reported_and_logged_once(self):
        self.sms("list", "unread")
        self.modem.registration = 3
        self.renew_registration("denied")
        for _ in range(2):
            self.assertEqual(self.sms("list", "unread", status=1), "sms: not registered with a network: denied\n")
        self.modem.registration = 1
        self.renew_registration("home")
        self.sms("list", "unread")
        self.assertEqual([self.logged(), self.logged()], ["not registered with a network: denied",
                                                          "no longer: not registered with a network: denied"])
        self.assertTrue(self.lines.empty())

    def test_status_shows_the_state_of_the_modem(self):
        self.sms("list", "unread")
        self.receive("one")
        status = json.loads(self.sms("status", "--json"))
        self.assertEqual((status["modem"], status["sim"], status["operator"], status["registration"], status["signal"],
                          status["stored"]), ("Virtual Modem", "ready", "Virtual network", "home", 74, 1))
        self.assertNotIn("problem", status)
        self.assertIn("signal: 74\n", self.sms("status"))


class PortTest(CommonTests, unittest.TestCase):
    refusal, refused_pin = "the network is out of order", "refuse"

    def plug_in(self):
        pathlib.Path("/run/port").unlink(missing_ok=True)
        self.modem.plug_into_port("/run/port")

    def configure(self, more):
        CONFIG.write_text(f"# The modem\nport = /run/port\n{more}")

    def settle(self):
        pass

    fetch_again = settle

    def renew_registration(self, _):
        pass

    def test_a_message_that_cannot_be_deleted_is_not_listed_again(self):
        self.receive("one")
        self.sms("list", "unread")
        self.sms("list", "read")
        self.modem.refuses_deletion = True
        self.assertIn("cannot delete", self.sms("delete", "read", status=1))
        self.assertIn("cannot delete", self.sms("list", "unread", status=1))
        self.assertEqual(self.texts("list", "read"), [])
        self.modem.refuses_deletion = False
        self.sms("list", "unread")
        self.assertEqual(self.modem.held(), 0)
        self.assertRegex(self.logged(), "^cannot delete")
        self.assertRegex(self.logged(), "^no longer: cannot delete")

    def test_status_shows_the_room_for_messages(self):
        self.assertEqual(json.loads(self.sms("status", "--json"))["room"], sum(self.places))

    def test_a_memory_full_of_drafts_is_reported(self):
        for memory in self.modem.memories.values():
            while memory.put("0001000A9171110000000000", 2) is not None:
                pass
        self.assertIn("is full", self.sms("list", "unread", status=1))

    def test_each_pin_is_tried_once(self):
        self.modem.pin = "1234"
        self.assertIn("settings have none", self.sms("list", "unread", status=1))
        self.give_pins()

    def test_a_missing_sim_and_a_missing_modem_are_reported(self):
        self.modem.has_sim = False
        self.assertEqual(self.sms("list", "unread", status=1), "sms: no SIM\n")
        self.assertEqual(self.sms("status", status=1), "")  # status prints the problem to standard output
        self.modem.has_sim = True
        self.modem.unplug()
        self.assertIn("no modem", self.sms("list", "unread", status=1))
        self.plug_in()
        self.sms("list", "unread")

    def test_a_killed_call_does_not_disturb_the_next(self):
        self.modem.delay = 0.03
        for moment in (0.02, 0.08, 0.14, 0.2, 0.23):
            call = subprocess.Popen([SMS, "send", "-f", "/etc/passwd", "+49170"])
            time.sleep(moment)
            call.kill()
            call.wait()
            self.assertEqual(self.texts("list", "read"), [])

    def test_a_reference_can_be_used_again(self):
        for text in ("a" * 300, "b" * 300):
            for message in pdu.deliveries("+4917011111", text)[:1 if text[0] == "a" else 2]:
                self.modem.receive(message)
        self.assertEqual(self.texts("list", "unread"), ["b" * 300])


class ManagerTest(CommonTests, unittest.TestCase):
    refusal, refused_pin = "38", ""

    def plug_in(self):
        self.name = "modem-" + secrets.token_hex(8)  # must be unique on this machine
        self.modem.plug_into_socket(self.name)
        self.manager = Manager(self.name)
        self.addCleanup(self.manager.stop)
        self.manager.start()
        wait_for("the modem", self.manager.has_modem)
        self.sms("list", "unread")  # enables the modem
        wait_for("the network", lambda: "registration: home" in self.sms("status", status=None))

    def configure(self, more):
        CONFIG.write_text(more)

    def settle(self):
        """Waits until ModemManager has fetched the new messages and shows them."""
        wait_for("ModemManager to fetch", lambda: all(
            kind for memory in self.modem.memories.values() for kind, _ in memory.messages.values()))
        self.sms("status")  # ModemManager answers this call after it has handled the messages

    def set_last_fetch(self, values):
        STATE.write_text(re.sub("^looked .*", f"looked {values}", STATE.read_text(), flags=re.M))
        self.sms("list", "unread")

    def fetch_again(self):
        self.set_last_fetch("-3600 0")  # an hour before the start of the machine

    def test_the_pin_is_entered_once(self):
        self.manager.kill()
        self.modem.pin = "1234"
        self.manager.start()
        wait_for("the locked modem", lambda: "locked" in self.sms("status", status=None))
        self.give_pins()

    def test_messages_that_arrive_together_are_found(self):
        self.modem.delay = 0.05
        texts = [f"message {i}" for i in range(10)]
        for text in texts:
            self.modem.receive(pdu.deliveries("+49", text)[0])
        self.modem.delay = 0
        time.sleep(0.5)
        known = self.texts("list", "unread")
        self.assertLess(len(known), 10)  # ModemManager has missed some of them
        self.sms("list", "read")
        self.sms("delete", "read")
        self.set_last_fetch(f"{-11 + int(time.clock_gettime(time.CLOCK_BOOTTIME))} 1")
        self.assertCountEqual(known + self.texts("list", "unread"), texts)

    def test_a_call_that_modemmanager_refuses_is_repeated(self):
        """ModemManager cannot delete a message while it fetches another message."""
        self.receive("one")
        self.sms("list", "unread")
        self.sms("list", "read")
        self.modem.delay = 0.2
        self.modem.receive(pdu.deliveries("+49", "two")[0])
        self.sms("delete", "read")
        self.settle()
        self.assertEqual(self.texts("list", "unread"), ["two"])

    def test_a_restart_of_modemmanager_invalidates_the_marks(self):
        self.receive("one")
        self.sms("list", "unread")
        self.sms("list", "read")
        self.manager.kill()
        self.assertIn("ModemManager is not running", self.sms("delete", "read", status=1))
        self.manager.start()
        wait_for("the modem", self.manager.has_modem)
        self.sms("delete", "read")
        self.assertEqual([self.modem.held(), self.texts("list", "unread")], [1, ["one"]])

    def test_a_modem_can_disappear_and_return(self):
        self.modem.unplug()
        self.manager.show_modem()
        self.assertEqual(self.sms("list", "unread", status=1), "sms: no modem\n")
        self.modem.plug_into_socket(self.name)
        self.manager.show_modem()
        wait_for("the modem", self.manager.has_modem)
        self.sms("list", "unread")

    def renew_registration(self, name):
        for connection in self.modem.connections:
            connection.write(f"\r\n+CREG: {self.modem.registration}\r\n\r\n+CGREG: {self.modem.registration}\r\n")
        wait_for(name, lambda: name in subprocess.run([SMS, "status"], capture_output=True, text=True).stdout)


unittest.main(verbosity=2)
