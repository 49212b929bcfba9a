"""Compares sms-tool.md with the daemon's calls of the tool and with a listing. Usage: sms_tool_test.py GATEWAY"""
import json
import os
import pathlib
import unittest

from documents import Document, Gateway
from shared import FOLDERS, remove_messages, write_program

DOCUMENT = Document("sms-tool.md")
TOOL = "/run/gateway/bin/sms"
CALLS = pathlib.Path("/run/gateway/calls")
RECORDER = """echo "$SMS_CONFIG" sms "$@" >>{calls}
if [ "$2" = send ]; then od -An -c "$4" | tr -d ' \\n' >>{calls}.text; fi
exec {tool} "$@"
"""


class SmsToolTest(unittest.TestCase):
    def test_the_daemon_makes_the_calls_of_the_document(self):
        with Gateway() as gateway:
            write_program(TOOL, RECORDER.format(calls=CALLS, tool=os.readlink(TOOL)))
            gateway.run("start")
            CALLS.unlink()
            gateway.run('receive +4917099999 "text"', "queue +4917011111 text", "pass", "pass")
        forms = {name: DOCUMENT.block(name).splitlines() for name in ("receive", "send")}
        lists = forms["receive"][:2]
        self.assertEqual(CALLS.read_text().splitlines(),
                         ["/etc/smsconfig " + call for call in forms["receive"] + forms["send"] + lists])
        self.assertEqual(CALLS.with_suffix(".text").read_text(), "text")

    def test_the_daemon_reads_the_listing_of_the_document(self):
        remove_messages()
        with Gateway() as gateway:
            gateway.run("start", 'receive +4917099999 "Grüße [\\"5 €\\"]\\nzwei"',
                        'receive +4917088888 "The pump has stopped." --parts 2 --reference 7')
            printed = "".join(file.read_text() for file in sorted(pathlib.Path("/run/modem/unread").iterdir()))
            self.assertEqual([line for line in printed.splitlines() if "index" not in line],
                             [line for line in DOCUMENT.block("listing").splitlines() if "index" not in line])
            gateway.run("pass")
        records = [json.loads(file.read_text()) for file in sorted(FOLDERS["received"].iterdir())]
        self.assertEqual([record["message"].replace("\n", "\\n") for record in records],
                         DOCUMENT.block("texts").splitlines())


unittest.main(verbosity=2)
