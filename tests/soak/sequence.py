"""The judgement of what was logged: the text of each message begins with the number of its thread and its own number."""


class Sequence:
    """The messages of several threads, as they come. Each thread's numbers have to follow one another; a sequence that begins
    in the midst accepts any first number of a thread."""

    def __init__(self, threads, from_the_start=True):
        self.next = [0 if from_the_start else None] * threads
        self.count = 0
        self.faults = []

    def take(self, text):
        """A message's text, as bytes."""
        thread, _, rest = text.partition(b" ")
        number = rest.partition(b" ")[0]
        try:
            index, found = int(thread), int(number)
            wanted = self.next[index]
        except (ValueError, IndexError):
            self.fault("not a message: %r" % text[:60])
            return
        self.count += 1
        if wanted is not None and found != wanted:
            self.fault("thread %d: %d instead of %d, %s" % (
                index, found, wanted, "so %d are missing" % (found - wanted) if found > wanted else "twice or too late"))
        self.next[index] = found + 1

    def fault(self, text):
        # One lost file would give a fault for each thread; a torn one gives no end of them.
        if len(self.faults) < 20:
            self.faults.append(text)

    def judge_end(self, of_each):
        """All threads have to have reached their last message."""
        for index, reached in enumerate(self.next):
            if reached != of_each:
                self.fault("thread %d: the messages end before %d instead of %d" % (index, reached, of_each))
        return self.faults


def take_file(sequence, stream):
    """The lines of a log file."""
    for line in stream:
        if not line.endswith(b"\n"):
            sequence.fault("a line without an end: %r" % line[:60])
        text = line.rstrip(b"\r\n")
        if not text.startswith(b"pause"):
            sequence.take(text)


def judge_use(first, last):
    """What the process has in use, as (handles, bytes on its heaps, private bytes), after a part of the messages and at the
    end. A few handles are opened at the first use of something, and blocks that are kept for the next message differ from time to
    time; what grows with the messages, clients or archives is more."""
    faults = []
    if last[0] > first[0] + 4:
        faults.append("%d handles instead of %d" % (last[0], first[0]))
    for name, before, after in zip(("on its heaps", "private"), first[1:], last[1:]):
        if after > before * 1.1 + 256 * 1024:
            faults.append("%d bytes %s instead of %d" % (after, name, before))
    return faults
