"""What the tests have in common."""

import functools
import os
import signal
import threading
import typing

import gpsengine
import pytest

# What runs in the background of a shell has it ignored.
signal.signal(signal.SIGINT, signal.default_int_handler)


def interrupt_soon() -> None:
    threading.Timer(0.2, os.kill, (os.getpid(), signal.SIGINT)).start()


def with_checksum(text: str) -> bytes:
    total = functools.reduce(lambda sum, c: sum ^ ord(c), text, 0)
    return f"${text}*{total:02X}\r\n".encode()


def gga(time: str, quality: int = 1) -> bytes:
    return with_checksum(f"GPGGA,{time},4807.038,N,01130.000,W,{quality},08,0.9,545.4,M,46.9,M,,")


RECORDED = (
    with_checksum("GPRMC,123518.00,A,4807.038,N,01130.000,W,022.4,084.4,230394,,")
    + gga("123519")
    + with_checksum("GPGSV,1,1,02,03,42,111,40,19,20,300,35")
    + with_checksum("GLGSV,1,1,01,70,33,250,38")
    + gga("123520", 0)
    + with_checksum("GPVTG,090.0,T,,M,010.0,N,018.5,K")
    + gga("123521.5", 4)
    + b"$PASHR,ACK*3D\r\n"
    + gga("123522")
)


@pytest.fixture
def port() -> typing.Iterator[str]:
    """The port of a simulated Ashtech with ten epochs a second."""
    simulator = gpsengine.Simulator("Ashtech", rate=10, speed_up=2)
    yield simulator.port
    del simulator
