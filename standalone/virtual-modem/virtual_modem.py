"""A simulated modem, which answers AT commands (3GPP TS 27.005 in PDU mode, TS 27.007). ModemManager connects to its
abstract UNIX socket. Other programs use its pseudo terminal as a serial port."""
import os
import pty
import re
import select
import socket
import threading
import time
import tty

CTRL_Z, ESCAPE = b"\x1a", b"\x1b"
FIXED = {  # commands with a constant answer
    "+CGMI": "Virtual", "+GMI": "Virtual", "+CGMM": "Modem", "+GMM": "Modem", "+CGMR": "1", "+GMR": "1",
    "+CGSN": "490154203237518", "+GSN": "490154203237518", "+CIMI": "001010123456789", "+GCAP": "+GCAP: +CGSM",
    "+CREG=?": "+CREG: (0-2)", "+CGREG=?": "+CGREG: (0-2)", "+CEREG=?": "+CEREG: (0-2)", "+CSQ": "+CSQ: 23,99",
    "+CFUN?": "+CFUN: 1", "+CMGF=?": "+CMGF: (0)", "+CNMI=?": "+CNMI: (0-2),(0-1),(0),(0),(0,1)",
    "+CSCS=?": '+CSCS: ("IRA","GSM","UCS2")', "+CSCS?": '+CSCS: "IRA"', "+CNUM": '+CNUM: "","+4917099999",145',
    "+CSCA?": '+CSCA: "+447700900123",145', "+WS46=?": "+WS46: (22)", "+CMGF?": "+CMGF: 0",
    "+CGDCONT=?": '+CGDCONT: (1-4),"IP",,,(0),(0)', "+CRSM=176,12258,0,0,10": '+CRSM: 144,0,"98101430121181157002"', "I": "Virtual\r\nModem",
}
ACCEPTED = re.compile(r"([EVXZQ&S].*|\+(CMEE|CMGF|CNMI|CREG|CGREG|CEREG|CSCS|CFUN|COPS|CPMS|CSMS|CGEREP|CMER|CSCA|CPBS"
                      r"|IFC|ICF|CRC|CLIP|CGDCONT|CNSMOD)=.*)$")


class Memory:
    def __init__(self, places):
        self.places = places
        self.messages = {}  # by place: [kind, PDU]; the kinds are 0 (unread), 1 (read), 2 (draft) and 3 (sent)

    def put(self, pdu, kind=0):
        """Stores a message. Returns its place, or None if the memory is full."""
        place = next((i for i in range(1, self.places + 1) if i not in self.messages), None)
        if place is not None:
            self.messages[place] = [kind, pdu]
        return place


class Connection:
    """A program's connection to the modem. Its own thread writes the answers. Other threads write unsolicited lines."""

    def __init__(self, modem, read, write, stop, close):
        self.modem, self.read, self.write_bytes, self.stop, self.close = modem, read, write, stop, close
        self.echo, self.data_for, self.ended = True, None, False
        self.lock = threading.Lock()
        self.thread = threading.Thread(target=self.serve, daemon=True)
        self.thread.start()

    def write(self, text):
        with self.lock:
            try:
                if not self.ended:
                    self.write_bytes(text.encode())
            except OSError:
                pass

    def serve(self):
        pending = b""
        try:
            while chunk := self.read(4096):
                pending += chunk
                while pending:
                    end = re.search(rb"[\x1a\x1b]" if self.data_for else rb"[\r\x1b]", pending)
                    if not end:
                        break
                    if self.echo:
                        self.write(pending[:end.end()].decode("latin-1"))
                    line, stop, pending = pending[:end.start()], end.group(), pending[end.end():]
                    if stop == ESCAPE:
                        self.data_for = None
                    elif line.strip():
                        self.answer(line.strip().decode("latin-1"))
        except OSError:
            pass
        self.modem.connections.discard(self)
        with self.lock:
            self.ended = True
            self.close()

    def answer(self, line):
        time.sleep(self.modem.delay)
        if self.data_for:
            self.data_for, reply = None, self.modem.submit(line)
        elif line.upper().startswith("AT+CMGS="):
            self.data_for = line
            self.write("\r\n> ")
            return
        elif re.match(r"AT$|ATE[01]", line, re.I):
            self.echo = self.echo if len(line) == 2 else line[3] == "1"
            reply = "OK"
        else:
            with self.modem.lock:
                reply = self.modem.command(line[2:]) if line.upper().startswith("AT") else "ERROR"
        self.write(f"\r\n{reply}\r\n")


class VirtualModem:
    def __init__(self, places=(10, 300)):
        self.lock = threading.RLock()
        self.memories = {"SM": Memory(places[0]), "ME": Memory(places[1])}
        self.listed, self.received = "ME", "ME"
        self.connections, self.sent, self.waiting, self.log = set(), [], [], []
        self.delay = 0              # seconds before each answer
        self.pin, self.pins = None, []  # the PIN that the SIM requires; the PINs that programs have entered
        self.has_sim, self.registration = True, 1
        self.refuses_deletion, self.refusal_to_send = False, None
        self.listener = self.link = None

    # What the network does.

    def receive(self, pdu):
        """Delivers a message. If the memory is full, the message waits in the network."""
        with self.lock:
            self.waiting.append(pdu)
            self.take_waiting()

    def take_waiting(self):
        while self.waiting:
            place = self.memories[self.received].put(self.waiting[0])
            if place is None:
                return
            self.waiting.pop(0)
            for connection in list(self.connections):
                connection.write(f'\r\n+CMTI: "{self.received}",{place}\r\n')

    def submit(self, pdu):
        with self.lock:
            if self.refusal_to_send:
                return self.refusal_to_send
            self.sent.append(pdu)
            return f"+CMGS: {len(self.sent) % 256}\r\n\r\nOK"

    def held(self):
        return sum(len(memory.messages) for memory in self.memories.values())

    # The commands.

    def command(self, text):
        self.log.append(text)
        name = re.match(r"[+&]?[A-Z0-9]*", text, re.I).group().upper()
        if not self.has_sim and name in ("+CPIN", "+CIMI", "+CPMS", "+CMGL", "+CMGR", "+CNUM"):
            return "+CME ERROR: 10"
        if self.pin and name in ("+CIMI", "+CPMS", "+CMGL", "+CMGR", "+CNUM", "+CMGF", "+CSCA"):
            return "+CME ERROR: 11"
        handler = getattr(self, "do_" + name.strip("+").lower(), None)
        reply = handler(text[len(name):]) if handler else None
        if reply is not None:
            return reply
        if text in FIXED:
            return FIXED[text] + "\r\n\r\nOK"
        return "OK" if ACCEPTED.match(text) else "ERROR"

    def do_cpin(self, rest):
        if rest.startswith("="):
            self.pins.append(rest.strip('="'))
            if self.pins[-1] != self.pin:
                return "+CME ERROR: 16"
            self.pin = None
            return "OK"
        return f"+CPIN: {'SIM PIN' if self.pin else 'READY'}\r\n\r\nOK" if rest == "?" else "OK"

    def do_creg(self, rest):
        return f"+CREG: 2,{self.registration}\r\n\r\nOK" if rest == "?" else None

    def do_cgreg(self, rest):
        return f"+CGREG: 2,{self.registration}\r\n\r\nOK" if rest == "?" else None

    def do_cops(self, rest):
        return '+COPS: 0,0,"Virtual network",2\r\n\r\nOK' if rest == "?" else None

    def do_cpms(self, rest):
        if rest == "=?":
            return '+CPMS: ("SM","ME"),("SM","ME"),("SM","ME")\r\n\r\nOK'
        chosen = [name.strip('"') for name in rest[1:].split(",")] if rest.startswith("=") else []
        if any(name not in self.memories for name in chosen):
            return "+CMS ERROR: 302"
        self.listed = chosen[0] if chosen else self.listed
        self.received = chosen[2] if len(chosen) > 2 else self.received
        counts = [(name, len(self.memories[name].messages), self.memories[name].places)
                  for name in (self.listed, self.listed, self.received)]
        if chosen:
            return "+CPMS: " + ",".join(f"{used},{places}" for _, used, places in counts) + "\r\n\r\nOK"
        return "+CPMS: " + ",".join(f'"{name}",{used},{places}' for name, used, places in counts) + "\r\n\r\nOK"

    def shown(self, prefix, place, entry, with_place):
        kind, pdu = entry
        entry[0] = 1 if kind == 0 else kind
        where = f"{place}," if with_place else ""
        return f"{prefix}: {where}{kind},,{len(pdu) // 2 - 1 - int(pdu[:2], 16)}\r\n{pdu}\r\n"

    def do_cmgl(self, rest):
        if rest == "=?":
            return "+CMGL: (0-4)\r\n\r\nOK"
        wanted = int(rest[1:] or 0)
        entries = sorted(self.memories[self.listed].messages.items())
        return "".join(self.shown("+CMGL", place, entry, True) for place, entry in entries
                       if wanted in (4, entry[0])) + "\r\nOK"

    def do_cmgr(self, rest):
        entry = self.memories[self.listed].messages.get(int(rest[1:]))
        return self.shown("+CMGR", 0, entry, False) + "\r\nOK" if entry else "+CMS ERROR: 321"

    def do_cmgd(self, rest):
        if rest == "=?":
            return "+CMGD: (0-300),(0-4)\r\n\r\nOK"
        if self.refuses_deletion:
            return "+CMS ERROR: 500"
        if self.memories[self.listed].messages.pop(int(rest[1:].split(",")[0]), None) is None:
            return "+CMS ERROR: 321"
        self.take_waiting()
        return "OK"

    # The connections.

    def plug_into_socket(self, name):
        """Listens on the abstract UNIX socket "abstract:NAME". ModemManager's profile uses this prefix, too."""
        self.listener = socket.socket(socket.AF_UNIX)
        self.listener.bind("\0abstract:" + name)
        self.listener.listen()
        threading.Thread(target=self.accept, args=(self.listener,), daemon=True).start()

    def accept(self, listener):
        while True:
            try:
                peer, _ = listener.accept()
            except OSError:
                return
            self.connections.add(Connection(self, peer.recv, peer.sendall,
                                            lambda peer=peer: peer.shutdown(socket.SHUT_RDWR), peer.close))

    def plug_into_port(self, link):
        """Makes `link` a serial port. Keeps the port open: otherwise it would hang up when a program closes it."""
        master, slave = pty.openpty()
        tty.setraw(slave)
        os.symlink(os.ttyname(slave), link)
        self.link = link
        stopped, stop = os.pipe()

        def read(size):
            ready = select.select([master, stopped], [], [])[0]
            return b"" if stopped in ready else os.read(master, size)

        def close():
            for descriptor in (master, slave, stopped, stop):
                os.close(descriptor)
        self.connections.add(Connection(self, read, lambda data: os.write(master, data), lambda: os.write(stop, b"x"),
                                        close))

    def unplug(self):
        """Disconnects all programs from the modem, and waits until their connections have ended."""
        if self.listener:
            self.listener.shutdown(socket.SHUT_RDWR)
            self.listener.close()
        if self.link:
            os.unlink(self.link)
        self.listener = self.link = None
        for connection in list(self.connections):
            try:
                connection.stop()
            except OSError:
                pass  # the program has already closed the connection
            connection.thread.join()
