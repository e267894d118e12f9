"""Disturbs every road at each of its writes: kills the process there, or lets the file system refuse."""

import queue
import shutil
import threading
import time

from device import Device, Fault, Server, check, opens
from roads import check_entries, check_opens, final, leftovers, make_templates, message, roads


class Tally:
    """Counts over all threads."""

    def __init__(self):
        self.lock, self.rounds, self.hits, self.lost, self.faults = threading.Lock(), 0, 0, 0, []
        self.started = time.monotonic()

    def add(self, **counts):
        with self.lock:
            for name, count in counts.items():
                setattr(self, name, getattr(self, name) + count)

    def fault(self, text):
        with self.lock:
            self.faults.append(text)

    def row(self, what):
        return what, self.rounds, self.hits, len(self.faults), time.monotonic() - self.started


class Worker:
    """A device of its own for each thread, with the states that the roads start from."""

    def __init__(self, programs, folder):
        self.server = Server()
        self.device = Device(programs, folder, self.server.url)
        self.templates = make_templates(self.device, self.server)
        self.roads = {road.name: road for road in roads(self.device)}
        self.finals = {}

    def start(self, road):
        self.device.put_back(self.templates.get(road.start))
        self.server.take()

    def wanted(self, road):
        """The state after the road, a launch and the road once more, with nothing in the way."""
        if road.name not in self.finals:
            self.start(road)
            for command in (road.command, ["launch", "--answer", "allow"], road.command):
                self.device.healthy(*command)
            self.finals[road.name] = final(self.device)
        return self.finals[road.name]

    def calls(self, road, options):
        """How many calls there are to disturb."""
        self.start(road)
        return self.device.ctl(*road.command, inject=options).report["calls"]

    def before(self, road):
        self.start(road)
        return self.device.look()[0] if road.start else {}


def check_outcome(road, run, killing, delivered):
    """What a disturbed command may say."""
    check(killing or not run.crashed(), f"crashed with {run.status}: {run.errors}")
    hit_tool = "by brellixctl" in run.report["first"]
    if killing and hit_tool:
        check(run.status == 137, f"a killed command ended with {run.status}")
        return
    # A push whose extension stopped, even after its answer, has failed, and is shown all the same.
    stopped = run.json is not None and run.json.get("error", "").startswith("The service extension stopped")
    if run.status != 0 and not stopped:
        check(run.errors and "\n\n" not in run.errors, "failed without a word")
        # A device that can't write its own database shows nothing; an application may be unable to start.
        check(not road.is_push() or hit_tool, f"a push failed: {run.errors}")
        return
    check(run.json is not None, "no outcome")
    if road.is_push():
        shown = delivered.get("new")
        check(shown and shown["title"], "nothing is shown")
        if road.name != "push campaign" and not killing:
            check(run.json["extension"] == "answered", f"the extension {run.json['extension']}: {run.errors}")
            whole = road.name == "push ad" or shown["body"] == "Body of new"
            check(whole, f"shows {shown['title']!r}, {shown['body']!r}")


def recover(worker, road, wanted, deaf):
    """The next start works, and what was disturbed can be done again."""
    device = worker.device
    device.healthy("launch", "--answer", "allow")
    device.healthy(*road.command)
    got = final(device)
    if deaf:
        # A notification centre that can't remove a notification goes on showing it, and nobody hears of that.
        got, wanted = without_old(got), without_old(wanted)
    check(got == wanted, f"ends in another state: {difference(got, wanted)}")
    device.grow_old()
    device.healthy("push", device.payload("later", message(device.url, "later", image=True)), "--id", "later")
    used = {path for n in device.healthy("notifications")["delivered"] for path in n["attachments"]}
    rest = leftovers(device, used)
    check(not rest, f"left behind: {rest}")


def without_old(state):
    group, delivered, *rest = state
    return [group, [n for n in delivered if n["id"] != "old"], *rest]


def difference(got, wanted):
    return "; ".join(f"{g} instead of {w}" for g, w in zip(got, wanted) if g != w)[:600]


def one_round(worker, road, options, at, tally):
    killing = "--kill" in options
    wanted, before = worker.wanted(road), worker.before(road)
    worker.start(road)
    run = worker.device.ctl(*road.command, inject=[*options, "--at", str(at)])
    requests = worker.server.take()
    tally.add(rounds=1, hits=run.report["hits"])
    try:
        group, delivered = check_entries(road, worker.device, before, not killing)
        check_outcome(road, run, killing, delivered)
        tally.add(lost=check_opens(road, killing, requests, group.get("vs_openCounter", 0)))
        for path in ("/view/", "/impression/new"):
            check(sum(r[1].startswith(path) for r in requests) <= 1, f"{path} was sent twice")
        first = run.report["first"]
        center = "news_service" in first and ("notifications.sqlite" in first or "--onwards" in options)
        recover(worker, road, wanted, center and not killing and road.is_push())
        if road.name == "launch":
            later = opens(worker.server.take())
            check(later == group.get("vs_openCounter", 0) + 2, f"{later} opens came later")
    except Fault as fault:
        tally.fault(f"{road.name}, {' '.join(options)} at {at} ({run.report['first']}): {fault}")


def disturb(programs, folder, options, names=None, every=1, threads=2):
    """All roads (or those named), disturbed at each call, or at every so-many-th."""
    tally, work, workers = Tally(), queue.Queue(), []

    def run(worker):
        while True:
            try:
                name, at = work.get_nowait()
            except queue.Empty:
                return
            try:
                one_round(worker, worker.roads[name], options, at, tally)
            except Exception as error:  # the harness's own, or a command that hangs
                tally.fault(f"{name} at {at}: {error!r}")

    for number in range(threads):
        workers.append(Worker(programs, f"{folder}/{number}"))
    first = workers[0]
    for road in first.roads.values():
        if names and road.name not in names:
            continue
        if "news_service" in options and not road.is_push():
            continue
        for at in range(1, first.calls(road, options) + 1, every):
            work.put((road.name, at))
    running = [threading.Thread(target=run, args=(worker,)) for worker in workers]
    for thread in running:
        thread.start()
    for thread in running:
        thread.join()
    for worker in workers:
        worker.server.close()
    shutil.rmtree(folder, ignore_errors=True)
    return tally


def kill(programs, folder, short=False):
    names = ["push image", "tap"] if short else None
    tally = disturb(programs, folder, ["--kill"], names, every=25 if short else 1)
    yield tally.row("killed at every write"), tally.faults, [
        f"opens that were on their way when their process was killed: {tally.lost}"]


def full(programs, folder, short=False):
    cases = [(error, onwards, process) for error in ("ENOSPC", "EROFS", "EACCES") for onwards in (False, True)
             for process in ((None,) if not onwards else ("news_service", "news_app", "brellixctl"))]
    for error, onwards, process in cases[:1] if short else cases:
        options = ["--error", error] + ["--onwards"] * onwards + (["--process", process] if process else [])
        tally = disturb(programs, folder, options, ["first launch"] if short else None, every=3 if short else 1)
        what = f"{error} {'from a write on' if onwards else 'at one write'}" + (f", {process}" if process else "")
        yield tally.row(what), tally.faults, []
