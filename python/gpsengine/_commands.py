"""The commands of a model as methods, made of the table that the program's own come from."""

from __future__ import annotations

import os
import subprocess
import sys
import typing

from . import _core
from ._errors import CLASSES, Error

_OPERATIONS = {name.replace("-", "_"): (name, *rest) for name, *rest in _core.operations()}


def _word(value: object) -> str:
    if isinstance(value, bool):
        return "on" if value else "off"
    return f"{value:.15g}" if isinstance(value, float) else str(value)


class Commands:
    """The commands of a model, those alone that it offers. `dir()` tells which, `help()` what they do.

    Numbers are in the unit of the argument, True and False are on and off. The checks and errors are those of
    `gpsengine command`.

    A command returns when all its lines have gone out. With ``wait=True`` it returns when the receiver has answered: a query
    when its reports are there to be read, another command when each line is acknowledged, if the make acknowledges any.
    Refused is raised if the answer is a refusal, or does not come: within 5 s to a query, 1.5 s to another command.

    ``dry_run=True`` gives what would be written and waited for, a step a line, and touches no receiver.

    >>> import gpsengine
    >>> offered = gpsengine.commands("Starlink")
    >>> print(offered.set_elevation_mask(7), end="")
    write "$PSLIS,ELM,7\\r\\n"
    wait 200
    >>> offered.set_elevation_mask(99)
    Traceback (most recent call last):
        ...
    gpsengine.UsageError: "99" is not an elevation from 0 to 90 degrees
    """

    def __init__(self, model: str, receiver: _core.Receiver | None = None) -> None:
        self._model = model
        self._receiver = receiver
        calls = _core.calls_of(model) if receiver is None else receiver.calls
        offered = {call.split()[0].replace("-", "_") for call in calls}
        # A receiver's own beginning and end are no commands.
        self._names = [n for n, (*_, is_step) in _OPERATIONS.items() if n in offered and not (receiver and is_step)]

    def __dir__(self) -> list[str]:
        return self._names

    def __repr__(self) -> str:
        return f"<gpsengine.Commands of {self._model!r}: {', '.join(self._names)}>"

    def __getattr__(self, name: str) -> typing.Callable[..., str | None]:
        if name.startswith("_") or name not in self._names:
            raise AttributeError(f"the model {self._model} does not offer {name}; it offers {', '.join(self._names)}")
        operation, arguments, summary, _ = _OPERATIONS[name]

        def call(*values: object, wait: bool = False, dry_run: bool = False) -> str | None:
            return self._call(operation, values, wait, dry_run)

        call.__name__ = call.__qualname__ = name
        call.__doc__ = f"{operation} {arguments}: {summary}" if arguments else f"{operation}: {summary}"
        return call

    def _call(self, operation: str, values: tuple[object, ...], wait: bool, dry_run: bool) -> str | None:
        words = [_word(value) for value in values] + (["--wait"] if wait else [])
        if self._receiver is None:
            return _core.rehearse(self._model, operation, words)
        if dry_run:
            return _rehearse_beside(self._model, operation, words)
        self._receiver.command(operation, words)
        return None


def commands(model: str) -> Commands:
    """The commands of a model, without a receiver: each gives what it would write and wait for, a step a line."""
    return Commands(model)


def _rehearse_beside(model: str, operation: str, words: list[str]) -> str:
    """A rehearsal takes the engine, which a receiver has: so it has a process of its own."""
    folder = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    script = "import sys; sys.path.insert(0, sys.argv[1]); from gpsengine import _commands; _commands._print_rehearsal()"
    arguments = [sys.executable, "-c", script, folder, model, operation, *words]
    done = subprocess.run(arguments, capture_output=True, text=True, check=False)
    if done.returncode == 0:
        return done.stdout
    raise next((kind for kind in CLASSES if kind.code == done.returncode), Error)(done.stderr.strip())


def _print_rehearsal() -> None:
    model, operation, *words = sys.argv[2:]
    try:
        print(_core.rehearse(model, operation, words), end="")
    except Error as error:
        print(error, file=sys.stderr)
        sys.exit(error.code)
