"""Runs a program on a terminal of its own, presses keys, and looks at the screen."""

import fcntl
import os
import pty
import select
import signal
import struct
import sys
import termios
import time

try:
    import pyte
except ImportError:  # another Python than Debian's
    sys.path.append("/usr/lib/python3/dist-packages")
    import pyte

UP, DOWN, RIGHT, LEFT, END, ESCAPE = "\033[A", "\033[B", "\033[C", "\033[D", "\033[F", "\033"


class Terminal:
    """A program, and the terminal that it runs on. Waits at most `PATIENCE` seconds for anything."""

    PATIENCE = 20

    def __init__(self, arguments, folder, rows=24, columns=80, **environment):
        clean = {k: v for k, v in os.environ.items() if k not in ("NO_COLOR", "ORVDIFF_VIEWER")}
        self.screen = pyte.Screen(columns, rows)
        self.stream = pyte.ByteStream(self.screen)
        self.raw = b""
        self.process, self.descriptor = pty.fork()
        if self.process == 0:
            self._set_size(0, rows, columns)
            os.chdir(folder)
            os.execvpe(arguments[0], arguments, {**clean, "TERM": "xterm-256color", **environment})

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process:
            os.kill(self.process, signal.SIGKILL)
            os.waitpid(self.process, 0)
        os.close(self.descriptor)

    @staticmethod
    def _set_size(descriptor, rows, columns):
        fcntl.ioctl(descriptor, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))

    def resize(self, rows, columns):
        self.screen.resize(rows, columns)
        self._set_size(self.descriptor, rows, columns)

    def modes(self):
        return termios.tcgetattr(self.descriptor)[:4]

    def text(self):
        return "\n".join(row.rstrip() for row in self.screen.display)

    def _read(self, seconds):
        """Takes in what the program has written; false when there is no more to come."""
        if not select.select([self.descriptor], [], [], seconds)[0]:
            return True
        try:
            data = os.read(self.descriptor, 65536)
        except OSError:  # the program has gone
            return False
        self.raw += data
        self.stream.feed(data)
        return bool(data)

    def wait_for(self, *texts):
        """Waits until the screen shows all of the texts; returns what it shows."""
        until = time.monotonic() + self.PATIENCE
        while not all(text in self.text() for text in texts):
            if time.monotonic() > until or not self._read(0.1):
                raise AssertionError(f"waited in vain for {texts}:\n{self.text()}")
        return self.text()

    def press(self, keys, *texts):
        """Presses keys, and waits until the screen shows the texts."""
        os.write(self.descriptor, keys.encode())
        return self.wait_for(*texts)

    def send(self, number):
        os.kill(self.process, number)

    def status(self):
        """Waits for the end of the program; its exit status, or minus the signal that ended it."""
        until = time.monotonic() + self.PATIENCE
        while self._read(0.1):
            if time.monotonic() > until:
                raise AssertionError(f"the program does not end:\n{self.text()}")
        _, status = os.waitpid(self.process, 0)
        self.process = 0
        return os.waitstatus_to_exitcode(status)
