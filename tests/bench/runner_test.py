"""Tests of scripts/bench's runner: what it makes of failing programs, a busy machine, and files of results.

The programs are real processes: small scripts for the shell. usage: runner_test.py RUNNER_FOLDER
"""

import contextlib
import io
import json
import os
import subprocess
import sys
import tempfile
import time
import unittest
import unittest.mock

runner = sys.argv.pop(1)
sys.path.insert(0, runner)
sys.dont_write_bytecode = True
# pylint: disable=wrong-import-position
import machine
import publish
import results
import run
import tables

FIGURE = '{"name": "work", "unit": "ns", "better": "lower", "own": 2, "other": 1, "target": 1.5}'


class Folder(unittest.TestCase):
    """With a folder of programs, which the shell runs."""

    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.folder = holder.name

    def path(self, name):
        return os.path.join(self.folder, name)

    def program(self, name, script):
        with open(self.path(name + ".exe"), "w", encoding="utf-8") as file:
            file.write(script)

    def bench(self, *arguments):
        """(exit code, output) of a run."""
        out = io.StringIO()
        with contextlib.redirect_stdout(out), contextlib.redirect_stderr(out):
            try:
                code = run.main(["--bin", self.folder, "--runner", "sh", *arguments])
            except SystemExit as end:
                code = end.code
        return code, out.getvalue()

    def results_file(self, file_name, /, **figure):
        data = {"figures": [{"benchmark": "log", "name": "work", "unit": "ns", "better": "lower", **figure}]}
        with open(self.path(file_name), "w", encoding="utf-8") as file:
            json.dump(data, file)
        return self.path(file_name)


class Failures(Folder):
    def test_a_failing_program_ends_the_run_with_1_and_its_own_words(self):
        self.program("log_bench", "echo 'message 7 is missing' >&2; exit 1")
        code, output = self.bench("log")
        self.assertEqual(code, 1)
        self.assertIn("log FAILED", output)
        self.assertIn("message 7 is missing", output)
        self.assertIn("exit code 1", output)

    def test_the_other_programs_run_all_the_same(self):
        self.program("log_bench", "exit 3")
        self.program("net_bench", f"echo '{FIGURE}'")
        code, output = self.bench("log", "net")
        self.assertEqual(code, 1)
        self.assertIn("ratio  2.00", output)

    def test_a_program_that_fails_after_its_figures_has_failed(self):
        self.program("log_bench", f"echo '{FIGURE}'; exit 1")
        code, output = self.bench("log")
        self.assertEqual(code, 1)
        self.assertNotIn("ratio", output)

    def test_a_program_without_figures_has_failed(self):
        self.program("log_bench", "echo hello")
        code, output = self.bench("log")
        self.assertEqual(code, 1)
        self.assertIn("hello", output)
        self.assertIn("printed no figure", output)

    def test_a_line_that_is_no_json_fails(self):
        self.program("log_bench", "echo '{name: 1'")
        code, output = self.bench("log")
        self.assertEqual(code, 1)
        self.assertIn("no JSON", output)

    def test_a_missing_program_fails(self):
        code, _ = self.bench("log")
        self.assertEqual(code, 1)

    def test_a_program_that_does_not_end_fails(self):
        self.program("log_bench", "exec sleep 30")
        with self.assertRaisesRegex(run.StepError, "no end within 1 seconds"):
            run.run_program(["sh", self.path("log_bench.exe")], limit=1)

    def test_one_failing_repetition_is_enough(self):
        self.program("log_bench", f"echo '{FIGURE}'; [ -e {self.path('mark')} ] || {{ touch {self.path('mark')}; exit 1; }}")
        code, _ = self.bench("--repeat", "2", "log")
        self.assertEqual(code, 1)

    def test_a_failing_contestant_leaves_the_others(self):
        # The third argument is the mode.
        self.program("peer_own", 'echo "{\\"name\\": \\"$3\\", \\"unit\\": \\"ns\\", \\"better\\": \\"lower\\", \\"own\\": 5}"')
        self.program("peer_spdlog", "echo 'cannot open' >&2; exit 1")
        code, output = self.bench("--smoke", "--contestants", "own,spdlog", "peers")
        self.assertEqual(code, 1)
        self.assertIn("| ours |", output)
        self.assertIn("peers spdlog throughput 2 appending", output)

    def test_unknown_names_and_numbers_are_refused(self):
        for arguments in (["nonsense"], ["--repeat", "0"], ["--contestants", "nobody", "peers"], ["--nonsense"]):
            code, _ = self.bench(*arguments)
            self.assertEqual(code, 2, arguments)


class Repetitions(Folder):
    def test_the_median_and_the_spread_of_the_repetitions(self):
        self.program("log_bench", f"""echo x >> {self.path('count')}
            n=$(wc -l < {self.path('count')})
            case $n in 1) v=10;; 2) v=30;; 3) v=20;; esac
            echo '{{"name": "work", "unit": "ns", "better": "lower", "own": '$v', "other": 10}}'""")
        code, output = self.bench("--repeat", "3", "--json", self.path("out.json"), "log")
        self.assertEqual(code, 0)
        self.assertIn("20.0 ns", output)
        self.assertIn("ratio  2.00", output)
        self.assertIn("spread 100%", output)
        figure = results.load(self.path("out.json")).data["figures"][0]
        self.assertEqual(figure["own"], [10, 30, 20])
        self.assertEqual(figure["other"], [10, 10, 10])

    def test_smoke_is_passed_on(self):
        self.program("log_bench", f"[ \"$2\" = --smoke ] && echo '{FIGURE}'")
        self.assertEqual(self.bench("--smoke", "log")[0], 0)
        self.assertEqual(self.bench("log")[0], 1)

    def test_the_file_names_day_machine_and_commit(self):
        self.program("log_bench", f"echo '{FIGURE}'")
        self.bench("--json", self.path("out.json"), "log")
        data = results.load(self.path("out.json")).data
        self.assertEqual(data["machine"]["date"], time.strftime("%Y-%m-%d"))
        self.assertEqual(data["machine"]["cores"], os.cpu_count())
        self.assertEqual(data["repetitions"], 1)


class Comparison(Folder):
    def test_ranges_that_lie_apart_are_a_change(self):
        first = self.results_file("a", own=[10, 11, 12])
        second = self.results_file("b", own=[5, 6, 7])
        code, output = self.bench("--compare", first, second)
        self.assertEqual(code, 0)
        self.assertIn("11 -> 6 ns (-45%, better", output)
        self.assertIn("1 of 1 figures changed", output)

    def test_ranges_that_overlap_are_none(self):
        first = self.results_file("a", own=[10, 11, 12])
        second = self.results_file("b", own=[12, 14, 15])
        _, output = self.bench("--compare", first, second)
        self.assertNotIn("->", output)
        self.assertIn("0 of 1 figures changed", output)

    def test_the_ratio_counts_where_there_is_another_side(self):
        first = self.results_file("a", own=[10, 10, 10], other=[10, 10, 10])
        second = self.results_file("b", own=[30, 30, 30], other=[30, 30, 30])
        self.assertIn("0 of 1", self.bench("--compare", first, second)[1])

    def test_a_higher_rate_is_better(self):
        first = self.results_file("a", own=[1, 1, 1], better="higher")
        second = self.results_file("b", own=[2, 2, 2], better="higher")
        self.assertIn("better", self.bench("--compare", first, second)[1])
        self.assertIn("worse", self.bench("--compare", second, first)[1])

    def test_too_few_repetitions_are_refused(self):
        first = self.results_file("a", own=[1, 2])
        code, output = self.bench("--compare", first, first)
        self.assertEqual(code, 2)
        self.assertIn("--repeat 3", output)

    def test_a_figure_of_one_file_only_is_named(self):
        first = self.results_file("a", own=[1, 2, 3])
        second = self.results_file("b", own=[1, 2, 3], name="other work")
        _, output = self.bench("--compare", first, second)
        self.assertIn("log: work: only in the first", output)
        self.assertIn("log: other work: only in the second", output)

    def test_bad_files_are_refused_with_their_name(self):
        good = self.results_file("good", own=[1, 2, 3])
        bad = ["", "[]", "{}", '{"figures": [], "machine": 5}', '{"figures": [], "disturbed": {}}',
               '{"figures": [{"benchmark": "peers", "name": "a", "unit": "ns", "better": "lower", "own": [1]}]}',
               '{"figures": [{"benchmark": "peers", "name": "a", "unit": "ns", "better": "lower", "own": [0], "contestant": "own", '
               '"mode": "off", "threads": 1, "appending": false, "flushed": true, "figure": "off"}]}', '{"figures": 5}', '{"figures": [{}]}', "\0", '{"figures": [null]}']
        for text in bad:
            with open(self.path("bad"), "w", encoding="utf-8") as file:
                file.write(text)
            code, output = self.bench("--compare", good, self.path("bad"))
            self.assertEqual(code, 2, text)
            self.assertIn(self.path("bad"), output)
        for series in ([], ["x"], [-1], None, 5):
            code, _ = self.bench("--compare", good, self.results_file("bad", own=series))
            self.assertEqual(code, 2, series)
        for other in ([1, 2], [0, 1, 2]):
            code, _ = self.bench("--compare", good, self.results_file("bad", own=[1, 2, 3], other=other))
            self.assertEqual(code, 2, other)
        code, output = self.bench("--compare", good, self.path("missing"))
        self.assertEqual(code, 2)
        self.assertIn("No such file", output)

    def test_show_prints_the_tables(self):
        code, output = self.bench("--show", self.results_file("a", own=[10, 12, 11]))
        self.assertEqual(code, 0)
        self.assertIn("11.0 ns", output)


class BusyMachine(unittest.TestCase):
    # A loop whose parent is not this process, but timeout. Prints its process id first.
    LOOP = ["sh", "-c", "timeout 1 sh -c 'echo $$; while :; do :; done'; :"]

    def watch_loop(self, prefix, environment):
        with machine.Watch(prefix, interval=0.1) as watch:
            loop = subprocess.run(self.LOOP, env=environment, stdout=subprocess.PIPE, text=True, check=True)
        return watch, int(loop.stdout)

    def test_the_time_of_a_foreign_process_counts(self):
        watch, pid = self.watch_loop(None, None)
        self.assertIn(pid, watch.others)
        self.assertGreater(watch.others[pid][2], 0)
        self.assertGreater(watch.share, machine.QUIET_SHARE)
        self.assertNotEqual(watch.busiest, "")

    def test_a_process_of_the_prefix_does_not_count(self):
        prefix = "/nowhere/prefix-of-this-test"
        watch, pid = self.watch_loop(prefix, {**os.environ, "WINEPREFIX": prefix})
        self.assertIn(pid, watch.own)
        self.assertNotIn(pid, watch.others)

    def test_a_busy_step_is_told_and_recorded(self):
        with tempfile.TemporaryDirectory() as folder:
            with open(os.path.join(folder, "log_bench.exe"), "w", encoding="utf-8") as file:
                file.write(f"sleep 1; echo '{FIGURE}'")
            out, path = io.StringIO(), os.path.join(folder, "out.json")
            loop = subprocess.Popen(["sh", "-c", "timeout 4 sh -c 'while :; do :; done'; :"])
            with contextlib.redirect_stdout(out):
                run.main(["--bin", folder, "--runner", "sh", "--json", path, "log"])
            loop.wait()
            self.assertIn("The machine was busy in 1 of 1 steps", out.getvalue())
            self.assertEqual(results.load(path).data["disturbed"][0]["step"], "log")


class PeerTable(unittest.TestCase):
    def test_rows_for_ours_and_for_a_library_in_both_ways(self):
        data = results.Results()
        for contestant, appending in (("own", False), ("spdlog", False), ("spdlog", True)):
            for threads in (1, 4):
                for name, value in (("p50", 500), ("p99", 20000), ("mean", 2000)):
                    data.add("peers", {"name": f"{contestant}{appending}{threads}{name}", "unit": "ns", "better": "lower",
                                       "own": value}, contestant=contestant, appending=appending, mode="statement",
                             threads=threads, flushed=True, figure=name)
        rows = tables.peer_rows(data)
        self.assertEqual([row[0] for row in rows], ["ours", "spdlog", "spdlog, appending"])
        self.assertEqual(rows[0][1:4], ["0.50 / 0.50", "20 / 20", "2.00 / 2.00"])

    def test_ours_is_measured_once_and_the_others_in_both_ways(self):
        steps = run.peer_steps(["own", "spdlog"])
        ways = {(step.more["contestant"], step.more["appending"]) for step in steps}
        self.assertEqual(ways, {("own", False), ("spdlog", False), ("spdlog", True)})


def peer_figure(data, step, name, values):
    """Adds a figure of the contestant as a run does; `values` has the rounds' list or the value of each repetition."""
    printed = {"name": step.prefix + name, "unit": "ns", "better": "lower"}
    for repetition, value in enumerate(values):
        if step.turn is None:
            data.add("peers", {**printed, "own": value}, **step.more, figure=name)
            continue
        for turn, of_turn in enumerate(value):
            if of_turn is not None:
                data.add_round("peers", {**printed, "own": of_turn}, repetition, turn, **step.more, figure=name)


class Rounds(Folder):
    CONTESTANTS = ["own", "spdlog", "glog"]

    def turns(self):
        """Of each round (contestant, appending, threads) of its steps."""
        turns = {}
        for step in run.throughput_rounds(self.CONTESTANTS):
            turns.setdefault(step.turn, []).append((step.more["contestant"], step.more["appending"], step.more["threads"]))
        return list(turns.values())

    def test_each_round_takes_each_contestant_with_each_number_of_threads_once(self):
        ways = [("own", False), ("spdlog", False), ("spdlog", True), ("glog", False), ("glog", True)]
        expected = sorted((*way, threads) for way in ways for threads in (1, 2, 4, 8))
        self.assertEqual(len(self.turns()), run.ROUNDS)
        for turn in self.turns():
            self.assertEqual(sorted(turn), expected)

    def test_a_round_ends_before_the_next_begins(self):
        turns = [step.turn for step in run.peer_steps(self.CONTESTANTS) if step.turn is not None]
        self.assertEqual(turns, sorted(turns))

    def test_nothing_is_measured_outside_the_rounds_that_the_table_compares(self):
        for step in run.peer_steps(self.CONTESTANTS):
            if step.more["mode"] == "throughput":
                self.assertEqual(step.turn is not None, step.more["flushed"], step.title())

    def test_what_is_compared_is_measured_side_by_side(self):
        for number, turn in enumerate(self.turns()):
            threads = [step[2] for step in turn]
            self.assertEqual(threads[:10], [1] * 5 + [2] * 5)
            # 4 and 8 of each contestant, one after the other.
            self.assertEqual(threads[10:], [8, 4] * 5 if number % 2 else [4, 8] * 5)
            self.assertEqual([step[:2] for step in turn[10::2]], [step[:2] for step in turn[11::2]])

    def test_the_order_differs_from_round_to_round_and_is_the_same_in_each_run(self):
        turns = self.turns()
        self.assertEqual(turns, self.turns())
        self.assertEqual(len({str(turn[:5]) for turn in turns}), run.ROUNDS)
        self.assertGreater(len({turn.index(("own", False, 1)) for turn in turns}), 2)

    def run_of(self, script):
        """Three rounds of ours, twice, with a program that has $2 for the mode, $3 for the threads, and counts its runs."""
        self.program("peer_own", f"""echo $2 $3 >> {self.path('runs')}
            turn=$(grep -c "^throughput $3$" {self.path('runs')})
            {script}
            echo '{{"name": "'$2'", "unit": "messages/s", "better": "higher", "own": '$3$turn'}}'""")
        with unittest.mock.patch.object(run, "ROUNDS", 3):
            code, output = self.bench("--repeat", "2", "--contestants", "own", "--json", self.path("out.json"), "peers")
        figures = results.load(self.path("out.json")).figures("peers")
        return code, output, {figure["threads"]: figure for figure in figures if figure["mode"] == "throughput"}

    def test_the_file_has_all_rounds_and_their_medians(self):
        code, output, figures = self.run_of("")
        self.assertEqual(code, 0)
        self.assertEqual(set(figures), {1, 2, 4, 8})
        self.assertEqual(figures[4]["rounds"], [[41, 42, 43], [44, 45, 46]])
        self.assertEqual(figures[4]["own"], [42, 45])
        self.assertIn("peers own throughput 4, round 3", output)

    def test_a_round_that_failed_leaves_the_others_at_their_places(self):
        code, output, figures = self.run_of('[ "$3$turn" != 42 ] && [ "$3$turn" != 46 ] || exit 1')
        self.assertEqual(code, 1)
        self.assertEqual(figures[4]["rounds"], [[41, None, 43], [44, 45]])
        self.assertEqual(figures[4]["own"], [42, 44.5])
        self.assertIn("peers own throughput 4, round 2: exit code 1", output)
        self.assertIn("peers own throughput 4, round 3: exit code 1", output)

    def test_a_repetition_whose_rounds_all_failed_has_no_median(self):
        code, _, figures = self.run_of('[ "$3" != 4 ] || [ "$turn" -gt 3 ] || exit 1')
        self.assertEqual(code, 1)
        self.assertEqual(figures[4]["rounds"], [[], [44, 45, 46]])
        self.assertEqual(figures[4]["own"], [45])

    def targets(self, rounds):
        """The table's rows of messages a second, as lists of cells. `rounds`: (contestant, threads): lists of each repetition."""
        data = results.Results()
        for (contestant, threads), values in rounds.items():
            step = next(step for step in run.throughput_rounds([contestant])
                        if step.more["threads"] == threads and not step.more["appending"])
            peer_figure(data, step, "throughput", values)
        rows = [line.strip("| ").split(" | ") for line in tables.target_table(data)[2:]]
        return {row[0]: row[2:] for row in rows}

    def test_a_ratio_is_the_median_of_the_rounds_ratios(self):
        # Neither the ratio of the medians, which is 1.33, nor that to the best of each round, which is 1.05.
        rows = self.targets({("own", 1): [[100, 200, 300]], ("spdlog", 1): [[200, 50, 150]], ("glog", 1): [[10, 190, 10]]})
        self.assertEqual(rows["messages/s, 1 thread: ours, of the best library's"], ["2.00", "1 of 1"])

    def test_the_best_library_is_the_one_with_the_smallest_ratio_of_the_run(self):
        rows = self.targets({("own", 4): [[200] * 3] * 2, ("spdlog", 4): [[100] * 3, [250] * 3],
                             ("glog", 4): [[125] * 3, [100] * 3], ("floor_system", 4): [[900] * 3] * 2})
        self.assertEqual(rows["messages/s, 4 threads: ours, of the best library's"], ["1.60", "0.80", "1 of 2"])

    def test_8_threads_are_compared_with_4_of_the_same_round(self):
        rows = self.targets({("own", 4): [[100, 200, 400], [100, 100, 100]], ("own", 8): [[200, 300, 400], [90, 90, 90]]})
        self.assertEqual(rows["messages/s: ours with 8 threads, of ours with 4"], ["1.50", "0.90", "1 of 2"])

    def test_only_rounds_that_hold_both_are_compared(self):
        rows = self.targets({("own", 1): [[100, None, 300]], ("glog", 1): [[50, 1, None, 1]]})
        self.assertEqual(rows["messages/s, 1 thread: ours, of the best library's"], ["2.00", "1 of 1"])

    def test_a_run_without_one_of_the_libraries_has_no_ratio(self):
        rows = self.targets({("own", 1): [[100], [100], [100]], ("glog", 1): [[50], [50], [50]], ("spdlog", 1): [[10], [], [10]]})
        self.assertEqual(rows["messages/s, 1 thread: ours, of the best library's"], ["2.00", "-", "2.00", "2 of 2"])
        rows = self.targets({("own", 1): [[100], [100]], ("glog", 1): [[50], [50]], ("spdlog", 1): [[10]]})
        self.assertEqual(rows["messages/s, 1 thread: ours, of the best library's"], ["2.00", "-", "1 of 1"])

    def test_wrong_rounds_in_a_file_are_refused(self):
        for rounds in (5, [5], [["x"]], [[0]], [[-1]], {"a": 1}):
            code, _ = self.bench("--show", self.results_file("bad", own=[1], rounds=rounds))
            self.assertEqual(code, 2, rounds)


class Publishing(Folder):
    DOCUMENT = "before\n<!-- peers -->\nold\n<!-- end of peers -->\nafter\n"

    def publish(self, *arguments):
        out = io.StringIO()
        with contextlib.redirect_stderr(out):
            return publish.main(list(arguments)), out.getvalue()

    def document(self, text):
        with open(self.path("document.md"), "w", encoding="utf-8") as file:
            file.write(text)
        return self.path("document.md")

    def peers_file(self, disturbed=()):
        data = results.Results()
        data.data.update(machine={"date": "2026-01-02", "cores": 2}, repetitions=3, disturbed=list(disturbed))
        for contestant in ("own", "spdlog"):
            for step in run.peer_steps([contestant]):
                names = {"statement": ["p50", "p90", "p99", "mean"], "off": ["off"], "throughput": ["throughput"]}
                if step.turn:
                    continue
                for name in names[step.more["mode"]]:
                    peer_figure(data, step, name, [1500] * 3 if step.turn is None else [[1500] * run.ROUNDS] * 3)
        data.save(self.path("peers.json"))
        return self.path("peers.json")

    def test_the_marked_lines_become_the_day_and_the_table(self):
        lines = publish.section(results.load(self.peers_file()))
        text = publish.with_section(self.DOCUMENT, lines)
        self.assertTrue(text.startswith("before\n<!-- peers -->\nMeasured on 2026-01-02"))
        self.assertTrue(text.endswith("|\n<!-- end of peers -->\nafter\n"))
        self.assertIn(f"medians of 3 repetitions. Messages/s: medians of {run.ROUNDS} rounds in each repetition.", text)
        self.assertIn("| ours | 1.50 / 1.50 |", text)
        self.assertIn("| spdlog, appending | 1.50 / 1.50 |", text)
        self.assertNotIn("old", text)
        self.assertNotIn("busy", text)

    def test_a_file_without_rounds_is_published_as_one(self):
        data = results.load(self.peers_file())
        for figure in data.data["figures"]:
            figure.pop("rounds", None)
        lines = publish.section(data)
        self.assertIn("Messages/s: measured once in each repetition.", lines[0])
        self.assertIn("| messages/s, 1 thread: ours, of the best library's | at least 1.2 | 1.00 | 1.00 | 1.00 | 0 of 3 |", lines)

    def test_figures_of_a_busy_machine_are_marked(self):
        disturbed = {"step": "x", "share": 1, "busiest": "y"}
        # 10 steps in each of the 3 repetitions, and 12 in each of their rounds.
        steps = 3 * (10 + 12 * run.ROUNDS)
        lines = publish.section(results.load(self.peers_file([disturbed] * (steps // 20 + 1))))
        self.assertIn(f"The machine was busy in {steps // 20 + 1} of the steps", lines[0])
        lines = publish.section(results.load(self.peers_file([disturbed] * (steps // 20))))
        self.assertIn(f"more than 5 % of a core in {steps // 20} of {steps} steps", lines[0])
        self.assertNotIn("busy", lines[0])

    def test_each_run_is_held_against_the_targets(self):
        data = results.Results()
        # Of two runs: ours, one that waits for its file, and one that is better in the other way of opening it. Floors don't count.
        times = {("own", False): (100, 300), ("spdlog", False): (200, 200), ("spdlog", True): (150, 250),
                 ("glog", False): (120, 400), ("glog", True): (130, 400), ("floor_system", False): (1, 1)}
        rates = {("own", False): (240, 100), ("spdlog", False): (50, 50), ("spdlog", True): (50, 50),
                 ("glog", False): (100, 90), ("glog", True): (200, 90), ("floor_system", False): (900, 900)}
        for (contestant, appending), values in times.items():
            for step in run.peer_steps([contestant]):
                if step.more["appending"] != appending or step.more["threads"] != 1 or not step.more["flushed"]:
                    continue
                if step.turn == 0:
                    peer_figure(data, step, "throughput", [[rate] for rate in rates[contestant, appending]])
                for name in ("p50", "p99", "mean") if step.more["mode"] == "statement" else ():
                    peer_figure(data, step, name, values)
        lines = tables.target_table(data)
        self.assertEqual(lines[0], "| | target | run 1 | run 2 | reached in |")
        self.assertIn("| p50, 1 thread: ours, of spdlog's | at most 1 | 0.67 | 1.50 | 1 of 2 |", lines)
        self.assertIn("| p99, 1 thread: ours, of the best library's | at most 1 | 0.83 | 1.50 | 1 of 2 |", lines)
        self.assertIn("| messages/s, 1 thread: ours, of the best library's | at least 1.2 | 1.20 | 1.11 | 1 of 2 |", lines)
        self.assertEqual(len(lines), 6)

    def test_check_finds_a_table_that_is_not_the_files(self):
        source, target = self.peers_file(), self.document(self.DOCUMENT)
        code, words = self.publish("--check", source, target)
        self.assertEqual(code, 1)
        self.assertIn("scripts/bench --publish", words)
        text = publish.with_section(self.DOCUMENT, publish.section(results.load(source)))
        self.assertEqual(self.publish("--check", source, self.document(text))[0], 0)

    def test_a_document_without_marks_is_refused(self):
        code, words = self.publish("--check", self.peers_file(), self.document("no marks\n"))
        self.assertEqual(code, 2)
        self.assertIn("marks", words)

    def test_charts_have_a_curve_for_each_library(self):
        data = results.load(self.peers_file())
        statement = publish.statement_chart(data, "x.svg")
        self.assertEqual(statement.count("plot '-'"), 2)
        self.assertEqual(statement.count('title "spdlog"'), 2)
        # 50, 90 and 99 percent, for 2 libraries and for 1 and 4 threads, in microseconds.
        self.assertEqual(statement.count(" 1.5\n"), 12)
        throughput = publish.throughput_chart(data, "x.svg")
        self.assertEqual(throughput.count('title "ours"'), 2)
        for threads in (1, 2, 4, 8):
            self.assertEqual(throughput.count(f"\n{threads} 1.5\n"), 4)

    def test_a_file_without_peers_has_no_chart(self):
        with self.assertRaises(results.ResultsError):
            publish.statement_chart(results.Results(), "x.svg")


unittest.main(verbosity=0)
