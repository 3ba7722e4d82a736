"""What the parts of scripts/soak have in common: the installations, the progress, the outcome."""
import collections
import os
import pathlib
import random
import select
import subprocess
import threading
import time

TOP = pathlib.Path(__file__).resolve().parents[2]
WINE = TOP / "scripts" / "wine"
BIN = TOP / "build" / "win32" / "bin"
SCRATCH = TOP / "build" / "soak"

# The bound of every wait for something that is bound to happen, in seconds: far above what it takes on a busy machine.
LIMIT = 300

# A part ends after so many faults.
MOST_FAULTS = 20


class Fault(Exception):
    """What a run has found."""


class Driver:
    """soak_installation.exe in a Wine prefix of its own."""

    def __init__(self):
        self.process = subprocess.Popen([str(WINE), str(BIN / "soak_installation.exe")], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self.text = b""

    def __call__(self, command, *arguments):
        """The answer to a command. Throws Fault for an error, or if there is none."""
        line = " ".join([command, *map(str, arguments)])
        self.process.stdin.write(line.encode() + b"\n")
        self.process.stdin.flush()
        end = time.monotonic() + LIMIT
        answer = self.line(end)
        # What a failed check prints comes ahead of the answer.
        printed = []
        while not answer.startswith(("ok", "yes", "no", "code ", "runs", "killed", "had ended", "error")) and \
                command != "look":
            # What scripts/wine says about a prefix that it makes first doesn't matter.
            printed += [] if answer.startswith("== ") else [answer]
            answer = self.line(end)
        if answer.startswith("error") or printed:
            raise Fault("%s: %s" % (line, "; ".join([answer, *printed])))
        return answer

    def line(self, end):
        while b"\n" not in self.text:
            ready, _, _ = select.select([self.process.stdout], [], [], max(0, end - time.monotonic()))
            more = os.read(self.process.stdout.fileno(), 65536) if ready else b""
            if not more:
                raise Fault("soak_installation %s" % ("has ended" if ready else "doesn't answer"))
            self.text += more
        answer, self.text = self.text.split(b"\n", 1)
        return answer.decode(errors="replace").strip()

    def expect(self, wanted, command, *arguments):
        answer = self(command, *arguments)
        if answer != wanted:
            raise Fault("'%s' instead of '%s' for: %s" % (answer, wanted, " ".join([command, *map(str, arguments)])))

    def close(self):
        """Lets it clean up and end. Returns whether it did."""
        self.process.stdin.close()
        try:
            return self.process.wait(LIMIT) == 0
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
            return False
        finally:
            self.process.stdout.close()


class Progress:
    """Prints how far a part is, each half minute."""

    def __init__(self, name, total, unit, seconds=30):
        self.name, self.total, self.unit, self.every = name, total, unit, seconds
        self.start = self.last = time.monotonic()

    def seconds(self):
        return time.monotonic() - self.start

    def show(self, done, faults=0):
        if time.monotonic() - self.last >= self.every:
            self.last = time.monotonic()
            print("%s: %s of %s %s, %d faults, %d s" % (self.name, f"{done:,}", f"{self.total:,}", self.unit, faults,
                                                       self.seconds()), flush=True)


class Outcome:
    """What a part did: a figure by name, and the faults."""

    def __init__(self, name):
        self.name = name
        self.figures = {}
        self.faults = []


def run_jobs(name, unit, jobs, prefixes, minutes, run):
    """Calls run(driver, job) for each job, with `prefixes` drivers side by side, until all are done or the minutes are
    over. A job throws Fault. Returns the number that was done, the seconds, and the faults."""
    waiting = collections.deque(jobs)
    lock = threading.Lock()
    done = []
    faults = []
    progress = Progress(name, len(jobs), unit)
    end = time.monotonic() + minutes * 60 if minutes else float("inf")

    def work():
        driver = None
        while time.monotonic() < end:
            with lock:
                if not waiting or len(faults) >= MOST_FAULTS:
                    break
                job = waiting.popleft()
            try:
                driver = driver or Driver()
                driver("lay")
                run(driver, job)
                driver("clean")
            except (Fault, OSError, ValueError) as fault:
                with lock:
                    faults.append("%s: %s" % (job, fault))
                    print("%s: FAULT: %s: %s" % (name, job, fault), flush=True)
                # The next one starts from the beginning. Without that the prefix is used no more.
                left, driver = driver, None
                if left is None or not left.close():
                    with lock:
                        faults.append("a prefix can't be used any more")
                    return
            with lock:
                done.append(job)
                progress.show(len(done), len(faults))
        if driver and not driver.close():
            with lock:
                faults.append("an installation couldn't be removed")

    threads = [threading.Thread(target=work, daemon=True) for _ in range(min(prefixes, len(jobs)))]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    return done, progress.seconds(), faults


def chance(seed, number):
    """What decides the job `number` of a run with this seed."""
    return random.Random("%d-%d" % (seed, number))
