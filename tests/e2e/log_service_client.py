#!/usr/bin/env python3
"""log_service_client.py WINE CONFIGURED_PROGRAM TOLMARHLP EVENT_PEER

Tests the log service from outside, over the loopback address, with bytes that this script makes and
compares by itself: docs/log-service.md is all that a client has to know, and nothing here comes from
the service's own code. WINE runs a Windows program; the others are the programs that are tested,
and the other side of tolmarhlp.exe's hand-shake.
"""
import contextlib
import faulthandler
import os
import pathlib
import random
import re
import shutil
import socket
import struct
import subprocess
import sys
import tempfile
import time
import unittest

WINE, CONFIGURED_PROGRAM, TOLMARHLP, EVENT_PEER = sys.argv[1:5]

# The bound of every wait for something that is bound to happen, and of the whole.
LIMIT = 30
LIMIT_OF_ALL = 200
DISCOVERY = ("127.0.0.1", 30451)
NATIVE = os.name == "nt"


def windows_path(path):
    return str(path) if NATIVE else "Z:" + str(path).replace("/", "\\")


def start(program, *arguments):
    command = [program, *arguments] if NATIVE else [WINE, str(program), *arguments]
    return subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                            stderr=subprocess.PIPE)


def end(process):
    """Ends `process` if it still runs, as after a failure: nothing of it stays at the port."""
    process.kill()
    process.communicate(timeout=LIMIT)


def discover(datagram, pattern, process):
    """The first reply to `datagram` that is all of `pattern`, from `process`, which runs. Other processes may have the
    port too, and each datagram reaches one of them, so it is sent again and again."""
    seen = set()
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as udp:
        udp.settimeout(0.2)
        end = time.monotonic() + LIMIT
        while time.monotonic() < end:
            if process.poll() is not None:
                raise AssertionError("the process has ended with %d: %r"
                                     % (process.returncode, process.stderr.read()))
            udp.sendto(datagram, DISCOVERY)
            with contextlib.suppress(socket.timeout):
                reply, sender = udp.recvfrom(2048)
                found = re.fullmatch(pattern, reply)
                if found and sender == DISCOVERY:
                    return reply, found
                seen.add((reply, sender))
    raise AssertionError("no answer to %r within %d seconds, but %r" % (datagram, LIMIT, seen))


class Client:
    """A connection; what goes in and out are bytes."""

    def __init__(self, port, host="127.0.0.1"):
        self.tcp = socket.create_connection((host, port), LIMIT)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.tcp.close()

    def send(self, data):
        self.tcp.sendall(data)

    def read(self, size):
        data = b""
        while len(data) < size:
            more = self.tcp.recv(size - len(data))
            if not more:
                break
            data += more
        return data

    def frame(self):
        """The next frame whole, with its 4 bytes of length."""
        prefix = self.read(4)
        if len(prefix) != 4:
            raise AssertionError("the connection has ended with %r instead of a frame" % prefix)
        return prefix + self.read(struct.unpack(">I", prefix)[0])

    def ask(self, text):
        self.send(struct.pack(">I", len(text)) + text)
        return self.frame()[4:]


class Process:
    """A configured program of the name `name`, with a directory and a logging.conf of its own."""

    def __init__(self, name, steps, config=None, options=()):
        self.directory = pathlib.Path(tempfile.mkdtemp())
        self.name = name
        program = self.directory / "program.exe"
        shutil.copy(CONFIGURED_PROGRAM, program)
        if config is not None:
            self.config().write_text(config)
        steps = [step.replace("@", windows_path(self.directory) + "\\") for step in steps]
        self.process = start(program, "configure=" + name, *steps, *options)

    def __enter__(self):
        return self

    def __exit__(self, kind, *_):
        for mark in ("1", "2", "3", "4"):
            self.let_go(mark)
        if kind is not None:
            self.process.kill()
        _, errors = self.process.communicate(timeout=LIMIT)
        self.errors = errors.decode()
        shutil.rmtree(self.directory, ignore_errors=True)

    def config(self):
        return self.directory / "logging.conf"

    def let_go(self, mark):
        (self.directory / mark).touch()

    def port(self):
        _, found = discover(b"discover-request:name=" + self.name.encode(),
                            b"hello:name=" + self.name.encode() + b"\x1fpid=(\\d+)\x1ftcpport=(\\d+)",
                            self.process)
        return int(found[2])


def sinks(client):
    result = []
    telegram = client.ask(b"evidence-info:")
    while telegram != b"evidence-info:end-of-reply":
        result.append(telegram)
        telegram = client.frame()[4:]
    return result


def wait_for(condition):
    """Returns when `condition` is true."""
    end = time.monotonic() + LIMIT
    while not (value := condition()):
        if time.monotonic() > end:
            raise AssertionError("still %r after %d seconds" % (value, LIMIT))
        time.sleep(0.02)


def read_line(stream):
    return stream.readline().decode().rstrip("\r\n")


class Wire(unittest.TestCase):
    def test_datagrams_of_discovery_are_the_protocols(self):
        with Process("demo", ["wait=@1"]) as process:
            request = bytes.fromhex("64 69 73 63 6F 76 65 72 2D 72 65 71 75 65 73 74 3A 69 64 3D 37 1F"
                                    "6E 61 6D 65 3D 64 65 6D 6F")
            self.assertEqual(len(request), 31)
            reply, found = discover(
                request, b"hello:id=7\x1fname=demo\x1fpid=(\\d+)\x1ftcpport=(\\d+)", process.process)
            self.assertEqual(reply, bytes.fromhex("68656C6C6F 3A 69643D37 1F 6E616D653D64656D6F 1F 7069643D") +
                             found[1] + bytes.fromhex("1F 746370706F72743D") + found[2])
            with Client(int(found[2])) as client:
                self.assertEqual(client.ask(b"get-default-scope:"), b"default-scope:scope=WARN")

    def test_frames_of_requests_are_the_protocols(self):
        with Process("frames", ["wait=@1"]) as process, Client(process.port()) as client:
            client.send(b"\x00\x00\x00\x1fchange-default-scope:scope=INFO")
            self.assertEqual(client.read(28), b"\x00\x00\x00\x18change-default-scope:ack")
            client.send(bytes.fromhex("00000012 67 65742D64656661756C742D73636F70653A"))
            self.assertEqual(client.read(28), b"\x00\x00\x00\x18default-scope:scope=INFO")
            client.send(b"\x00\x00\x00\x1fchange-default-scope:scope=WARN")
            self.assertEqual(client.read(28), b"\x00\x00\x00\x18change-default-scope:ack")
            client.send(b"\x00\x00\x00\x0aagent-list")
            self.assertEqual(client.read(1), b"")
        self.assertIn("Missing separator ':' in \"agent-list\"", process.errors)

    def test_requests_are_answered(self):
        with Process("asked", ["level=b", "level=a", "wait=@1"]) as process, \
                Client(process.port()) as client:
            self.assertEqual(client.ask(b"change-scope:a=info\x1fnew=TRACE"), b"change-scope:ack")
            self.assertEqual(client.ask(b"agent-list:"), b"agent-list:a=INFO\x1fb=default")
            self.assertEqual(client.ask(b"evidence-info:"), b"evidence-info:end-of-reply")
            self.assertEqual(client.ask(b"change-default-scope:"),
                             b"change-default-scope:error=invalid type/number of arguments encountered")
            self.assertEqual(client.ask(b"get-evidence:"), b"unsupported:")
            self.assertEqual(client.ask(b"get-default-scope:"), b"default-scope:scope=WARN")

    def test_messages_stream_and_sinks_are_counted(self):
        with Process("stream", ["level=demo", "wait=@1", "log=INFO:demo:started", "wait=@2",
                                "log=INFO:demo:lost", "log=INFO:demo:lost", "wait=@3",
                                "log=INFO:demo:last"]) as process:
            port = process.port()
            with Client(port) as asking:
                self.assertEqual(asking.ask(b"change-scope:demo=INFO"), b"change-scope:ack")
                with Client(port) as client:
                    client.send(b"\x00\x00\x00\x0dget-messages:")
                    wait_for(lambda: sinks(asking))
                    peer = b"127.0.0.1:%d" % client.tcp.getsockname()[1]
                    self.assertEqual(sinks(asking),
                                     [b"evidence-info:custom_format=false\x1fenabled=false\x1fid=net#0"
                                      b"\x1fmax_scope=INVALID\x1fpeer=" + peer])
                    before = int(time.time() * 1000)
                    process.let_go("1")
                    frame = client.frame()
                    found = re.fullmatch(b"(....)message:agent=demo\x1fmsg=started\x1fpid=(\\d+)"
                                         b"\x1fscope=INFO\x1ftid=(\\d+)\x1fwhen=(\\d+)", frame, re.S)
                    self.assertIsNotNone(found, frame)
                    self.assertEqual(struct.unpack(">I", found[1])[0], len(frame) - 4)
                    self.assertLess(abs(int(found[4]) - before), LIMIT * 1000)
                process.let_go("2")
                wait_for(lambda: not sinks(asking))
                with Client(port) as client:
                    client.send(b"\x00\x00\x00\x0dget-messages:")
                    wait_for(lambda: sinks(asking))
                    self.assertIn(b"\x1fid=net#1\x1f", sinks(asking)[0])
                    process.let_go("3")
                    self.assertIn(b"\x1fmsg=last\x1f", client.frame())
                    # The process ends, with this client connected.
                    self.assertEqual(client.read(1), b"")
        self.assertEqual(process.errors.count("Failed to store message in an sink:"), 1)
        self.assertEqual(process.process.returncode, 0)

    def test_levels_are_saved(self):
        config = "defaults: { default_level = \"ERR\"; };\n"
        with Process("saved", ["level=known", "wait=@1"], config) as process, \
                Client(process.port()) as client:
            self.assertEqual(client.ask(b"get-default-scope:"), b"default-scope:scope=ERR")
            self.assertEqual(client.ask(b"change-scope:known=TRACE"), b"change-scope:ack")
            self.assertEqual(client.ask(b"persist-config:"), b"persist-config:ack")
            written = process.config().read_text()
            self.assertRegex(written, r"known\s*=\s*\"TRACE\"")
            self.assertEqual((process.directory / "logging.conf.bak").read_text(), config)
            # A name that the file can't hold.
            self.assertEqual(client.ask(b"change-scope:a b=INFO"), b"change-scope:ack")
            process.config().unlink()
            reply = client.ask(b"persist-config:")
            self.assertTrue(reply.startswith(b"persist-config:error="), reply)
            self.assertEqual(client.ask(b"get-default-scope:"), b"default-scope:scope=ERR")

    def test_process_ends_with_clients_connected(self):
        with Process("ends", ["wait=@1"]) as process:
            port = process.port()
            with Client(port) as first, Client(port) as second:
                first.ask(b"get-default-scope:")
                second.ask(b"get-default-scope:")
                process.let_go("1")
                self.assertEqual(first.read(1), b"")
                self.assertEqual(second.read(1), b"")
        self.assertEqual((process.process.returncode, process.errors), (0, ""))


class Waiting(unittest.TestCase):
    waiting = "Waiting for log_application program to connect before continuing"

    def expect_waiting(self, name, config, options):
        with Process(name, ["log=ERR:demo:early"], config, options) as process:
            self.assertEqual(read_line(process.process.stderr), self.waiting)
            with Client(process.port()) as client:
                self.assertEqual(client.ask(b"get-default-scope:"), b"default-scope:scope=WARN")
                time.sleep(0.5)
                self.assertIsNone(process.process.poll())
                client.send(b"\x00\x00\x00\x0dget-messages:")
                self.assertIn(b"\x1fmsg=early\x1f", client.frame())
                self.assertEqual(client.read(1), b"")
        self.assertEqual(process.process.returncode, 0)

    def test_setting_has_the_process_wait_for_a_client(self):
        self.expect_waiting("wait-file", "defaults: { wait_log_application = true; };\n", [])

    def test_option_has_the_process_wait_for_a_client(self):
        self.expect_waiting("wait-option", None, ["--", "--wait-log-application"])


class Settings(unittest.TestCase):
    def test_addresses_of_the_file_are_used(self):
        config = "defaults: { listen_addr = \"127.0.0.9\"; };\n"
        with Process("addressed", ["wait=@1"], config) as process:
            port = process.port()
            with socket.create_connection(("127.0.0.9", port), LIMIT):
                pass
            with self.assertRaises(ConnectionRefusedError):
                socket.create_connection(("127.0.0.1", port), LIMIT)

    def test_bad_addresses_of_the_file_are_reported(self):
        config = "defaults: { listen_addr = \"localhost\"; discovery_addr = \"localhost\"; };\n"
        with Process("misled", ["wait=@1"], config) as process, Client(process.port()) as client:
            self.assertEqual(client.ask(b"get-default-scope:"), b"default-scope:scope=WARN")
        for setting in ("listen_addr", "discovery_addr"):
            self.assertIn("Failed to set custom %s. Falling back to using localhost." % setting,
                          process.errors)


class Idle(unittest.TestCase):
    @staticmethod
    def threads_of(directory):
        """The scheduling counts of all threads but the first, by thread, of the process of `directory`."""
        for entry in pathlib.Path("/proc").glob("[0-9]*"):
            with contextlib.suppress(OSError):
                if (windows_path(directory) + "\\program.exe").encode() in (entry / "cmdline").read_bytes() or \
                        str(directory).encode() in (entry / "cmdline").read_bytes():
                    result = {}
                    for task in (entry / "task").iterdir():
                        if task.name != entry.name:
                            switches = re.findall(r"ctxt_switches:\s*(\d+)", (task / "status").read_text())
                            times = (task / "stat").read_text().rsplit(")")[-1].split()[11:13]
                            result[task.name] = (switches, times)
                    if result:
                        return result
        return {}

    def test_service_that_nobody_uses_takes_two_threads_and_no_time(self):
        if not os.path.isdir("/proc/self/task"):
            self.skipTest("the system doesn't tell")
        with Process("idle", ["wait=@1"]) as process:
            process.port()
            time.sleep(1)
            before = self.threads_of(process.directory)
            self.assertEqual(len(before), 2)
            self.assertTrue(all(switches for switches, _ in before.values()), before)
            for _ in range(5):
                time.sleep(0.5)
                # Others that look for processes on this machine may have woken the one thread.
                after = self.threads_of(process.directory)
                if after == before:
                    return
                before = after
            self.fail("%r became %r" % (before, after))


class Helper(unittest.TestCase):
    # Every helper of this machine has the same name, so this one gets an address of its own.
    HOST = ".".join(str(part) for part in (127, random.randint(1, 254), random.randint(0, 255),
                                           random.randint(1, 254)))

    def find(self, process):
        """The process id of this test's helper, as bytes, and the port of its service."""
        end = time.monotonic() + LIMIT
        while time.monotonic() < end:
            _, found = discover(b"discover-request:name=tolmarhlp-gui",
                                b"hello:name=tolmarhlp-gui\x1fpid=(\\d+)\x1ftcpport=(\\d+)", process)
            with contextlib.suppress(ConnectionRefusedError), Client(int(found[2]), self.HOST):
                return found[1], int(found[2])
        self.fail("no helper at " + self.HOST)

    def test_helper_is_found_raised_read_and_persisted(self):
        directory = pathlib.Path(tempfile.mkdtemp())
        try:
            (directory / "logging.conf").write_text(
                "defaults: { listen_addr = \"%s\"; };\n" % self.HOST)
            helper = directory / "tolmarhlp.exe"
            shutil.copy(TOLMARHLP, helper)
            peer = start(EVENT_PEER, "--answer-after", "8000")
            self.addCleanup(end, peer)
            self.assertEqual(read_line(peer.stdout), "ready")
            process = start(helper, "-restartgui", windows_path(directory))
            self.addCleanup(end, process)
            pid, port = self.find(process)
            with Client(port, self.HOST) as client, Client(port, self.HOST) as stream:
                wait_for(lambda: client.ask(b"agent-list:") == b"agent-list:TOLMAR_GUIHELPER=default")
                self.assertEqual(client.ask(b"change-scope:TOLMAR_GUIHELPER=DEBUG"), b"change-scope:ack")
                self.assertEqual(client.ask(b"persist-config:"), b"persist-config:ack")
                self.assertRegex((directory / "logging.conf").read_text(),
                                 r"tolmarhlp-gui[^}]*TOLMAR_GUIHELPER\s*=\s*\"DEBUG\"")
                stream.send(b"\x00\x00\x00\x0dget-messages:")
                for text in (b"event2 triggert", b"start tolmar.exe -gui wuth retcode=2"):
                    self.assertRegex(stream.frame()[4:],
                                     b"^message:agent=TOLMAR_GUIHELPER\x1fmsg=" + text +
                                     b"\x1fpid=" + pid + b"\x1fscope=DEBUG\x1ftid=\\d+\x1fwhen=\\d+$")
                self.assertEqual(stream.read(1), b"")
            _, errors = process.communicate(timeout=LIMIT)
            self.assertEqual((process.returncode, errors), (0, b""))
            peer.communicate(timeout=LIMIT)
        finally:
            shutil.rmtree(directory, ignore_errors=True)


if __name__ == "__main__":
    # A wait that no other bound ends: where it was is printed.
    faulthandler.dump_traceback_later(LIMIT_OF_ALL, exit=True)
    unittest.main(argv=sys.argv[:1] + sys.argv[5:], verbosity=2)
