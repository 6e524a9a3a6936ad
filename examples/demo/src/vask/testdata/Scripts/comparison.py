"""What the comparison scripts share: exit statuses, arguments, file checks and messages.

A verifying program runs one of these scripts for every pair of files and reads nothing but the
exit status, so the status must be honest: EQUAL only when everything was looked at, and never
DIFFERENT for what could not be compared at all.
"""

import os
import stat
import sys

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
    try:
        status = main(sys.argv[1:])
        sys.stdout.flush()
    except BrokenPipeError:
        # The reader left before the end, so the exit status is all that is left to give.
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
        status = TROUBLE
    except Trouble as trouble:
        status = _complain(str(trouble))
    except (Exception, KeyboardInterrupt) as error:
        status = _complain(f"internal error: {type(error).__name__}: {error}")
    sys.exit(status)


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
