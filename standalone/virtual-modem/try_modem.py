"""Lets the daemon receive messages while faults occur: try_modem.py GATEWAY SMS MESSAGES SEED. GATEWAY and SMS are
programs. Reports messages that were lost, filed twice, or filed but never sent. scripts/try-modem runs this program."""
import collections
import json
import os
import pathlib
import random
import re
import secrets
import signal
import sys
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path += [str(ROOT / "tests"), str(ROOT / "tests/docs")]
TOOL, MESSAGES, SEED = os.path.abspath(sys.argv.pop(2)), int(sys.argv.pop(2)), int(sys.argv.pop(2))
import pdu  # noqa: E402
from documents import Gateway  # noqa: E402
from manager import Manager, wait_for  # noqa: E402
from shared import FOLDERS  # noqa: E402
from virtual_modem import VirtualModem  # noqa: E402

CONFIG, STATE, PORT = pathlib.Path("/run/smsconfig"), pathlib.Path("/run/veld-sms/state"), "/run/port"
SOCKET = "tried-" + secrets.token_hex(8)  # must be unique on this machine
# Faults after which a message may be filed twice. They occur after the message was listed and before it is deleted. The
# tool or ModemManager then loses the mark of the message, or takes the message for a new one.
MAY_REPEAT = {"the tool killed", "ModemManager killed", "the modem unplugged", "a deletion refused"}


class Trial:
    def __init__(self, by_manager, chance):
        self.by_manager, self.chance = by_manager, chance
        self.modem = VirtualModem((0, 12))  # a small memory, which is soon full
        self.sent, self.filed = {}, collections.Counter()
        self.manager = Manager(SOCKET) if by_manager else None
        CONFIG.write_text("" if by_manager else f"port = {PORT}\n")
        STATE.unlink(missing_ok=True)
        self.plug_in()
        if by_manager:
            self.manager.start()

    def plug_in(self):
        if self.by_manager:
            self.modem.plug_into_socket(SOCKET)
        else:
            self.modem.plug_into_port(PORT)

    # The faults. Each fault ends before its function returns, or at the end of the pass.

    def kill_tool(self):
        """Kills the tool at a random moment of the next pass."""
        def kill(after):
            time.sleep(after)
            for process in pathlib.Path("/proc").glob("[0-9]*"):
                try:
                    if os.readlink(process / "exe") == TOOL:
                        os.kill(int(process.name), signal.SIGKILL)
                except OSError:
                    pass
        threading.Thread(target=kill, args=(self.chance.uniform(0, 0.04),), daemon=True).start()

    def kill_manager(self):
        def kill(after):
            time.sleep(after)
            self.manager.kill()
        killer = threading.Thread(target=kill, args=(self.chance.uniform(0, 0.04),))
        killer.start()
        self.gateway.run("pass")
        killer.join()
        self.gateway.run("pass")
        self.manager.start()

    def unplug(self):
        self.modem.unplug()
        if self.by_manager:
            self.manager.show_modem()
        self.gateway.run("pass")
        self.plug_in()
        if self.by_manager:
            self.manager.show_modem()
            wait_for("the modem", self.manager.has_modem)

    def refuse_deletions(self):
        self.modem.refuses_deletion = True
        self.gateway.run("pass")
        self.modem.refuses_deletion = False

    def faults(self):
        named = {"none": lambda: None, "the tool killed": self.kill_tool, "the modem unplugged": self.unplug,
                 "a deletion refused": self.refuse_deletions}
        return {**named, "ModemManager killed": self.kill_manager} if self.by_manager else named

    # One round: messages arrive, a fault occurs, and the daemon runs two passes.

    def text(self):
        number = len(self.sent)
        return f"[{number}] " + self.chance.choice(["short", "long " * 60, "ж" * 100, "index \\x41 \"q\"\n{€}"])

    def receive(self, fault):
        text = self.text()
        self.sent[text] = fault
        for message in pdu.deliveries("+4917011111", text, len(self.sent) % 256):
            self.modem.receive(message)

    def collect(self):
        """Counts and removes the complete messages in the daemon's folder, so that the folder's limit discards none."""
        for file in FOLDERS["received"].iterdir():
            record = json.loads(file.read_text())
            if "part-id" not in record:
                self.filed[record["message"]] += 1
                file.unlink()

    def make_fetch_due(self):
        """Sets the time of the tool's last fetch back. The tool then makes ModemManager fetch all messages again."""
        if STATE.exists():
            text = STATE.read_text()
            STATE.write_text(re.sub("^looked .*", f"looked {round(time.clock_gettime(time.CLOCK_BOOTTIME)) - 61} 1", text,
                                    flags=re.M))

    def round(self):
        fault = self.chance.choice(list(self.faults()))
        for _ in range(self.chance.randint(1, 4)):
            self.receive(fault)
        for text in self.on_their_way():  # the fault affects all messages that were not filed yet
            self.sent[text] = fault if fault != "none" else self.sent[text]
        self.faults()[fault]()
        self.gateway.run("pass")
        self.collect()
        self.make_fetch_due()
        self.gateway.run("pass")
        self.collect()

    def on_their_way(self):
        return [text for text in self.sent if not self.filed[text]]

    def run(self, messages):
        with Gateway() as self.gateway:
            tool = pathlib.Path("/run/gateway/bin/sms")
            tool.unlink()
            tool.write_text(f"#!/bin/sh\nSMS_CONFIG={CONFIG} exec {TOOL} \"$@\"\n")
            tool.chmod(0o755)
            self.gateway.run("start")
            while len(self.sent) < messages:
                self.round()
            end = time.monotonic() + 60
            while (self.on_their_way() or self.modem.held()) and time.monotonic() < end:
                self.make_fetch_due()
                self.gateway.run("pass")
                self.collect()
            for _ in range(4):
                self.make_fetch_due()
                self.gateway.run("pass")
                self.collect()
        if self.manager:
            self.manager.stop()
        return self.report()

    def report(self):
        """Prints the result. Returns False for lost messages, filed messages that nobody sent, and unexpected repeats."""
        lost = [text for text in self.sent if not self.filed[text]]
        invented = [text for text in self.filed if text not in self.sent]
        repeated = {text: self.sent[text] for text in self.sent if self.filed[text] > 1}
        unexpected = [text for text, fault in repeated.items() if fault not in MAY_REPEAT]
        print(f"{'ModemManager' if self.by_manager else 'Port'}: {len(self.sent)} messages, {len(lost)} lost, "
              f"{len(invented)} that nobody sent, {len(repeated)} filed twice, {len(unexpected)} of them without an expected "
              "fault")
        for fault, count in collections.Counter(repeated.values()).items():
            print(f"  filed twice: {count}; fault: {fault}")
        for text in (lost + invented + unexpected)[:10]:
            print("  wrong:", repr(text[:60]), "fault:", self.sent.get(text))
        return not (lost or invented or unexpected)


good = [Trial(by_manager, random.Random(SEED)).run(MESSAGES // 2) for by_manager in (False, True)]
sys.exit(0 if all(good) else 1)
