#!/usr/bin/env python3
"""Disturbs real processes of the application and looks for anything that is lost, half done or unanswered.

reliability.py [kill|full|together|answers|hostile|desktop|power|all|short] --programs DIR [--seconds N]
"""

import argparse
import os
import shutil
import subprocess
import sys
import tempfile

import answers
import desktop
import hostile
import interrupt
import together


def permitted(programs):
    """Whether this system lets a process decide about another's calls."""
    with tempfile.TemporaryDirectory() as folder:
        done = subprocess.run([os.path.join(programs, "fault_injector"), "--under", folder, "--", "true"])
    return done.returncode == 0


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("what", nargs="?", default="all",
                        choices=["kill", "full", "together", "answers", "hostile", "desktop", "power", "all",
                                 "short"])
    parser.add_argument("--programs", required=True)
    parser.add_argument("--seconds", type=float, default=60)
    options = parser.parse_args()
    programs = os.path.abspath(options.programs)
    short = options.what == "short"
    parts = {"kill": lambda f: interrupt.kill(programs, f, short), "full": lambda f: interrupt.full(programs, f, short),
             "together": lambda f: together.run(programs, f, options.seconds),
             "answers": lambda f: answers.run(programs, f, short),
             "hostile": lambda f: hostile.run(programs, f, short)}
    # These have tests of their own as their short form, and need a desktop's libraries.
    if options.what in ("desktop", "power"):
        chosen = "*PowerTest.*" if options.what == "power" else "-*PowerTest.*"
        parts = {options.what: lambda f: desktop.run(programs, chosen)}
    if not permitted(programs):
        print("SKIPPED: this system does not let a process decide about another's system calls")
        return 77
    faults, notes = [], []
    print(f"{'what':44}{'rounds':>8}{'hits':>8}{'faults':>8}{'seconds':>9}", flush=True)
    for name in parts if short or options.what == "all" else [options.what]:
        folder = tempfile.mkdtemp(prefix="reliability-")
        try:
            # A part takes minutes, and tells each row when it ends.
            for (what, rounds, hits, count, seconds), further_faults, further_notes in parts[name](folder):
                print(f"{what:44}{rounds:8}{hits:8}{count:8}{seconds:9.1f}", flush=True)
                faults += further_faults
                notes += further_notes
        finally:
            shutil.rmtree(folder, ignore_errors=True)
    for note in notes:
        print(note)
    for fault in faults:
        print("FAULT", fault)
    return 1 if faults else 0


sys.exit(main())
