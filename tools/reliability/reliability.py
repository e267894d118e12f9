#!/usr/bin/env python3
"""Disturbs real processes of the application and looks for anything that is lost, half done or unanswered.

reliability.py [kill|full|together|answers|hostile|all|short] --programs DIR [--seconds N]
"""

import argparse
import os
import shutil
import subprocess
import sys
import tempfile

import answers
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
                        choices=["kill", "full", "together", "answers", "hostile", "all", "short"])
    parser.add_argument("--programs", required=True)
    parser.add_argument("--seconds", type=float, default=60)
    options = parser.parse_args()
    programs = os.path.abspath(options.programs)
    short = options.what == "short"
    parts = {"kill": lambda f: interrupt.kill(programs, f, short), "full": lambda f: interrupt.full(programs, f, short),
             "together": lambda f: together.run(programs, f, options.seconds),
             "answers": lambda f: answers.run(programs, f, short),
             "hostile": lambda f: hostile.run(programs, f, short)}
    if not permitted(programs):
        print("SKIPPED: this system does not let a process decide about another's system calls")
        return 77
    rows, faults, notes = [], [], []
    for name in parts if short or options.what == "all" else [options.what]:
        folder = tempfile.mkdtemp(prefix="reliability-")
        try:
            done = parts[name](folder)
        finally:
            shutil.rmtree(folder, ignore_errors=True)
        for total, more in zip((rows, faults, notes), done):
            total += more
    print(f"{'what':44}{'rounds':>8}{'hits':>8}{'faults':>8}{'seconds':>9}")
    for what, rounds, hits, count, seconds in rows:
        print(f"{what:44}{rounds:8}{hits:8}{count:8}{seconds:9.1f}")
    for note in notes:
        print(note)
    for fault in faults:
        print("FAULT", fault)
    return 1 if faults else 0


sys.exit(main())
