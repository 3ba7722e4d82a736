"""hostile.py SECONDS SEED

Hostile clients against a process that logs, in an order that the seed decides. The process has to go on logging meanwhile, except
where docs/log-service.md says that it stops until the client has gone; it has to serve others once the client has gone, to have lost
no message, and to end when asked. Prints the figures and the faults; ends with 1 for a fault."""
import collections
import contextlib
import json
import random
import socket
import struct
import sys
import time

import driver
import sequence
import service

THREADS = 4
PACE_MS = 10
CONNECTIONS = 70


class Run:
    def __init__(self, seconds, seed):
        self.rng = random.Random(seed)
        self.process = service.LoggingProcess("hostile", THREADS, 0, PACE_MS)
        self.progress = driver.Progress("hostile", seconds, "seconds")
        # How long an attack lasts at most, in seconds.
        self.length = min(3, seconds)
        self.attacks = collections.Counter()

    def connections(self, count):
        stack = contextlib.ExitStack()
        return stack, [stack.enter_context(service.connect(self.process.port)) for _ in range(count)]

    def goes_on(self, what):
        """The log file has to grow."""
        before = self.process.log_size()
        service.wait_for(lambda: self.process.log_size() > before, "the log to go on %s" % what, self.process.process)

    def stay(self):
        """Has the client stay for a while, in which the log goes on."""
        for _ in self.rounds():
            self.goes_on("during an attack")

    def rounds(self):
        """Goes on for up to `length` seconds, at least once."""
        end = time.monotonic() + self.rng.random() * self.length
        number = 0
        while number == 0 or time.monotonic() < end:
            yield number
            number += 1

    # ---- the attacks -----------------------------------------------------------------------------------------------------

    def half_frame(self):
        stack, (client,) = self.connections(1)
        with stack:
            client.sendall(self.rng.choice([b"\0\0", b"\0\0\0\x12get-", b"\0\0\0\0", b"\0"]))
            self.stay()

    def bad_frames(self):
        for _ in self.rounds():
            stack, (client,) = self.connections(1)
            with stack, contextlib.suppress(OSError):
                client.sendall(self.rng.choice([
                    b"\xff\xff\xff\xff" + self.rng.randbytes(200), service.frame(b"no colon"),
                    service.frame(b"change-scope:own1=LOUD"), service.frame(self.rng.randbytes(300)),
                    service.frame(b"x" * 1021), service.frame(b"change-default-scope:scope=")]))
        self.stay()

    def flood_of_requests(self):
        stack, (client,) = self.connections(1)
        with stack:
            for _ in self.rounds():
                client.sendall(service.frame(self.rng.choice([b"get-default-scope:", b"agent-list:", b"unknown:"])))
                service.read(client, struct.unpack(">I", service.read(client, 4))[0])
        self.goes_on("after a flood of requests")

    def flood_of_datagrams(self):
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as udp:
            for _ in range(2000):
                udp.sendto(self.rng.choice([b"discover-request:", self.rng.randbytes(self.rng.randrange(1, 2000)),
                                            b"discover-request:name=other", b"discover-request:ip=x"]),
                           service.DISCOVERY)
        self.stay()

    def flood_of_names(self):
        stack, (client,) = self.connections(1)
        with stack:
            for _ in self.rounds():
                names = b"\x1f".join(b"name%d=ERR" % self.rng.randrange(5000) for _ in range(50))
                client.sendall(service.frame(b"change-scope:" + names))
                service.read(client, struct.unpack(">I", service.read(client, 4))[0])
        self.stay()

    # The log may stop for as long as one of these two is connected, so it isn't looked at meanwhile.
    def slow_readers(self):
        stack, clients = self.connections(3)
        with stack:
            for client in clients:
                client.sendall(service.frame(b"get-messages:"))
            for _ in self.rounds():
                for client in clients:
                    client.recv(50)
                time.sleep(0.2)

    def unread_answers(self):
        stack, (client,) = self.connections(1)
        with stack:
            client.setblocking(False)
            for _ in self.rounds():
                with contextlib.suppress(BlockingIOError):
                    client.send(service.frame(b"evidence-info:") * 20)
                time.sleep(0.001)

    def resets(self):
        for _ in self.rounds():
            client = service.connect(self.process.port)
            client.sendall(self.rng.choice([service.frame(b"get-messages:"), service.frame(b"agent-list:"), b"\0\0\0",
                                            b""]))
            service.reset(client)
        self.stay()

    def many_connections(self):
        stack, clients = self.connections(CONNECTIONS)
        with stack:
            for client in self.rng.sample(clients, 20):
                client.sendall(service.frame(b"get-default-scope:"))
            self.stay()

    ATTACKS = [half_frame, bad_frames, flood_of_requests, flood_of_datagrams, flood_of_names, slow_readers, unread_answers,
               resets, many_connections]

    def attack(self, attack):
        attack(self)
        self.attacks[attack.__name__] += 1
        self.goes_on("after %s" % attack.__name__)
        if service.ask(self.process.port, b"get-default-scope:") != b"default-scope:scope=INFO":
            raise driver.Fault("a wrong answer after %s" % attack.__name__)

    def run(self):
        # Each at least once, however short the time is.
        for attack in self.rng.sample(self.ATTACKS, len(self.ATTACKS)):
            self.attack(attack)
        while self.progress.seconds() < self.progress.total:
            self.attack(self.rng.choice(self.ATTACKS))
            self.progress.show(int(self.progress.seconds()))
        # Asked to end, with some clients connected that keep nothing from ending.
        stack, clients = self.connections(20)
        with stack:
            clients[0].sendall(service.frame(b"get-messages:"))
            # This one reads what comes, to the end.
            clients[0].settimeout(driver.LIMIT)
            service.read(clients[0], 1)
            self.process.touch("stop")
            asked = time.monotonic()
            while clients[0].recv(65536):
                pass
            self.process.wait()
            took = time.monotonic() - asked
        seconds = round(self.progress.seconds())
        found = sequence.Sequence(THREADS)
        with open(self.process.directory / "soak.log", "rb") as stream:
            sequence.take_file(found, stream)
        return found.faults, {
            "attacks": sum(self.attacks.values()), "kinds": len(self.attacks), "messages": found.count,
            "threads": THREADS, "end took": "%.1f s" % took, "seconds": seconds}


def main():
    run, faults, figures = None, [], {}
    try:
        run = Run(int(sys.argv[1]), int(sys.argv[2]))
        faults, figures = run.run()
    except (driver.Fault, OSError) as fault:
        faults = ["%s (after %s)" % (fault, dict(run.attacks) if run else "nothing")]
    finally:
        if run:
            run.process.close(keep=bool(faults))
    print("outcome " + json.dumps({"figures": figures, "faults": faults}), flush=True)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
