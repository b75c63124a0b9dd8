"""Runs the examples in the documentation of the modules."""

import doctest
import sys

import gpsengine
import gpsengine._commands
import gpsengine._sources

results = [doctest.testmod(module) for module in (gpsengine, gpsengine._commands, gpsengine._sources)]
attempted = sum(result.attempted for result in results)
print(f"{attempted} examples in the documentation")
sys.exit(attempted == 0 or any(result.failed for result in results))
