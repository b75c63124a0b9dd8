"""Logs a fleet: a process for each receiver, since one has room for one, and a table of all their fixes.

fleet.py TABLE.csv PORT=MODEL...     until Ctrl-C
fleet.py TABLE.csv --simulate        three simulated receivers, for five seconds
"""

from __future__ import annotations

import csv
import multiprocessing
import queue
import sys
import time
import typing

import gpsengine

Row = tuple[str, dict[str, typing.Any]]


def log(port: str | None, model: str, rows: multiprocessing.Queue[Row]) -> None:
    while True:
        try:
            with gpsengine.open(port, model) as receiver:
                for fix in receiver.fixes(timeout=30):
                    rows.put((port or model, fix.as_dict()))
        except (gpsengine.PortError, gpsengine.SilenceError) as error:
            print(error, file=sys.stderr)
            time.sleep(5)  # it may be plugged in again
        except KeyboardInterrupt:
            return


def main() -> None:
    table, *fleet = sys.argv[1:]
    simulated: list[tuple[str | None, str]] = [(None, model) for model in ("Trimble", "CSI", "SiRF")]
    named: list[tuple[str | None, str]] = [(one.split("=")[0], one.split("=")[1]) for one in fleet if "=" in one]
    end = time.monotonic() + 5 if not named else float("inf")
    context = multiprocessing.get_context("spawn")
    rows: multiprocessing.Queue[Row] = context.Queue()
    for port, model in named or simulated:
        context.Process(target=log, args=(port, model, rows), daemon=True).start()
    with open(table, "w", newline="") as file:
        out = csv.writer(file)
        out.writerow(["receiver", "time", "latitude", "longitude", "height_msl", "kind"])
        try:
            while time.monotonic() < end:
                try:
                    receiver, fix = rows.get(timeout=0.5)
                except queue.Empty:
                    continue
                out.writerow([receiver, fix["time"], fix["latitude"], fix["longitude"], fix["height_msl"], fix["kind"].name])
        except KeyboardInterrupt:
            pass


if __name__ == "__main__":
    main()
