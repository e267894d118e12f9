"""A server that means harm: whatever it answers, each notification comes once, with its own text, in bounded memory."""

import gzip
import json
import os
import shutil
import socket
import ssl
import subprocess
import threading
import time

from answers import Answer, LIMIT
from device import PICTURE, Device, Fault, Server, check
from roads import message

MEMORY = 64  # MiB; of which the interpreter that starts the process counts for some 20
BOMB = gzip.compress(bytes(1 << 20)) * 1024  # a megabyte that unpacks to a gigabyte
HEAD = b"HTTP/1.1 200 OK\r\nContent-Type: image/png\r\n"


def sized(body, size=None):
    return HEAD + b"Content-Length: %d\r\n\r\n" % (len(body) if size is None else size) + body


class HostileServer:
    """Runs `script` on every connection after it has read a request's head: (connection, path, server)."""

    def __init__(self, script, context=None):
        self.script, self.paths, self.over = script, [], threading.Event()
        self.listener = socket.create_server(("127.0.0.1", 0), backlog=64)
        self.context = context
        self.url = f"http{'s' if context else ''}://127.0.0.1:{self.listener.getsockname()[1]}"
        threading.Thread(target=self.accept, daemon=True).start()

    def accept(self):
        while not self.over.is_set():
            try:
                threading.Thread(target=self.serve, args=(self.listener.accept()[0],), daemon=True).start()
            except OSError:
                return

    def serve(self, connection):
        try:
            with self.context.wrap_socket(connection, server_side=True) if self.context else connection as talk:
                request = b""
                while b"\r\n\r\n" not in request:
                    piece = talk.recv(4096)
                    if not piece:
                        return
                    request += piece
                path = request.split(b" ", 2)[1].decode()
                self.paths.append(path)
                self.script(talk, path, self)
        except OSError:  # the client has had enough
            pass

    def close(self):
        self.over.set()
        self.listener.close()


def say(*pieces):
    def script(talk, path, server):
        for piece in pieces:
            talk.sendall(piece)
    return script


def forever(first, piece, pause=0.0):
    def script(talk, path, server):
        talk.sendall(first)
        while not server.over.wait(pause):
            talk.sendall(piece)
    return script


def stall(*pieces):
    def script(talk, path, server):
        say(*pieces)(talk, path, server)
        server.over.wait(120)
    return script


def redirect(target):
    return lambda talk, path, server: talk.sendall(
        b"HTTP/1.1 302 Found\r\nLocation: " + target.replace("SELF", server.url + path).encode() +
        b"\r\nContent-Length: 0\r\n\r\n")


def scripts():
    """Name, script, and whether the picture may be attached all the same."""
    packed = HEAD + b"Content-Encoding: gzip\r\n"
    yield "silence after the request", stall(), False
    yield "silence in the head", stall(b"HTTP/1.1 200"), False
    yield "silence in the body", stall(sized(PICTURE[:2000], len(PICTURE))), False
    yield "a byte at a time", forever(sized(b"", 1 << 20), b"x", 0.05), False
    yield "a head at a time", forever(b"HTTP/1.1 200 OK\r\n", b"X: y\r\n", 0.01), False
    yield "a head without end", forever(b"HTTP/1.1 200 OK\r\n", b"X-Filler: " + b"x" * 60000 + b"\r\n"), False
    yield "a body without end", forever(HEAD + b"\r\n", bytes(1 << 16)), False
    yield "chunks without end", forever(HEAD + b"Transfer-Encoding: chunked\r\n\r\n", b"10000\r\n" + bytes(1 << 16) +
                                        b"\r\n"), False
    yield "interim answers without end", forever(b"", b"HTTP/1.1 100 Continue\r\n\r\n"), False
    yield "more promised than sent", say(sized(PICTURE, len(PICTURE) + 1000)), False
    yield "more sent than promised", say(sized(PICTURE + b"x" * 1000, len(PICTURE))), True
    yield "eleven megabytes promised", say(sized(PICTURE, 11 << 20)), False
    yield "a negative length", say(HEAD + b"Content-Length: -5\r\n\r\n" + PICTURE), False
    # Counts as none given: what comes is counted itself.
    yield "a length beyond all numbers", say(HEAD + b"Content-Length: 99999999999999999999999\r\n\r\n" + PICTURE), True
    yield "two lengths", say(HEAD + b"Content-Length: 5\r\nContent-Length: 7\r\n\r\n" + PICTURE), False
    yield "a chunk of nonsense", say(HEAD + b"Transfer-Encoding: chunked\r\n\r\nzz\r\n" + PICTURE), False
    yield "a bomb", say(packed + b"Content-Length: %d\r\n\r\n" % len(BOMB), BOMB), False
    yield "a bomb in chunks", say(packed + b"Transfer-Encoding: chunked\r\n\r\n",
                                  b"%x\r\n" % len(BOMB) + BOMB + b"\r\n0\r\n\r\n"), False
    yield "a packed body that is none", say(packed + b"Content-Length: 5\r\n\r\nhello"), False
    for target in ("file:///etc/passwd", "gopher://127.0.0.1:1/x", "ftp://127.0.0.1:1/x", "data:image/png,x",
                   "dict://127.0.0.1:1/x", "SELF", "https://", "http://127.0.0.1:1/gone", "\x7f"):
        yield f"a redirect to {target!r}", redirect(target), False
    yield "another mind in the middle", say(HEAD + b"Content-Length: 4000\r\n\r\n" + PICTURE[:100] +
                                            b"HTTP/1.1 500 No\r\n\r\n"), False
    yield "a second answer behind the first", say(sized(PICTURE) + b"HTTP/1.1 500 No\r\nContent-Length: 0\r\n\r\n"), True
    yield "no HTTP at all", say(b"\x16\x03\x01\x02\x00" * 100), False
    yield "a name that climbs", say(HEAD + b"Content-Disposition: attachment; filename=\"../../../../etc/cron.d/x\"\r\n"
                                    b"Content-Length: %d\r\n\r\n" % len(PICTURE) + PICTURE), True
    yield "no farewell", say(), False


def certificate(folder):
    """A certificate that nobody vouches for."""
    files = [os.path.join(folder, name) for name in ("key.pem", "certificate.pem")]
    subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", files[0], "-out", files[1],
                    "-subj", "/CN=127.0.0.1", "-addext", "subjectAltName=IP:127.0.0.1", "-days", "1"],
                   check=True, capture_output=True)
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(files[1], files[0])
    return context


def deliver(device, url, attached):
    """One push whose picture and trackers lie on the hostile server."""
    push = message(url, "n", image=True, buttons=True)
    answer = Answer(device, json.dumps(push), LIMIT)
    check(answer.status == 0, f"ended with {answer.status}: {answer.errors}")
    check(len(answer.contents) == 1, f"answered {len(answer.contents)} times")
    check(answer.further == 0, f"called the handler {answer.further} times more")
    check(answer.seconds < LIMIT + 1, f"answered after {answer.seconds:.1f} s")
    content = answer.contents[0]
    check(content["title"] == "Title of n", f"shows {content}")
    check(content["body"] == "Body of n", f"shows {content}")
    check(bool(content.get("attachments")) == attached, f"attaches {content.get('attachments')}")
    for attachment in content.get("attachments", []):
        path = os.path.realpath(attachment["path"])
        check(path.startswith(os.path.realpath(device.home) + "/"), f"wrote to {path}")
        with open(path, "rb") as file:
            check(file.read() == PICTURE, "attaches something else")
    check(answer.memory < MEMORY, f"needed {answer.memory:.0f} MiB")
    return answer


def once(paths):
    """A redirect to itself is followed a few times; nothing else is asked for twice."""
    return all(paths.count(path) <= 1 for path in paths)


def start_application(device, script):
    """The same answers to everything that an application asks, then a start against a server that is well again."""
    well = device.url
    hostile = HostileServer(script)
    sick = Device(device.programs, device.folder, hostile.url)
    run = sick.ctl("launch", "--answer", "allow", "--time-limit", str(LIMIT), limit=60)
    hostile.close()
    check(not run.crashed(), f"crashed: {run.errors}")
    Device(device.programs, device.folder, well).healthy("launch", "--answer", "allow")


def run(programs, folder, short=False):
    started, faults, rounds, largest = time.monotonic(), [], 0, (0.0, "")
    server = Server()
    device = Device(programs, folder, server.url)
    device.healthy("launch", "--answer", "allow")
    template = os.path.join(folder, "template")
    shutil.copytree(device.home, template)
    cases = [(name, script, attached, None) for name, script, attached in scripts()]
    if not short:
        cases.append(("a certificate that nobody vouches for", say(sized(PICTURE)), False, certificate(folder)))
    for name, script, attached, context in cases[10:14] if short else cases:
        device.put_back(template)
        rounds += 1
        hostile = HostileServer(script, context)
        try:
            answer = deliver(device, hostile.url, attached)
            largest = max(largest, (answer.memory, name))
            check("SELF" in name or once(hostile.paths), f"asked twice: {hostile.paths}")
            if not short and not context:
                rounds += 1
                start_application(device, script)
        except (Fault, KeyError, ValueError, subprocess.TimeoutExpired) as fault:
            faults.append(f"{name}: {fault}")
        hostile.close()
    server.close()
    yield ("a hostile server", rounds, 0, len(faults), time.monotonic() - started), faults, [
        f"hostile: the most memory was {largest[0]:.0f} MiB ({largest[1]})"]
