"""The log service of soak_logger, from outside, and the process itself. Runs in the network of its Wine prefix: scripts/soak starts
the programs of this folder by scripts/wine --host."""
import os
import shutil
import socket
import struct
import subprocess
import time

from driver import BIN, LIMIT, SCRATCH, WINE, Fault

DISCOVERY = ("127.0.0.1", 30451)
CONFIG = """defaults = {
  default_level = "INFO";
  sink = { file = { enabled = true; path = "{exedir}\\\\soak.log"; format = "{msg}"; %s }; };
};
"""


def frame(text):
    return struct.pack(">I", len(text)) + text


def wait_for(condition, what, process=None, limit=LIMIT):
    """Returns what `condition` gives once that is true. Throws Fault after the limit."""
    end = time.monotonic() + limit
    while not (value := condition()):
        if process and process.poll() is not None:
            raise Fault("the process has ended with %d while waiting for: %s" % (process.returncode, what))
        if time.monotonic() > end:
            raise Fault("in vain for %d s: %s" % (limit, what))
        time.sleep(0.05)
    return value


def connect(port):
    return socket.create_connection(("127.0.0.1", port), LIMIT)


def read(connection, size):
    data = b""
    while len(data) < size:
        more = connection.recv(size - len(data))
        if not more:
            raise Fault("the service has closed the connection")
        data += more
    return data


def ask(port, text):
    with connect(port) as connection:
        connection.sendall(frame(text))
        return read(connection, struct.unpack(">I", read(connection, 4))[0])


def reset(connection):
    """Closes it by a reset."""
    connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
    connection.close()


class LoggingProcess:
    """soak_logger.exe in a directory of its own."""

    def __init__(self, name, threads, messages, pace, rotation=""):
        self.directory = SCRATCH / ("%s-%d" % (name, os.getpid()))
        self.directory.mkdir(parents=True)
        shutil.copy(BIN / "soak_logger.exe", self.directory)
        shutil.copy(BIN / "gzip" / "gzip.exe", self.directory)
        (self.directory / "logging.conf").write_text(CONFIG % rotation)
        windows_path = "Z:" + str(self.directory).replace("/", "\\")
        with open(self.directory / "output", "wb") as output, open(self.directory / "errors", "wb") as errors:
            self.process = subprocess.Popen(
                [str(WINE), str(self.directory / "soak_logger.exe"), windows_path, str(threads), str(messages), str(pace)],
                stdin=subprocess.DEVNULL, stdout=output, stderr=errors)
        try:
            self.port = wait_for(self.find, "the log service", self.process)
        except Fault:
            self.close(keep=True)
            raise

    def find(self):
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as udp:
            udp.settimeout(0.5)
            udp.sendto(b"discover-request:name=soak", DISCOVERY)
            try:
                return int(udp.recv(2048).rpartition(b"tcpport=")[2])
            except (OSError, ValueError):
                return None

    def output(self):
        return (self.directory / "output").read_text().split("\n")[:-1]

    def log_size(self):
        try:
            return (self.directory / "soak.log").stat().st_size
        except FileNotFoundError:
            return 0  # as in a rotation

    def archives(self):
        """The archives, the oldest first."""
        return sorted(self.directory.glob("soak.log.old.*"), reverse=True,
                      key=lambda path: int(path.name.removesuffix(".gz").rpartition(".")[2]))

    def touch(self, name):
        (self.directory / name).touch()

    def wait(self, limit=LIMIT):
        try:
            code = self.process.wait(limit)
        except subprocess.TimeoutExpired:
            raise Fault("the process doesn't end")
        if code:
            raise Fault("the process has ended with %d" % code)

    def close(self, keep):
        """Ends it if it still runs, and removes its files unless they are to be kept."""
        self.process.kill()
        self.process.wait()
        if not keep:
            shutil.rmtree(self.directory, ignore_errors=True)
