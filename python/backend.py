"""Builds the wheel: CMake compiles and installs the module, which is then packed as PEP 427 has it.

It needs nothing but Python, CMake, Ninja, a compiler and pybind11's headers, and no network.
"""

import base64
import hashlib
import pathlib
import re
import subprocess
import sys
import sysconfig
import zipfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = ROOT / "build" / "python"
VERSION = re.search(r"VERSION (\d+\.\d+\.\d+)", (ROOT / "CMakeLists.txt").read_text()).group(1)

METADATA = f"""Metadata-Version: 2.1
Name: gpsengine
Version: {VERSION}
Summary: GPS receivers of nineteen models: fixes, satellites, raw data and commands
Requires-Python: >=3.10
Provides-Extra: numpy
Requires-Dist: numpy; extra == "numpy"
"""


def _digest(data):
    return "sha256=" + base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()


def _install(build_type):
    """Compiles, and gives the folder that holds the package."""
    folder = BUILD / "wheel-root"
    options = [f"-DPython_EXECUTABLE={sys.executable}", "-DGPSENGINE_PYTHON_DIR=.", f"-DCMAKE_BUILD_TYPE={build_type}"]
    for command in (
        ["cmake", "--preset", "python", *options],
        ["cmake", "--build", "--preset", "python"],
        ["cmake", "--install", str(BUILD), "--component", "python", "--strip", "--prefix", str(folder)],
    ):
        subprocess.run(command, cwd=ROOT, check=True)
    return folder


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    folder = _install((config_settings or {}).get("build-type", "Release"))
    tag = f"cp{sys.version_info.major}{sys.version_info.minor}"
    platform = re.sub(r"[^a-z0-9]", "_", sysconfig.get_platform())
    tags = f"{tag}-{tag}-{platform}"
    info = f"gpsengine-{VERSION}.dist-info"
    files = {str(path.relative_to(folder)): path.read_bytes() for path in sorted((folder / "gpsengine").iterdir())}
    files[f"{info}/METADATA"] = METADATA.encode()
    files[f"{info}/WHEEL"] = f"Wheel-Version: 1.0\nGenerator: gpsengine\nRoot-Is-Purelib: false\nTag: {tags}\n".encode()
    record = [f"{name},{_digest(data)},{len(data)}" for name, data in files.items()]
    files[f"{info}/RECORD"] = "\n".join([*record, f"{info}/RECORD,,", ""]).encode()
    name = f"gpsengine-{VERSION}-{tags}.whl"
    with zipfile.ZipFile(pathlib.Path(wheel_directory) / name, "w", zipfile.ZIP_DEFLATED) as wheel:
        for path, data in files.items():
            wheel.writestr(path, data)
    return name


def build_sdist(sdist_directory, config_settings=None):
    raise NotImplementedError("the sources are those of the whole repository: build a wheel of that")
