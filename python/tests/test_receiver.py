import asyncio
import gc
import os
import pathlib
import threading
import time

import gpsengine
import pytest
from conftest import interrupt_soon


def test_reads_a_receiver_and_closes_it(port: str) -> None:
    with gpsengine.open(port, model="ashtech") as receiver:
        fixes = receiver.fixes(timeout=10)
        assert round(next(fixes).latitude) == 48
        assert next(receiver.satellites(timeout=10)).in_view >= 4
        assert receiver.model == "Ashtech" and receiver.understood > 0 and receiver.lost == 0
    list(fixes)  # what had come, and then an end
    assert repr(receiver) == f"<gpsengine.Receiver 'Ashtech' on {port} closed>"
    with pytest.raises(gpsengine.UsageError, match="the receiver is closed"):
        receiver.commands.gga_only()


def test_records_what_comes(port: str, tmp_path: pathlib.Path) -> None:
    log = tmp_path / "drive.log"
    with gpsengine.open(port, model="Ashtech", record=log) as receiver:
        live = [fix for fix, _ in zip(receiver.fixes(timeout=10), range(3))]
    assert [fix.time for fix, _ in zip(gpsengine.decode(log).fixes(), range(3))] == [fix.time for fix in live]


def test_a_forgotten_receiver_is_closed(port: str) -> None:
    with pytest.raises(gpsengine.Busy):
        receiver = gpsengine.open(port)
        gpsengine.open(port)
    del receiver
    gc.collect()
    gpsengine.open(port).close()


def test_silence_and_wrong_ports_are_told(port: str) -> None:
    with gpsengine.open(port, model="Ashtech") as receiver:
        begun = time.monotonic()
        with pytest.raises(TimeoutError, match=f"no raw data came from {port} in 0.25 s: check") as error:
            next(receiver.raw(timeout=0.25))
        assert isinstance(error.value, gpsengine.SilenceError) and 0.25 <= time.monotonic() - begun < 2
    with pytest.raises(gpsengine.PortError, match="cannot open /dev/no: No such file"):
        gpsengine.open("/dev/no")
    with pytest.raises(gpsengine.UsageError, match="rate"):
        gpsengine.Simulator(rate=1000)


def test_a_lost_port_is_an_error_after_the_last_record() -> None:
    simulator = gpsengine.Simulator("Ashtech", rate=10)
    with gpsengine.open(simulator.port, model="Ashtech") as receiver:
        next(receiver.fixes(timeout=10))
        simulator.hang_up()
        with pytest.raises(gpsengine.LostPort, match="was lost: it was unplugged"):
            list(receiver.records())
        with pytest.raises(gpsengine.LostPort):
            receiver.commands.gga_only()


def test_an_interrupt_ends_a_wait_and_leaves_the_receiver_usable(port: str) -> None:
    with gpsengine.open(port, model="Ashtech") as receiver:
        begun = time.monotonic()
        interrupt_soon()
        with pytest.raises(KeyboardInterrupt):
            next(receiver.raw())
        interrupt_soon()
        with pytest.raises(KeyboardInterrupt):
            receiver.commands.default_nmea()
            receiver.commands.default_nmea()
        assert time.monotonic() - begun < 3
        receiver.commands.gga_only()
        next(receiver.fixes(timeout=10))


def test_a_wait_lets_other_threads_go_on_and_a_close_ends_it(port: str) -> None:
    receiver = gpsengine.open(port, model="Ashtech")
    taken: list[gpsengine.Raw] = []
    waiting = threading.Thread(target=lambda: taken.extend(receiver.raw()))
    waiting.start()
    next(receiver.fixes(timeout=10))
    receiver.close()
    waiting.join(5)
    assert not waiting.is_alive() and taken == []


def test_a_fork_is_refused_in_words(port: str) -> None:
    with gpsengine.open(port) as receiver:
        pid = os.fork()
        if pid == 0:
            refused = 0
            for call in (lambda: receiver.fixes(), lambda: gpsengine.decode(b"$"), lambda: receiver.lost):
                try:
                    call()
                except gpsengine.Busy as error:
                    refused += "open it after the fork" in str(error)
            receiver.close()
            os._exit(refused)
        assert os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1]) == 3
        next(receiver.fixes(timeout=10))


def test_is_read_in_an_event_loop(port: str) -> None:
    async def read() -> None:
        with gpsengine.open(port, model="Ashtech") as receiver:
            skies: list[gpsengine.Sky] = []

            async def watch() -> None:
                async for sky in receiver.satellites():
                    skies.append(sky)

            watching = asyncio.create_task(watch())
            times = []
            async for fix in receiver.fixes(timeout=10):
                times.append(fix.time)
                if len(times) == 5 and skies:
                    break
            assert len(set(times)) == len(times)
            with pytest.raises(gpsengine.SilenceError, match="in 0.1 s"):
                async for _ in receiver.raw(timeout=0.1):
                    pass
            receiver.close()
            await asyncio.wait_for(watching, 5)  # its end

    asyncio.run(read())


def test_an_event_loop_hears_of_a_lost_port() -> None:
    simulator = gpsengine.Simulator("Ashtech", rate=10)

    async def read() -> None:
        with gpsengine.open(simulator.port, model="Ashtech") as receiver:
            async for _ in receiver.fixes(timeout=10):
                simulator.hang_up()

    with pytest.raises(gpsengine.LostPort):
        asyncio.run(read())


@pytest.mark.parametrize("model", ["CSI", "Starlink"])
def test_a_command_waits_for_its_answer(model: str) -> None:
    with gpsengine.open(gpsengine.Simulator(model, speed_up=4), model=model) as receiver:
        receiver.commands.set_elevation_mask(3, wait=True)
        receiver.commands.query_elevation_mask(wait=True)
        assert next(report.value for report in receiver.reports(timeout=0) if report.key == "elevationMask") == 3


@pytest.mark.parametrize("model, head", [
    ("Ashtech", b""), ("CSI", b""), ("CSI - MAX", b"$BIN"), ("GSR2650 LB", b"\xaa\x44\x12"), ("Racal", b""),
    ("Sokkia Axis3", b"$BIN"),
])  # fmt: skip
def test_raw_data_are_signals_and_orbits(model: str, head: bytes) -> None:
    signals, orbits = [], []
    with gpsengine.open(gpsengine.Simulator(model, speed_up=10), model=model) as receiver:
        receiver.commands.post_processing(True, wait=True)
        for raw in receiver.raw(timeout=20):
            assert raw.data.startswith(head) and bool(raw.data) == bool(head)
            signals += raw.epoch.signals if raw.epoch else []
            orbits += [raw.ephemeris] if raw.ephemeris else []
            if signals and orbits:
                break
    assert all(signal.system == "G" and 1e7 < (signal.pseudorange or 0) < 1e8 for signal in signals)
    assert all(40 < orbit.i0 < 70 and 5100 < orbit.sqrt_a < 5200 for orbit in orbits)
