#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Counts the instructions that the server executes for a command, which is the same on every machine.

usage: count_instructions.py SERVER EXAMPLES

Runs the server under callgrind twice for each command, with few and with many of them, and divides the
difference. Prints each count with its limit; exit status 1 when one is missed.
"""
import os
import re
import signal
import socket
import struct
import subprocess
import sys
import tempfile

ITEMS = 1000
ITEMS_A_REQUEST = 50
FEW, MANY = 20, 220


def word(number):
    return struct.pack(">H", number)


def text(string):
    data = string.encode("latin-1")
    return word(len(data)) + data + (b"\0" if len(data) % 2 else b"")


def frame(code, parameters=b""):
    body = word(len(parameters) + 6) + word(code) + parameters
    return body + word(sum(struct.unpack(">%dH" % (len(body) // 2), body)) & 0xFFFF)


class Client:
    def __init__(self, port):
        self.socket = socket.create_connection(("127.0.0.1", port))
        self.socket.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)

    def receive(self, count):
        data = b""
        while len(data) < count:
            part = self.socket.recv(count - len(data))
            if not part:
                sys.exit("the server closed the connection")
            data += part
        return data

    def ask(self, request):
        self.socket.sendall(request)
        head = self.receive(2)
        reply = head + self.receive(struct.unpack(">H", head)[0] - 2)
        if reply[4:6] != b"\0\0":
            sys.exit("the server refused %s: %s" % (request.hex(), reply.hex()))
        return reply

    def begin(self, description, section):
        self.ask(frame(2))
        self.ask(frame(20, word(0x0201) + text("count")))
        reply = self.ask(frame(3, text(description) + text(section) + word(0)))
        return struct.unpack(">H", reply[6:8])[0]


def write_bench_files(folder):
    with open(folder + "/asap/count.xml", "w") as file:
        file.write("<xml><ecu name='COUNT' url='count.xml'>")
        for i in range(ITEMS):
            file.write("<data name='Item%d' shortname='Item%d'/>" % (i, i))
        file.write("</ecu></xml>")
    with open(folder + "/ecu/count.xml", "w") as file:
        file.write("<xml xmlns:qor='urn:korval:ecu'><qor:Target><Function Name='COUNT'/><Requests>")
        for first in range(0, ITEMS, ITEMS_A_REQUEST):
            identifier = 0x1000 + first // ITEMS_A_REQUEST
            file.write("<Request Name='READ_%04X'><Sent Bytes='21%04X'/><Received MinBytes='%d'>"
                       % (identifier, identifier, 3 + 2 * ITEMS_A_REQUEST))
            for i in range(ITEMS_A_REQUEST):
                file.write("<DataItem Name='Item%d' Ref='1' FirstByte='%d' BitsCount='16' Step='0.25' Offset='-40'/>"
                           % (first + i, 4 + 2 * i))
            file.write("</Received></Request>")
        file.write("</Requests></qor:Target><Simulation/></xml>")


def online_values(client):
    lun = client.begin("count.xml", "COUNT")
    names = b"".join(text("Item%d" % i) for i in range(ITEMS))
    client.ask(frame(12, word(lun) + word(0) + word(ITEMS) + names))
    return frame(19)


def get_parameter(client):
    return frame(14, word(client.begin("engine.xml", "ENGINE")) + text("IdleSpeed"))


def instructions(server, folder, prepare, count):
    out = folder + "/callgrind.out"
    process = subprocess.Popen(
        ["valgrind", "--tool=callgrind", "--callgrind-out-file=" + out, server, "--headless", "--tcp-port", "0",
         "--settings", folder + "/settings.ini", "--install-record", folder + "/record.ini", "--asap-folder", folder + "/asap", "--korv-folder",
         folder + "/ecu", "--diag-port", "SIM", "--power", "dry-run"],
        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    for line in process.stdout:
        if match := re.search(r"> LocalPort=(\d+)", line):
            break
    else:
        sys.exit("the server did not start under valgrind")
    client = Client(int(match.group(1)))
    request = prepare(client)
    for _ in range(count):
        client.ask(request)
    process.send_signal(signal.SIGTERM)
    process.stdout.read()
    process.wait()
    with open(out) as file:
        return int(re.search(r"^(?:summary|totals): (\d+)", file.read(), re.MULTILINE).group(1))


def main():
    server, examples = sys.argv[1:3]
    kept = True
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run(["cp", "-r", examples + "/asap", examples + "/ecu", folder], check=True)
        write_bench_files(folder)
        for name, prepare, limit in (("1000 online values", online_values, 60000),
                                     ("get parameter", get_parameter, 11000)):
            counts = [instructions(server, folder, prepare, count) for count in (FEW, MANY)]
            each = (counts[1] - counts[0]) / (MANY - FEW)
            kept = kept and each <= limit
            print("%s %s: %.0f instructions (limit %d)" % ("kept  " if each <= limit else "MISSED", name, each, limit))
    return 0 if kept else 1


if __name__ == "__main__":
    os.environ["LC_ALL"] = "C"
    sys.exit(main())
