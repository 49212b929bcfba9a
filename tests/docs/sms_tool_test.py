"""sms-tool.md against the calls that the daemon makes and the listing that it reads: sms_tool_test.py GATEWAY"""
import json
import os
import pathlib
import unittest

from documents import SMS, Document, Gateway

DOCUMENT = Document("sms-tool.md")
TOOL = pathlib.Path("/run/gateway/bin/sms")
CALLS = pathlib.Path("/run/gateway/calls")
RECORDER = """#!/bin/sh
echo "$SMS_CONFIG" sms "$@" >>{calls}
[ "$2" != send ] || od -An -c "$4" | tr -d ' \\n' >>{calls}.text
exec {tool} "$@"
"""


def received():
    """The texts of the received messages, oldest first, a line each."""
    files = sorted((SMS / "inbox/received").iterdir())
    return [json.loads(file.read_text())["message"].replace("\n", "\\n") for file in files]


class SmsToolTest(unittest.TestCase):
    def setUp(self):
        for file in SMS.glob("*/*/*"):
            file.unlink()

    def test_the_forms_are_the_calls(self):
        with Gateway() as gateway:
            real = os.readlink(TOOL)
            TOOL.unlink()
            TOOL.write_text(RECORDER.format(calls=CALLS, tool=real))
            TOOL.chmod(0o755)
            gateway.run("start")
            CALLS.unlink()
            gateway.run('receive +4917099999 "text"', "queue +4917011111 text", "pass", "pass")
        forms = {name: DOCUMENT.block(name).splitlines() for name in ("receive", "send")}
        lists = forms["receive"][:2]
        self.assertEqual(CALLS.read_text().splitlines(),
                         ["/etc/smsconfig " + call for call in forms["receive"] + forms["send"] + lists])
        self.assertEqual(CALLS.with_suffix(".text").read_text(), "text")

    def test_the_listing_is_read_as_it_says(self):
        listing = DOCUMENT.block("listing")
        with Gateway() as gateway:
            gateway.run("start", 'receive +4917099999 "Grüße [\\"5 €\\"]\\nzwei"',
                        'receive +4917088888 "The pump has stopped." --parts 2 --reference 7')
            unread = pathlib.Path("/run/modem/unread")
            printed = "".join(file.read_text() for file in sorted(unread.iterdir()))
            self.assertEqual([line for line in printed.splitlines() if "index" not in line],
                             [line for line in listing.splitlines() if "index" not in line])
            gateway.run("pass")
        self.assertEqual(received(), DOCUMENT.block("texts").splitlines())

    def test_the_rows_about_the_listing_hold(self):
        rows = [  # name, user data, text
            ("escapes", r'"\"\\\n\r\t"', '"\\' "\\n" "\r\t"),
            ("a code", r'"\x00\x0a\x65"', "@\\ne"),
            ("the extension", r'"\x1be\x1b("', "€{"),
            ("UTF-8", '"äö€"', "äö€"),
            ("the end of the decoding", r'"\x41\xb1\x41"', r"A\xb1\x41"),
            ("two bytes of reference", r'"\x06\x08\x04\x12\x34\x01\x01\x00all"', "all"),
            ("another element", r'"\x04\x05\x02\x00\x41all"', "èé$@Aall"),
        ]
        for name, data, text in rows:
            with self.subTest(name), Gateway() as gateway:
                self.setUp()
                gateway.run("start")
                pathlib.Path("/run/modem/unread/00000099").write_text(
                    f"noise\nindex: 1\nsmsc-addr: 1\nnoise\naddr: +491\naddr: +492\nuser-data: {data}\nuser-data: no\n"
                    "index: 2\nuser-data: dropped\n")
                gateway.run("pass")
                self.assertEqual(received(), [text])


if __name__ == "__main__":
    unittest.main(verbosity=2)
