"""wine_again.py PROGRAM ARGUMENT...: runs it with our streams; its exit code is ours. What the emulation did not start is
started again: it fails so now and then while it starts others."""
import os
import selectors
import signal
import subprocess
import sys

import wine_installation

MOST_STARTS = 5
CHUNK = 1 << 16


class Relay:
    """Hands on what a program says. Whoever waits for the end of its pipes waits for services of the emulation too, which
    keep them open; so this ends with the program."""

    def __init__(self, process):
        self.process, self.said = process, 0
        self.selector = selectors.DefaultSelector()
        for pipe, to in ((process.stdout, sys.stdout), (process.stderr, sys.stderr)):
            os.set_blocking(pipe.fileno(), False)
            self.selector.register(pipe, selectors.EVENT_READ, to.fileno())

    def run(self):
        ended = False
        while not ended and self.selector.get_map():
            # What it said before its end is in the pipes when it has ended.
            ended = self.process.poll() is not None
            for key, _ in self.selector.select(0 if ended else 0.05):
                self.hand_on(key)
        return self.process.wait()

    def hand_on(self, key):
        try:
            while bytes_read := os.read(key.fd, CHUNK):
                self.said += len(bytes_read)
                while bytes_read:
                    bytes_read = bytes_read[os.write(key.data, bytes_read):]
        except BlockingIOError:
            return
        except BrokenPipeError:
            pass  # the program learns it from its own pipe
        self.selector.unregister(key.fileobj)
        key.fileobj.close()


def main():
    for _ in range(MOST_STARTS):
        process = subprocess.Popen(sys.argv[1:], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        for each in (signal.SIGTERM, signal.SIGHUP):
            signal.signal(each, lambda number, _: process.send_signal(number))
        relay = Relay(process)
        code = relay.run()
        if not wine_installation.was_not_started(code, relay.said):
            break
    return code if code >= 0 else 128 - code


if __name__ == "__main__":
    sys.exit(main())
