"""What goes wrong, by its kind. The texts are the engine's: they name the thing, and say what to do."""


class Error(Exception):
    """Something went wrong, such as a file that cannot be read.

    ``code`` is the exit code of the program gpsengine for the same.
    """

    code = 1


class UsageError(Error, ValueError):
    """An argument is none, such as the name of a model that does not exist."""

    code = 2


class PortError(Error, OSError):
    """The port cannot be opened."""

    code = 3


class SilenceError(Error, TimeoutError):
    """Nothing of what was asked for came in the time given."""

    code = 4


class LostPort(PortError):
    """The port went away: it was unplugged, or the other side hung up."""

    code = 5


class Refused(Error):
    """The model has no such command, or the receiver did not take it, or gave no answer that was waited for."""

    code = 6


class Busy(Error):
    """Another receiver or recording is in use in this process."""

    code = 7


CLASSES = (Error, UsageError, PortError, SilenceError, LostPort, Refused, Busy)
for _class in CLASSES:
    _class.__module__ = "gpsengine"  # where users find them
