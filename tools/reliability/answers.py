"""The service extension's process, run by hand: whatever happens, it answers once and before its time is over."""

import fcntl
import json
import os
import shutil
import sqlite3
import subprocess
import threading
import time

from device import Device, Fault, Server, check, group_file, store_path
from roads import ad, message

LIMIT = 3.0       # seconds that the extension has
GRACE = 1.0       # between the limit and the answer
PATIENT = 20.0    # the limit where a lock is held: the extension waits for it, at most some seconds each time


class Answer:
    """What the extension said on its channel."""

    def __init__(self, device, payload, limit, identifier="n"):
        reading, writing = os.pipe()
        command = [device.program("news_service"), "--home", device.home, "--app", device.manifest, "--id", identifier,
                   "--time-limit", str(limit), "--channel", str(writing)]
        started = time.monotonic()
        process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                                   pass_fds=[writing])
        os.close(writing)
        process.stdin.write(payload.encode())
        process.stdin.close()
        self.contents, self.seconds, self.expired, self.further = [], None, False, 0
        watch = threading.Timer(limit + 5 * GRACE, process.kill)  # a system would do the same
        watch.start()
        with os.fdopen(reading) as lines:
            for line in lines:
                event = json.loads(line)
                if "content" in event:
                    self.contents.append(event["content"])
                    self.seconds = time.monotonic() - started
                self.further += "contentAgain" in event
                self.expired = self.expired or "timeLimit" in event
        self.errors = process.stderr.read().decode()
        process.stderr.close()
        _, status, usage = os.wait4(process.pid, 0)
        self.status = process.returncode = os.waitstatus_to_exitcode(status)
        self.memory = usage.ru_maxrss / 1024  # MiB
        watch.cancel()


class Stage:
    """One thing that goes wrong: `arrange` makes it so and may return what undoes it."""

    def __init__(self, name, payload, arrange=None, shows=None, limit=LIMIT, stops=False, expires=None):
        self.name, self.payload, self.arrange, self.shows = name, payload, arrange, shows
        self.limit, self.stops, self.expires = limit, stops, expires


def stalled(*paths):
    def arrange(device, server):
        server.stalled = paths
        return lambda: setattr(server, "stalled", ())
    return arrange


def odd(path, status, kind, body):
    def arrange(device, server):
        server.odd = {path: (status, kind, body)}
        return lambda: setattr(server, "odd", {})
    return arrange


def dropped(device, server):
    server.dropped = ("/images/", "/view/", "/impression/", "/v1/")
    return lambda: setattr(server, "dropped", ())


def lock_categories(device, server):
    file = open(group_file(device, "vorsel.categories.lock"), "w")
    fcntl.flock(file, fcntl.LOCK_EX)
    return file.close


def lock_store(path_of):
    def arrange(device, server):
        base = sqlite3.connect(path_of(device), isolation_level=None)
        base.execute("BEGIN IMMEDIATE")
        return base.close
    return arrange


def spoil_store(device, server):
    with open(store_path(device), "r+b") as file:
        file.write(b"not a database at all, whatever it was before")


def folder_for_store(device, server):
    os.unlink(store_path(device))
    os.mkdir(store_path(device))


def file_for_temporary(device, server):
    place = os.path.join(device.home, "applications", "com.example.news.service", "tmp")
    shutil.rmtree(place, ignore_errors=True)
    open(place, "w").close()


def stages(url):
    image, text = message(url, "n", image=True, buttons=True), message(url, "n")
    whole = "Body of n"
    plain = json.dumps(text)

    def changed(**members):
        made = json.loads(plain)
        made["aps"]["alert"]["n"].update(members)
        return made
    huge = odd("/images/", 200, "image/png", b"\x89PNG" + bytes(11 << 20))
    return [
        Stage("nothing goes wrong", image, shows=whole, expires=False),
        Stage("the image stalls", image, stalled("/images/"), shows=whole, expires=True),
        Stage("the ad stalls", ad(url), stalled("/v1/"), expires=True),
        Stage("the ad's image stalls", ad(url), stalled("/images/"), expires=True),
        Stage("the view tracker stalls", text, stalled("/view/"), shows=whole),
        Stage("all trackers stall", image, stalled("/view/", "/impression/"), shows=whole),
        Stage("everything stalls", image, stalled("/"), shows=whole, expires=True),
        Stage("all connections break", image, dropped, shows=whole),
        Stage("the ad's connection breaks", ad(url), dropped),
        Stage("an ad without an endpoint", {"aps": {"mutable-content": 1, "alert": {"title": "T", "adex": True}}},
              expires=True),
        Stage("the image is missing", image, odd("/images/", 404, "text/html", b"no"), shows=whole),
        Stage("the image is none", image, odd("/images/", 200, "image/png", b"<html>"), shows=whole),
        Stage("the image is empty", image, odd("/images/", 200, "image/png", b""), shows=whole),
        Stage("the image is too large", image, huge, shows=whole),
        Stage("the ad feed is empty", ad(url), odd("/v1/", 200, "application/json", b"{\"items\":[],\"session_id\":"
                                                   b"\"s\",\"elapsed\":1,\"ts\":\"0\"}")),
        Stage("the ad is none", ad(url), odd("/v1/", 200, "application/json", b"{\"items\":7}")),
        Stage("the image's address is none", changed(image="h t:p//"), shows=whole),
        Stage("the image is a file of ours", changed(image="file:///etc/passwd"), shows=whole),
        Stage("the links are odd", changed(data={"url": "\u0000 :", "t": ["", "nonsense", "file:///x"]}), shows=whole),
        Stage("the texts are long", changed(body="x" * 100_000, sound="../" * 1000)),
        Stage("the categories are locked", image, lock_categories, shows=whole, limit=PATIENT),
        Stage("the store is locked", image, lock_store(store_path), shows=whole, limit=PATIENT),
        Stage("the store is damaged", image, spoil_store, shows=whole),
        Stage("a folder in the store's place", image, folder_for_store, shows=whole),
        Stage("no place for files", image, file_for_temporary, shows=whole),
        Stage("a campaign", {"aps": {"mutable-content": 1}, "p": [{"t": "a", "o": {"body": "b"}}]}, stops=True),
        Stage("no message at all", {"aps": {"mutable-content": 1, "alert": "hello"}}, stops=True),
    ]


def check_answer(stage, answer):
    if stage.stops:
        check(not answer.contents and "Fatal error: " in answer.errors, "did not stop")
        return
    check(answer.status == 0, f"ended with {answer.status}: {answer.errors}")
    check(len(answer.contents) == 1, f"answered {len(answer.contents)} times: {answer.errors}")
    check(answer.further == 0, f"called the handler {answer.further} times more")
    check(answer.seconds < stage.limit + GRACE, f"answered after {answer.seconds:.1f} s")
    content = answer.contents[0]
    check(content.get("title"), f"shows nothing: {content}")
    check(stage.shows is None or content.get("body") == stage.shows, f"shows {content}")
    check(stage.expires is None or answer.expired == stage.expires, f"the time limit: {answer.expired}")


def run(programs, folder, short=False):
    started, faults, rounds, slowest = time.monotonic(), [], 0, (0.0, "")
    server = Server()
    device = Device(programs, folder, server.url)
    device.healthy("launch", "--answer", "allow")
    device.healthy("push", device.payload("old", message(server.url, "old", buttons=True)), "--id", "old")
    template = os.path.join(folder, "template")
    shutil.copytree(device.home, template)
    for stage in stages(server.url)[:3] if short else stages(server.url):
        device.put_back(template)
        undo = stage.arrange(device, server) if stage.arrange else None
        rounds += 1
        try:
            answer = Answer(device, json.dumps(stage.payload), stage.limit)
            check_answer(stage, answer)
            slowest = max(slowest, (answer.seconds or 0.0, stage.name))
        except (Fault, ValueError) as fault:
            faults.append(f"{stage.name}: {fault}")
        if undo:
            undo()
    server.close()
    yield ("the extension always answers", rounds, 0, len(faults), time.monotonic() - started), faults, [
        f"answers: the slowest took {slowest[0]:.1f} s ({slowest[1]})"]
