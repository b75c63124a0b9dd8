# %% [markdown]
# A recording as pictures: the way, the sky, the signals over time. Each cell may be run by itself in an editor.
#
#     report.py RECORDING PNG [MODEL]

# %% Decode: all kinds in one pass
from __future__ import annotations

import sys

import gpsengine
import matplotlib.pyplot as pyplot
import numpy

recording, picture, model = (*sys.argv[1:], "Other")[:3]
fixes: list[gpsengine.Fix] = []
skies: list[gpsengine.Sky] = []
for record in gpsengine.decode(recording, model).records():
    match record:
        case gpsengine.Fix(valid=True, repeats=False):
            fixes.append(record)
        case gpsengine.Sky():
            skies.append(record)
track = gpsengine.to_numpy(fixes)

# %% The way, in metres from its first point
figure = pyplot.figure(figsize=(11, 4), layout="constrained")
way = figure.add_subplot(1, 3, 1)
north = (track["latitude"] - track["latitude"][0]) * 111_195
east = (track["longitude"] - track["longitude"][0]) * 111_195 * numpy.cos(numpy.radians(track["latitude"][0]))
drawn = way.scatter(east, north, c=track["speed"] * 3.6, s=4)
figure.colorbar(drawn, label="km/h")
way.set(title=f"{len(track)} fixes", xlabel="east, m", ylabel="north, m", aspect="equal")

# %% The sky, each satellite's way over it
sky = figure.add_subplot(1, 3, 2, projection="polar")
sky.set_theta_zero_location("N")
sky.set_theta_direction(-1)
ways: dict[str, list[tuple[float, float]]] = {}
for epoch in skies:
    for one in epoch.satellites:
        if one.azimuth is not None and one.elevation is not None:
            ways.setdefault(one.name, []).append((numpy.radians(one.azimuth), 90 - one.elevation))
for name, points in ways.items():
    (line,) = sky.plot(*zip(*points), linewidth=1)
    sky.plot(*points[-1], "o", color=line.get_color())
    sky.annotate(name, points[-1], fontsize=8)
sky.set(title=f"{len(ways)} satellites", ylim=(0, 90), yticks=[30, 60, 90])
sky.set_yticklabels(["60", "30", "0"])

# %% The signals over time
signals = figure.add_subplot(1, 3, 3)
for name in ways:
    levels = [(n, one.signal) for n, epoch in enumerate(skies) for one in epoch.satellites if one.name == name]
    signals.plot(*zip(*levels), linewidth=1, label=name)
signals.set(title="signals", xlabel="epoch", ylabel="as the receiver gives them")
signals.legend(fontsize=6, ncols=2)

# %%
figure.savefig(picture, dpi=80)
print(f"{len(track)} fixes and {len(skies)} skies in {picture}")
