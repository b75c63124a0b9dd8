"""Where records come from: receivers and recordings."""

from __future__ import annotations

import atexit
import datetime
import io
import os
import typing
import weakref
from collections.abc import AsyncIterator, Iterator

from . import _core
from ._aio import Hub
from ._commands import Commands

T = typing.TypeVar("T")
Kind = _core.Kind
Record = typing.Union[_core.Fix, _core.Sky, _core.Report, _core.Raw]


class Stream(Iterator[T]):
    """The records of one kind of a receiver: for "for", which blocks without the interpreter's lock, or for "async for"."""

    def __init__(self, receiver: Receiver, kind: _core.Kind, timeout: float | None) -> None:
        self._receiver = receiver
        self._stream = _core.Stream(receiver._core, kind, timeout)

    def __next__(self) -> T:
        return typing.cast(T, self._stream.read())

    def __aiter__(self) -> AsyncIterator[T]:
        return typing.cast(AsyncIterator[T], self._receiver._hub.records(self._stream))


class Receiver:
    """A receiver at the end of a line, which `open` makes. It is closed by "with", close(), or when it is forgotten.

    What it tells waits here, the last 4,096 records at most. A record of a kind goes to one stream of its kind, and to
    one of all kinds beside it.
    """

    def __init__(self, core: _core.Receiver, simulator: Simulator | None) -> None:
        self._core = core
        self._simulator = simulator
        self._hub = Hub(core)
        self._model = core.model
        self._baud = core.baud
        _open.add(self)

    def __enter__(self) -> Receiver:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def __repr__(self) -> str:
        state = "" if self._core.is_open else " closed"
        return f"<gpsengine.Receiver {self._model!r} on {self.port}{state}>"

    def close(self) -> None:
        """Ends the run within a second and closes the port. Streams end; a command that still runs ends first."""
        self._hub.close()
        self._core.close()

    def fixes(self, timeout: float | None = None) -> Stream[_core.Fix]:
        """Positions, once for each moment. SilenceError if none comes for `timeout` seconds; None waits for ever."""
        return Stream(self, Kind.fixes, timeout)

    def satellites(self, timeout: float | None = None) -> Stream[_core.Sky]:
        """The satellites in view, an epoch at a time."""
        return Stream(self, Kind.satellites, timeout)

    def reports(self, timeout: float | None = None) -> Stream[_core.Report]:
        """What the receiver reports of its settings, and its answers to requests."""
        return Stream(self, Kind.reports, timeout)

    def raw(self, timeout: float | None = None) -> Stream[_core.Raw]:
        """Raw measurements and ephemerides; commands.post_processing(True) has them sent."""
        return Stream(self, Kind.raw, timeout)

    def records(self, timeout: float | None = None) -> Stream[Record]:
        """All of these as they come, position sentences without a fix among them."""
        return Stream(self, Kind.records, timeout)

    @property
    def commands(self) -> Commands:
        """The commands of its model: `dir(receiver.commands)` tells which."""
        return Commands(self._model, self._core)

    @property
    def model(self) -> str:
        """The model by its own name."""
        return self._model

    @property
    def port(self) -> str:
        """The device or the address."""
        return self._core.port

    @property
    def baud(self) -> int:
        """Bits a second; 0 where that is set at the other end of a connection."""
        return self._baud

    @property
    def lost(self) -> int:
        """Records that were not read in time and made room for newer ones."""
        return self._core.lost + self._hub.count_lost()

    @property
    def understood(self) -> int:
        """Messages of the receiver that were understood."""
        return self._core.understood


class Recording:
    """Bytes of a receiver, decoded as their records are asked for; `decode` makes it. They are gone through once."""

    def __init__(self, core: _core.Recording) -> None:
        self._core = core

    def __enter__(self) -> Recording:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def close(self) -> None:
        """Lets the engine go, which the end of the recording does by itself."""
        self._core.close()

    def fixes(self) -> Iterator[_core.Fix]:
        """Positions, once for each moment."""
        return typing.cast("Iterator[_core.Fix]", self._core.read(Kind.fixes))

    def satellites(self) -> Iterator[_core.Sky]:
        """The satellites in view, an epoch at a time."""
        return typing.cast("Iterator[_core.Sky]", self._core.read(Kind.satellites))

    def reports(self) -> Iterator[_core.Report]:
        """What the receiver reports of its settings."""
        return typing.cast("Iterator[_core.Report]", self._core.read(Kind.reports))

    def raw(self) -> Iterator[_core.Raw]:
        """Raw measurements and ephemerides."""
        return typing.cast("Iterator[_core.Raw]", self._core.read(Kind.raw))

    def records(self) -> Iterator[Record]:
        """All of these as they come, position sentences without a fix among them."""
        return typing.cast("Iterator[Record]", self._core.read(Kind.records))

    def to_numpy(self) -> typing.Any:
        """The fixes that are left as a structured array of numpy; NaN and NaT for what is None.

        >>> import gpsengine
        >>> gga = b"$GPGGA,123519,4807.038,N,01130.000,W,1,08,0.9,545.4,M,46.9,M,,*54\\r\\n"
        >>> track = gpsengine.decode(gga, date="2024-05-14").to_numpy()
        >>> track["time"][0], track["height_msl"][0], track["speed"][0]
        (numpy.datetime64('2024-05-14T12:35:19.000'), 545.4, nan)
        """
        return self._core.to_numpy()

    @property
    def understood(self) -> int:
        """Messages that were understood so far; binary ones count where raw data are asked for."""
        return self._core.understood


class Simulator:
    """A simulated receiver on a pseudo-terminal, for `open` or any other program; it goes on until it is forgotten.

    `rate` is that of its epochs in hertz, `speed_up` how many of its seconds go by in a real one.
    """

    def __init__(self, model: str = "Other", rate: float = 1.0, speed_up: float = 1.0) -> None:
        self.model = model
        self._core = _core.Simulator(model, rate, speed_up)

    @property
    def port(self) -> str:
        """The device that a program opens."""
        return self._core.port

    def hang_up(self) -> None:
        """Closes the line for good, as a pulled plug does."""
        self._core.hang_up()


def open(
    port: str | os.PathLike[str] | Simulator | None = None,
    model: str = "Other",
    *,
    baud: int = 0,
    antenna_height: float = 0.0,
    record: str | os.PathLike[str] | None = None,
) -> Receiver:
    """Opens the receiver at a port, and sets it up, which takes some models seconds.

    A port is a device, or an address: "tcp://HOST:PORT", "udp://[HOST]:PORT", where datagrams come, "gpsd://HOST[:PORT]",
    or "rfc2217://HOST:PORT" if the module was built with gensio. Without a port the receiver is a simulated one, as with
    a Simulator in its place, which lives as long as the receiver then.

    `baud` 0 is the model's usual rate. `antenna_height` in metres is taken off every height. Every byte of the port goes
    into the file `record` as well. Raises PortError, UsageError for a model that does not exist, and Busy.
    """
    simulator = Simulator(model) if port is None else port if isinstance(port, Simulator) else None
    device = simulator.port if simulator is not None else os.fspath(typing.cast(str, port))
    file = os.fspath(record) if record is not None else ""
    return Receiver(_core.Receiver(device, model, baud, antenna_height, file), simulator)


def decode(
    source: str | os.PathLike[str] | bytes | typing.BinaryIO,
    model: str = "Other",
    *,
    antenna_height: float = 0.0,
    date: datetime.date | str | None = None,
    speed: float = 0.0,
) -> Recording:
    """Decodes a recording: the name of a file, bytes, or any object with read() that gives bytes.

    All models read what any make sends; raw data may need the one that made them. `date` is the day on which it was
    made, for recordings that do not say so. `speed` is a multiple of its own pace, 0 for as fast as it goes.
    """
    if isinstance(date, str):
        date = datetime.date.fromisoformat(date)
    day = None if date is None else (date.year, date.month, date.day)
    if isinstance(source, (bytes, bytearray, memoryview)):
        source = io.BytesIO(source)
    bytes_of: object = source if hasattr(source, "read") else os.fspath(source)
    return Recording(_core.Recording(bytes_of, model, antenna_height, day, speed))


_open: weakref.WeakSet[Receiver] = weakref.WeakSet()


@atexit.register
def _close() -> None:
    for receiver in list(_open):
        receiver.close()
