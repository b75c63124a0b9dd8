import ast
import pathlib

import gpsengine
import pytest


def test_offers_what_the_model_has() -> None:
    offered = dir(gpsengine.commands("CSI"))
    assert {"set_elevation_mask", "query_beacon", "reset"} <= set(offered) and "query_waas" not in offered
    with pytest.raises(AttributeError, match="the model CSI does not offer query_waas; it offers"):
        gpsengine.commands("CSI").query_waas()
    with pytest.raises(gpsengine.UsageError):
        gpsengine.commands("Trimbel")
    mask = gpsengine.commands("CSI").set_elevation_mask
    assert mask.__doc__ == "set-elevation-mask DEGREES: the least elevation of a satellite"


def test_arguments_are_pythons_and_are_checked() -> None:
    offered = gpsengine.commands("CSI")
    assert offered.set_elevation_mask(7) == offered.set_elevation_mask(7.0) == 'write "$PASHS,PEM,7\\r\\n"\nwait 200\n'
    assert "304.5" in offered.set_beacon(304.5, 200)
    assert offered.post_processing(True) != offered.post_processing(False)
    assert "wait-ack" in offered.reset(wait=True) and "wait-ack" not in offered.reset()
    assert offered.set_elevation_mask(7, wait=True) == offered.set_elevation_mask(7) + "wait-ack 1500\n"
    silent = gpsengine.commands("Starlink")
    assert silent.set_elevation_mask(7, wait=True) == silent.set_elevation_mask(7)
    assert silent.query_elevation_mask(wait=True).endswith("wait-ack 5000\n")
    for call, text in (
        (lambda: offered.set_elevation_mask(99), "0 to 90 degrees"),
        (lambda: offered.set_elevation_mask(), "an argument is missing: degrees"),
        (lambda: offered.set_elevation_mask(1, 2), "one argument too many"),
    ):
        with pytest.raises(gpsengine.UsageError, match=text):
            call()


def test_a_dry_run_beside_an_open_receiver_touches_nothing(port: str) -> None:
    with gpsengine.open(port, model="Ashtech") as receiver:
        dry = receiver.commands.gga_only(dry_run=True)
        assert dry is not None and dry.startswith('write "$PASHS,NME,ALL,A,OFF')
        with pytest.raises(gpsengine.UsageError, match="one argument too many"):
            receiver.commands.gga_only(1, dry_run=True)
        assert "start" not in dir(receiver.commands)
        next(receiver.satellites(timeout=10))  # which it would have switched off


def test_the_stub_has_every_command() -> None:
    stub = pathlib.Path(gpsengine.__file__).with_name("_commands.pyi").read_text()
    declared = {node.name for node in ast.walk(ast.parse(stub)) if isinstance(node, ast.FunctionDef)}
    every = {name for model in gpsengine.models() for name in dir(gpsengine.commands(model))}
    assert every == {name for name in declared if not name.startswith("_")} - {"commands"}
