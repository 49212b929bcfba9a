"""Runs ModemManager for a virtual modem, on its own system bus. A test profile tells ModemManager the modem's socket."""
import os
import pathlib
import subprocess
import time

BUS = "unix:path=/run/dbus/system_bus_socket"
CONFIG = """<busconfig><type>system</type><listen>{bus}</listen><policy context="default">
<allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/><allow user="*"/>
</policy></busconfig>"""
MANAGER = ["ModemManager", "--test-session", "--test-enable", "--test-no-udev", "--no-auto-scan",
           "--test-no-suspend-resume", "--test-no-qrtr"]
NAME = "org.freedesktop.ModemManager1"


def wait_for(what, condition, bound=30):
    end = time.monotonic() + bound
    while not condition():
        assert time.monotonic() < end, f"waited {bound} s for {what}"
        time.sleep(0.02)


class Manager:
    """A bus and its ModemManager. `socket` is the abstract name of the modem's socket. Writes files to /run: use it in a
    private gateway."""

    def __init__(self, socket, log="/run/ModemManager.log"):
        self.socket, self.log, self.daemon = socket, log, None
        self.environment = {**os.environ, "DBUS_SESSION_BUS_ADDRESS": BUS, "DBUS_SYSTEM_BUS_ADDRESS": BUS}
        config = pathlib.Path("/run/dbus/bus.conf")
        config.parent.mkdir(exist_ok=True)
        config.write_text(CONFIG.format(bus=BUS))
        self.bus = subprocess.Popen(["dbus-daemon", "--nofork", "--config-file", config])
        wait_for("the bus", pathlib.Path("/run/dbus/system_bus_socket").exists)

    def ask(self, *words):
        """Calls a method with dbus-send. Returns the output, or None if the call fails."""
        call = subprocess.run(["dbus-send", "--system", "--print-reply", "--dest=" + NAME, *words],
                              env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        return call.stdout if call.returncode == 0 else None

    def start(self):
        with open(self.log, "a") as log:
            self.daemon = subprocess.Popen(MANAGER, env=self.environment, stdout=log, stderr=log)
        wait_for("ModemManager", lambda: self.ask("/org/freedesktop/ModemManager1",
                                                  "org.freedesktop.DBus.Introspectable.Introspect"))
        self.show_modem()

    def show_modem(self):
        """Announces the modem to ModemManager, as udev does when a modem is plugged in."""
        assert self.ask("/org/freedesktop/ModemManager1", NAME + ".Test.SetProfile", "string:virtual", "string:generic",
                        "array:string:abstract:" + self.socket) is not None

    def has_modem(self):
        objects = self.ask("/org/freedesktop/ModemManager1", "org.freedesktop.DBus.ObjectManager.GetManagedObjects")
        return objects is not None and NAME + ".Modem.Messaging" in objects

    def kill(self):
        self.daemon.kill()
        self.daemon.wait()

    def stop(self):
        self.kill()
        self.bus.terminate()
        self.bus.wait()
