"""The figures of a run: reading, writing, statistics, comparison."""

import json
import statistics

# A spread needs this many repetitions.
LEAST_REPETITIONS = 3
# What the figures of the logging libraries hold in addition.
PEER_KEYS = {"contestant": str, "mode": str, "threads": int, "appending": bool, "flushed": bool, "figure": str}


class ResultsError(Exception):
    """A file of results can't be used. The message says why, and what to do."""


def spread(values):
    """How far the repetitions differ: largest less smallest, as a part of the median."""
    middle = statistics.median(values)
    return (max(values) - min(values)) / middle if middle else 0.0


def values_by_round(figure):
    """For each repetition the values of its rounds. Most figures are measured once in a repetition, a round of its own."""
    return figure.get("rounds") or [[value] for value in figure["own"]]


def round_ratios(own, other):
    """For each repetition the median of the rounds' ratios of two figures; None if no round holds both."""
    medians = []
    for ours, theirs in zip(values_by_round(own), values_by_round(other)):
        ratios = [a / b for a, b in zip(ours, theirs) if a is not None and b is not None]
        medians.append(statistics.median(ratios) if ratios else None)
    return medians


def compared_values(figure):
    """The values to compare two runs by: the ratios to the other side, which the machine affects less, or the values."""
    if figure.get("other"):
        return [own / other for own, other in zip(figure["own"], figure["other"])]
    return figure["own"]


class Results:
    """Figures by (benchmark, name). A figure's "own" and "other" hold one value for each repetition.

    What a repetition measures several times, in rounds, has "rounds" too: for each repetition a list of the rounds' values,
    with None for a round that failed. "own" are their medians then.
    """

    def __init__(self, data=None):
        self.data = data or {"machine": {}, "repetitions": 0, "disturbed": [], "figures": []}
        self.index = {(f["benchmark"], f["name"]): f for f in self.data["figures"]}

    def add(self, benchmark, printed, /, **more):
        """Adds one value of a figure as a benchmark program prints it. `more` is filed with the figure."""
        key = (benchmark, printed["name"])
        if key not in self.index:
            known = {"benchmark": benchmark, **printed, **more, "own": []}
            if "other" in printed:
                known["other"] = []
            self.index[key] = known
            self.data["figures"].append(known)
        self.index[key]["own"].append(printed["own"])
        if "other" in printed:
            self.index[key]["other"].append(printed["other"])

    def add_round(self, benchmark, printed, repetition, turn, /, **more):
        """Adds the value of one round; `repetition` and `turn` count from 0."""
        figure = self.index.get((benchmark, printed["name"]))
        if figure is None:
            self.add(benchmark, printed, **more)
            figure = self.index[benchmark, printed["name"]]
        rounds = figure.setdefault("rounds", [])
        rounds += [[] for _ in range(repetition + 1 - len(rounds))]
        values = rounds[repetition]
        values += [None] * (turn - len(values)) + [printed["own"]]
        figure["own"] = [statistics.median(value for value in values if value is not None) for values in rounds if values]

    def figures(self, benchmark):
        return [f for f in self.data["figures"] if f["benchmark"] == benchmark]

    def benchmarks(self):
        return list(dict.fromkeys(f["benchmark"] for f in self.data["figures"]))

    def save(self, path):
        """One line for each figure, so that a diff of two files is readable."""
        head = {key: value for key, value in self.data.items() if key != "figures"}
        with open(path, "w", encoding="utf-8") as file:
            file.write(json.dumps(head, indent=1)[:-2] + ',\n "figures": [\n')
            file.write(",\n".join("  " + json.dumps(figure) for figure in self.data["figures"]))
            file.write("\n ]\n}\n")


def load(path):
    """Throws ResultsError for a file that holds no results."""
    try:
        with open(path, encoding="utf-8") as file:
            data = json.load(file)
        for figure in data["figures"]:
            for key in ("benchmark", "name", "unit", "better"):
                if not isinstance(figure[key], str):
                    raise ValueError(f"{key} is no text")
            if figure["benchmark"] == "peers":
                for key, kind in PEER_KEYS.items():
                    if not isinstance(figure[key], kind):
                        raise ValueError(f"{key} of '{figure['name']}' is wrong")
                if 0 in figure["own"]:
                    raise ValueError(f"'{figure['name']}' is 0")
            series = [figure["own"]] + ([figure["other"]] if "other" in figure else [])
            for values in series:
                if not values or not all(isinstance(v, (int, float)) and v >= 0 for v in values):
                    raise ValueError(f"figure '{figure['name']}' has no values")
            for values in figure.get("rounds", []):
                if not isinstance(values, list) or not all(v is None or isinstance(v, (int, float)) and v > 0 for v in values):
                    raise ValueError(f"the rounds of '{figure['name']}' are wrong")
            if len(series) == 2 and (len(series[0]) != len(series[1]) or 0 in series[1]):
                raise ValueError(f"figure '{figure['name']}' can't be compared with its other side")
        data = {"machine": {}, "repetitions": 0, "disturbed": [], **data}
        if not (isinstance(data["machine"], dict) and isinstance(data["repetitions"], int) and
                isinstance(data["disturbed"], list)):
            raise ValueError("what describes the run is wrong")
        return Results(data)
    except OSError as error:
        raise ResultsError(f"{path}: {error.strerror}") from error
    except (ValueError, KeyError, TypeError, AttributeError) as error:
        raise ResultsError(f"{path} holds no results of scripts/bench --json ({error})") from error


def _changed(before, after):
    """Whether the ranges of two series have nothing in common."""
    return max(before) < min(after) or max(after) < min(before)


def compare(first, second):
    """(lines, number of figures in both) of what has changed by more than the spread of the repetitions."""
    lines, both = [], 0
    for key, before in first.index.items():
        after = second.index.get(key)
        if after is None:
            lines.append(f"{key[0]}: {key[1]}: only in the first")
            continue
        both += 1
        old, new = compared_values(before), compared_values(after)
        if min(len(old), len(new)) < LEAST_REPETITIONS:
            raise ResultsError(
                f"{key[0]}: {key[1]}: has {min(len(old), len(new))} repetitions, which show no spread; "
                f"make both files with --repeat {LEAST_REPETITIONS} or more")
        if not _changed(old, new):
            continue
        a, b = statistics.median(old), statistics.median(new)
        better = (b < a) == (before["better"] == "lower")
        # A figure whose median was 0 has no percentage.
        change = f"{(b / a - 1) * 100:+.0f}%, " if a else ""
        unit = "of the other side" if before.get("other") else before["unit"]
        lines.append(f"{key[0]}: {key[1]}: {a:.4g} -> {b:.4g} {unit} ({change}{'better' if better else 'worse'}; "
                     f"spread {spread(old) * 100:.0f}% and {spread(new) * 100:.0f}%)")
    lines += [f"{key[0]}: {key[1]}: only in the second" for key in second.index if key not in first.index]
    return lines, both
