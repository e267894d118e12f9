"""A desk for real programs: a display and a session bus of its own, folders of its user's, and servers."""

import json
import os
import re
import signal
import subprocess
import time
import urllib.request

from screen import Picture

READER = "com.example.reader"


class Late(Exception):
    """What was waited for did not happen."""


def wait(what, check, seconds=20):
    """What `check` answers once that counts as true; it is asked ten times a second."""
    end = time.monotonic() + seconds
    while True:
        answer = check()
        if answer:
            return answer
        if time.monotonic() > end:
            raise Late(f"in {seconds} seconds: {what}")
        time.sleep(0.1)


class Desk:
    """Ends with `close`, and everything that it started with it."""

    def __init__(self, programs, folder, sender=None):
        self.programs, self.folder, self.running = programs, folder, []
        self.sender = sender or [os.path.join(programs, "brellixctl"), "send"]
        self.prefix = os.path.join(folder, "prefix")
        self.environment = {name: value for name, value in os.environ.items()
                            if not name.startswith(("WAYLAND_", "DBUS_", "XDG_", "UNIFIEDPUSH_", "READER_"))}
        self.environment.update({
            "HOME": folder, "GDK_BACKEND": "x11", "GSK_RENDERER": "cairo", "GTK_A11Y": "none", "NO_AT_BRIDGE": "1",
            "GIO_USE_VFS": "local", "GSETTINGS_BACKEND": "memory", "READER_REMINDER": "60",
            "XDG_DATA_DIRS": self.prefix + "/share:/usr/local/share:/usr/share"})
        for name in ("DATA", "CACHE", "CONFIG", "STATE"):
            self.environment[f"XDG_{name}_HOME"] = os.path.join(folder, name.lower())
        runtime = os.path.join(folder, "runtime")
        os.mkdir(runtime, 0o700)
        self.environment["XDG_RUNTIME_DIR"] = runtime

    def close(self):
        for process in reversed(self.running):
            process.terminate()
        for process in self.running:
            try:
                process.wait(5)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, text):
        with open(self.path(name), "w", encoding="utf-8") as file:
            file.write(text)
        return self.path(name)

    def start(self, name, *command, says=None, **further):
        """Starts a program, whose lines go to the file NAME.log; waits until they have what `says` looks for."""
        with open(self.path(name + ".log"), "wb") as log:
            process = subprocess.Popen(command, stdout=log, stderr=log, env=self.environment, **further)
        self.running.append(process)
        if says:
            return wait(f"{command[0]} is there", lambda: re.search(says, self.lines(name)))
        return None

    def lines(self, name):
        with open(self.path(name + ".log"), encoding="utf-8", errors="replace") as file:
            return file.read()

    def run(self, *command):
        """What a command prints; None when it failed."""
        done = subprocess.run(command, env=self.environment, capture_output=True, text=True, check=False)
        return done.stdout.strip() if done.returncode == 0 else None

    def open(self):
        os.mkdir(self.path("display"))
        numbers, number = os.pipe()
        self.start("display", "Xvfb", "-displayfd", str(number), "-screen", "0", "800x900x24", "-nolisten", "tcp",
                   "-fbdir", self.path("display"), pass_fds=[number])
        os.close(number)
        with os.fdopen(numbers) as stream:
            self.environment["DISPLAY"] = ":" + stream.readline().strip()
        address = self.start("session", "dbus-daemon", "--session", "--nofork", "--print-address", says=r"(unix:\S+)\n")
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = address.group(1)
        self.start("monitor", "dbus-monitor", "--session", "interface='org.freedesktop.Notifications',member='Notify'",
                   says="NameAcquired|signal")

    def serve(self):
        """The collection server, the distributor, and the description that tells the application of the first."""
        tool = os.path.join(self.programs, "brellixctl")
        configuration = self.write("configuration.json", "{}")
        said = self.start("server", tool, "serve", "--json", "--port", "0", "--document", configuration, "--log",
                          self.path("requests"), says=r'"url":"([^"]+)"')
        self.url = said.group(1)
        said = self.start("distributor", os.path.join(self.programs, "desk_distributor"), says=r"port (\d+)")
        self.distributor = f"http://localhost:{said.group(1)}"

    def describe(self):
        file = f"{self.prefix}/share/{READER}/{READER}.json"
        with open(file, encoding="utf-8") as stream:
            description = json.load(stream)
        description["endpoints"] = dict.fromkeys(("collection", "tag", "events", "adFeed", "script"), self.url)
        with open(file, "w", encoding="utf-8") as stream:
            json.dump(description, stream)

    def requests(self):
        """(METHOD PATH, body) of all that the collection server received."""
        if not os.path.exists(self.path("requests")):
            return []
        with open(self.path("requests"), encoding="utf-8") as file:
            entries = [json.loads(line) for line in file if line.endswith("\n")]
        return [(f"{entry['method']} {entry['path']}", entry.get("body") or "") for entry in entries]

    def registrations(self):
        with urllib.request.urlopen(self.distributor + "/registrations") as answer:
            return answer.read().decode()

    def send(self, subscription, name, payload):
        """Sends a push, encrypted, by way of its push service."""
        file = self.write(name + ".json", json.dumps(payload))
        return self.run(*self.sender, subscription, file)

    def call(self, name, path, method, *arguments):
        return self.run("gdbus", "call", "--session", "--timeout", "20", "--dest", name, "--object-path", path,
                        "--method", method, *arguments)

    def ask_bus(self, method, *arguments):
        return self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus." + method, *arguments)

    def has(self, name):
        return self.ask_bus("NameHasOwner", name) == "(true,)"

    def stop(self, name):
        """Ends the process that has a name on the bus, as the session's end does."""
        number = self.ask_bus("GetConnectionUnixProcessID", name)
        os.kill(int(re.search(r"uint32 (\d+)", number).group(1)), signal.SIGTERM)
        wait(f"{name} ends", lambda: not self.has(name))

    def window(self, title):
        return self.run("xdotool", "search", "--onlyvisible", "--name", title)

    def do(self, *acts):
        """Mouse and keyboard, in the words of xdotool."""
        self.run("xdotool", *acts)

    def look(self):
        return Picture(self.path("display/Xvfb_screen0"))

    def settled(self):
        """The display once it stands still."""
        seen = [self.look()]

        def still():
            seen.append(self.look())
            return seen[-1] == seen[-2]
        wait("the display stands still", still)
        return seen[-1]
