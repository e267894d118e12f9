"""Eight service extensions and one application on one device, all at once, as fast as they can."""

import json
import os
import sqlite3
import subprocess
import threading
import time

from device import Device, Fault, check, store_path
from roads import message, stored

# A device keeps so many of the newest.
KEPT = 256
EXTENSIONS = 8


class Publisher:
    """The tool's own server: it has to keep up with nine processes."""

    def __init__(self, programs, folder):
        self.log = os.path.join(folder, "requests")
        self.process = subprocess.Popen([os.path.join(programs, "brellixctl"), "serve", "--port", "0", "--json",
                                         "--log", self.log], stdout=subprocess.PIPE)
        self.url = json.loads(self.process.stdout.readline())["url"]

    def close(self):
        self.process.terminate()
        self.process.wait()

    def requests(self):
        with open(self.log) as file:
            return [json.loads(line) for line in file]


def half_delivered(device):
    """Notifications that at one moment have trackers and no link, or the other way round."""
    base = sqlite3.connect(store_path(device), timeout=20)
    rows = base.execute("SELECT name FROM entry WHERE key IN ('vs_t', 'vs_url') GROUP BY name "
                        "HAVING count(DISTINCT key) = 1").fetchall()
    base.close()
    return rows


class Gathering:
    def __init__(self, device, seconds):
        self.device, self.end = device, time.monotonic() + seconds
        self.lock, self.faults, self.pushed, self.tapped, self.launches, self.reads = threading.Lock(), [], [], [], 0, 0

    def going_on(self):
        return time.monotonic() < self.end and not self.faults

    def attempt(self, work):
        try:
            while self.going_on():
                work()
        except Exception as error:
            with self.lock:
                self.faults.append(f"{type(error).__name__}: {error}")

    def extension(self, number):
        count = 0

        def push():
            nonlocal count
            name = f"e{number}-{count}"
            body = message(self.device.url, name, buttons=True)
            del body["aps"]["alert"]["n"]["tag"]  # all of them stay
            path = os.path.join(self.device.folder, f"push{number}.json")
            with open(path, "w") as file:
                json.dump(body, file)
            outcome = self.device.healthy("push", path, "--id", name)
            check(outcome["extension"] == "answered", f"{name}: {outcome['extension']}")
            check(outcome["body"] == "Body of " + name and len(outcome["actions"]) == 2, f"{name} shows {outcome}")
            count += 1
            with self.lock:
                self.pushed.append(name)
        self.attempt(push)

    def application(self):
        def use():
            launched = self.device.healthy("launch")
            check(launched["initialised"], "not initialised")
            self.launches += 1
            with self.lock:
                known = [name for name in self.pushed if name not in self.tapped][-1:]
            for name in known:
                shown = self.device.healthy("tap", name)
                check(shown["browser"] == f"{self.device.url}/articles/{name}", f"{name} opens {shown['browser']}")
                self.tapped.append(name)
            check(not half_delivered(self.device), "half a notification is seen")
            self.reads += 1
        self.attempt(use)

    def run(self):
        threads = [threading.Thread(target=self.extension, args=(n,)) for n in range(EXTENSIONS)]
        threads.append(threading.Thread(target=self.application))
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()


def check_all(gathering, requests):
    """Every notification whole, every count exact."""
    device, pushed, tapped = gathering.device, set(gathering.pushed), set(gathering.tapped)
    group = device.healthy("store")["group"]
    shown = device.healthy("notifications")
    left = pushed - tapped
    check(set(group["vs_t"]) == left, f"{len(group['vs_t'])} have trackers, {len(left)} are unopened")
    check(set(group["vs_url"]) == left, f"{len(group['vs_url'])} have links, {len(left)} are unopened")
    for name in left:
        trackers, links = stored(device.url, name)
        check(group["vs_t"][name] == trackers and group["vs_url"][name] == links, f"{name} is not whole")
    check(group["vs_badge"] == len(pushed), f"the badge is {group['vs_badge']} after {len(pushed)}")
    ids = {n["id"] for n in shown["delivered"]}
    # A tap on one that is left makes no room for one that has gone.
    least = min(len(left), KEPT - len(tapped))
    check(ids <= left and len(ids) >= least, f"{len(ids)} are shown, {len(left)} are unopened, {len(ids - left)} of them not")
    categories = {c["identifier"] for c in shown["categories"]}
    missing = [n["id"] for n in shown["delivered"] if n["category"] not in categories or len(n["actions"]) != 2]
    check(not missing, f"{len(missing)} have lost their buttons")
    check(len(categories) == len(pushed), f"{len(categories)} categories after {len(pushed)}")
    paths = [request["path"].replace("button=0", "") for request in requests]
    for kind, names in (("view", pushed), ("impression", pushed), ("click", tapped)):
        got = sorted(path.split("/")[2] for path in paths if path.startswith(f"/{kind}/"))
        wanted = sorted(list(names) * (2 if kind == "click" else 1))
        check(got == wanted, f"{len(got)} {kind} trackers of {len(wanted)} came")
    opened = sum(1 for r in requests if r["path"].startswith("/v2/activity") and json.loads(r["body"])["code"] == 205)
    check(group["vs_openCounter"] == 0 and opened == gathering.launches + 1, f"{opened} opens came")
    check(group["vs_session_num"] == gathering.launches + 1, f"{group['vs_session_num']} sessions")


def run(programs, folder, seconds):
    os.makedirs(folder, exist_ok=True)
    started = time.monotonic()
    server = Publisher(programs, folder)
    gathering = Gathering(Device(programs, folder, server.url), seconds)
    notes = []
    try:
        gathering.device.healthy("launch", "--answer", "allow")
        gathering.run()
        if not gathering.faults:
            check_all(gathering, server.requests())
        count = len(gathering.pushed)
        notes.append(f"together: {count} pushes, {count / seconds:.0f} per second; {gathering.launches} launches, "
                     f"{len(gathering.tapped)} taps, {gathering.reads} readings of the whole store")
    except Fault as fault:
        gathering.faults.append(str(fault))
    finally:
        server.close()
    done = len(gathering.pushed) + gathering.launches + len(gathering.tapped) + gathering.reads
    yield ("three processes at once", done, 0, len(gathering.faults), time.monotonic() - started), \
        ["together: " + fault for fault in gathering.faults], notes
