"""Updates of a real service by a real helper, on the service manager of a Wine prefix. Good ones and bad ones are mixed by a
seed; each has to end in its row of README.md."""
import collections

import driver
import end_states

# How long a helper that never ends is watched: longer than any other run takes.
WATCH_MS = 30000

GOOD = ("0", "new", "old", "runs new")
UNTOUCHED = ("0", "as before", "as before", "as before")
NOT_COPIED = ("1", "none", "old", "not running")
HANGS = ("never ends", "new", "old", "not running")
KEPT_IN_THE_WAY = ("1", "old", "as before", "not running")


def good(do, rng):
    do("behave", 1, "stop-delay-ms", rng.randrange(2500))
    do("behave", 2, "start-delay-ms", rng.randrange(2500))
    do("run")


def service_not_running(do, rng):
    do("register")


def old_process_lingers(do, rng):
    do("behave", 1, "linger-ms", rng.randrange(1000, 20000))
    do("run")


def accepts_the_stop_and_runs_on(do, rng):
    do("behave", 1, "ignores-stop", 1)
    do("run")


def stops_late(do, rng):
    do("behave", 1, "late-stop-ms", 15000 + rng.randrange(5000))
    do("run")


def refuses_the_stop(do, rng):
    do("behave", 1, "refuses-stop", 1)
    do("run")


def no_service(do, rng):
    pass


def still_starting(do, rng):
    do("behave", 1, "starts-forever", 1)
    do("register")
    do("start")
    do.expect("yes", "state", driver.LIMIT * 1000 // 2, 2)


def helper_cannot_start(do, rng):
    do("run")
    do("env", "VEKLOG_DEFAULT_LEVEL", "DEFAULT")


def no_pathinfo(do, rng):
    do("run")
    if rng.random() < 0.5:
        do("delete", "pathinfo")
    else:
        do("write", "pathinfo", "Other = 1")


def kept_in_use(do, rng):
    do("run")
    do("write", "kept", "the version before")


def kept_read_only(do, rng):
    do("run")
    do("write", "kept", "the version before")
    do("readonly", "kept")


def new_one_missing(do, rng):
    do("run")
    do("delete", "fresh")


def only_run(do, rng):
    do("run")


def new_one_falls(do, rng):
    do("behave", 2, "falls-after-ms", 200 + rng.randrange(1800))
    do("behave", 2, "stop-delay-ms", 3000)
    do("run")


def falls_and_is_removed(do):
    do.expect("yes", "journal", driver.LIMIT * 1000 // 2, "2 stopped")
    do("delete", "installed")


def new_one_starts_forever(do, rng):
    do("behave", 2, "starts-forever", 1)
    do("run")


def new_one_stops_while_starting(do, rng):
    do("behave", 2, "dies-while-starting", 1)
    do("run")


def new_one_is_no_program(do, rng):
    do("write", "fresh", "a page of the proxy instead of the program")
    do("run")


def old_one_never_stops(do, rng):
    do("behave", 1, "stop-delay-ms", 170000)
    do("run")


# How often of 100, the row of README.md, what is prepared, and what happens while the helper is at work.
# `held` is a file that another process has open.
Scenario = collections.namedtuple("Scenario", "weight row prepare meanwhile held", defaults=[None, None])
SCENARIOS = {
    "good": Scenario(44, GOOD, good),
    "service not running": Scenario(6, GOOD, service_not_running),
    "old process lingers": Scenario(4, GOOD, old_process_lingers),
    "accepts the stop and runs on": Scenario(4, ("0", "new", "old", "runs old"), accepts_the_stop_and_runs_on),
    "accepts the stop and stops late": Scenario(2, ("0", "new", "old", "not running"), stops_late),
    "refuses the stop": Scenario(4, UNTOUCHED, refuses_the_stop),
    "no service": Scenario(3, UNTOUCHED, no_service),
    "still starting": Scenario(2, UNTOUCHED, still_starting),
    "helper cannot start": Scenario(3, ("0, message", "as before", "as before", "as before"), helper_cannot_start),
    "no pathinfo.ini": Scenario(4, ("0, message", "none", "old", "not running"), no_pathinfo),
    "tolmar.old in use": Scenario(3, KEPT_IN_THE_WAY, kept_in_use, held="kept"),
    "tolmar.old read-only": Scenario(2, KEPT_IN_THE_WAY, kept_read_only),
    "new executable missing": Scenario(3, NOT_COPIED, new_one_missing),
    "new executable in use": Scenario(2, NOT_COPIED, only_run, held="fresh"),
    "new version falls": Scenario(4, ("1", "new", "old", "not running"), new_one_falls),
    "falls and is removed": Scenario(4, ("1", "old", "none", "runs old"), new_one_falls,
                                     falls_and_is_removed),
    "never done starting": Scenario(2, HANGS, new_one_starts_forever),
    "stops while starting": Scenario(1, HANGS, new_one_stops_while_starting),
    "new executable is no program": Scenario(2, HANGS, new_one_is_no_program),
    "never done stopping": Scenario(1, ("never ends", "old", "as before", "not running"), old_one_never_stops),
}


def parse_end(answer):
    """The cell of the column "Exit code"."""
    if answer == "runs":
        return "never ends"
    code, separator, _ = answer.removeprefix("code ").partition(",")
    return code + ", message" if separator else code


def run_update(do, seed, number, name):
    rng = driver.chance(seed, number)
    scenario = SCENARIOS[name]
    if rng.random() < 0.5:
        do("write", "kept", "the version before")
    scenario.prepare(do, rng)
    before = end_states.parse_look(do("look"))
    if scenario.held:
        do("hold", scenario.held)
    do("helper")
    if scenario.meanwhile:
        scenario.meanwhile(do)
    end = parse_end(do("ended", WATCH_MS if scenario.row[0] == "never ends" else driver.LIMIT * 1000 // 2))
    if name == "accepts the stop and stops late":
        do.expect("yes", "state", driver.LIMIT * 1000 // 2, 1)
    do("release")
    after = end_states.parse_look(do("look"))
    do("env", "VEKLOG_DEFAULT_LEVEL")
    wrong = end_states.judge_end(end, before, after, scenario.row)
    if wrong:
        raise driver.Fault(wrong)


def plan(seed, count):
    """Which scenario each update is."""
    names = list(SCENARIOS)
    weights = [SCENARIOS[name].weight for name in names]
    return [(number, driver.chance(seed, number).choices(names, weights)[0]) for number in range(count)]


def run(options):
    outcome = driver.Outcome("updates")
    jobs = plan(options.seed, options.updates)
    done, seconds, outcome.faults = driver.run_jobs(
        "updates", "updates", jobs, options.prefixes, options.minutes,
        lambda do, job: run_update(do, options.seed, *job))
    bad = sum(SCENARIOS[name].row != GOOD for _, name in done)
    outcome.figures = {"updates": len(done), "of": len(jobs), "meant to fail": bad, "kinds": len({name for _, name in done}),
                       "side by side": options.prefixes, "seconds": round(seconds)}
    return outcome
