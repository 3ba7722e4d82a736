"""The states that an update can end in, as README.md and docs/helper.md list them, and the judgement of a real one."""
import collections
import pathlib

TOP = pathlib.Path(__file__).resolve().parents[2]
README = TOP / "README.md"
HELPER = TOP / "docs" / "helper.md"

SERVICE_STATES = {0: "no service", 1: "stopped", 2: "start pending", 3: "stop pending", 4: "running"}

# What is in tolmar.exe and in tolmar.old, the state of the service, and the version that runs as it.
Look = collections.namedtuple("Look", "installed kept state running")


def parse_look(answer):
    installed, kept, state, running = answer.split(" ")
    return Look(installed, kept, int(state), running)


def table(path, header, columns):
    """The first `columns` cells of each row of the table of `path` whose header begins with `header`."""
    rows = []
    inside = False
    for line in path.read_text().splitlines():
        if not line.startswith("|"):
            inside = False
        elif line.startswith(header):
            inside = True
        elif inside and not line.startswith("|---"):
            rows.append(tuple(cell.strip() for cell in line.split("|")[1:columns + 1]))
    if not rows:
        raise ValueError("%s has no table that begins with '%s'" % (path.name, header))
    return rows


def end_rows():
    """Exit code, tolmar.exe, tolmar.old, service."""
    return table(README, "| Exit code | `tolmar.exe`", 4)


def killed_rows():
    """When it was killed: tolmar.exe, tolmar.old, service, what to do."""
    return {row[0]: row[1:] for row in table(HELPER, "| Killed |", 5)}


def way_back():
    """The lines of README.md that put the old version back."""
    section = README.read_text().split("### Putting the old version back\n", 1)[1]
    lines = section.split("```\n", 2)[1].splitlines()
    if not lines:
        raise ValueError("README.md has no way back")
    return lines


def _file_matches(cell, before, after):
    return {"as before": before, "the old version": "old", "the new version": "new",
            "a part of the new version": "part"}.get(cell, cell) == after


def _service_matches(cell, before, after):
    if cell == "as before":
        return (before.state, before.running) == (after.state, after.running)
    states = {"not running": after.running == "none" and after.state != 4,
              "runs old": after.running == "old", "runs new": after.running == "new",
              "stopping": after.state == 3, "starting": after.state == 2, "running": after.state == 4}
    alternatives = [part.strip() for part in cell.replace(" or ", ",").split(",")]
    unknown = [part for part in alternatives if part not in states]
    if unknown:
        raise ValueError("what is a service that is '%s'?" % unknown[0])
    return any(states[part] for part in alternatives)


def matches(cells, before, after):
    """Whether the cells for tolmar.exe, tolmar.old and the service describe the state `after`."""
    return (_file_matches(cells[0], before.installed, after.installed) and
            _file_matches(cells[1], before.kept, after.kept) and _service_matches(cells[2], before, after))


def describe(look):
    return "tolmar.exe %s, tolmar.old %s, service %s, running %s" % (
        look.installed, look.kept, SERVICE_STATES.get(look.state, look.state), look.running)


def judge_end(code, before, after, expected):
    """Nothing if the end is the row `expected` of README.md, otherwise what is wrong."""
    rows = end_rows()
    if expected not in rows:
        return "README.md has no row '%s'" % " | ".join(expected)
    fitting = [row for row in rows if row[0] == code and matches(row[1:], before, after)]
    if expected in fitting:
        return None
    end = "%s, %s" % (code, describe(after))
    return "no row of README.md: %s" % end if not fitting else \
        "the row '%s' instead of '%s': %s" % (" | ".join(fitting[0]), " | ".join(expected), end)


def judge_kill(when, before, after):
    """The same for a helper that was killed at the time `when`, a row of docs/helper.md. A state with other files than
    before has to be in README.md's table, too, which says what to do."""
    rows = killed_rows()
    if when not in rows:
        return "docs/helper.md has no row '%s'" % when
    if not matches(rows[when], before, after):
        return "killed %s, but %s" % (when, describe(after))
    if (before.installed, before.kept) != (after.installed, after.kept) and not any(
            _file_matches(row[1], before.installed, after.installed) and
            _file_matches(row[2], before.kept, after.kept) for row in end_rows()):
        return "files of no row of README.md: %s" % describe(after)
    return None
