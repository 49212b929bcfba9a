"""Helpers for the tests of the documents: a document's examples and tables, and a simulated gateway."""
import json
import pathlib
import re
import socket
import subprocess
import sys

GATEWAY = sys.argv.pop(1)
DOCS = pathlib.Path(__file__).resolve().parents[2] / "docs"


class Document:
    def __init__(self, name):
        self.text = (DOCS / name).read_text()

    def block(self, name):
        """Returns the content of the code block that begins with "```LANGUAGE name"."""
        found = re.findall(rf"^```\w+ {name}\n(.*?)^```$", self.text, re.M | re.S)
        assert len(found) == 1, f"{len(found)} blocks are named {name}"
        return found[0]

    def json_blocks(self):
        return {name: json.loads(text) for name, text in
                re.findall(r"^```json (\S+)\n(.*?)^```$", self.text, re.M | re.S)}

    def table(self, heading):
        """Returns the rows of the first table under a heading, without the table's header."""
        section = self.text.split(f"## {heading}\n", 1)[1].split("\n## ", 1)[0]
        rows = [[cell.strip() for cell in line.strip("|").split("|")]
                for line in section.splitlines() if line.startswith("|")]
        return rows[2:]


class Gateway:
    """A simulated gateway. Its command "start" starts the daemon."""

    def __enter__(self):
        self.process = subprocess.Popen([GATEWAY, "--echo"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.ask("status")
        return self

    def __exit__(self, kind, *_):
        self.process.stdin.close()
        self.process.stdout.read()
        self.process.stdout.close()
        status = self.process.wait(60)
        assert kind or status == 0, f"the gateway ended with status {status}"

    def ask(self, line):
        print(line, "# done", sep="\n", file=self.process.stdin, flush=True)
        answer = []
        while (said := self.process.stdout.readline()) not in ("# done\n", ""):
            answer.append(said.rstrip("\n"))
        assert said, f'the gateway ended at "{line}"'
        return [said for said in answer[1:] if said]  # answer[0] is the echo of the line

    def run(self, *lines):
        for line in lines:
            self.ask(line)

    def values(self, line):
        return [json.loads(answer) for answer in self.ask(line)]


def http_request(method, path, body=""):
    """Sends a request to the local API. Returns the body of the answer."""
    with socket.socket(socket.AF_UNIX) as api:
        api.connect("/var/run/api/http.sock")
        api.sendall(f"{method} {path} HTTP/1.0\r\nHost: localhost\r\nContent-Type: application/json\r\n"
                    f"Content-Length: {len(body.encode())}\r\n\r\n{body}".encode())
        return api.makefile("rb").read().split(b"\r\n\r\n", 1)[1].decode()
