"""The helper killed in each phase of an update, on the service manager of a Wine prefix. The state has to be the row of
docs/helper.md, and what this row says has to bring the service up again. tests/source/tolmar/killed_test.cpp kills it at each call,
on a model of the machine."""
import collections
import time

import driver
import end_states

MS = driver.LIMIT * 1000 // 2
# Long enough to be hit while it is copied.
BIG = 150_000_000


def before_the_stop(do, rng):
    do("run")
    do("helper")
    time.sleep(rng.random() * 0.05)


def while_it_stops(do, rng):
    do("behave", 1, "stop-delay-ms", 4000)
    do("run")
    do("helper")
    do.expect("yes", "state", MS, 3)
    time.sleep(rng.random())


def before_the_move(do, rng):
    do("write", "kept", "the version before")
    do("register")
    # It can't be moved, so the helper tries again and again, with tolmar.old deleted.
    do("hold", "installed")
    do("helper")
    do.expect("yes", "gone", MS, "kept")
    time.sleep(rng.random() * 3)


def between_move_and_copy(do, rng):
    do("run")
    do("hold", "fresh")
    do("helper")
    do.expect("yes", "exists", MS, "kept")
    time.sleep(rng.random() * 3)


def before_the_start(do, rng):
    do("run")
    do("helper")
    # The old version may be as large.
    do.expect("yes", "exists", MS, "kept")
    do.expect("yes", "complete", MS, "installed")
    time.sleep(rng.random() * 0.3)


def while_it_starts(do, rng):
    do("behave", 2, "start-delay-ms", 5000)
    do("run")
    do("helper")
    do.expect("yes", "journal", MS, "2 starting")
    time.sleep(rng.random() * 2)


def while_it_watches(do, rng):
    do("run")
    do("helper")
    do.expect("yes", "journal", MS, "2 running")
    time.sleep(rng.random() * 2)


def while_it_watches_one_that_falls(do, rng):
    do("behave", 2, "falls-after-ms", 1500)
    do("run")
    do("helper")
    do.expect("yes", "journal", MS, "2 stopped")
    time.sleep(rng.random() * 3)


def going_back_before_the_move(do, rng):
    do("behave", 2, "falls-after-ms", 200)
    do("behave", 2, "stop-delay-ms", 3000)
    do("run")
    do("helper")
    do.expect("yes", "journal", MS, "2 running")
    # The watch ends 9 seconds after the start at the earliest, the attempts take 15.
    time.sleep(12 + rng.random() * 6)


def going_back_after_the_move(do, rng):
    do("behave", 1, "start-delay-ms", 5000)
    do("behave", 2, "falls-after-ms", 200)
    do("behave", 2, "stop-delay-ms", 3000)
    do("run")
    do("helper")
    do.expect("yes", "journal", MS, "2 stopped")
    do("delete", "installed")
    do.expect("yes", "gone", MS, "kept")
    # Some in the pause behind the move, some while the old version starts, and some when it runs.
    which = rng.randrange(3)
    if which != 0:
        do.expect("yes", "journal", MS, ("1 starting", "1 running")[which - 1])
    time.sleep(rng.random() * 0.3)


def in_the_copy(do, rng):
    do("grow", "fresh", BIG)
    do("run")
    do("helper")
    do.expect("killed", "kill-in-copy", MS)


STEP_1, STEP_4_OR_5 = "in step 1", "before or in step 4 or 5"
COPY, BEFORE_MOVE = "during the copy", "between the move and the copy"
Phase = collections.namedtuple("Phase", "row reach")
PHASES = {
    "before the stop": Phase(None, before_the_stop),
    "while the old version stops": Phase(STEP_1, while_it_stops),
    "between the delete and the move": Phase("between the delete and the move of step 2", before_the_move),
    "between the move and the copy": Phase(BEFORE_MOVE, between_move_and_copy),
    "during the copy": Phase(COPY, in_the_copy),
    "before the start": Phase(STEP_4_OR_5, before_the_start),
    "while the new version starts": Phase(STEP_4_OR_5, while_it_starts),
    "while it watches": Phase(STEP_4_OR_5, while_it_watches),
    "while it watches one that falls": Phase(STEP_4_OR_5, while_it_watches_one_that_falls),
    "in step 6 before the move": Phase("in step 6 before the move", going_back_before_the_move),
    "in step 6 after the move": Phase("in step 6 after the move", going_back_after_the_move),
}


def phase_of(name, before, after):
    """The row of docs/helper.md. Which one it is can depend on when the kill came."""
    if name == "before the stop":
        # It may have got as far as the stop.
        return None if before == after else STEP_1
    if name == "during the copy":
        # The copy may have just begun, or have ended.
        return {"none": BEFORE_MOVE, "new": STEP_4_OR_5}.get(after.installed, COPY)
    return PHASES[name].row


def put_back(do):
    for line in end_states.way_back():
        do("line", line)


def start(do):
    """Waits until the service has settled, and starts it if it doesn't run."""
    end = time.monotonic() + driver.LIMIT
    while end_states.parse_look(do("look")).state not in (1, 4):
        if time.monotonic() > end:
            raise driver.Fault("the service neither stops nor starts")
        time.sleep(0.2)
    if end_states.parse_look(do("look")).state == 1:
        do("start")


# What the column "What to do" says, by its first words, and which versions may run afterwards.
REMEDIES = {
    "wait until it has stopped, start it": (start, ("old",)),
    "start the service": (start, ("old",)),
    "[put the old version back]": (put_back, ("old",)),
    "put the old version back": (put_back, ("old",)),
    "the same": (put_back, ("old",)),
    "see whether the service runs; start it": (start, ("new",)),
}


def remedy(row, name, rng):
    if row is None:
        return (lambda do: None), ("old",)
    text = end_states.killed_rows()[row][3]
    if text.startswith("see whether") and (name == "while it watches one that falls" or rng.random() < 0.5):
        return put_back, ("old",)
    for beginning, found in REMEDIES.items():
        if text.startswith(beginning):
            return found
    raise driver.Fault("docs/helper.md has a remedy that is unknown here: %s" % text)


def kill_in_phase(do, name, rng):
    """On a busy machine the helper may have left the phase, and even have ended: then another one is started."""
    for _ in range(5):
        PHASES[name].reach(do, rng)
        if name == "during the copy" or do("kill") == "killed":
            return
        do("clean")
        do("lay")
    raise driver.Fault("the helper has always ended before it could be killed")


def run_kill(do, seed, number, name, hit):
    rng = driver.chance(seed, number)
    kill_in_phase(do, name, rng)
    # What was there before any helper: version 1, and what `reach` has put beside it.
    before = end_states.Look("old", "previous" if name == "between the delete and the move" else "none", 4, "old")
    do("release")
    after = end_states.parse_look(do("look"))
    row = phase_of(name, before, after)
    hit[row or "before the stop"] += 1
    wrong = end_states.judge_kill(row, before, after) if row else None
    if wrong:
        raise driver.Fault(wrong)
    # The service goes on where the helper left it: what stops will have stopped when the operator comes.
    way, versions = remedy(row, name, rng)
    way(do)
    if do("state", MS, 4) != "yes":
        raise driver.Fault("the service doesn't run after the way back from: %s" % end_states.describe(after))
    end = end_states.parse_look(do("look"))
    if end.running not in versions or end.installed != end.running:
        raise driver.Fault("after the way back: %s" % end_states.describe(end))


def plan(seed, count, tiny=False):
    names = ["between the move and the copy"] if tiny else PHASES
    jobs = [(number, name) for number in range(count) for name in names]
    jobs = [(index, name) for index, (_, name) in enumerate(jobs)]
    driver.chance(seed, -1).shuffle(jobs)
    return jobs


def run(options):
    outcome = driver.Outcome("kills")
    jobs = plan(options.seed, options.kills, options.tiny)
    hit = collections.Counter()
    done, seconds, outcome.faults = driver.run_jobs(
        "kills", "kills", jobs, options.prefixes, options.minutes,
        lambda do, job: run_kill(do, options.seed, *job, hit))
    each = collections.Counter(name for _, name in done)
    outcome.figures = {"kills": len(done), "of": len(jobs), "phases": len(each),
                       "fewest in a phase": min(each.values(), default=0),
                       "by row of docs/helper.md": "; ".join("%s: %d" % item for item in sorted(hit.items())),
                       "seconds": round(seconds)}
    return outcome
