"""The message folders and helper functions for several Python tests."""
import pathlib
import time

SMS = pathlib.Path("/var/config/sms")
FOLDERS = {"received": SMS / "inbox/received", **{name: SMS / "outbox" / name for name in ("sending", "sent", "failed")}}


def remove_messages():
    for folder in FOLDERS.values():
        for file in folder.glob("*"):
            file.unlink()


def write_program(path, text):
    """Replaces the file or the link at `path` by a shell script. Returns the script's path."""
    file = pathlib.Path(path)
    file.parent.mkdir(exist_ok=True)
    file.unlink(missing_ok=True)
    file.write_text("#!/bin/sh\n" + text)
    file.chmod(0o755)
    return file


def wait_for(condition):
    end = time.monotonic() + 30
    while not condition():
        assert time.monotonic() < end, "the condition is not true within 30 s"
        time.sleep(0.01)
