"""The enumerations of records."""

import enum


class FixKind(enum.IntEnum):
    """How a position was found."""

    NONE = 0
    GPS = 1
    DGPS = 2
    ESTIMATED = 3
    MANUAL = 4
    RTK_CODE = 5
    RTK_FIXED = 6
    RTK_FLOAT = 7
    PROCESSED = 8
    SBAS = 9
    UNKNOWN = 10


class System(enum.IntEnum):
    """A satellite system, by gpsd's number for it."""

    UNKNOWN = -1
    GPS = 0
    SBAS = 1
    GALILEO = 2
    BEIDOU = 3
    IMES = 4
    QZSS = 5
    GLONASS = 6
    NAVIC = 7
