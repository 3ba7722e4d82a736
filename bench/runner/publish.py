"""Makes the charts and the table of docs/performance.md from a file of results; scripts/bench --publish calls it.

usage: publish.py [--check] FILE.json DOCUMENT

Writes DOCUMENT's folder/charts/statement.svg and throughput.svg with gnuplot, and replaces the lines of DOCUMENT between
"<!-- peers -->" and "<!-- end of peers -->" by the day, the machine and the table. --check writes nothing and ends with
1 if DOCUMENT holds another table than FILE.json gives.
"""

import math
import os
import re
import shutil
import statistics
import subprocess
import sys

import tables
from results import ResultsError, load

STYLES = {  # colour, line width, dash type
    "own": ("#c1121f", 3, 1),
    "floor_system": ("#8d99ae", 1.5, 2),
    "floor_runtime": ("#5c677d", 1.5, 3),
    "spdlog": ("#0072b2", 1.5, 1),
    "log4cplus": ("#009e73", 1.5, 1),
    "boost_log": ("#e69f00", 1.5, 1),
    "glog": ("#cc79a7", 1.5, 1),
    "easyloggingpp": ("#56b4e9", 1.5, 1),
}
# A run with a larger part of its steps disturbed is worth no more than a trial.
MOST_DISTURBED = 0.05
HEAD = """set terminal svg size {width},{height} dynamic background '#ffffff' font 'sans-serif,13'
set output '{path}'
set multiplot layout 1,2
set grid lc rgb '#dddddd'
set border lc rgb '#444444'
set key below maxcols 2 Left reverse samplen 2
"""


def series(results, appending, mode, threads, figure):
    """{contestant: median} of one figure. Ours always appends, so it belongs to both ways."""
    found = {}
    for entry in results.figures("peers"):
        if (entry["mode"], entry["threads"], entry["figure"], entry["flushed"]) == (mode, threads, figure, True) and (
                entry["appending"] == appending or entry["contestant"] == "own"):
            found[entry["contestant"]] = statistics.median(entry["own"])
    return found


def percents(results):
    """The percentiles of the distributions, as texts, in order."""
    names = {entry["figure"] for entry in results.figures("peers") if re.fullmatch(r"p[\d.]+", entry["figure"])}
    return sorted((name[1:] for name in names), key=float)


def plot(curves):
    """The plot command for {contestant: [(x, y)]}, with the points in the command itself."""
    known = [name for name in tables.CONTESTANTS if name in curves]
    if not known:
        raise ResultsError("the file holds too few figures of the peers for the charts")
    parts, data = [], ""
    for name in known:
        colour, width, dash = STYLES[name]
        parts.append(f"'-' using 1:2 with linespoints pt 7 ps 0.3 lc rgb '{colour}' lw {width} dt {dash} "
                     f"title \"{tables.CONTESTANTS[name]}\"")
        data += "".join(f"{x:.6g} {y:.6g}\n" for x, y in curves[name]) + "e\n"
    return "plot " + ", ".join(parts) + "\n" + data


def statement_chart(results, path):
    script = HEAD.format(path=path, width=1000, height=560)
    script += "set logscale y\nset yrange [0.2:*]\nset ylabel 'time inside a statement, µs'\n"
    script += "set xlabel 'part of the statements that took at most that long'\nset xrange [0:3.4]\n"
    script += "set xtics (" + ", ".join(
        f"'{p}%%' {-math.log10(1 - p / 100)}" for p in (50, 90, 99, 99.9)) + ")\n"
    for threads in (1, 4):
        curves = {}
        for percent in percents(results):
            x = -math.log10(1 - float(percent) / 100)
            for name, value in series(results, False, "statement", threads, "p" + percent).items():
                curves.setdefault(name, []).append((x, value / 1000))
        script += f"set title '{threads} thread{'s' if threads > 1 else ''}'\n" + plot(curves)
    return script + "unset multiplot\n"


def throughput_chart(results, path):
    script = HEAD.format(path=path, width=1000, height=560)
    script += "set logscale x 2\nset xrange [0.9:8.9]\nset xtics (1, 2, 4, 8)\nset yrange [0:*]\n"
    script += "set xlabel 'threads that log'\nset ylabel 'thousand messages a second'\n"
    for appending, title in ((False, "each in its usual append mode"), (True, "all with one append call for each flush")):
        curves = {}
        for threads in (1, 2, 4, 8):
            for name, value in series(results, appending, "throughput", threads, "throughput").items():
                curves.setdefault(name, []).append((threads, value / 1000))
        script += f"set title '{title}'\n" + plot(curves)
    return script + "unset multiplot\n"


def draw(script):
    if not shutil.which("gnuplot"):
        raise ResultsError("gnuplot is missing; install it with: apt-get install gnuplot-nox")
    result = subprocess.run(["gnuplot"], input=script, capture_output=True, text=True, check=False)
    if result.returncode != 0 or result.stderr.strip():
        raise ResultsError("gnuplot: " + result.stderr.strip())


def section(results):
    """The lines between the marks."""
    described = results.data["machine"]
    day = described.get("date", "an unknown day")
    versions = ", ".join(described[key] for key in ("processor", "wine") if described.get(key))
    repetitions = results.data["repetitions"]
    # Of each step's figures one, which says how often the step was taken.
    steps = {tuple(entry[key] for key in ("contestant", "mode", "threads", "appending", "flushed")): entry
             for entry in results.figures("peers")}
    taken = sum(sum(map(len, entry["rounds"])) if "rounds" in entry else repetitions for entry in steps.values())
    rounds = max((len(values) for entry in steps.values() for values in entry.get("rounds", [])), default=0)
    lines = [f"Measured on {day}, {versions}, {described.get('cores', '?')} cores, commit {described.get('commit', '?')}; "
             + (f"medians of {repetitions} repetitions." if repetitions > 1 else "one repetition.")
             + (f" Messages/s: medians of {rounds} rounds in each repetition." if rounds else
                " Messages/s: measured once in each repetition.")]
    disturbed = len(results.data["disturbed"])
    if disturbed > taken * MOST_DISTURBED:
        lines[0] += (f" **The machine was busy in {disturbed} of the steps: "
                     "the figures show that the comparison works, and no more.**")
    elif disturbed:
        lines[0] += f" Other processes took more than 5 % of a core in {disturbed} of {taken} steps."
    return lines + ["", *tables.peer_table(results), "", "Run by run, with the library and the way to open the file that is best "
                    "in that run:", "", *tables.target_table(results)]


def with_section(document, lines):
    """The document with the lines between its marks."""
    replaced, count = re.subn(r"(<!-- peers -->\n).*?(\n<!-- end of peers -->)",
                              lambda match: match[1] + "\n".join(lines) + match[2], document, flags=re.S)
    if count != 1:
        raise ResultsError("the document needs one pair of the marks <!-- peers --> and <!-- end of peers -->")
    return replaced


def main(arguments):
    check = arguments[:1] == ["--check"]
    paths = arguments[check:]
    if len(paths) != 2:
        print(__doc__, file=sys.stderr)
        return 2
    source, target = paths
    try:
        results = load(source)
        with open(target, encoding="utf-8") as file:
            document = file.read()
        written = with_section(document, section(results))
        if check:
            if written != document:
                print(f"{target} doesn't hold the table of {source}; run scripts/bench --publish {source}", file=sys.stderr)
            return int(written != document)
        charts = os.path.join(os.path.dirname(os.path.abspath(target)), "charts")
        os.makedirs(charts, exist_ok=True)
        draw(statement_chart(results, os.path.join(charts, "statement.svg")))
        draw(throughput_chart(results, os.path.join(charts, "throughput.svg")))
        with open(target, "w", encoding="utf-8") as file:
            file.write(written)
    except (ResultsError, OSError) as error:
        print(f"publish: {error}", file=sys.stderr)
        return 2
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
