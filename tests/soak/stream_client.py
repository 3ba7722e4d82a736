"""stream_client.py PORT DIRECTORY NUMBER SEED THREADS

A client of the log service that comes and goes: it reads the messages for up to 4 seconds, checks that each thread's follow one
another, leaves, at times by a reset, and comes back. While there is a file DIRECTORY/pause it stays away, and says so by a file
away-NUMBER; it ends at a file DIRECTORY/over, and prints how often it came, how many messages it read, and what was wrong."""
import pathlib
import random
import struct
import sys
import time

import sequence
import service


# In seconds.
LONGEST_VISIT = 4
LONGEST_ABSENCE = 10


def follow(port, threads, seconds, rng):
    """One visit."""
    found = sequence.Sequence(threads, from_the_start=False)
    connection = service.connect(port)
    connection.sendall(service.frame(b"get-messages:"))
    connection.settimeout(0.5)
    data = b""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        try:
            more = connection.recv(262144)
        except TimeoutError:
            continue
        if not more:
            found.fault("the service has ended the stream")
            break
        data += more
        position = 0
        while position + 4 <= len(data):
            length = struct.unpack_from(">I", data, position)[0]
            if position + 4 + length > len(data):
                break
            text = data[position + 4:position + 4 + length].partition(b"\x1fmsg=")[2].partition(b"\x1f")[0]
            if not text.startswith(b"pause"):
                found.take(text)
            position += 4 + length
        data = data[position:]
    if rng.random() < 0.5:
        service.reset(connection)
    else:
        connection.close()
    return found


def main():
    port, directory, number, seed, threads = int(sys.argv[1]), pathlib.Path(sys.argv[2]), *sys.argv[3:5], int(sys.argv[5])
    rng = random.Random("%s-%s" % (seed, number))
    visits = messages = 0
    faults = []
    away = directory / ("away-" + number)
    while not (directory / "over").exists():
        # What its first visit opens in the process once and for all has to be there when the use is looked at.
        if visits and (directory / "pause").exists():
            away.touch()
            time.sleep(0.1)
            continue
        away.unlink(missing_ok=True)
        try:
            found = follow(port, threads, rng.random() * LONGEST_VISIT, rng)
            visits += 1
            messages += found.count
            faults += found.faults
        except OSError as error:
            # The process may have ended meanwhile.
            if not (directory / "pause").exists() and not (directory / "over").exists():
                faults.append(str(error))
        # The file alone is many times as fast.
        back = time.monotonic() + rng.random() * LONGEST_ABSENCE
        while time.monotonic() < back and not (directory / "pause").exists() and not (directory / "over").exists():
            time.sleep(0.1)
    print(visits, messages, "; ".join(faults[:5]))


if __name__ == "__main__":
    main()
