"""Compares message-files.md and its schema with the daemon's files. Usage: message_files_test.py GATEWAY"""
import json
import os
import re
import shutil
import subprocess
import unittest

import jsonschema

from documents import DOCS, Document, Gateway
from shared import FOLDERS, SMS, remove_messages

DOCUMENT = Document("message-files.md")
SCHEMA = json.loads((DOCS / "message-record.schema.json").read_text())


def validator(definition=None):
    schema = dict(SCHEMA, **({"anyOf": [{"$ref": f"#/$defs/{definition}"}]} if definition else {}))
    return jsonschema.Draft202012Validator(schema)


def timeless(record):
    """Returns the record as text, with placeholders for guid and timestamp."""
    text = re.sub(r'"guid": "\d{16}"', '"guid": "G"', json.dumps(record, sort_keys=True))
    return re.sub(r'"\d{4}/\d\d/\d\d \d\d:\d\d:\d\d"', '"T"', text)


def put(name, content):
    SMS.joinpath("outbox/new").write_text(content if isinstance(content, str) else json.dumps(content))
    SMS.joinpath("outbox/new").rename(FOLDERS["sending"] / name)


def queued(guid="2026010100000000", **keys):
    record = {"guid": guid, "recipient": "+491", "message": "text"}
    return {key: value for key, value in {**record, **keys}.items() if value is not None}


class MessageFilesTest(unittest.TestCase):
    def setUp(self):
        remove_messages()
        shutil.rmtree("/run/modem", ignore_errors=True)

    def test_the_folders_match_the_gateway(self):
        with Gateway() as gateway:
            gateway.run("start", "stop")
        rows = [row[0].strip("`") for row in DOCUMENT.table("Folders")]
        self.assertEqual(sorted(rows), sorted(str(folder.parent.relative_to(SMS)) + "/" + folder.name
                                              for folder in SMS.glob("*/*") if folder.is_dir()))

    def test_the_examples_match_the_records_of_the_daemon_and_the_schema(self):
        with Gateway() as gateway:
            gateway.run("start", 'receive +4917012345 "p secret #ping 8.8.8.8 3"', "pass",
                        'receive +4917099999 "Grüße aus dem Feld"', "refuse +4917022222",
                        'receive +4917088888 "The pump has stopped." --parts 2 --hold 2 --reference 1',
                        'queue +4917022222 "Pump 2 has stopped" --retries 3', "pass", "wait 30s")
            subprocess.run(["bash", "-euc", DOCUMENT.block("queue")], check=True)
            self.assertEqual([file for file in (SMS / "outbox").iterdir() if file.is_file()], [])
            waiting = json.loads(next(FOLDERS["sending"].iterdir()).read_text())
            validator("outgoing").validate(waiting)
            gateway.run("pass")
            self.assertEqual(gateway.values("modem sent"), [{"recipient": "+4917011111", "text": "The tank is full"}])
        real = {timeless(json.loads(file.read_text())) for folder in FOLDERS.values() for file in folder.iterdir()}
        examples = DOCUMENT.json_blocks()
        self.assertEqual({timeless(example) for example in examples.values()}, real)
        self.assertEqual({file.name for file in FOLDERS["sent"].iterdir()}, {waiting["guid"]})
        for name, record in examples.items():
            validator("outgoing" if name in ("sent", "failed") else "received").validate(record)
        for file in (file for folder in FOLDERS.values() for file in folder.iterdir()):
            validator().validate(json.loads(file.read_text()))
        written = {row[0] for row in DOCUMENT.table("Record")}
        documented = set(re.findall(r"`([a-zA-Z-]+)`", " ".join(written)))
        self.assertEqual(documented, {key for example in examples.values() for key in example})

    def test_the_schema_refuses_faulty_records(self):
        received = {"guid": "2026010100000000", "source": "+491", "message": "", "timestamp": "2026/01/01 00:00:00"}
        rows = [  # name, record
            ("null", None),
            ("a list", []),
            ("no guid", queued(guid=None)),
            ("a path", queued(guid="../2026010100000000")),
            ("a short guid", queued(guid="1")),
            ("no recipient", queued(recipient=None)),
            ("an empty recipient", queued(recipient="")),
            ("a shell command as the recipient", queued(recipient="+491; reboot")),
            ("a number as the recipient", queued(recipient=491)),
            ("no message", queued(message=None)),
            ("an object as the message", queued(message={})),
            ("a NUL in the message", queued(message="a\0b")),
            ("retries below zero", queued(retries=-1)),
            ("a text as the retries", queued(retries="3")),
            ("an unknown status", queued(status="received")),
            ("a source and a recipient", queued(source="+491")),
            ("another time format", dict(received, timestamp="2026-01-01T00:00:00")),
            ("isSMSCommand is false", dict(received, isSMSCommand=False)),
            ("parts without a part-id", dict(received, parts=["a", None])),
            ("a part-id without parts", {**received, "part-id": 1}),
        ]
        validator().validate(received)
        validator().validate(queued(retries=0, other=[1]))
        for name, record in rows:
            with self.subTest(name):
                self.assertFalse(validator().is_valid(record))

    def test_faulty_files_end_in_the_documented_folder(self):
        rows = [  # beginning of a row in the document; file name; content; after two passes: messages sent, folder
            ("the file's name is not the guid", "other", queued(), 2, "sending"),
            ("no `guid`", queued()["guid"], queued(guid=None), 2, "sending"),
            ("`recipient` is missing", queued()["guid"], queued(recipient=None), 0, "failed"),
            ("no `message`", queued()["guid"], queued(message=None), 1, "sent"),
            ("`message` or `recipient` is a number", queued()["guid"], queued(message=42), 1, "sent"),
            ("the content is an array", "other", [1], 0, "sending"),
            ("the content is not JSON", queued()["guid"], "{", 0, "sending"),
        ]
        for beginning, name, content, sent, folder in rows:
            with self.subTest(beginning):
                _, _, lines = self.after_two_passes(name, content)
                self.assertEqual(len([line for line in lines if '"+491"' in line]), sent)
                self.assertEqual(self.where(name), folder)
        written = [row[0] for row in DOCUMENT.table("What goes wrong")]
        for beginning in [row[0] for row in rows] + ["`null`", "`recipient` or `message`", "`retries`"]:
            self.assertEqual(len([text for text in written if text.startswith(beginning)]), 1, beginning)
        self.assertEqual(len(written), len(rows) + 3)

    def test_a_file_that_contains_null_moves_all_records(self):
        before, after, lines = self.after_two_passes("2026010100000000", "null")
        self.assertEqual(len(lines), len(before) + len(after))
        self.assertEqual([self.where(name) for name in before], ["sent"] * len(before))
        self.assertEqual([self.where(name) for name in after], ["failed"] * len(after))
        self.assertIsNone(self.where("2026010100000000"))

    def test_a_message_that_is_an_object_ends_the_pass(self):
        before, after, lines = self.after_two_passes("2026010100000000", queued(message={}))
        self.assertEqual(len(lines), len(before))
        self.assertEqual({self.where(name) for name in after + ["2026010100000000"]}, {"sending"})

    def after_two_passes(self, name, content):
        """Queues a file among five good files. Returns the good files listed before and after it, and the sent messages."""
        self.setUp()
        good = [f"20260101000000{number}" for number in range(10, 15)]
        with Gateway() as gateway:
            gateway.run("start")
            for guid in good[:3] + [name] + good[3:]:
                put(guid, content if guid == name else queued(guid=guid, recipient="+492"))
            listed = os.listdir(FOLDERS["sending"])
            gateway.run("pass", "pass")
            lines = gateway.ask("modem sent")
        at = listed.index(name)
        return listed[:at], listed[at + 1:], lines

    def where(self, name):
        found = [folder for folder, path in FOLDERS.items() if (path / name).exists()]
        return found[0] if found else None


unittest.main(verbosity=2)
