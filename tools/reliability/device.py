"""A simulated device with a collection server of its own, and what can be seen of both."""

import glob
import http.server
import json
import os
import shutil
import sqlite3
import struct
import subprocess
import threading
import time
import zlib

DEFAULT_ACTION = "com.apple.UNNotificationDefaultActionIdentifier"
GROUP = "group.com.example.news"
HOUR = 3600


class Fault(Exception):
    """Something that must never happen did."""


def check(condition, what):
    if not condition:
        raise Fault(what)


def picture(size=64):
    """A PNG with noise, so that half of it is not the whole."""
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    rows = b"".join(b"\0" + bytes((x * 37 + y * 91) % 251 for x in range(3 * size)) for y in range(size))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", size, size, 8, 2, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(rows, 0)) + chunk(b"IEND", b""))


PICTURE = picture()
DOCUMENT = b'{"push_config":{"prompts":[]},"analytics":{"enabled":true}}'


class Server:
    """Answers everything that the library asks for. Paths that start with one of `dropped` lose their connection,
    those of `stalled` get no answer until the end, those of `odd` a given status, type and body."""

    def __init__(self):
        self.requests, self.lock = [], threading.Lock()
        self.dropped, self.stalled, self.odd, self.over = (), (), {}, threading.Event()
        outer = self

        class Handler(http.server.BaseHTTPRequestHandler):
            protocol_version = "HTTP/1.1"
            disable_nagle_algorithm = True

            def answer(self):
                body = self.rfile.read(int(self.headers.get("Content-Length", 0))).decode()
                with outer.lock:
                    outer.requests.append((self.command, self.path, body))
                if self.path.startswith(outer.dropped):
                    self.close_connection = True
                    return
                if self.path.startswith(outer.stalled):
                    outer.over.wait(120)
                    self.close_connection = True
                    return
                status, kind, data = outer.page(self.command, self.path)
                self.send_response(status)
                self.send_header("Content-Type", kind)
                self.send_header("Content-Length", str(len(data)))
                self.end_headers()
                self.wfile.write(data)

            do_GET = do_POST = answer

            def log_message(self, *_):
                pass

        class Quiet(http.server.ThreadingHTTPServer):
            daemon_threads = True

            def handle_error(self, *_):  # a killed process leaves its connections
                pass

        self.http = Quiet(("127.0.0.1", 0), Handler)
        self.url = f"http://127.0.0.1:{self.http.server_port}"
        threading.Thread(target=self.http.serve_forever, daemon=True).start()

    def page(self, method, path):
        for prefix, answer in self.odd.items():
            if path.startswith(prefix):
                return answer
        if method == "POST":
            return 201, "application/json", b"{}"
        if path.startswith("/tag/"):
            return 200, "application/json", DOCUMENT
        if path.startswith("/images/"):
            return 200, "image/png", PICTURE
        if path.startswith("/v1/display/"):
            ad = {"items": [{"md": {"l2": "s", "img": self.url + "/images/ad.png", "cmpid": 7, "url": self.url,
                                    "title": "An ad", "cpm_t": [], "cpv_t": [], "cpc_t": [], "creid": 1},
                             "s": True, "w": 390, "h": 844}], "session_id": "s", "elapsed": 3, "ts": "0"}
            return 200, "application/json", json.dumps(ad).encode()
        return 200, "text/plain", b""

    def take(self):
        """The requests since the last call."""
        with self.lock:
            taken, self.requests = self.requests, []
        return taken

    def close(self):
        self.over.set()
        self.http.shutdown()
        self.http.server_close()


def opens(requests):
    return sum(1 for _, path, body in requests
               if path.startswith("/v2/activity") and json.loads(body).get("code") == 205)


def group_file(device, *names):
    return os.path.join(device.home, "groups", GROUP, *names)


def store_path(device):
    return group_file(device, "Library", "Preferences", GROUP + ".sqlite")


class Run:
    """How a command ended."""

    def __init__(self, status, output, errors, report):
        self.status, self.errors, self.report = status, errors.strip(), report
        try:
            self.json = json.loads(output)
        except ValueError:
            self.json = None

    def crashed(self):
        return self.status < 0 or self.status >= 128 or "Segmentation" in self.errors or "Aborted" in self.errors


class Device:
    """`folder` holds the manifest, payloads, and the device's home, which can be put back to an earlier state."""

    def __init__(self, programs, folder, url):
        self.programs, self.folder, self.url = programs, folder, url
        self.home = os.path.join(folder, "home")
        self.manifest = os.path.join(folder, "news.json")
        os.makedirs(folder, exist_ok=True)
        with open(self.manifest, "w") as file:
            json.dump({"bundleIdentifier": "com.example.news", "version": "3.1.0", "apiKey": "k-123",
                       "appGroupId": GROUP, "groups": [GROUP], "switches": {"push": True, "analytics": True},
                       "schedule": HOUR, "endpoints": dict.fromkeys(
                           ("collection", "tag", "events", "adFeed", "script"), url)}, file)

    def payload(self, name, content):
        path = os.path.join(self.folder, name + ".json")
        if not os.path.exists(path):
            with open(path, "w") as file:
                file.write(content if isinstance(content, str) else json.dumps(content))
        return path

    def program(self, name):
        return os.path.join(self.programs, name)

    def ctl(self, *arguments, inject=None, home=None, limit=60):
        """Runs brellixctl; with `inject` under the injector with these options."""
        home = home or self.home
        command = [self.program("brellixctl"), "--home", home, "--app", self.manifest, "--json", *arguments]
        report = os.path.join(self.folder, "report")
        if inject is not None:
            command = [self.program("fault_injector"), "--under", home, "--report", report, *inject, "--", *command]
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, stdin=subprocess.DEVNULL,
                              timeout=limit)
        found = None
        if inject is not None:
            with open(report) as file:
                found = json.load(file)
        return Run(done.returncode, done.stdout.decode(), done.stderr.decode(), found)

    def healthy(self, *arguments):
        """A command on a healthy system, which has to do its work without a word of complaint."""
        run = self.ctl(*arguments)
        check(run.status == 0 and run.json is not None, f"{arguments[0]}: status {run.status}: {run.errors}")
        check(not run.errors, f"{arguments[0]} complained: {run.errors}")
        return run.json

    def put_back(self, template):
        shutil.rmtree(self.home, ignore_errors=True)
        if template:
            shutil.copytree(template, self.home)

    def look(self):
        """What stands in all stores, read from a copy, so that looking changes nothing."""
        copy = os.path.join(self.folder, "copy")
        shutil.rmtree(copy, ignore_errors=True)
        if not os.path.exists(self.home):
            os.mkdir(copy)
        else:
            shutil.copytree(self.home, copy)
        for path in glob.glob(copy + "/**/*.sqlite", recursive=True):
            if os.path.getsize(path) == 0 and path.endswith("notifications.sqlite"):
                continue  # made, and not yet filled
            base = sqlite3.connect(path)
            verdict = base.execute("PRAGMA integrity_check").fetchall()
            base.close()
            check(verdict == [("ok",)], f"{os.path.basename(path)} is damaged: {verdict[:3]}")
        store = self.ctl("store", home=copy)
        shown = self.ctl("notifications", home=copy)
        check(store.status == 0 and shown.status == 0, f"can't be read: {store.errors} {shown.errors}")
        return store.json["group"], shown.json

    def files(self):
        """Relative paths of all files, those of closed stores, of categories and of the device itself left out."""
        found = glob.glob(self.home + "/**/*", recursive=True, include_hidden=True)
        return sorted(os.path.relpath(path, self.home) for path in found
                      if os.path.isfile(path) and not path.endswith((".sqlite", ".lock", ".categories", "device.json")))

    def grow_old(self):
        """As if hours had passed since the passing files were left behind."""
        then = time.time() - 2 * HOUR
        for path in glob.glob(self.home + "/**/*", recursive=True, include_hidden=True):
            os.utime(path, (then, then))
