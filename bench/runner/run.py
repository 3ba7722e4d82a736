"""Runs the measuring programs; scripts/bench calls it. `run.py --help` lists the options."""

import argparse
import json
import os
import random
import subprocess
import sys
import tempfile

import machine
import tables
from results import Results, ResultsError, compare, load

# The benchmarks without a name on the command line, in this order.
PROGRAMS = {
    "format": "format_bench",
    "thread": "thread_bench",
    "clock": "clock_bench",
    "log": "log_bench",
    "file_sink": "file_sink_bench",
    "net": "net_bench",
    "telegram": "telegram_bench",
    "log_service": "log_service_bench",
    "load": "rotation_load",
    "start": "process_start",
}
STEP_LIMIT_SECONDS = 600
OWN = "own"
# How many turns of all contestants a repetition takes to measure the messages a second.
ROUNDS = 6
# The turn goes through the contestants with 1 thread, then with 2, and so on. 4 and 8 are taken together, because ours with 8
# is compared with ours with 4.
THREADS_OF_A_TURN = ((1,), (2,), (4, 8))


class StepError(Exception):
    """A step failed. The message is what the step itself said."""


class Step:
    """One run of a program: its arguments, and what its figures are filed under."""

    # `turn`: the number of the round that the step belongs to, from 0; None if a repetition takes the step once.
    def __init__(self, benchmark, program, arguments=(), prefix="", more=None, turn=None):
        self.benchmark = benchmark
        self.program = program
        self.arguments = list(arguments)
        self.prefix = prefix
        self.more = more or {}
        self.turn = turn

    def title(self):
        title = " ".join([self.benchmark, self.program.removeprefix("peer_") if self.more else "", *self.arguments]).strip()
        return title if self.turn is None else f"{title}, round {self.turn + 1}"


def _peer_step(contestant, mode, threads, appending, flushed, turn=None):
    arguments = [mode, str(threads)] + ["appending"] * appending + ["unflushed"] * (not flushed)
    prefix = ", ".join([contestant, f"{threads} thread{'s' if threads > 1 else ''}"] + ["appending"] * appending +
                       ["unflushed"] * (not flushed)) + ": "
    return Step("peers", f"peer_{contestant}", arguments, prefix, {
        "contestant": contestant, "mode": mode, "threads": threads, "appending": appending, "flushed": flushed}, turn)


def _ways(contestant):
    """Whether the file is opened for appending. Ours is measured once: it always appends."""
    return (False,) if contestant == OWN else (False, True)


def throughput_rounds(contestants, smoke=False):
    """The messages a second with a flush, each contestant and number of threads once in each round.

    What is compared lies seconds apart, so that a slow moment of the machine affects all alike. The order differs from
    round to round, and is the same in each run.
    """
    steps = []
    for turn in range(1 if smoke else ROUNDS):
        ways = [(contestant, appending) for contestant in contestants for appending in _ways(contestant)]
        for together in ((2,),) if smoke else THREADS_OF_A_TURN:
            random.Random(f"{turn} {together}").shuffle(ways)
            for contestant, appending in ways:
                for threads in together[::-1] if turn % 2 else together:
                    steps.append(_peer_step(contestant, "throughput", threads, appending, True, turn))
    return steps


def peer_steps(contestants, smoke=False):
    """All measurements of the logging libraries. Ours always flushes."""
    steps = []
    for contestant in contestants:
        steps.append(_peer_step(contestant, "off", 1, False, True))
        for appending in _ways(contestant):
            for threads in (2,) if smoke else (1, 4):
                steps.append(_peer_step(contestant, "statement", threads, appending, True))
        if contestant != OWN and not smoke:
            steps += [_peer_step(contestant, "throughput", threads, False, False) for threads in (1, 4)]
    return steps + throughput_rounds(contestants, smoke)


def run_program(command, limit=STEP_LIMIT_SECONDS):
    """The figures that a program prints, as a list of objects. Throws StepError."""
    # Files and not pipes: a background process that the program leaves would keep a pipe open.
    with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as err:
        try:
            code = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=out, stderr=err, timeout=limit,
                                  check=False).returncode
        except subprocess.TimeoutExpired:
            code = f"no end within {limit} seconds"
        except OSError as error:
            raise StepError(f"{command[0]}: {error.strerror}") from error
        out.seek(0)
        err.seek(0)
        lines = out.read().decode(errors="replace").replace("\r", "").splitlines()
        words = [line for line in lines if line and not line.startswith("{")]
        words += err.read().decode(errors="replace").replace("\r", "").strip().splitlines()
    if code != 0:
        reason = code if isinstance(code, str) else f"exit code {code}"
        raise StepError("\n".join(words[-20:] + [reason]))
    try:
        figures = [json.loads(line) for line in lines if line.startswith("{")]
    except ValueError as error:
        raise StepError(f"printed a line that is no JSON: {error}") from error
    if not figures:
        raise StepError("\n".join(words[-20:] + ["printed no figure"]))
    return figures


class Run:
    """Takes all steps, several times over, and keeps what they gave."""

    def __init__(self, options, prefix):
        self.options = options
        self.prefix = prefix
        self.results = Results()
        self.results.data.update(machine=machine.describe(), repetitions=options.repeat, smoke=options.smoke)
        self.failures = {}
        self.steps_taken = 0

    def take(self, step, repetition):
        command = [*self.options.runner, os.path.join(self.options.bin, step.program + ".exe"), "--json",
                   *(["--smoke"] if self.options.smoke else []), *step.arguments]
        self.steps_taken += 1
        with machine.Watch(self.prefix) as watch:
            try:
                figures = run_program(command)
            except StepError as error:
                figures = []
                self.failures.setdefault(step.title(), str(error))
                print(f"{step.title()} FAILED:\n" + "\n".join("  " + line for line in str(error).splitlines()), flush=True)
        if watch.share > machine.QUIET_SHARE:
            self.results.data["disturbed"].append(
                {"step": step.title(), "share": round(watch.share, 3), "busiest": watch.busiest})
        for figure in figures:
            name = figure["name"]
            more = {**step.more, "figure": name} if step.more else {}
            figure = {**figure, "name": step.prefix + name}
            if step.turn is None:
                self.results.add(step.benchmark, figure, **more)
            else:
                self.results.add_round(step.benchmark, figure, repetition, step.turn, **more)

    def take_all(self, plan):
        """`plan`: the steps of each benchmark. Repetitions are outermost, so that a slow minute affects all alike."""
        for repetition in range(self.options.repeat):
            for benchmark, steps in plan.items():
                count = f" ({repetition + 1} of {self.options.repeat})" if self.options.repeat > 1 else ""
                print(f"== {benchmark}{count}", flush=True)
                for number, step in enumerate(steps, 1):
                    if len(steps) > 1:
                        print(f"   {step.title()} ({number} of {len(steps)})", flush=True)
                    self.take(step, repetition)
                if repetition == self.options.repeat - 1:
                    for line in tables.benchmark_lines(self.results, benchmark):
                        print(line, flush=True)

    def summary(self):
        """Prints what the figures are worth. Returns the exit code."""
        disturbed = self.results.data["disturbed"]
        if disturbed:
            worst = max(disturbed, key=lambda entry: entry["share"])
            print(f"The machine was busy in {len(disturbed)} of {self.steps_taken} steps: other processes used up to "
                  f"{worst['share'] * 100:.0f}% of a core (most of it {worst['busiest']}, during {worst['step']}). "
                  "Repeat the run on a quiet machine before you use its figures.")
        if self.failures:
            print(f"{len(self.failures)} of the measurements failed:")
            for title, words in self.failures.items():
                print(f"  {title}: {words.splitlines()[0]}")
            return 1
        return 0


def show(path):
    results = load(path)
    described = results.data["machine"]
    print(", ".join(f"{key} {value}" for key, value in described.items() if value))
    for benchmark in results.benchmarks():
        print(f"== {benchmark}")
        print("\n".join(tables.benchmark_lines(results, benchmark)))
    if results.data["disturbed"]:
        print(f"The machine was busy in {len(results.data['disturbed'])} steps.")


def show_comparison(first, second):
    lines, both = compare(load(first), load(second))
    changed = sum(1 for line in lines if " -> " in line)
    print("\n".join(lines + [f"{changed} of {both} figures changed by more than the spread of their repetitions."]))


def parse(arguments):
    parser = argparse.ArgumentParser(prog="scripts/bench")
    parser.add_argument("--bin", help="folder of the programs")
    parser.add_argument("--runner", nargs=1, default=["wine"], help="what runs a program")
    parser.add_argument("--smoke", action="store_true")
    parser.add_argument("--repeat", type=int, default=1)
    parser.add_argument("--json")
    parser.add_argument("--contestants", default=" ".join(tables.CONTESTANTS))
    parser.add_argument("--compare", nargs=2)
    parser.add_argument("--show")
    parser.add_argument("--check", action="store_true", help="only check the command line")
    parser.add_argument("names", nargs="*")
    options = parser.parse_args(arguments)
    options.contestants = options.contestants.replace(",", " ").split()
    for name in options.names:
        if name not in PROGRAMS and name != "peers":
            parser.error(f"unknown benchmark '{name}'; there are {' '.join([*PROGRAMS, 'peers'])}")
    for contestant in options.contestants:
        if contestant not in tables.CONTESTANTS:
            parser.error(f"unknown contestant '{contestant}'; there are {' '.join(tables.CONTESTANTS)}")
    if options.repeat < 1:
        parser.error("--repeat needs a number of at least 1")
    return options


def main(arguments):
    options = parse(arguments)
    try:
        if options.compare:
            show_comparison(*options.compare)
            return 0
        if options.show:
            show(options.show)
            return 0
    except ResultsError as error:
        print(f"bench: {error}", file=sys.stderr)
        return 2
    if options.check:
        return 0
    plan = {name: peer_steps(options.contestants, options.smoke) if name == "peers" else [Step(name, PROGRAMS[name])]
            for name in options.names or PROGRAMS}
    run = Run(options, os.environ.get("WINEPREFIX"))
    run.take_all(plan)
    if options.json:
        run.results.data["failures"] = run.failures
        run.results.save(options.json)
        print(f"The figures are in {options.json}.")
    return run.summary()


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
