"""The road of a push on a desktop: each step, and whether it came to what it should."""

import os
import re

from daemons import DAEMONS
from desk import READER, Late, wait
from screen import SUN, WHITE


def story(url, name, title, body):
    """A message with a picture, trackers, and an article behind it."""
    return {"t": title, "i": [f"{url}/track/impression?id={name}"],
            "o": {"body": body, "image": f"{url}/images/{name}.png",
                  "data": {"url": f"{url}/articles/{name}", "t": [f"{url}/track/click?id={name}"]}}}


def storm(url):
    message = {"body": "Gusts of 110 km/h are expected tonight.", "image": f"{url}/images/storm.png",
               "actions": [{"action": "follow", "title": "Follow", "url": f"{url}/articles/follow"},
                           {"action": "map", "title": "Map", "url": f"{url}/articles/map"}],
               "data": {"url": f"{url}/articles/storm", "t": [f"{url}/track/click?id=storm"]}}
    alert = {"title": "Storm over the bay", "n": message, "v": f"{url}/track/view?id=storm",
             "t": [f"{url}/track/impression?id=storm"]}
    return {"aps": {"mutable-content": 1, "alert": alert}}


def stories(url):
    return {"aps": {"alert": {"title": "Three stories", "body": "Today's news"}, "category": "vs_contentExt"},
            "isMultiple": True,
            "p": [story(url, "ferries", "Storm warning for the coast", "Ferries stay in port until tomorrow morning."),
                  story(url, "museum", "Harbour museum opens its new wing", "Three floors of sails, knots and maps."),
                  story(url, "tram", "Council votes on the tram extension", "Two stops more, and trees along the way.")]}


BEACONS = {"aps": {"content-available": 1, "alert": {"bl": [{"id": "harbour", "ib": "00000000-0000-0000-0000-000000000330"}]}}}


class Road:
    """Walks it step by step; `told` is called with each step: name, whether it went well, words, picture or None."""

    def __init__(self, desk, daemon, told):
        self.desk, self.daemon_name, self.told = desk, daemon, told
        self.daemon, self.subscription, self.step = None, "", ""

    def run(self, short):
        """False when a step failed; the steps after it are not taken."""
        steps = [self.install, self.start, self.allow, self.register, self.notify, self.track, self.press, self.convert,
                 self.hand_over, self.campaign, self.browse]
        for step in steps + ([] if short else [self.remind]):
            self.step = step.__name__
            try:
                step()
            except Late as late:
                self.told(self.step, False, str(late), self.desk.look())
                return False
        return True

    def say(self, name, words, picture=None):
        self.told(name, True, words, picture)

    def requested(self, request, body="", seconds=20):
        def found():
            return [text for line, text in self.desk.requests() if line == request and re.search(body, text)]
        return wait(f"{request} at the server", found, seconds)[0]

    def notifications(self):
        """What the daemon was asked to show, each as its arguments' listing."""
        return self.desk.lines("monitor").split("member=Notify")[1:]

    def shown(self, texts, act, seconds=20):
        """Does something, and waits until the daemon was asked to show a notification with these texts, and does."""
        count, before = len(self.notifications()), self.desk.settled()
        act()

        def told():
            return any(all(f'string "{text}"' in note for text in texts) for note in self.notifications()[count:])
        wait(f"a notification with {', '.join(texts)}", told, seconds)
        wait("the daemon draws it", lambda: self.desk.look() != before)

    def push(self, name, payload):
        sent = self.desk.send(self.subscription, name, payload)
        wait("the push service takes the message", lambda: sent, 0)

    def press_until(self, button, reached):
        """Presses it until something comes of it: a daemon may be moving its notifications."""
        def pressed():
            self.daemon.press(button)
            return reached()
        wait(f"something happens for a click on \"{button}\"", pressed)

    def install(self):
        desk = self.desk
        installed = desk.run("cmake", "--install", desk.programs + "/..", "--component", "reader", "--prefix", desk.prefix)
        wait("the Reader is installed", lambda: installed, 0)
        self.daemon = DAEMONS[self.daemon_name](desk)
        wait(f"{self.daemon_name} serves", lambda: desk.has("org.freedesktop.Notifications"))
        desk.describe()
        self.say("install", f"the Reader is installed; {self.daemon_name}, a distributor and a server run")

    def start(self):
        self.desk.start("reader", self.desk.prefix + "/bin/reader")
        wait("the window", lambda: self.desk.window("^Reader$"))
        self.say("start", "the application was started for the first time")
        self.requested("GET /tag/k-reader.json")
        self.requested("POST /v2/activity?type=mobile")
        self.say("install report", "the installation was reported: POST /v2/activity?type=mobile")

    def allow(self):
        def asked():
            return self.desk.look().count(WHITE) > 10_000
        wait("the question over the window", asked)
        picture = self.desk.settled()

        def answered():
            # The keyboard is on "Don't Allow" first.
            self.desk.do("mousemove", "240", "300", "key", "Tab", "Return")
            self.desk.settled()
            return not asked()
        wait("the question goes", answered)
        self.say("permission", "the user was asked over the window, and allowed by keyboard", picture)

    def register(self):
        body = self.requested("POST /v2/users?type=mobile", "[0-9a-f]{300,}")
        token = re.search("[0-9a-f]{300,}", body).group(0)
        self.subscription = bytes.fromhex(token).decode()
        self.say("token", f"the subscription reached the server: {len(token)} digits")
        wait("the distributor knows the agent", lambda: READER + ".Push" in self.desk.registrations())
        self.say("distributor", f"it has registered {READER}.Push")

    def notify(self):
        self.desk.stop(READER)
        self.say("end", "the application was ended")
        self.shown(["Storm over the bay", "Follow", "Map"], lambda: self.push("storm", storm(self.desk.url)))
        wait("its picture", lambda: self.desk.look().count(SUN) > 20)
        picture = self.desk.settled()
        wait("the application stays ended", lambda: not self.desk.has(READER), 0)
        self.say("push", "an encrypted push was shown with picture and buttons, while the application does not run", picture)

    def track(self):
        for name, what in (("view", "the view"), ("impression", "the impression")):
            self.requested(f"GET /track/{name}?id=storm")
            self.say(f"{name} tracker", f"{what} was tracked: GET /track/{name}?id=storm")

    def press(self):
        self.press_until("Map", lambda: self.desk.window("/articles/map"))
        self.say("button", f"a click on \"Map\" started the application with {self.desk.url}/articles/map",
                 self.desk.settled())

    def convert(self):
        self.requested("GET /track/click?id=storm")
        self.say("click tracker", "the click was tracked: GET /track/click?id=storm")

    def hand_over(self):
        self.desk.stop(READER)
        count = len(self.notifications())
        self.push("beacons", BEACONS)
        wait("the application has it", lambda: "1 beacons" in self.desk.lines("session"))
        wait("nothing is shown", lambda: len(self.notifications()) == count, 0)
        self.say("silent push", "it started the application, which has one beacon of it; nothing was shown")

    def campaign(self):
        self.shown(["Three stories", "Show all"], lambda: self.push("stories", stories(self.desk.url)))
        self.say("campaign", "a notification offers its stories", self.desk.settled())

    def browse(self):
        self.press_until("Show all", lambda: self.desk.window("^Stories$"))
        wait("the picture of the first story", lambda: self.desk.look().count(SUN) > 500)
        self.say("carousel", "its button opened the stories in a window", self.desk.settled())

    def remind(self):
        entry = f"{self.desk.environment['XDG_CONFIG_HOME']}/autostart/{READER}.Push.desktop"
        wait("the agent starts with the next session", lambda: os.path.exists(entry))
        self.shown(["Come back to your reading"], lambda: self.desk.stop(READER), 70)
        wait("the application stays ended", lambda: not self.desk.has(READER), 0)
        self.say("reminder", "the agent woke for the reminder, while the application does not run", self.desk.settled())
