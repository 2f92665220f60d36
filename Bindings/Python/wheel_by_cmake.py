# SPDX-License-Identifier: Apache-2.0
"""Builds a wheel of the package by CMake: what PEP 517 asks of a build backend, with Python's own library alone.

The wheel has the native module and the library in one folder. QUILL_CMAKE_ARGS passes further options to CMake.
"""

import base64
import hashlib
import os
import pathlib
import re
import shlex
import subprocess
import sys
import sysconfig
import tempfile
import zipfile

SOURCE = pathlib.Path(__file__).resolve().parents[2]
PACKAGE = "quillcamera"


def version():
    return re.search(r"VERSION (\d+(\.\d+)*)\n", (SOURCE / "CMakeLists.txt").read_text()).group(1)


def metadata():
    return (
        f"Metadata-Version: 2.1\nName: {PACKAGE}\nVersion: {version()}\n"
        "Summary: Cameras, however they are connected, through one model\nLicense: Apache-2.0\n"
        "Requires-Python: >=3.9\nRequires-Dist: numpy\n"
    )


def build(folder):
    """Builds and installs the package below a folder."""
    options = {
        "CMAKE_BUILD_TYPE": "Release",
        "CMAKE_UNITY_BUILD": "ON",
        "CMAKE_UNITY_BUILD_BATCH_SIZE": "24",
        "CMAKE_INSTALL_LIBDIR": PACKAGE,  # the library lies beside the module
        "CMAKE_INSTALL_PREFIX": f"{folder}/wheel",
        "Python_EXECUTABLE": sys.executable,
        "QUILL_BUILD_GENICAM_DEVICES": "OFF",
        "QUILL_BUILD_EXAMPLES": "OFF",
        "QUILL_BUILD_TESTS": "OFF",
        "QUILL_BUILD_TOOLS": "OFF",
        "QUILL_CAMERA_LIST_FILE": "/usr/share/quillcamera/TestCameraList.json",
        "QUILL_PYTHON_DIR": ".",
    }
    arguments = [f"-D{name}={value}" for name, value in options.items()]
    arguments += shlex.split(os.environ.get("QUILL_CMAKE_ARGS", ""))
    build_folder = os.environ.get("QUILL_BUILD_FOLDER", f"{folder}/build")
    for command in (
        ["cmake", "-S", SOURCE, "-B", build_folder, "-G", "Ninja", *arguments],
        ["cmake", "--build", build_folder, "--parallel", "2"],
        ["cmake", "--install", build_folder],
    ):
        subprocess.run(command, check=True, stdout=sys.stderr)
    return pathlib.Path(folder, "wheel", PACKAGE)


def tag():
    python = f"cp{sys.version_info[0]}{sys.version_info[1]}"
    platform = sysconfig.get_platform().replace("-", "_").replace(".", "_")
    return f"{python}-{python}-{platform}"


def information():
    """The name and the files of the folder that describes the wheel."""
    wheel = f"Wheel-Version: 1.0\nGenerator: cmake\nRoot-Is-Purelib: false\nTag: {tag()}\n"
    return f"{PACKAGE}-{version()}.dist-info", {"METADATA": metadata(), "WHEEL": wheel}


def prepare_metadata_for_build_wheel(metadata_directory, config_settings=None):
    name, files = information()
    folder = pathlib.Path(metadata_directory, name)
    folder.mkdir()
    for file, text in files.items():
        (folder / file).write_text(text)
    return name


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    name = f"{PACKAGE}-{version()}-{tag()}.whl"
    records = []

    with tempfile.TemporaryDirectory() as work:
        package = build(work)
        if not list(package.glob("_quillcamera.*.so")):
            raise RuntimeError("The Python package was left out: python3-dev, python3-numpy or pybind11-dev is missing.")
        with zipfile.ZipFile(pathlib.Path(wheel_directory, name), "w", zipfile.ZIP_DEFLATED) as wheel:

            def add(path, data):
                digest = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()
                records.append(f"{path},sha256={digest},{len(data)}\n")
                wheel.writestr(path, data)

            for file in sorted(package.iterdir()):
                # Of a library and the links to it, only the name by which it is loaded is wanted.
                if file.is_file() and not re.search(r"\.so(\.\d+){2,}$|^libquillcamera\.so$", file.name):
                    add(f"{PACKAGE}/{file.name}", file.read_bytes())
            folder, files = information()
            for file, text in files.items():
                add(f"{folder}/{file}", text.encode())
            wheel.writestr(f"{folder}/RECORD", "".join(records) + f"{folder}/RECORD,,\n")
    return name


def build_sdist(sdist_directory, config_settings=None):
    raise RuntimeError("There is no source archive of the package alone: a wheel is built in the source tree.")
