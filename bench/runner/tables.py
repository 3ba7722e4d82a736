"""Results as text: a line for each figure, and the table of the logging libraries."""

import itertools
import statistics

from results import compared_values, round_ratios, spread

# In the order of the tables, with the names that they are shown by.
CONTESTANTS = {
    "own": "ours",
    "floor_system": "floor on the system's locks",
    "floor_runtime": "floor on the runtime's locks",
    "spdlog": "spdlog",
    "log4cplus": "log4cplus",
    "boost_log": "Boost.Log",
    "glog": "glog, no queue",
    "easyloggingpp": "Easylogging++, no queue",
}


def figure_line(figure):
    own = statistics.median(figure["own"])
    line = f"  {figure['name']:<58} {own:>12,.1f} {figure['unit']:<10}"
    values = compared_values(figure)
    if figure.get("other"):
        other = statistics.median(figure["other"])
        line += f" {figure.get('other_name', 'bare')} {other:>12,.1f}   ratio {statistics.median(values):5.2f}"
    if len(values) > 1:
        line += f"   spread {spread(values) * 100:.0f}%"
    if figure.get("target"):
        line += f"   (at {'most' if figure['better'] == 'lower' else 'least'} {figure['target']:.2f})"
    return line.rstrip()


def _median(results, contestant, appending, mode, threads, name):
    for figure in results.figures("peers"):
        if (figure["contestant"], figure["appending"], figure["mode"], figure["threads"], figure["figure"],
                figure["flushed"]) == (contestant, appending, mode, threads, name, True):
            return statistics.median(figure["own"])
    return None


def _pair(values, form):
    return " / ".join("-" if value is None else form(value) for value in values)


def _microseconds(value):
    return f"{value / 1000:.2f}" if value < 10_000 else f"{value / 1000:.0f}"


def _thousands(value):
    return f"{value / 1000:.0f}"


def peer_rows(results):
    """The rows of the comparison: (name, p50, p99, mean, throughput, off), each a text."""
    rows = []
    for appending in (False, True):
        for contestant, shown in CONTESTANTS.items():
            cells = [
                _pair([_median(results, contestant, appending, "statement", n, name) for n in (1, 4)], _microseconds)
                for name in ("p50", "p99", "mean")
            ]
            rates = [_median(results, contestant, appending, "throughput", n, "throughput") for n in (1, 2, 4, 8)]
            off = _median(results, contestant, appending, "off", 1, "off")
            if all(rate is None for rate in rates) and all(set(cell) <= set("- /") for cell in cells):
                continue
            name = shown + (", appending" if appending else "")
            rows.append([name, *cells, _pair(rates, _thousands), "-" if off is None else f"{off:.2f}"])
    return rows


PEER_HEADINGS = ["", "p50 in µs, 1 / 4 threads", "p99 in µs, 1 / 4", "mean in µs, 1 / 4",
                 "thousand messages/s, 1 / 2 / 4 / 8 threads", "off, ns"]


def peer_table(results):
    """The comparison as lines of a Markdown table."""
    rows = [PEER_HEADINGS, ["---"] * len(PEER_HEADINGS), *peer_rows(results)]
    return ["| " + " | ".join(row) + " |" for row in rows]


PEERS = [name for name in CONTESTANTS if name != "own" and not name.startswith("floor_")]


def target_rows(results):
    """What ours has to reach beside the libraries: (text, limit, whether less is better, the ratio in each repetition)."""

    def figures(contestant, mode, threads, name):
        """One for each way to open the file."""
        return [figure for figure in results.figures("peers")
                if (figure["contestant"], figure["mode"], figure["threads"], figure["figure"],
                    figure["flushed"]) == (contestant, mode, threads, name, True)]

    def ratios(mode, threads, name, peers, worst):
        """Of the ratios to each peer and way the worst; None for a repetition in which one of them is missing."""
        own = figures("own", mode, threads, name)
        theirs = [figure for peer in peers for figure in figures(peer, mode, threads, name)]
        beside = itertools.zip_longest(*(round_ratios(own[0], figure) for figure in theirs)) if own else []
        return [None if None in run else worst(run) for run in beside]

    rows = []
    for threads in (1, 4):
        many = f", {threads} thread{'s' if threads > 1 else ''}"
        rows.append(("p50" + many + ": ours, of spdlog's", 1, True, ratios("statement", threads, "p50", ["spdlog"], max)))
        for name in ("p99", "mean"):
            rows.append((name + many + ": ours, of the best library's", 1, True,
                         ratios("statement", threads, name, PEERS, max)))
        rows.append(("messages/s" + many + ": ours, of the best library's", 1.2, False,
                     ratios("throughput", threads, "throughput", PEERS, min)))
    four, eight = (figures("own", "throughput", threads, "throughput") for threads in (4, 8))
    if four and eight:
        rows.append(("messages/s: ours with 8 threads, of ours with 4", 1, False, round_ratios(eight[0], four[0])))
    return [row for row in rows if row[3]]


def target_table(results):
    """The targets, run by run, as lines of a Markdown table."""
    rows = target_rows(results)
    if not rows:
        return []
    runs = max(len(ratios) for _, _, _, ratios in rows)
    lines = ["| | target | " + " | ".join(f"run {run + 1}" for run in range(runs)) + " | reached in |", "| --- " * (runs + 3) + "|"]
    for text, limit, less, ratios in rows:
        known = [ratio for ratio in ratios if ratio is not None]
        reached = sum(ratio <= limit if less else ratio >= limit for ratio in known)
        cells = ["-" if ratio is None else f"{ratio:.2f}" for ratio in ratios + [None] * (runs - len(ratios))]
        lines.append(f"| {text} | at {'most' if less else 'least'} {limit} | {' | '.join(cells)} | {reached} of {len(known)} |")
    return lines


def benchmark_lines(results, benchmark):
    if benchmark == "peers":
        return [*peer_table(results), "", *target_table(results)]
    return [figure_line(figure) for figure in results.figures(benchmark)]
