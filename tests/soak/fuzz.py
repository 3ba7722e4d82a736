"""The fuzz targets of scripts/sanitize on new inputs, counted."""
import re
import shutil
import subprocess
import time

import driver

NATIVE = driver.TOP / "build" / "native"
SEEDS = driver.TOP / "tests" / "native" / "seeds"
# How many inputs a target runs at a time.
SLICE = 20_000
# As scripts/sanitize, with more seconds for an input: they pass also while other programs have the processors.
OPTIONS = ["-max_len=1000", "-timeout=900", "-print_final_stats=1"]


def counted(text):
    """How many inputs a target says that it has run; None if it doesn't."""
    found = re.search(r"^stat::number_of_executed_units: (\d+)$", text, re.M)
    return int(found[1]) if found else None


def judge(name, code, text, asked):
    """The faults of one run of a target."""
    if code:
        reason = re.search(r"^.*(ERROR|not true|runtime error).*$", text, re.M)
        return ["%s_fuzz has ended with %d: %s" % (name, code, reason[0].strip() if reason else "see its log")]
    count = counted(text)
    return ["%s_fuzz has run %s inputs instead of %d" % (name, count, asked)] if count is None or count < asked else []


class Target:
    def __init__(self, name):
        self.name = name
        self.count = 0
        self.process = None

    def start(self, asked, seed):
        self.asked = asked
        corpus = NATIVE / "corpus" / self.name
        corpus.mkdir(parents=True, exist_ok=True)
        (NATIVE / "faults").mkdir(exist_ok=True)
        self.log = driver.SCRATCH / ("fuzz-%s.log" % self.name)
        wrapper = ["setarch", "-R"] if shutil.which("setarch") else []
        with open(self.log, "w") as log:
            self.process = subprocess.Popen(
                [*wrapper, str(NATIVE / "bin" / (self.name + "_fuzz")), *OPTIONS, "-runs=%d" % asked, "-seed=%d" % seed,
                 "-artifact_prefix=%s/%s-" % (NATIVE / "faults", self.name), str(corpus), str(SEEDS / self.name)],
                stdout=log, stderr=subprocess.STDOUT, env={"TZ": "CET-1", "LC_ALL": "C", "PATH": "/usr/bin:/bin"})

    def finish(self):
        """The faults of the run that has ended."""
        text = self.log.read_text(errors="replace")
        faults = judge(self.name, self.process.returncode, text, self.asked)
        self.count += counted(text) or 0
        self.process = None
        return faults


def run(options):
    outcome = driver.Outcome("fuzz")
    driver.SCRATCH.mkdir(parents=True, exist_ok=True)
    targets = [Target(path.name) for path in sorted(SEEDS.iterdir())]
    share = -(-options.inputs // len(targets))
    progress = driver.Progress("fuzz", options.inputs, "inputs")
    end = time.monotonic() + options.minutes * 60 if options.minutes else float("inf")
    seed = options.seed
    try:
        while time.monotonic() < end and not outcome.faults:
            running = [target for target in targets if target.process]
            # The one that is furthest behind is next.
            waiting = sorted((target for target in targets if not target.process and target.count < share),
                             key=lambda target: target.count)
            if not running and not waiting:
                break
            if waiting and len(running) < options.jobs:
                seed += 1
                waiting[0].start(min(SLICE, share - waiting[0].count), seed)
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
