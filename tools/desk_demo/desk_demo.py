#!/usr/bin/env python3
"""Walks a push down its whole road on a desktop of its own: display, session bus, notification daemon, distributor and
collection server, and the Reader as it is installed.

desk_demo.py --programs DIR [--daemon xfce4-notifyd|dunst] [--report FILE] [--short] [--sender COMMAND]
"""

import argparse
import os
import shlex
import shutil
import signal
import sys
import tempfile
import time

from daemons import DAEMONS
from desk import Desk, Late
from page import page
from road import Road


def walk(options, folder, told):
    desk = Desk(os.path.abspath(options.programs), folder, shlex.split(options.sender))
    try:
        desk.open()
        desk.serve()
        done = Road(desk, options.daemon, told).run(options.short)
        for name in () if done else ("session", "daemon", "distributor"):
            print("".join(f"{name}: {line}\n" for line in desk.lines(name).splitlines()[-10:]), end="")
        return done
    except (Late, OSError) as error:  # the road itself says which step failed
        told("desk", False, str(error), None)
        return False
    finally:
        desk.close()


def main():
    parser = argparse.ArgumentParser(description="A push's whole road on a desktop of its own")
    parser.add_argument("--programs", required=True, help="where the programs were built")
    parser.add_argument("--daemon", choices=DAEMONS, default="xfce4-notifyd", help="what shows notifications")
    parser.add_argument("--report", help="write an HTML page with the steps and pictures")
    parser.add_argument("--short", action="store_true", help="without the reminder, which comes after a minute")
    parser.add_argument("--sender", default="", help="sends in place of `brellixctl send`; gets SUBSCRIPTION and FILE")
    options = parser.parse_args()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    began, steps = time.monotonic(), []

    def told(name, ok, words, picture):
        print(f"{'ok' if ok else 'FAILED':7} {name:19} {words}", flush=True)
        steps.append((name, ok, words, time.monotonic() - began, picture.png() if picture else None))

    print("The road of a push on a desktop. Every program is real; the display is nobody's.\n", flush=True)
    folder = tempfile.mkdtemp(prefix="desk-")
    try:
        done = walk(options, folder, told)
    finally:
        shutil.rmtree(folder, ignore_errors=True)
    print("\n" + ("The push went the whole road." if done else "The journey ended early; the step marked FAILED says why."))
    if options.report:
        with open(options.report, "w", encoding="utf-8") as file:
            file.write(page(options.daemon, steps))
        print(f"The report is in {options.report}")
    return 0 if done else 1


sys.exit(main())
