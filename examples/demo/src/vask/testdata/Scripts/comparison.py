"""What the comparison scripts share: exit statuses, arguments, file checks and messages.

A verifying program runs one of these scripts for every pair of files and reads nothing but the
exit status, so the status must be honest: EQUAL only when everything was looked at, and never
DIFFERENT for what could not be compared at all.
"""

import contextlib
import os
import resource
import signal
import stat
import sys
import time

EQUAL, DIFFERENT, TROUBLE = 0, 1, 2

_CHUNK = 1 << 20
_EXCERPT_WIDTH = 72


class Trouble(Exception):
    """The files cannot be compared; the text says why and names the file."""


def run(main):
    """Calls `main(argv)`, which returns an exit status, and ends the process with that status.

    Python's own status for an uncaught error is 1, which would read as a difference; here every
    error but Trouble is reported as an internal one, and all end with TROUBLE.
    """
    for stream in (sys.stdout, sys.stderr):
        stream.reconfigure(errors="backslashreplace")
    sys.exit(_status_of(lambda: main(sys.argv[1:])))


def _status_of(work):
    try:
        status = work()
        sys.stdout.flush()
        return status
    except BrokenPipeError:
        # The reader left before the end, so the exit status is all that is left to give.
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
        return TROUBLE
    except Trouble as trouble:
        return _complain(str(trouble))
    except (Exception, KeyboardInterrupt) as error:
        return _complain(f"internal error: {type(error).__name__}: {error}")


def run_within(seconds, work):
    """Returns the exit status that `work()` returns in a process group of its own.

    The group is killed when the work ends, when `seconds` have passed (0 is no limit), which raises
    Trouble, and when a signal ends this process. A process, because nothing inside Python ends a
    regular expression that backtracks for ever.
    """
    signal.signal(signal.SIGCHLD, signal.SIG_DFL)
    awaited = {number for number in (signal.SIGCHLD, signal.SIGHUP, signal.SIGINT, signal.SIGTERM)
               if signal.getsignal(number) != signal.SIG_IGN}  # Ignored below nohup, say.
    before = signal.pthread_sigmask(signal.SIG_BLOCK, awaited)
    sys.stdout.flush()
    child = os.fork()
    if child == 0:
        os.setpgid(0, 0)
        signal.pthread_sigmask(signal.SIG_SETMASK, before)
        _limit_processor_time(seconds)
        os._exit(_status_of(work))
    received = _await_end(child, awaited, seconds)
    with contextlib.suppress(ProcessLookupError):  # It may not have got to make its group.
        os.killpg(child, signal.SIGKILL)
    os.kill(child, signal.SIGKILL)
    status = os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
    if received is None:
        raise Trouble(f"gave up after {seconds} s")
    if received != signal.SIGCHLD:
        signal.signal(received, signal.SIG_DFL)
        os.kill(os.getpid(), received)
    signal.pthread_sigmask(signal.SIG_SETMASK, before)
    if status < 0:
        raise Trouble(f"the comparison was ended by signal {-status}")
    return status


def _await_end(child, awaited, seconds):
    """Returns the signal that ends the wait for the child, which is kept as a zombie, or None."""
    deadline = time.monotonic() + seconds
    while True:
        if seconds:
            info = signal.sigtimedwait(awaited, max(0, deadline - time.monotonic()))
        else:
            info = signal.sigwaitinfo(awaited)
        if info is None or info.si_signo != signal.SIGCHLD:
            return info and info.si_signo
        # A child that was merely stopped sends the signal, too. A zombie keeps its group's number.
        if os.waitid(os.P_PID, child, os.WEXITED | os.WNOHANG | os.WNOWAIT):
            return signal.SIGCHLD


def _limit_processor_time(seconds):
    """Ends what is left behind when the process that keeps the time limit is killed itself."""
    if seconds:
        limit, most = resource.getrlimit(resource.RLIMIT_CPU)
        if limit == resource.RLIM_INFINITY or limit > seconds:
            resource.setrlimit(resource.RLIMIT_CPU, (seconds + 1, most))


def _complain(message):
    print(f"{os.path.basename(sys.argv[0])}: {_printable(message)}", file=sys.stderr)
    return TROUBLE


def parse_arguments(parser, argv):
    """Returns (options, master, actual); `parser` knows the options only.

    The last two arguments are always the files, whatever they begin with: the names come from a
    report suite, and a report may be called "-o". Bad usage ends the process with TROUBLE.
    """
    if len(argv) < 2 or argv[-1] in ("-h", "--help"):
        parser.parse_args(argv)
        parser.error("two files are needed: MASTER ACTUAL")
    options = argv[:-2]
    if options[-1:] == ["--"]:
        options.pop()
    return parser.parse_args(options), argv[-2], argv[-1]


def same_bytes(master, actual):
    """Tells whether two files hold the same bytes; raises Trouble when one cannot be read."""
    with _open(master) as left, _open(actual) as right:
        if os.fstat(left.fileno()).st_size != os.fstat(right.fileno()).st_size:
            return False
        return same_streams(left, right)


def same_streams(left, right):
    """Tells whether two binary streams give the same bytes from here to their ends."""
    while True:
        chunk = left.read(_CHUNK)
        if chunk != right.read(_CHUNK):
            return False
        if not chunk:
            return True


def head(path, size):
    """Returns the first `size` bytes of a file; raises Trouble when it cannot be read."""
    with _open(path) as stream:
        return stream.read(size)


def _open(path):
    """Opens a regular file; anything else, a pipe for instance, could make the script wait."""
    try:
        if not stat.S_ISREG(os.stat(path).st_mode):
            raise Trouble(f"{path!r} is not a regular file")
        return open(path, "rb")
    except (OSError, ValueError) as error:
        raise Trouble(f"cannot read {path!r}: {getattr(error, 'strerror', error)}") from None


def excerpts(master, actual):
    """Returns both texts shortened to the neighbourhood of their first difference.

    Control characters come out escaped, so that a report cannot drive the terminal.
    """
    common = len(os.path.commonprefix((master, actual)))
    start = max(0, common - _EXCERPT_WIDTH // 3)
    return _excerpt(master, start), _excerpt(actual, start)


def _excerpt(text, start):
    end = start + _EXCERPT_WIDTH
    return ("..." if start else "") + _printable(text[start:end]) + ("..." if text[end:] else "")


def _printable(text):
    return "".join(c if c.isprintable() else ascii(c)[1:-1] for c in text)
