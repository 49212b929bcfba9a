"""Compares local-api.md and its OpenAPI document with the daemon's requests. Usage: local_api_test.py GATEWAY"""
import json
import os
import re
import subprocess
import unittest
from pathlib import Path

import jsonschema
import yaml

from documents import DOCS, Document, Gateway, http_request

DOCUMENT = Document("local-api.md")
API = yaml.safe_load((DOCS / "local-api.openapi.yaml").read_text())
OPENAPI_SCHEMA = Path("/usr/share/openapi-specification/schemas/v3.0/schema.yaml")
COMMANDS = [line.split() for line in
            subprocess.run([os.environ["COMMAND_TABLE"]], capture_output=True, check=True, text=True).stdout.splitlines()]
PHONE = "+4917012345"


def valid(name, value):
    schema = {"$ref": f"#/components/schemas/{name}", "components": API["components"]}
    return jsonschema.Draft202012Validator(schema).is_valid(value)


def command(gateway, text):
    """Lets the daemon receive the text. Returns the bodies that the daemon posts."""
    gateway.ask("log --new")
    gateway.run(f"receive {PHONE} '{text}'", "pass")
    return [line.split("postFields = ", 1)[1] for line in gateway.ask("log --new") if "postFields = " in line]


class LocalApiTest(unittest.TestCase):
    def test_the_openapi_document_is_valid(self):
        jsonschema.Draft4Validator(yaml.safe_load(OPENAPI_SCHEMA.read_text())).validate(API)

    def test_the_settings_match_the_gateway(self):
        with Gateway() as gateway:
            answer = json.loads(http_request("GET", "/api/sms"))
            self.assertEqual(DOCUMENT.json_blocks()["settings"], answer)
            gateway.run("start")
            self.assertEqual(gateway.values("requests --all")[-1]["path"], "/api/sms")
        self.assertTrue(valid("Settings", answer))
        self.assertFalse(valid("Failure", answer))
        self.assertTrue(valid("Failure", {"code": 500}))
        self.assertFalse(valid("Settings", {"code": 500, "result": answer["result"]}))

    def test_only_the_required_settings_are_required(self):
        with Gateway() as gateway:
            settings = json.loads(http_request("GET", "/api/sms"))["result"]
            for key, required, _ in DOCUMENT.table("Settings"):
                with self.subTest(key):
                    key = key.strip("`")
                    value = settings
                    for name in key.split("."):
                        value = value[name]
                    gateway.ask("log --new")
                    gateway.run(f"settings {key} --remove")
                    self.assertFalse(valid("Settings", json.loads(http_request("GET", "/api/sms"))))
                    self.assertEqual(required, "yes")
                    self.assertIn("status 1", gateway.ask("start")[0])
                    self.assertRegex(gateway.ask("log --new")[-1], r"\[ERROR\] Exit: ")
                    gateway.run(f"settings {key} '{json.dumps(value)}'")
            optional = {row[2] for row in COMMANDS} - {"checkinEnabled", "rebootEnabled"}
            gateway.run(*(f"settings smsCommands.{flag} --remove" for flag in optional))
            self.assertTrue(valid("Settings", json.loads(http_request("GET", "/api/sms"))))
            self.assertIn("runs", gateway.ask("start")[0])

    def test_the_daemon_posts_the_bodies_of_the_document(self):
        blocks = {name: DOCUMENT.block(name).splitlines() for name in ("ping", "reboot", "broken")}
        with Gateway() as gateway:
            gateway.run("start")
            self.assertEqual(command(gateway, "p secret #ping 8.8.8.8 3"), blocks["ping"])
            self.assertEqual(command(gateway, "p secret #Reboot"), blocks["reboot"])
            self.assertEqual(json.loads(command(gateway, "P secret #ping a  b")[0])["args"], ["a", "", "b"])
            for argument, body in zip(re.findall(r"`#ping (a\"\S*)`", DOCUMENT.text), blocks["broken"], strict=True):
                self.assertEqual(command(gateway, f"p secret #ping {argument}"), [body])
        for name in "ping", "reboot":
            self.assertTrue(valid("Command", json.loads(blocks[name][0])))
        self.assertTrue(valid("Command", API["components"]["schemas"]["Command"]["example"]))
        for body in {}, {"recipients": [], "args": []}, {"recipients": ["1"], "args": [1]}, \
                {"recipients": ["1"], "args": ["a b"]}, {"recipients": ["1"], "args": [], "message": ""}:
            self.assertFalse(valid("Command", body), body)

    def test_the_commands_match_the_command_table(self):
        self.assertEqual([[cell.strip("`") for cell in row] for row in DOCUMENT.table("Commands")], COMMANDS)
        manual = (DOCS.parent / "packaging/man/veld.8.in").read_text()
        keywords = re.search(r"^The keyword may be written .*:\n((?:\.Cm .*\n|or\n)+)", manual, re.M).group(1)
        self.assertEqual(re.sub(r"\.Cm|[,.]|or\b", " ", keywords).split(), [row[0] for row in COMMANDS])
        parameter = API["paths"]["/api/command/{command}"]["post"]["parameters"][0]
        self.assertEqual({f"/api/command/{name}" for name in parameter["schema"]["enum"]}, {row[1] for row in COMMANDS})
        flags = {flag for flag in API["components"]["schemas"]["SmsCommands"]["properties"] if flag.endswith("Enabled")}
        self.assertEqual(flags, {row[2] for row in COMMANDS})

    def test_each_command_is_posted_to_its_path_if_its_flag_permits_it(self):
        with Gateway() as gateway:
            gateway.run("start")
            for keyword, path, flag in COMMANDS:
                with self.subTest(keyword):
                    before = gateway.values("requests")
                    command(gateway, f"p secret #{keyword} a")
                    wanted = {"path": path, "body": {"recipients": [PHONE], "args": ["a"]}}
                    self.assertEqual(gateway.values("requests"), before + [wanted])
                    gateway.run(f"settings smsCommands.{flag} false", "restart")
                    self.assertEqual(command(gateway, f"p secret #{keyword} a"), [])
                    gateway.run(f"settings smsCommands.{flag} true")

    def test_the_answers_of_the_gateway_have_the_documented_form(self):
        self.assertTrue(valid("Envelope", DOCUMENT.json_blocks()["envelope"]))
        self.assertFalse(valid("Envelope", {"result": None}))
        with Gateway():
            for _, path, _ in COMMANDS:
                answer = json.loads(http_request("POST", path, DOCUMENT.block("ping")))
                self.assertTrue(valid("Envelope", answer))
                self.assertEqual(answer["code"], 200)
            for body in DOCUMENT.block("broken").splitlines():
                self.assertNotEqual(json.loads(http_request("POST", COMMANDS[0][1], body))["code"], 200)


unittest.main(verbosity=2)
