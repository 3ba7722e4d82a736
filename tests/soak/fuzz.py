"""The fuzz targets of scripts/sanitize on new inputs, counted."""
import re
import shutil
import subprocess
import time

import driver

NATIVE = driver.TOP / "build" / "native"
SEEDS = driver.TOP / "tests" / "native" / "seeds"
# How long a target runs at a time, in seconds: its start, with all inputs that it has kept, is a small part of it.
SLICE = 40
# As scripts/sanitize, with more seconds for an input: they pass also while other programs have the processors. Leaks are looked for
# there: it takes most of the time, as whatever a program keeps from its first use on is looked at as if it were one.
OPTIONS = ["-max_len=1000", "-timeout=900", "-print_final_stats=1", "-detect_leaks=0"]


def counted(text):
    """How many inputs a target says that it has run; None if it doesn't."""
    found = re.search(r"^stat::number_of_executed_units: (\d+)$", text, re.M)
    return int(found[1]) if found else None


def judge(name, code, text):
    """The faults of one run of a target."""
    if code:
        reason = re.search(r"^.*(ERROR|not true|runtime error).*$", text, re.M)
        return ["%s_fuzz has ended with %d: %s" % (name, code, reason[0].strip() if reason else "see its log")]
    return [] if counted(text) else ["%s_fuzz has run no input" % name]


class Target:
    def __init__(self, name):
        self.name = name
        self.count = 0
        self.seconds = 0.0
        self.process = None

    def start(self, most, seconds, seed):
        self.since = time.monotonic()
        corpus = NATIVE / "corpus" / self.name
        corpus.mkdir(parents=True, exist_ok=True)
        (NATIVE / "faults").mkdir(exist_ok=True)
        self.log = driver.SCRATCH / ("fuzz-%s.log" % self.name)
        wrapper = ["setarch", "-R"] if shutil.which("setarch") else []
        with open(self.log, "w") as log:
            self.process = subprocess.Popen(
                [*wrapper, str(NATIVE / "bin" / (self.name + "_fuzz")), *OPTIONS, "-runs=%d" % most,
                 "-max_total_time=%d" % seconds, "-seed=%d" % seed, "-artifact_prefix=%s/%s-" % (NATIVE / "faults", self.name), str(corpus), str(SEEDS / self.name)],
                stdout=log, stderr=subprocess.STDOUT, env={"TZ": "CET-1", "LC_ALL": "C", "PATH": "/usr/bin:/bin"})

    def finish(self):
        """The faults of the run that has ended."""
        text = self.log.read_text(errors="replace")
        faults = judge(self.name, self.process.returncode, text)
        self.count += counted(text) or 0
        self.seconds += time.monotonic() - self.since
        self.process = None
        return faults


def run(options):
    outcome = driver.Outcome("fuzz")
    driver.SCRATCH.mkdir(parents=True, exist_ok=True)
    targets = [Target(path.name) for path in sorted(SEEDS.iterdir())]
    progress = driver.Progress("fuzz", options.inputs, "inputs")
    end = time.monotonic() + options.minutes * 60 if options.minutes else float("inf")
    seed = options.seed
    try:
        while time.monotonic() < end and not outcome.faults:
            running = [target for target in targets if target.process]
            left = options.inputs - sum(target.count for target in targets)
            if not running and left <= 0:
                break
            if left > 0 and len(running) < min(options.jobs, len(targets)):
                # Each gets the same time: the one that has had least is next.
                waiting = min((target for target in targets if not target.process), key=lambda target: target.seconds)
                seed += 1
                waiting.start(min(left, -(-options.inputs // len(targets))), max(1, min(SLICE, end - time.monotonic())), seed)
                continue
            for target in running:
                if target.process.poll() is not None:
                    outcome.faults += target.finish()
            progress.show(sum(target.count for target in targets), len(outcome.faults))
            time.sleep(0.05)
    finally:
        for target in targets:
            if target.process:
                target.process.kill()
                target.process.wait()
    done = sum(target.count for target in targets)
    outcome.figures = {"inputs": done, "of": options.inputs, "targets": len(targets),
                       "fewest of a target": min(target.count for target in targets), "seconds": round(progress.seconds())}
    return outcome
