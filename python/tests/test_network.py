import contextlib
import itertools
import socket
import threading
import time

import gpsengine
import pytest
from conftest import gga, interrupt_soon


class Peer(threading.Thread):
    """A receiver at a socket, with a fix every 50 ms until it hangs up. It keeps what it is sent, and answers it by that."""

    def __init__(self, answer: bytes = b"") -> None:
        super().__init__(daemon=True)
        self.answer = answer
        self.server = socket.create_server(("127.0.0.1", 0))
        self.place = f"127.0.0.1:{self.server.getsockname()[1]}"
        self.taken = b""
        self.hang_up = threading.Event()
        self.start()

    def run(self) -> None:
        connection, _ = self.server.accept()
        with connection, self.server, contextlib.suppress(ConnectionError):
            connection.settimeout(0.05)
            for second in itertools.takewhile(lambda _: not self.hang_up.is_set(), itertools.count()):
                connection.sendall(gga(f"12{second // 60:02}{second % 60:02}"))
                with contextlib.suppress(TimeoutError):
                    self.taken += connection.recv(4096)
                    connection.sendall(self.answer)


def test_is_read_and_commanded_by_tcp_until_the_peer_hangs_up() -> None:
    peer = Peer()
    with gpsengine.open(f"tcp://{peer.place}", model="Ashtech") as receiver:
        assert next(receiver.fixes(timeout=10)).kind is gpsengine.FixKind.GPS and receiver.baud == 0
        receiver.commands.gga_only()
        peer.hang_up.set()
        with pytest.raises(gpsengine.LostPort, match=f"the port tcp://{peer.place} was lost"):
            list(receiver.records(timeout=10))
    peer.join(10)
    assert peer.taken.endswith(b"$PASHS,NME,GGA,A,ON\r\n")


@pytest.mark.parametrize(
    ("answer", "text"), [(b"$PASHR,NAK\r\n", "took 0 lines and refused 2, .*NAK"), (b"", "answered 0 of 2 lines")]
)
def test_an_answer_that_is_waited_for_has_to_come(answer: bytes, text: str) -> None:
    peer = Peer(answer)
    with gpsengine.open(f"tcp://{peer.place}", model="Ashtech") as receiver:
        with pytest.raises(gpsengine.Refused, match=f"^gga-only: the receiver {text}"):
            receiver.commands.gga_only(wait=True)
        peer.hang_up.set()
        with pytest.raises(gpsengine.LostPort):
            receiver.commands.gga_only(wait=True)


def test_gpsd_and_udp_are_only_listened_to() -> None:
    peer = Peer()
    with gpsengine.open(f"gpsd://{peer.place}", model="Ashtech") as receiver:
        next(receiver.fixes(timeout=10))
        with pytest.raises(gpsengine.Refused, match=f"nothing can be sent to gpsd://{peer.place}"):
            receiver.commands.gga_only()
    peer.join(10)
    assert peer.taken == b'?WATCH={"enable":true,"raw":2};\n'
    with socket.socket(type=socket.SOCK_DGRAM) as sender:
        sender.bind(("127.0.0.1", 0))
        place = "127.0.0.2", sender.getsockname()[1]
        with gpsengine.open("udp://{}:{}".format(*place)) as receiver:
            sender.sendto(gga("123519"), place)
            next(receiver.fixes(timeout=10))


@pytest.mark.parametrize(
    ("port", "error", "text"),
    [
        ("tcp://127.0.0.1:1", gpsengine.PortError, "cannot connect to 127.0.0.1:1: connection refused"),
        ("tcp://no-such-host.invalid:1", gpsengine.PortError, "cannot look up no-such-host.invalid"),
        ("tcp://gps", gpsengine.UsageError, "^port=tcp://gps: the port is missing"),
        ("gps:3001", gpsengine.UsageError, "no device; an address looks like tcp://gps:3001"),
        ("-", gpsengine.UsageError, "decode"),
    ],
)
def test_says_why_there_is_no_connection(port: str, error: type[Exception], text: str) -> None:
    with pytest.raises(error, match=text):
        gpsengine.open(port)


def test_an_interrupt_ends_the_wait_for_a_connection() -> None:
    with socket.create_server(("127.0.0.1", 0), backlog=0) as server, contextlib.ExitStack() as stack:
        for _ in range(2):  # who take the room that there is
            caller = stack.enter_context(socket.socket())
            caller.setblocking(False)
            caller.connect_ex(server.getsockname())
        begun = time.monotonic()
        interrupt_soon()
        with pytest.raises(KeyboardInterrupt):
            gpsengine.open("tcp://{}:{}".format(*server.getsockname()))
        assert time.monotonic() - begun < 3
