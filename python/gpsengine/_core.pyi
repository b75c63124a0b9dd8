"""The compiled half of gpsengine."""

import datetime
import enum
import typing
from typing import Final

from ._enums import FixKind, System

class _Record:
    def as_dict(self) -> dict[str, typing.Any]: ...

class Fix(_Record):
    __match_args__ = (
        "time", "latitude", "longitude", "height_msl", "kind", "speed", "course", "hdop", "pdop", "vdop", "used",
        "in_view", "strength", "valid", "repeats", "starts_segment",
    )  # fmt: skip
    time: Final[datetime.datetime | None]
    latitude: Final[float]
    longitude: Final[float]
    height_msl: Final[float | None]
    kind: Final[FixKind]
    speed: Final[float | None]
    course: Final[float | None]
    hdop: Final[float | None]
    pdop: Final[float | None]
    vdop: Final[float | None]
    used: Final[int]
    in_view: Final[int]
    strength: Final[float | None]
    valid: Final[bool]
    repeats: Final[bool]
    starts_segment: Final[bool]

class Satellite(_Record):
    __match_args__ = ("name", "elevation", "azimuth", "signal", "used", "system", "number")
    name: Final[str]
    elevation: Final[int | None]
    azimuth: Final[int | None]
    signal: Final[int | None]
    used: Final[bool]
    system: Final[System]
    number: Final[int]

class Sky(_Record):
    __match_args__ = ("satellites", "time_of_day", "in_view", "used", "hdop", "pdop", "vdop")
    satellites: Final[tuple[Satellite, ...]]
    time_of_day: Final[float | None]
    in_view: Final[int]
    used: Final[int | None]
    hdop: Final[float | None]
    pdop: Final[float | None]
    vdop: Final[float | None]

class Report(_Record):
    __match_args__ = ("key", "value", "unit", "label")
    key: Final[str]
    value: Final[bool | int | float | str]
    unit: Final[str]
    label: Final[str]

class Signal(_Record):
    __match_args__ = (
        "system", "satellite", "code", "pseudorange", "carrier_phase", "doppler", "cn0", "slip", "half_cycle",
        "glonass_channel",
    )  # fmt: skip
    system: Final[str]
    satellite: Final[int]
    code: Final[str]
    pseudorange: Final[float | None]
    carrier_phase: Final[float | None]
    doppler: Final[float | None]
    cn0: Final[float | None]
    slip: Final[bool]
    half_cycle: Final[bool]
    glonass_channel: Final[int | None]

class Epoch(_Record):
    __match_args__ = ("week", "time_of_week", "signals")
    week: Final[int]
    time_of_week: Final[float]
    signals: Final[tuple[Signal, ...]]

class Ephemeris(_Record):
    prn: Final[int]
    week: Final[int]
    tow: Final[int]
    toe: Final[int]
    toc: Final[int]
    af0: Final[float]
    af1: Final[float]
    af2: Final[float]
    tgd: Final[float]
    iodc: Final[int]
    iode: Final[int]
    sqrt_a: Final[float]
    eccentricity: Final[float]
    m0: Final[float]
    delta_n: Final[float]
    omega0: Final[float]
    omega_dot: Final[float]
    omega: Final[float]
    i0: Final[float]
    i_dot: Final[float]
    cuc: Final[float]
    cus: Final[float]
    crc: Final[float]
    crs: Final[float]
    cic: Final[float]
    cis: Final[float]
    accuracy: Final[float]
    health: Final[int]

class Raw(_Record):
    __match_args__ = ("name", "epoch", "ephemeris", "data")
    name: Final[str]
    epoch: Final[Epoch | None]
    ephemeris: Final[Ephemeris | None]
    data: Final[bytes]

class Kind(enum.Enum):
    fixes = 0
    satellites = 1
    reports = 2
    raw = 3
    records = 4

class Simulator:
    def __init__(self, model: str, rate: float, speed_up: float) -> None: ...
    def hang_up(self) -> None: ...
    @property
    def port(self) -> str: ...

class Receiver:
    def __init__(self, port: str, model: str, baud: int, antenna_height: float, record: str) -> None: ...
    def close(self) -> None: ...
    def command(self, operation: str, words: list[str]) -> None: ...
    def drain(self) -> list[object] | None: ...
    @property
    def is_open(self) -> bool: ...
    @property
    def port(self) -> str: ...
    @property
    def calls(self) -> list[str]: ...
    @property
    def descriptor(self) -> int: ...
    @property
    def model(self) -> str: ...
    @property
    def baud(self) -> int: ...
    @property
    def lost(self) -> int: ...
    @property
    def understood(self) -> int: ...

class Stream:
    def __init__(self, receiver: Receiver, kind: Kind, timeout: float | None) -> None: ...
    def read(self) -> object: ...
    def silence(self) -> typing.NoReturn: ...
    @property
    def kind(self) -> Kind: ...
    @property
    def timeout(self) -> float | None: ...

class Recording:
    def __init__(
        self, source: object, model: str, antenna_height: float, date: tuple[int, int, int] | None, speed: float
    ) -> None: ...
    def read(self, kind: Kind) -> typing.Iterator[object]: ...
    def to_numpy(self) -> typing.Any: ...
    def close(self) -> None: ...
    @property
    def understood(self) -> int: ...

def models() -> list[str]: ...
def operations() -> list[tuple[str, str, str, bool]]: ...
def calls_of(model: str) -> list[str]: ...
def rehearse(model: str, operation: str, words: list[str]) -> str: ...
def to_numpy(fixes: typing.Iterable[Fix]) -> typing.Any:
    """Fixes as a structured array: NaN and NaT for what is None, kinds as the numbers of FixKind."""
