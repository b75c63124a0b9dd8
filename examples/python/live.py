"""Draws a receiver's way and height as they come.

live.py [PORT MODEL]     a simulated receiver without a port
live.py --save PNG       draws 60 fixes into a file
"""

from __future__ import annotations

import asyncio
import sys

import gpsengine
import matplotlib.pyplot as pyplot


async def draw(receiver: gpsengine.Receiver, save: str | None) -> None:
    figure, (way, profile) = pyplot.subplots(1, 2, figsize=(9, 4), layout="constrained")
    fixes: list[gpsengine.Fix] = []
    async for fix in receiver.fixes(timeout=10):
        fixes.append(fix)
        if save and len(fixes) < 60:
            continue
        track = gpsengine.to_numpy(fixes)
        way.clear()
        way.plot(track["longitude"], track["latitude"], ".-")
        way.set(title=f"{fix.time:%H:%M:%S} UTC  {fix.kind.name}", xlabel="longitude, deg", ylabel="latitude, deg")
        way.ticklabel_format(useOffset=False)
        way.tick_params(axis="x", rotation=30)
        profile.clear()
        profile.plot(track["time"], track["speed"] * 3.6)
        profile.set(title=f"{receiver.model}, {fix.used} satellites", xlabel="time", ylabel="speed, km/h")
        profile.tick_params(axis="x", rotation=30)
        if save:
            figure.savefig(save, dpi=80)
            return
        pyplot.pause(0.001)


def main() -> None:
    save = sys.argv[2] if sys.argv[1:2] == ["--save"] else None
    simulator = gpsengine.Simulator("Trimble", rate=10)
    port, model = sys.argv[1:3] if len(sys.argv) == 3 and not save else (simulator.port, simulator.model)
    with gpsengine.open(port, model) as receiver:
        asyncio.run(draw(receiver, save))


if __name__ == "__main__":
    main()
