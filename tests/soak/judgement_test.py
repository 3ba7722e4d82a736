#!/usr/bin/env python3
"""What scripts/soak judges by: each kind of fault has to be found, and nothing else."""
import gzip
import pathlib
import sys
import tempfile
import threading
import time
import types
import unittest

sys.dont_write_bytecode = True
import driver  # noqa: E402
import end_states  # noqa: E402
import fuzz  # noqa: E402
import hostile  # noqa: E402
import kills  # noqa: E402
import log_messages  # noqa: E402
import sequence  # noqa: E402
import service  # noqa: E402
import stream_client  # noqa: E402
import updates  # noqa: E402

BEFORE = end_states.Look("old", "previous", 4, "old")
UPDATED = end_states.Look("new", "old", 4, "new")


class FakeDriver:
    """Answers each command as it is told, and "yes" and "ok" otherwise."""

    def __init__(self, looks, **answers):
        self.looks = list(looks)
        self.answers = answers
        self.commands = []

    def __call__(self, command, *arguments):
        self.commands.append(" ".join([command, *map(str, arguments)]))
        if command == "look":
            return self.looks.pop(0) if len(self.looks) > 1 else self.looks[0]
        return self.answers.get(command.replace("-", "_"), "ok")

    def expect(self, wanted, *command):
        self(*command)


class Updates(unittest.TestCase):
    def test_every_scenario_has_a_row_in_the_readme(self):
        rows = end_states.end_rows()
        for name, scenario in updates.SCENARIOS.items():
            self.assertIn(scenario.row, rows, name)

    def test_the_row_is_accepted(self):
        self.assertIsNone(end_states.judge_end("0", BEFORE, UPDATED, updates.GOOD))
        self.assertIsNone(end_states.judge_end("0", BEFORE, BEFORE, updates.UNTOUCHED))
        self.assertIsNone(end_states.judge_end("1", BEFORE, end_states.Look("old", "previous", 1, "none"),
                                               updates.KEPT_IN_THE_WAY))
        self.assertIsNone(end_states.judge_end("never ends", BEFORE, end_states.Look("new", "old", 2, "none"),
                                               updates.HANGS))

    def test_another_state_is_a_fault(self):
        for code, after in (("1", UPDATED), ("0", UPDATED._replace(kept="none")), ("0", UPDATED._replace(kept="previous")),
                            ("0", UPDATED._replace(installed="part")), ("0", UPDATED._replace(installed="other")),
                            ("0", UPDATED._replace(state=1, running="none")), ("0", UPDATED._replace(running="old")),
                            ("2", UPDATED), ("0, message", UPDATED), ("never ends", UPDATED)):
            self.assertIsNotNone(end_states.judge_end(code, BEFORE, after, updates.GOOD), (code, after))

    def test_a_row_that_the_readme_lacks_is_a_fault(self):
        self.assertIn("no row", end_states.judge_end("0", BEFORE, UPDATED, ("0", "new", "old", "runs both")))

    def test_the_row_of_another_scenario_is_a_fault(self):
        self.assertIn("instead of", end_states.judge_end("0", BEFORE, BEFORE, updates.GOOD))

    def test_answers_are_taken_for_what_they_are(self):
        self.assertEqual(updates.parse_end("code 0"), "0")
        self.assertEqual(updates.parse_end("code 0, message Couldn't"), "0, message")
        self.assertEqual(updates.parse_end("runs"), "never ends")

    def test_a_whole_update_is_judged(self):
        number = next(number for number, name in updates.plan(7, 50) if name == "good")
        updates.run_update(FakeDriver(["old none 4 old", "new old 4 new"], ended="code 0"), 7, number, "good")
        for look, end in (("new old 1 none", "code 0"), ("new old 4 new", "code 1"), ("new old 4 new", "runs")):
            with self.assertRaises(driver.Fault):
                updates.run_update(FakeDriver(["old none 4 old", look], ended=end), 7, number, "good")

    def test_a_seed_gives_the_same_mixture_again(self):
        self.assertEqual(updates.plan(3, 200), updates.plan(3, 200))
        self.assertNotEqual(updates.plan(3, 200), updates.plan(4, 200))


class Kills(unittest.TestCase):
    def test_every_phase_has_a_row_and_every_row_a_phase(self):
        rows = end_states.killed_rows()
        self.assertEqual({phase.row for phase in kills.PHASES.values()} - {None}, set(rows))
        for row in rows:
            kills.remedy(row, "", driver.chance(1, 1))

    def test_the_state_of_each_row_is_accepted(self):
        old = end_states.Look("old", "none", 4, "old")
        for row, look in (("in step 1", ("old", "none", 3, "none")), ("in step 1", ("old", "none", 1, "none")),
                          ("between the delete and the move of step 2", ("old", "none", 1, "none")),
                          ("between the move and the copy", ("none", "old", 1, "none")),
                          ("during the copy", ("part", "old", 1, "none")),
                          ("before or in step 4 or 5", ("new", "old", 2, "none")),
                          ("before or in step 4 or 5", ("new", "old", 4, "new")),
                          ("in step 6 before the move", ("new", "old", 1, "none")),
                          ("in step 6 after the move", ("old", "none", 2, "none"))):
            self.assertIsNone(end_states.judge_kill(row, old, end_states.Look(*look)), (row, look))

    def test_another_state_is_a_fault(self):
        old = end_states.Look("old", "none", 4, "old")
        for row, look in (("in step 1", ("old", "none", 4, "old")), ("in step 1", ("none", "old", 1, "none")),
                          ("between the move and the copy", ("none", "none", 1, "none")),
                          ("between the move and the copy", ("part", "old", 1, "none")),
                          ("during the copy", ("other", "old", 1, "none")),
                          ("in step 6 after the move", ("new", "none", 1, "none")), ("never", ("old", "none", 1, "none"))):
            self.assertIsNotNone(end_states.judge_kill(row, old, end_states.Look(*look)), (row, look))

    def run_one(self, looks, **answers):
        hit = kills.collections.Counter()
        kills.run_kill(FakeDriver(looks, **{"state": "yes", "kill": "killed", **answers}), 1, 1,
                       "between the move and the copy", hit)

    def test_a_way_back_has_to_bring_the_service_up(self):
        sleep, kills.time.sleep = kills.time.sleep, lambda _: None
        self.addCleanup(setattr, kills.time, "sleep", sleep)
        self.run_one(["none old 1 none", "old none 4 old"])
        with self.assertRaisesRegex(driver.Fault, "doesn't run"):
            self.run_one(["none old 1 none", "old none 1 none"], state="no")
        with self.assertRaisesRegex(driver.Fault, "after the way back"):
            self.run_one(["none old 1 none", "new none 4 new"])
        with self.assertRaisesRegex(driver.Fault, "always ended"):
            self.run_one(["none old 1 none", "old none 4 old"], kill="had ended")
        with self.assertRaisesRegex(driver.Fault, "killed between"):
            self.run_one(["old old 1 none", "old none 4 old"])

    def test_the_lines_of_the_readme_are_used(self):
        do = FakeDriver(["x"])
        kills.put_back(do)
        self.assertIn("line net stop tolmar", do.commands)
        self.assertIn("line cmd /c move /y tolmar.old tolmar.exe", do.commands)


def lines(messages):
    return b"".join(b"%d %d text\r\n" % message for message in messages)


class Log(unittest.TestCase):
    GOOD = [(0, 0), (1, 0), (0, 1), (1, 1), (1, 2), (0, 2)]

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def judge(self, messages, rest=b"", archive=None):
        """The first four messages are in an archive, the others in the log."""
        path = self.folder / "soak.log.old.1.gz"
        path.write_bytes(gzip.compress(lines(messages[:4])) if archive is None else archive)
        (self.folder / "soak.log").write_bytes(lines(messages[4:]) + rest)
        return log_messages.judge_files([path], self.folder / "soak.log", 2, 3)

    def test_what_is_whole_is_accepted(self):
        self.assertEqual(self.judge(self.GOOD, b"pause 7\r\n"), ([], 6))

    def test_a_lost_message_is_a_fault(self):
        for index in range(len(self.GOOD)):
            self.assertNotEqual(self.judge(self.GOOD[:index] + self.GOOD[index + 1:])[0], [], index)

    def test_a_doubled_message_is_a_fault(self):
        for index in range(len(self.GOOD)):
            self.assertNotEqual(self.judge(self.GOOD[:index + 1] + self.GOOD[index:])[0], [], index)

    def test_messages_out_of_order_are_a_fault(self):
        self.assertNotEqual(self.judge([(0, 1), (1, 0), (0, 0), (1, 1), (1, 2), (0, 2)])[0], [])

    def test_torn_lines_are_a_fault(self):
        self.assertNotEqual(self.judge(self.GOOD, b"0 ")[0], [])
        self.assertNotEqual(self.judge(self.GOOD, b"nonsense\r\n")[0], [])
        self.assertNotEqual(self.judge(self.GOOD[:-1] + [(2, 0)])[0], [])

    def test_a_broken_archive_is_a_fault(self):
        whole = gzip.compress(lines(self.GOOD[:4]))
        self.assertNotEqual(self.judge(self.GOOD, archive=whole[:-6])[0], [])
        self.assertNotEqual(self.judge(self.GOOD, archive=b"")[0], [])

    def test_an_archive_that_is_not_compressed_is_a_fault(self):
        path = self.folder / "soak.log.old.1"
        path.write_bytes(lines(self.GOOD[:4]))
        (self.folder / "soak.log").write_bytes(lines(self.GOOD[4:]))
        self.assertEqual(log_messages.judge_files([path], self.folder / "soak.log", 2, 3)[0],
                         ["not compressed: soak.log.old.1"])

    def test_growth_is_a_fault(self):
        first = (100, 5_000_000, 20_000_000)
        self.assertEqual(sequence.judge_use(first, (104, 5_100_000, 20_100_000)), [])
        self.assertEqual(sequence.judge_use(first, (99, 4_000_000, 20_000_000)), [])
        for last in ((105, 5_000_000, 20_000_000), (100, 6_000_000, 20_000_000), (100, 5_000_000, 24_000_000)):
            self.assertEqual(len(sequence.judge_use(first, last)), 1, last)


class FakeService:
    """A listener that sends `data` to each client and then holds the connection."""

    def __init__(self, test, data):
        self.listener = service.socket.create_server(("127.0.0.1", 0))
        test.addCleanup(self.listener.close)
        self.port = self.listener.getsockname()[1]
        self.clients = []
        threading.Thread(target=self.serve, args=(data,), daemon=True).start()

    def serve(self, data):
        try:
            while True:
                client, _ = self.listener.accept()
                self.clients.append(client)
                client.sendall(data)
        except OSError:
            pass


def telegrams(messages):
    return b"".join(service.frame(b"message:agent=own1\x1fmsg=%d %d text\x1fpid=1" % message) for message in messages)


class Clients(unittest.TestCase):
    def follow(self, messages):
        port = FakeService(self, telegrams(messages)).port
        return stream_client.follow(port, 2, 0.3, types.SimpleNamespace(random=lambda: 1))

    def test_a_stream_from_the_midst_is_accepted(self):
        found = self.follow([(0, 7), (1, 3), (1, 4), (0, 8)])
        self.assertEqual((found.faults, found.count), ([], 4))

    def test_a_gap_and_a_repetition_are_faults(self):
        self.assertNotEqual(self.follow([(0, 7), (0, 9)]).faults, [])
        self.assertNotEqual(self.follow([(0, 7), (0, 7)]).faults, [])


class Hostile(unittest.TestCase):
    """The run against a process that doesn't do what it should."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.log = pathlib.Path(folder.name) / "soak.log"
        self.log.write_bytes(b"")
        limit = service.wait_for.__defaults__
        service.wait_for.__defaults__ = (None, 0.3)
        self.addCleanup(setattr, service.wait_for, "__defaults__", limit)
        self.run_ = hostile.Run.__new__(hostile.Run)
        self.run_.attacks = hostile.collections.Counter()
        self.run_.process = types.SimpleNamespace(log_size=lambda: self.log.stat().st_size, process=None)

    def grow(self):
        stop = threading.Event()

        def write():
            while not stop.wait(0.01):
                with open(self.log, "ab") as stream:
                    stream.write(b"x")
        thread = threading.Thread(target=write)
        thread.start()
        self.addCleanup(lambda: (stop.set(), thread.join()))

    def attack(self, answer):
        self.run_.process.port = FakeService(self, service.frame(answer)).port
        self.run_.attack(lambda run: None)

    def test_a_process_that_goes_on_is_accepted(self):
        self.grow()
        self.attack(b"default-scope:scope=INFO")

    def test_a_log_that_stops_is_a_fault(self):
        with self.assertRaisesRegex(driver.Fault, "the log to go on"):
            self.attack(b"default-scope:scope=INFO")

    def test_a_wrong_answer_is_a_fault(self):
        self.grow()
        with self.assertRaisesRegex(driver.Fault, "a wrong answer"):
            self.attack(b"default-scope:scope=WARN")

    def test_a_service_that_closes_is_a_fault(self):
        self.grow()
        port = FakeService(self, b"")
        self.run_.process.port = port.port
        threading.Thread(target=lambda: (time.sleep(0.2), [client.close() for client in port.clients])).start()
        with self.assertRaises((driver.Fault, OSError)):
            self.run_.attack(lambda run: None)

    def test_a_process_that_ends_badly_or_never_is_a_fault(self):
        process = service.LoggingProcess.__new__(service.LoggingProcess)
        process.process = service.subprocess.Popen([sys.executable, "-c", "raise SystemExit(3)"])
        with self.assertRaisesRegex(driver.Fault, "ended with 3"):
            process.wait()
        process.process = service.subprocess.Popen([sys.executable, "-c", "import time; time.sleep(60)"])
        with self.assertRaisesRegex(driver.Fault, "doesn't end"):
            process.wait(0.2)
        process.process.kill()
        process.process.wait()


class Fuzz(unittest.TestCase):
    TEXT = "Done 500 runs\nstat::number_of_executed_units: 500\n"

    def test_a_run_without_a_fault_is_accepted_and_its_inputs_are_counted(self):
        self.assertEqual(fuzz.judge("hex", 0, self.TEXT), [])
        self.assertEqual(fuzz.counted(self.TEXT), 500)

    def test_a_fault_is_found(self):
        self.assertIn("AddressSanitizer", fuzz.judge("hex", 1, "==1==ERROR: AddressSanitizer: x\n" + self.TEXT)[0])

    def test_no_input_or_no_count_are_faults(self):
        self.assertEqual(len(fuzz.judge("hex", 0, self.TEXT.replace("units: 500", "units: 0"))), 1)
        self.assertEqual(len(fuzz.judge("hex", 0, "")), 1)


class Jobs(unittest.TestCase):
    def test_a_fault_of_a_job_is_reported_and_the_others_go_on(self):
        made = []

        class Installed(FakeDriver):
            def __init__(self):
                super().__init__(["x"])
                made.append(self)

            def close(self):
                self("close")
                return True

        real, driver.Driver = driver.Driver, Installed
        self.addCleanup(setattr, driver, "Driver", real)

        def run(do, job):
            if job == 2:
                raise driver.Fault("wrong")
        done, _, faults = driver.run_jobs("test", "jobs", [1, 2, 3], 1, None, run)
        self.assertEqual((done, faults), ([1, 2, 3], ["2: wrong"]))
        self.assertEqual(made[-1].commands[-1], "close")


if __name__ == "__main__":
    unittest.main()
