"""log_messages.py MESSAGES THREADS CLIENTS SEED [MINUTES]

MESSAGES messages of THREADS threads through a file that is rotated and compressed by the real gzip, while CLIENTS clients come and
go. Each message has to be in the files once and in the order of its thread, each client has to get them without a gap, and handles and
memory have to be level, after the first tenth of the messages and at the end. After MINUTES it ends early. Prints the figures and the
faults; ends with 1 for a fault."""
import gzip
import json
import subprocess
import sys
import time

import driver
import sequence
import service

ROTATION = 'rotate = true; rotate_size = "%s kb"; max_archives = 1000000;'


def judge_files(archives, log, threads, of_each):
    """The faults of the archives, the oldest first, and of the log file, and the number of messages in them."""
    found = sequence.Sequence(threads)
    for archive in archives:
        if archive.suffix != ".gz":
            found.fault("not compressed: %s" % archive.name)
        try:
            with (gzip.open if archive.suffix == ".gz" else open)(archive, "rb") as stream:
                sequence.take_file(found, stream)
        except (OSError, EOFError) as error:
            found.fault("%s: %s" % (archive.name, error))
    with open(log, "rb") as stream:
        sequence.take_file(found, stream)
    return found.judge_end(of_each), found.count


class Run:
    def __init__(self, messages, threads, clients, seed, minutes=0):
        self.threads = threads
        self.rounds = 20 if messages >= 1_000_000 else 4
        self.measured = max(2, self.rounds // 10)
        self.of_each = messages // threads // self.rounds
        self.minutes = minutes
        # At least some rotations in a small run, too.
        kilobytes = max(16, min(5120, messages // 500))
        self.process = service.LoggingProcess("log", threads, self.of_each, 0, ROTATION % kilobytes)
        self.progress = driver.Progress("log", messages, "messages")
        self.clients = [subprocess.Popen(
            [sys.executable, "-B", str(driver.TOP / "tests" / "soak" / "stream_client.py"), str(self.process.port),
             str(self.process.directory), str(number), str(seed), str(threads)], stdout=subprocess.PIPE, text=True)
            for number in range(clients)]
        self.uses = []
        self.seen = -1
        self.changed = time.monotonic()

    def look(self):
        """Shows the progress. Throws Fault if there is none for a long time."""
        state = (len(self.process.archives()), self.process.log_size())
        if state != self.seen:
            self.seen, self.changed = state, time.monotonic()
        elif time.monotonic() - self.changed > driver.LIMIT:
            raise driver.Fault("nothing has been logged for %d s" % driver.LIMIT)
        if self.progress.seconds() and time.monotonic() - self.progress.last >= self.progress.every:
            # By the sizes, compressed files as large as before.
            size = state[0] * self.archive_size() + state[1]
            self.progress.show(min(self.progress.total, size // self.line_size()))

    def archive_size(self):
        text = (self.process.directory / "logging.conf").read_text()
        return int(text.partition('rotate_size = "')[2].partition(" ")[0]) * 1024

    def line_size(self):
        return len("0  a line of ordinary length\r\n") + max(1, len(str(self.of_each * self.rounds)) - 1)

    def measure(self, number):
        """Sends the clients away, and has the process print what it uses."""
        self.process.touch("pause")
        for index, client in enumerate(self.clients):
            service.wait_for((self.process.directory / ("away-%d" % index)).exists, "a client to leave", client)
        self.process.touch("measure-%d" % number)

        def use():
            lines = [line for line in self.process.output() if line.startswith("use ")]
            return lines[len(self.uses)] if len(lines) > len(self.uses) else None
        self.uses.append(tuple(map(int, service.wait_for(use, "what it uses", self.process.process).split()[1:])))

    def log_rounds(self):
        """Returns the number of rounds."""
        for number in range(1, self.rounds + 1):
            def finished():
                self.look()
                return "round %d" % number in self.process.output()
            service.wait_for(finished, "the end of a round", self.process.process, limit=24 * 3600)
            if number == self.measured:
                self.measure(number)
                (self.process.directory / "pause").unlink()
            elif number > self.measured and (
                    number == self.rounds or self.minutes and self.progress.seconds() > self.minutes * 60):
                self.measure(number)
                return number
            self.process.touch("go-%d" % number)

    def run(self):
        rounds = self.log_rounds()
        self.process.touch("over")
        self.process.touch("stop")
        faults = sequence.judge_use(*self.uses)
        visits = received = 0
        for index, client in enumerate(self.clients):
            came, got, wrong = client.communicate(timeout=driver.LIMIT)[0].rstrip("\n").split(" ", 2)
            visits += int(came)
            received += int(got)
            if client.returncode or wrong:
                faults.append("client %d: %s" % (index, wrong or "has ended with %d" % client.returncode))
        self.process.wait()
        logged = self.progress.seconds()
        archives = self.process.archives()
        wrong, count = judge_files(archives, self.process.directory / "soak.log", self.threads, self.of_each * rounds)
        return faults + wrong, {
            "messages": count, "of": self.of_each * self.rounds * self.threads, "threads": self.threads,
            "archives": len(archives), "clients": len(self.clients),
            "visits": visits, "received": received, "handles": "%d, then %d" % (self.uses[0][0], self.uses[1][0]),
            "KB on the heaps": "%d, then %d" % (self.uses[0][1] // 1024, self.uses[1][1] // 1024),
            "private KB": "%d, then %d" % (self.uses[0][2] // 1024, self.uses[1][2] // 1024), "seconds": round(logged)}

    def close(self, keep):
        for client in self.clients:
            client.kill()
            client.wait()
        self.process.close(keep)


def main():
    run, faults, figures = None, [], {}
    try:
        run = Run(*map(int, sys.argv[1:]))
        faults, figures = run.run()
    except driver.Fault as fault:
        faults = [str(fault)]
    finally:
        if run:
            run.close(keep=bool(faults))
    print("outcome " + json.dumps({"figures": figures, "faults": faults}), flush=True)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
