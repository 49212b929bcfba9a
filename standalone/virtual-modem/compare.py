"""Compares veld with gammu-smsd and smstools on one virtual modem: compare.py VELD SMS [PEER...]. VELD and SMS are
programs; scripts/compare-peers explains PEER. Prints wall times, processor times, and memory as PSS."""
import json
import os
import pathlib
import secrets
import signal
import socket
import socketserver
import subprocess
import sys
import threading
import time

VELD, SMS = map(os.path.abspath, sys.argv[1:3])
import pdu  # noqa: E402
from manager import Manager, wait_for  # noqa: E402
from virtual_modem import VirtualModem  # noqa: E402

IDLE, MANY, OUT = int(os.environ.get("IDLE", 60)), 100, 10
TICK = os.sysconf("SC_CLK_TCK")
SETTINGS = {"code": 200, "result": {"enabled": True, "sentLimit": 1000, "receivedLimit": 1000, "smsCommands": {
    "enabled": False, "whitelist": {"enabled": False, "numbers": []}, "password": {"enabled": False, "text": ""},
    "checkinEnabled": False, "rebootEnabled": False}}}
GAMMU = """[gammu]
device = /run/port
connection = at115200
[smsd]
service = files
logfile = /run/gammu.log
inboxpath = /run/peer/in/
outboxpath = /run/peer/out/
sentsmspath = /run/peer/sent/
errorsmspath = /run/peer/failed/
"""
SMSTOOLS = """devices = GSM1
logfile = /run/smstools.log
outgoing = /run/peer/out
checked = /run/peer/checked
incoming = /run/peer/in
failed = /run/peer/failed
sent = /run/peer/sent
[GSM1]
device = /run/port
incoming = yes
baudrate = 115200
"""


class Api(socketserver.StreamRequestHandler):
    def handle(self):
        while self.rfile.readline().strip():
            pass
        body = json.dumps(SETTINGS).encode()
        self.wfile.write(b"HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: %d\r\n\r\n%b" % (len(body), body))


def processes(name):
    found = []
    for process in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            if (process / "comm").read_text().strip() == name:
                found.append(process)
        except OSError:
            pass
    return found


def processor_time(name):
    """Returns the processor time of the processes, and the time of their ended children, in milliseconds."""
    fields = [process.joinpath("stat").read_text().rsplit(")", 1)[1].split() for process in processes(name)]
    return (sum(int(f[11]) + int(f[12]) for f in fields) * 1000 / TICK,
            sum(int(f[13]) + int(f[14]) for f in fields) * 1000 / TICK)


def memory(name):
    """Returns the proportional memory (PSS) of the processes, in KiB."""
    rollups = [process.joinpath("smaps_rollup").read_text() for process in processes(name)]
    return sum(int(line.split()[1]) for text in rollups for line in text.splitlines() if line.startswith("Pss:"))


class Veld:
    name, inbox = "veld", pathlib.Path("/var/config/sms/inbox/received")

    def __init__(self, config):
        pathlib.Path("/run/smsconfig").write_text(config)
        tool = pathlib.Path("/run/bin/sms")
        tool.parent.mkdir(exist_ok=True)
        tool.write_text(f"#!/bin/sh\nSMS_CONFIG=/run/smsconfig exec {SMS} \"$@\"\n")
        tool.chmod(0o755)

    def start(self):
        subprocess.run([VELD], env={**os.environ, "PATH": "/run/bin:" + os.environ["PATH"]}, check=True)

    def queue(self, number):
        record = {"guid": f"2026010100000{number}", "recipient": "+4917011111", "message": f"out {number}"}
        file = pathlib.Path("/var/config/sms/outbox/sending") / record["guid"]
        file.write_text(json.dumps(record))


class Gammu:
    name, inbox = "gammu-smsd", pathlib.Path("/run/peer/in")

    def start(self):
        pathlib.Path("/run/gammurc").write_text(GAMMU)
        subprocess.run(["gammu-smsd", "-c", "/run/gammurc", "-d"], check=True)

    def queue(self, number):
        pathlib.Path(f"/run/peer/out/OUTA20260101_000000_{number}_+4917011111_x.txt").write_text(f"out {number}")


class Smstools:
    name, inbox = "smsd", pathlib.Path("/run/peer/in")

    def start(self):
        pathlib.Path("/run/smsd.conf").write_text(SMSTOOLS)
        subprocess.run(["smsd", "-c/run/smsd.conf", "-p/run/smsd.pid"], check=True)

    def queue(self, number):
        pathlib.Path(f"/run/peer/out/{number}").write_text(f"To: 4917011111\n\nout {number}")


def count_filed(peer):
    return len(list(peer.inbox.iterdir())) if peer.inbox.exists() else 0


def measure(title, peer, modem, others=()):
    """Measures a peer and prints its figures. `others` names processes that the peer needs."""
    def receive(count):
        for i in range(count):
            modem.receive(pdu.deliveries("+4917022222", f"text {i}")[0])
    receive(1)
    begin = time.monotonic()
    peer.start()
    wait_for("the first message", lambda: count_filed(peer) == 1, 120)
    first = time.monotonic() - begin
    time.sleep(10)
    before = [processor_time(name) for name in (peer.name, *others)]
    time.sleep(IDLE)
    after = [processor_time(name) for name in (peer.name, *others)]
    idle = [(round(a[0] - b[0]), round(a[1] - b[1])) for a, b in zip(after, before)]
    begin = time.monotonic()
    receive(MANY)
    wait_for("the burst of messages", lambda: count_filed(peer) == MANY + 1, 300)
    many = time.monotonic() - begin
    begin, sent = time.monotonic(), len(modem.sent)
    for i in range(OUT):
        peer.queue(10 + i)
    wait_for("the sent messages", lambda: len(modem.sent) == sent + OUT, 300)
    print(f"{title}: first message after {first:.1f} s; idle minute {dict(zip((peer.name, *others), idle))} ms (own, "
          f"tools); memory {[(name, memory(name)) for name in (peer.name, *others)]} KiB; {MANY} received in {many:.1f} s; "
          f"{OUT} sent in {time.monotonic() - begin:.1f} s", flush=True)
    for process in processes(peer.name):
        os.kill(int(process.name), signal.SIGKILL)


def main():
    for folder in ("in", "out", "sent", "failed", "checked"):
        pathlib.Path("/run/peer", folder).mkdir(parents=True)
    pathlib.Path("/run/api").mkdir()
    api = socketserver.ThreadingUnixStreamServer("/run/api/http.sock", Api)
    threading.Thread(target=api.serve_forever, daemon=True).start()
    log = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
    log.bind("/dev/log")
    threading.Thread(target=lambda: [None for _ in iter(lambda: log.recv(9000), b"")], daemon=True).start()
    wanted = sys.argv[3:] or ["port", "manager", "gammu", "smstools"]
    for peer in wanted:
        modem = VirtualModem((0, 300))
        for file in [*Veld.inbox.glob("*"), *Gammu.inbox.glob("*")]:
            file.unlink()
        if peer == "manager":
            name = "compared-" + secrets.token_hex(8)  # must be unique on this machine
            modem.plug_into_socket(name)
            manager = Manager(name)
            begin = time.monotonic()
            manager.start()
            wait_for("the modem", manager.has_modem)
            print(f"ModemManager has found the modem after {time.monotonic() - begin:.1f} s")
            measure("veld, ModemManager", Veld(""), modem, ("ModemManager", "dbus-daemon"))
            manager.stop()
            continue
        modem.plug_into_port("/run/port")
        measure(peer, {"port": lambda: Veld("port = /run/port\n"), "gammu": Gammu, "smstools": Smstools}[peer](), modem)
        modem.unplug()


main()
