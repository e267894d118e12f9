"""The push agent as a real process, disturbed by its own tests in their thorough form."""

import os
import subprocess

TESTS = "agent_disturbed_tests"


def run(programs, chosen):
    """Each row of theirs as it comes."""
    environment = {**os.environ, "VORSEL_THOROUGH": "1"}
    rows = 0
    with subprocess.Popen([os.path.join(programs, TESTS), f"--gtest_filter={chosen}"], env=environment, text=True, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL) as tests:
        told, failed = [], []
        for line in tests.stdout:
            if not line.startswith("ROW|"):
                told = [] if line.startswith("[ RUN") else told
                told.append(line.rstrip())
                failed += told if line.startswith("[  FAILED  ]") and line.rstrip().endswith(" ms)") else []
                continue
            what, rounds, hits, count, seconds = line.rstrip().split("|")[1:]
            rows += 1
            yield (what, int(rounds), int(hits), int(count), float(seconds)), [], []
    if tests.returncode != 0 or rows == 0:
        yield ("what the tests say", 1, 0, 1, 0.0), failed or told or [f"status {tests.returncode}"], []
