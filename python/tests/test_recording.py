import ast
import datetime
import io
import pathlib
import subprocess
import sys
import threading

import gpsengine
import numpy
import pytest
from conftest import RECORDED, gga


def test_gives_fixes_in_degrees_metres_and_utc() -> None:
    first, last, _ = gpsengine.decode(RECORDED).fixes()
    assert first.time == datetime.datetime(1994, 3, 23, 12, 35, 19, tzinfo=datetime.timezone.utc)
    assert [first.latitude, first.longitude, first.height_msl] == pytest.approx([48.1173, -11.5, 545.4])
    assert first.kind is gpsengine.FixKind.GPS and first.course is None
    assert last.kind is gpsengine.FixKind.RTK_FIXED and last.course == 90
    assert str(last.time).startswith("1994-03-23 12:35:21.500000")


def test_gives_every_kind_in_order_to_be_matched() -> None:
    order = []
    for record in gpsengine.decode(RECORDED).records():
        match record:
            case gpsengine.Fix(time, latitude, valid=True):
                order.append(f"{time:%S} {latitude:.1f}")
            case gpsengine.Sky(satellites):
                order += [satellite.name for satellite in satellites]
                assert satellites[-1].system is gpsengine.System.GLONASS
            case gpsengine.Report(key="ack", value=True):
                order.append("ack")
    assert order == ["19 48.1", "G03", "G19", "R06", "21 48.1", "ack", "22 48.1"]


def test_records_are_values() -> None:
    one, other = (next(gpsengine.decode(RECORDED).fixes()) for _ in range(2))
    assert one == other and hash(one) == hash(other) and one is not other
    assert one != next(gpsengine.decode(gga("123520")).fixes()) and one != 5
    assert one.as_dict()["height_msl"] == 545.4
    assert "latitude=48.1" in repr(one) and "course" not in repr(one)
    for name in ("latitude", "colour"):
        with pytest.raises(AttributeError):
            setattr(one, name, 0)


def test_the_stub_declares_what_records_have() -> None:
    stub = pathlib.Path(gpsengine.__file__).with_name("_core.pyi").read_text()
    for declared in ast.parse(stub).body:
        record = isinstance(declared, ast.ClassDef) and getattr(gpsengine, declared.name, None)
        if hasattr(record, "as_dict"):
            names = [node.target.id for node in declared.body if isinstance(node, ast.AnnAssign)]
            assert names == list(record.__match_args__), declared.name
            assert all(getattr(record, name).__doc__ for name in names)


def test_reads_files_bytes_and_objects_alike(tmp_path: pathlib.Path) -> None:
    file = tmp_path / "day.log"
    file.write_bytes(RECORDED)
    expected = list(gpsengine.decode(RECORDED).fixes())
    assert len(expected) == 3
    assert list(gpsengine.decode(file).fixes()) == expected
    assert list(gpsengine.decode(io.BytesIO(RECORDED)).fixes()) == expected
    with file.open("rb") as opened:
        assert list(gpsengine.decode(opened, speed=1e6).fixes()) == expected
    moved = next(gpsengine.decode(str(file), date="1971-01-02", antenna_height=2).fixes())
    assert moved.time is not None and moved.time.date() == datetime.date(1971, 1, 2)
    assert moved.height_msl == 543.4
    for date in ("tomorrow", "2024-02-30"):
        with pytest.raises(ValueError):
            gpsengine.decode(file, date=date)


def test_a_pipe_gives_each_fix_as_it_comes() -> None:
    script = f"import sys, time; sys.stdout.buffer.write({RECORDED!r}); sys.stdout.flush(); sys.stdin.read()"
    pipe = subprocess.Popen([sys.executable, "-c", script], stdin=subprocess.PIPE, stdout=subprocess.PIPE, bufsize=0)
    with pipe, gpsengine.decode(pipe.stdout) as recording:  # whose writer goes on when that has been read
        assert next(recording.fixes()).kind is gpsengine.FixKind.GPS
        pipe.stdin.close()


def test_kinds_may_be_read_one_after_the_other() -> None:
    recording = gpsengine.decode(RECORDED)
    fixes, skies = recording.fixes(), recording.satellites()
    assert len(list(fixes)) == 3 and [sky.in_view for sky in skies] == [3]
    assert recording.understood == 8
    gpsengine.decode(RECORDED).close()  # the end of the other one has let the engine go


def test_what_read_raises_comes_out() -> None:
    class Broken:
        def read(self, size: int) -> bytes:
            raise OSError("the disk is gone")

    with pytest.raises(OSError, match="the disk is gone"):
        gpsengine.decode(Broken())
    with pytest.raises(gpsengine.UsageError, match='mode "rb"'):
        gpsengine.decode(io.StringIO("$GPGGA"))
    assert len(list(gpsengine.decode(RECORDED).fixes())) == 3


def test_says_what_is_wrong() -> None:
    with pytest.raises(gpsengine.Error, match="cannot read /no/such: No such file"):
        gpsengine.decode("/no/such")
    with pytest.raises(gpsengine.UsageError, match=r'did you mean "Trimble"\?') as error:
        gpsengine.decode(RECORDED, model="Trimbel")
    assert error.value.code == 2 and isinstance(error.value, ValueError)
    with gpsengine.decode(RECORDED), pytest.raises(gpsengine.Busy, match="in use in this process"):
        gpsengine.decode(RECORDED)


def test_gives_arrays() -> None:
    track = gpsengine.decode(RECORDED).to_numpy()
    assert track["time"].tolist()[0] == datetime.datetime(1994, 3, 23, 12, 35, 19)
    assert track["latitude"] == pytest.approx(48.1173) and track["kind"].tolist() == [1, 6, 1]
    assert numpy.isnan(track["course"]).tolist() == [True, False, True] and track["used"].tolist() == [8] * 3
    recording = gpsengine.decode(RECORDED)
    fixes = list(recording.fixes())
    assert (gpsengine.to_numpy(fixes)["time"] == track["time"]).all()
    assert len(recording.to_numpy()) == 0
    with pytest.raises(TypeError, match="this is none: 5"):
        gpsengine.to_numpy([5])


def test_arrays_say_that_they_need_numpy(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setitem(sys.modules, "numpy", None)
    with pytest.raises(ImportError, match="apt install python3-numpy"):
        gpsengine.decode(RECORDED).to_numpy()


def test_threads_share_a_recording(tmp_path: pathlib.Path) -> None:
    file = tmp_path / "day.log"
    file.write_bytes(b"".join(gga(f"12{i // 60:02}{i % 60:02}") for i in range(3000)))
    fixes = gpsengine.decode(file).fixes()
    shares: list[list[gpsengine.Fix]] = []
    threads = [threading.Thread(target=lambda: shares.append(list(fixes))) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert len({fix.time for share in shares for fix in share}) == sum(map(len, shares)) == 3000
