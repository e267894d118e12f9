"""The roads on which processes are disturbed, and what has to be true whatever happened on them."""

import os
import shutil

from device import DEFAULT_ACTION, PICTURE, check, opens

# Another one each time, or counted on its own.
PASSING = {"vs_session_id", "vs_session_num", "vs_uniq_session_id", "vs_uniq_session_first_time", "vs_last_modified",
           "vs_badge", "vs_tok", "vs_openCounter", "vs_visitedPCount"}
OWED = 3


def message(url, name, image=False, buttons=False):
    body = {"body": "Body of " + name, "tag": "front", "data": {"url": f"{url}/articles/{name}",
                                                                "t": [f"{url}/click/{name}/{i}" for i in (1, 2)]}}
    if image:
        body["image"] = f"{url}/images/{name}.png"
    if buttons:
        body["actions"] = [{"action": a, "title": a.title(), "url": f"{url}/{a}/{name}"} for a in ("yes", "no")]
    return {"aps": {"mutable-content": 1, "alert": {
        "title": "Title of " + name, "v": f"{url}/view/{name}", "t": [f"{url}/impression/{name}"], "n": body}}}


def campaign(url):
    page = {"t": "Page", "i": [f"{url}/impression/page"], "o": {
        "body": "B", "image": f"{url}/images/p.png", "data": {"url": url + "/page", "t": [url + "/click/page"]}}}
    return {"aps": {"alert": {"title": "Pages", "body": "Swipe"}, "category": "vs_contentExt"}, "isMultiple": True,
            "p": [page, page, page]}


def ad(url):
    return {"aps": {"mutable-content": 1,
                    "alert": {"title": "Sponsored", "adex": True, "e": f"{url}/v1/display/f?out=json"}}}


def stored(url, name):
    """What the store holds for a delivered message: its trackers, and its links by action."""
    links = {DEFAULT_ACTION: f"{url}/articles/{name}"}
    links.update({action: f"{url}/{action}/{name}" for action in ("yes", "no")})
    return [f"{url}/click/{name}/{i}" for i in (1, 2)], links


class Road:
    def __init__(self, name, command, start="installed", target=None, before=None):
        self.name, self.command, self.start = name, command, start
        self.target = target  # the notification that the command delivers
        self.before = before  # done once more before the command is repeated

    def is_push(self):
        return self.command[0] == "push"


def roads(device):
    url = device.url
    files = {"image": message(url, "new", image=True, buttons=True), "buttons": message(url, "new", buttons=True),
             "campaign": campaign(url), "ad": ad(url)}
    push = [Road("push " + name, ["push", device.payload(name, content), "--id", "new"], target="new")
            for name, content in files.items()]
    return [Road("first launch", ["launch", "--answer", "allow", "--call", 'sendCustomEvent=["e",1]'], start=None),
            Road("launch", ["launch"], start="owing"),
            *push,
            Road("tap", ["tap", "old"]),
            Road("tap a button", ["tap", "old", "--action", "yes"]),
            Road("carousel", ["show", "pages", "--do", "right,open"]),
            Road("calls", ["launch", "--call", 'setUserValue=["k","v"]', "--call", "setAppBadge=[3]",
                           "--call", 'setNotification=["Come back"]', "--call", "updateScheduler=[]",
                           "--call", 'track=[{"a":"1"}]', "--call", "sendTrack=[]",
                           "--call", 'sendCustomEvent=["e",1]'])]


def make_templates(device, server):
    """The states that roads start from: an application that was used for a while, and one whose opens failed."""
    made = {name: os.path.join(device.folder, name) for name in ("installed", "owing")}
    device.put_back(None)
    device.healthy("launch", "--answer", "allow")
    old = device.payload("old", message(device.url, "old", image=True, buttons=True))
    device.healthy("push", old, "--id", "old")
    device.healthy("push", device.payload("campaign", campaign(device.url)), "--id", "pages")
    shutil.copytree(device.home, made["installed"])
    server.dropped = ("/v2/activity",)
    for _ in range(OWED):
        device.ctl("launch")
    server.dropped = ()
    check(device.look()[0]["vs_openCounter"] == OWED, "the failed opens were not counted")
    shutil.copytree(device.home, made["owing"])
    return made


def final(device):
    """The state in a form that is the same however often something was tried."""
    group, shown = device.look()
    group = {key: value for key, value in group.items() if key not in PASSING}
    delivered = sorted(({**n, "badge": 0, "attachments": len(n["attachments"])} for n in shown["delivered"]),
                       key=lambda n: n["id"])
    categories = sorted(c["identifier"] for c in shown["categories"])
    return group, delivered, categories, sorted(n["id"] for n in shown["pending"])


def check_entries(road, device, before, failing):
    """That no entry is half there, and none is lost. Returns the group's values."""
    group, shown = device.look()
    trackers, links = group.get("vs_t", {}), group.get("vs_url", {})
    for name in ("old", "new"):
        wanted_trackers, wanted_links = stored(device.url, name)
        own = links.get(name, {})
        check((name in trackers) == (DEFAULT_ACTION in own), f"half of {name}: {trackers.get(name)}, {own}")
        check(trackers.get(name, wanted_trackers) == wanted_trackers, f"{name} has the trackers {trackers.get(name)}")
        check(all(wanted_links.get(action) == link for action, link in own.items()), f"{name} has the links {own}")
        both = {"yes", "no"} & set(own)
        check(len(both) != 1, f"{name} has the links of half its buttons")
        if name in trackers and not failing:
            check(len(both) == 2, f"{name} has lost its buttons' links")
    if before and road.command[0] != "tap":
        check("old" in trackers, "what was delivered before has lost its entries")
    # A disk that refuses the first of the two may take the second.
    if group.get("vs_tags", {}).get("front") == ["new"] and not failing:
        check("new" in trackers, "the tag was taken over by nothing")
    for key, value in before.items():
        if key not in PASSING and key not in ("vs_t", "vs_url", "vs_tags", "vs_category", "vs_sch_id", "vs_adex"):
            same = group.get(key) == value or road.name in ("calls", "launch")
            check(same, f"{key} was {value}, is {group.get(key)}")
            check(key in group, f"{key} is lost")
    check(group.get("vs_session_num", 0) >= before.get("vs_session_num", 0), "sessions are lost")
    check(group.get("vs_badge", 0) - before.get("vs_badge", 0) <= (1 if road.is_push() else 3), "the badge is off")
    for notification in shown["delivered"]:
        for path in notification["attachments"]:
            original = path.replace(device.home, os.path.join(device.folder, "copy"))
            with open(original, "rb") as file:
                check(file.read() == PICTURE, f"half a picture at {path}")
    return group, {n["id"]: n for n in shown["delivered"]}


def check_opens(road, killed, requests, counter):
    """How many opens the killed process took with it: those that it had taken over and not yet sent."""
    if road.name != "launch" or not killed:
        return 0
    sent = opens(requests)
    if counter == OWED:
        check(sent == 0, f"{sent} opens were sent and are owed all the same")
        return 0
    check(counter == 0 and sent <= OWED + 1, f"{counter} opens are owed after {sent} were sent")
    return OWED + 1 - sent


def leftovers(device, referenced):
    """Files that nobody uses any more."""
    return [path for path in device.files()
            if os.path.join(device.home, path) not in referenced and not path.endswith(("-wal", "-shm"))]
