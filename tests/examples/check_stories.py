#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs what the documents tell the reader to type, on a server of its own, and compares what comes out.

In a document, a block marked "console" holds commands (lines that begin with "$ ") and under each one its
output; a block marked "trace" holds lines of the server's trace, in order. In both, an ellipsis stands for
any text within a line, and alone on a line for any number of lines. A comment "<!-- server options: ... -->"
gives the server further options.
"""

import argparse
import os
import re
import select
import shlex
import signal
import subprocess
import sys
import tempfile

DEADLINE_S = 60
ANYTHING = "…"
BLOCK = re.compile(r"^```(console|trace)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
OPTIONS = re.compile(r"<!-- server options: (.*?) -->")
PORT_OF_THE_DOCUMENTS = "11001"


class Mismatch(Exception):
    pass


class Server:
    """The server on the simulated ECU with the examples."""

    def __init__(self, program, examples, home, further_options):
        self.lines = []
        self.rest = b""
        self.position = 0
        self.process = subprocess.Popen(
            [program, "--headless", "--listen", "127.0.0.1", "--tcp-port", "0", "--diag-port", "SIM",
             "--power", "dry-run", "--asap-folder", f"{examples}/asap", "--korv-folder", f"{examples}/ecu",
             "--settings", f"{home}/settings.ini", "--install-record", f"{home}/record.ini", *further_options],
            stdout=subprocess.PIPE, stdin=subprocess.DEVNULL)
        self.port = self.find(re.compile(r" *> LocalPort=(\d+)")).group(1)
        self.position = 0

    def next_line(self):
        while self.position == len(self.lines):
            readable, _, _ = select.select([self.process.stdout], [], [], DEADLINE_S)
            data = os.read(self.process.stdout.fileno(), 65536) if readable else b""
            if not data:
                raise Mismatch("the trace ends here")
            *whole, self.rest = (self.rest + data).split(b"\n")
            self.lines += [line.decode() for line in whole]
        self.position += 1
        return self.lines[self.position - 1]

    def find(self, pattern):
        while True:
            match = pattern.fullmatch(self.next_line())
            if match:
                return match

    def stop(self):
        self.process.send_signal(signal.SIGTERM)
        return self.process.wait(DEADLINE_S)


def pattern_of(line):
    return re.compile(".*".join(re.escape(part) for part in line.split(ANYTHING)))


def commands_of(block):
    """Pairs of a command and its expected lines."""
    pairs = []
    for line in block.splitlines():
        if line.startswith("$ "):
            pairs.append((line[2:], []))
        elif pairs:
            pairs[-1][1].append(line)
        else:
            raise Mismatch(f"output without a command: {line}")
    return pairs


def compare(expected, actual, what):
    at = 0
    skipping = False
    for line in expected:
        if line == ANYTHING:
            skipping = True
            continue
        pattern = pattern_of(line)
        while skipping and at < len(actual) and not pattern.fullmatch(actual[at]):
            at += 1
        if at == len(actual) or not pattern.fullmatch(actual[at]):
            found = actual[at] if at < len(actual) else "the end of the output"
            raise Mismatch(f"{what}\n  expected: {line}\n  found:    {found}\n  whole output:\n" + "\n".join(actual))
        at += 1
        skipping = False
    if at < len(actual) and not skipping:
        raise Mismatch(f"{what}\n  output that the document does not show: {actual[at]}")


def run_command(command, server, client):
    words = shlex.split(command)
    if words[0] != "asap3":
        raise Mismatch(f"only asap3 is run, not: {command}")
    words = [client] + [server.port if word == PORT_OF_THE_DOCUMENTS else word for word in words[1:]]
    done = subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=DEADLINE_S, check=False)
    return done.stdout.decode().replace(f":{server.port}", f":{PORT_OF_THE_DOCUMENTS}").splitlines()


def check_trace(block, server):
    """The first line is looked for; those that follow must come at once, but for an ellipsis."""
    skipping = True
    for line in block.splitlines():
        if line == ANYTHING:
            skipping = True
            continue
        pattern = pattern_of(line)
        try:
            if skipping:
                server.find(pattern)
            else:
                compare([line], [server.next_line()], "trace")
        except Mismatch as mismatch:
            raise Mismatch(f"trace line: {line}\n{mismatch}") from None
        skipping = False


def check(path, options):
    with open(path, encoding="utf-8") as file:
        text = file.read()
    blocks = BLOCK.findall(text)
    further_options = [option for given in OPTIONS.findall(text) for option in given.split()]
    if not blocks:
        raise Mismatch("no console block and no trace block")
    commands = 0
    with tempfile.TemporaryDirectory() as home:
        server = Server(options.server, options.examples, home, further_options)
        try:
            for kind, block in blocks:
                if kind == "trace":
                    check_trace(block, server)
                    continue
                for command, expected in commands_of(block):
                    compare(expected, run_command(command, server, options.client), f"$ {command}")
                    commands += 1
        finally:
            status = server.stop()
    if status != 0:
        raise Mismatch(f"the server ended with status {status}")
    return commands


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--server", required=True)
    parser.add_argument("--client", required=True)
    parser.add_argument("--examples", required=True)
    parser.add_argument("documents", nargs="+")
    options = parser.parse_args()
    failed = False
    for path in options.documents:
        try:
            commands = check(path, options)
            print(f"{path}: {commands} commands as written")
        except Mismatch as mismatch:
            failed = True
            print(f"{path}: {mismatch}", file=sys.stderr)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
