"""GPS receivers of nineteen models: their fixes, satellites, reports and raw data, and their commands.

A receiver at a port, or a simulated one:

>>> import gpsengine
>>> with gpsengine.open(model="Trimble") as receiver:
...     fix = next(receiver.fixes(timeout=10))
>>> fix.kind, round(fix.latitude), str(fix.time.tzinfo)
(<FixKind.GPS: 1>, 48, 'UTC')

A recording:

>>> gga = b"$GPGGA,123519,4807.038,N,01130.000,W,1,08,0.9,545.4,M,46.9,M,,*54\\r\\n"
>>> [fix.height_msl for fix in gpsengine.decode(gga).fixes()]
[545.4]

One receiver or recording at a time is in use in a process; a second one is refused (Busy).
"""

from ._commands import Commands, commands
from ._core import Ephemeris, Epoch, Fix, Raw, Report, Satellite, Signal, Sky, models, to_numpy
from ._enums import FixKind, System
from ._errors import Busy, Error, LostPort, PortError, Refused, SilenceError, UsageError
from ._sources import Receiver, Record, Recording, Simulator, Stream, decode, open

__all__ = [
    "Busy", "Commands", "Ephemeris", "Epoch", "Error", "Fix", "FixKind", "LostPort", "PortError", "Raw", "Receiver",
    "Record", "Recording", "Refused", "Report", "Satellite", "Signal", "SilenceError", "Simulator", "Sky", "Stream",
    "System", "UsageError", "commands", "decode", "models", "open", "to_numpy",
]  # fmt: skip
