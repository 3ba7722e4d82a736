"""What else the machine does during a measurement, and what machine it is."""

import os
import platform
import re
import subprocess
import threading
import time

TICKS_A_SECOND = os.sysconf("SC_CLK_TCK")
# Other processes may use this share of one core; a measurement with more is called disturbed.
QUIET_SHARE = 0.05
SAMPLE_SECONDS = 2.0
# The parent of the kernel's threads, which work for the measurement too.
KERNEL_THREADS = 2


def _read(path):
    try:
        with open(path, "rb") as file:
            return file.read()
    except OSError:
        return b""


def _processor_time(pid):
    """(name, parent, seconds of processor time) of a process, or None if it has ended."""
    stat = _read(f"/proc/{pid}/stat").decode(errors="replace")
    match = re.match(r"\d+ \((.*)\) . (\d+) (?:\S+ ){9}(\d+) (\d+) ", stat, re.S)
    if not match:
        return None
    return match[1], int(match[2]), (int(match[3]) + int(match[4])) / TICKS_A_SECOND


def _stolen():
    """Seconds that the host of a virtual machine gave to others."""
    fields = _read("/proc/stat").split(b"\n", 1)[0].split()
    return int(fields[8]) / TICKS_A_SECOND if len(fields) > 8 else 0.0


class Watch:
    """Measures the processor time of processes that don't belong to the measurement.

    Those that belong to it are this process, its parents and its children, the processes of the Wine prefix, and the
    kernel's threads.
    Use as a context manager; `share` and `busiest` are valid afterwards.
    """

    def __init__(self, prefix, interval=SAMPLE_SECONDS):
        self.mark = b"WINEPREFIX=" + os.fsencode(prefix or "none") + b"\0"
        self.interval = interval
        self.own = set()
        self.others = {}  # pid: [name, seconds at the first sight, seconds now]
        self.share = 0.0
        self.busiest = ""

    def __enter__(self):
        pid = os.getpid()
        while pid > 0:
            self.own.add(pid)
            process = _processor_time(pid)
            pid = process[1] if process else 0
        self.started = time.monotonic()
        self.stolen = _stolen()
        self._sample(first=True)
        self.stop = threading.Event()
        self.thread = threading.Thread(target=self._watch, daemon=True)
        self.thread.start()
        return self

    def __exit__(self, *unused):
        self.stop.set()
        self.thread.join()
        self._sample()
        passed = max(time.monotonic() - self.started, 0.001)
        used = {}
        for name, before, now in self.others.values():
            used[name] = used.get(name, 0.0) + now - before
        stolen = _stolen() - self.stolen
        if stolen > 0:
            used["the machine's host"] = stolen
        self.share = sum(used.values()) / passed
        self.busiest = max(used, key=used.get) if used else ""

    def _watch(self):
        while not self.stop.wait(self.interval):
            self._sample()

    def _sample(self, first=False):
        for entry in os.listdir("/proc"):
            if not entry.isdigit() or int(entry) in self.own:
                continue
            pid = int(entry)
            process = _processor_time(pid)
            if process is None:
                continue
            name, parent, seconds = process
            if pid not in self.others:
                # A process that started after the last sample has used all of its time since.
                if parent in (os.getpid(), KERNEL_THREADS) or pid == KERNEL_THREADS or self.mark in _read(f"/proc/{pid}/environ"):
                    self.own.add(pid)
                    continue
                self.others[pid] = [name, seconds if first else 0.0, seconds]
            self.others[pid][2] = max(seconds, self.others[pid][2])


def _output(*command):
    try:
        result = subprocess.run(command, capture_output=True, text=True, check=True)
        return result.stdout.strip().splitlines()[0] if result.stdout.strip() else ""
    except (OSError, subprocess.CalledProcessError):
        return ""


def describe():
    """The machine, the versions and the commit, for the record."""
    model = re.search(r"^model name\s*:\s*(.*)$", _read("/proc/cpuinfo").decode(errors="replace"), re.M)
    top = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
    commit = _output("git", "-C", top, "rev-parse", "--short", "HEAD")
    changed = _output("git", "-C", top, "status", "--porcelain", "--untracked-files=no")
    return {
        "date": time.strftime("%Y-%m-%d"),
        "processor": model[1] if model else platform.processor(),
        "cores": os.cpu_count(),
        "wine": _output("wine", "--version"),
        "compiler": _output("i686-w64-mingw32-g++-posix", "--version"),
        "commit": commit + (" with changes" if changed else ""),
    }
