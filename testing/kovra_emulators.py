"""The two emulators for tests of the C interface and the Python package.

Starts kovra-acquirer-sim and kovra-pinpad-sim (paths in $KOVRA_ACQUIRER_SIM
and $KOVRA_PINPAD_SIM), waits for their ready lines, and writes an Info.plist
that points the library at them. A missing emulator is an error, never a skip.

As a program it runs a command with the emulators up:
    kovra_emulators.py [--fault JSON]... -- PROGRAM [ARGS]
with KOVRA_INFO (the Info.plist) and KOVRA_DATA_DIR (an empty data
directory) in its environment; its exit status is the program's.
"""

import json
import os
import plistlib
import queue
import subprocess
import sys
import tempfile
import threading
import time

START_TIMEOUT = 30


def _binary(variable):
    path = os.environ.get(variable)
    if not path or not os.access(path, os.X_OK):
        raise RuntimeError(f"${variable} must name the built emulator (got {path!r})")
    return path


def _lines(process):
    """The process's output lines, read by a thread so that waiting can time out."""
    lines = queue.Queue()

    def read():
        for line in process.stdout:
            lines.put(line.decode().rstrip("\n"))
        lines.put(None)

    threading.Thread(target=read, daemon=True).start()
    return lines


def _ready_line(lines, prefix, log):
    deadline = time.monotonic() + START_TIMEOUT
    while (left := deadline - time.monotonic()) > 0:
        try:
            line = lines.get(timeout=left)
        except queue.Empty:
            break
        if line is None:
            break
        if line.startswith(prefix):
            return line[len(prefix):]
    with open(log, errors="replace") as errors:
        raise RuntimeError(f"{os.path.basename(log)}: the emulator did not start: {errors.read()[-2000:]}")


class Emulators:
    """Both emulators in a temporary directory; `faults` are PIN pad fault rules."""

    def __init__(self, faults=()):
        self._directory = tempfile.TemporaryDirectory(prefix="kovra-emulators-")
        self.directory = self._directory.name
        self.data_directory = os.path.join(self.directory, "data")
        self.info_file = os.path.join(self.directory, "Info.plist")
        self._faults = list(faults)
        self._processes = []

    def _start(self, variable, arguments, log):
        process = subprocess.Popen([_binary(variable), *arguments], stdin=subprocess.DEVNULL,
                                   stdout=subprocess.PIPE, stderr=open(os.path.join(self.directory, log), "w"))
        self._processes.append(process)
        return process

    def __enter__(self):
        try:
            acquirer = self._start("KOVRA_ACQUIRER_SIM", ["--port", "0", "--state", self._path("acquirer")],
                                   "acquirer.log")
            lines = _lines(acquirer)
            url = _ready_line(lines, "kovra-acquirer-sim ready at ", self._path("acquirer.log"))
            ca = _ready_line(lines, "ca: ", self._path("acquirer.log"))
            scenario = self._path("scenario.json")
            with open(scenario, "w") as out:
                json.dump({"faults": self._faults}, out)
            pinpad = self._start("KOVRA_PINPAD_SIM", ["--link", self._path("pinpad"), "--state",
                                                      self._path("pinpad-state"), "--scenario", scenario],
                                 "pinpad.log")
            _ready_line(_lines(pinpad), "kovra-pinpad-sim ready on ", self._path("pinpad.log"))
            host = url.split("://", 1)[1]
            with open(self.info_file, "wb") as out:
                plistlib.dump({
                    "Kovra Pinpad": self._path("pinpad"), "Kovra Pinpad Write Pause": 0,
                    "Kovra TMS Host": host, "Kovra Authorizer Host": host, "Kovra Mail Host": host,
                    "Kovra CA File": ca, "Kovra Reachability Host": "127.0.0.1",
                    "Kovra Support Mailbox": "suporte@kovra.example", "CFBundleVersion": "1.0",
                    "Kovra Bundle Identifier": "br.com.kovra.tests",
                }, out)
            os.makedirs(self.data_directory)
        except BaseException:
            self.__exit__(None, None, None)
            raise
        return self

    def _path(self, name):
        return os.path.join(self.directory, name)

    def outbox(self):
        """The mails the acquirer's mail service accepted, oldest first."""
        folder = self._path("acquirer/outbox")
        names = sorted(os.listdir(folder), key=lambda n: int(n.split(".")[0])) if os.path.isdir(folder) else []
        return [json.load(open(os.path.join(folder, n))) for n in names]

    def __exit__(self, *exception):
        for process in self._processes:
            process.terminate()
        for process in self._processes:
            try:
                process.wait(timeout=5)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        self._directory.cleanup()


def main(arguments):
    faults = []
    while arguments and arguments[0] == "--fault":
        faults.append(json.loads(arguments[1]))
        arguments = arguments[2:]
    if not arguments or arguments[0] != "--" or len(arguments) < 2:
        print(__doc__, file=sys.stderr)
        return 2
    with Emulators(faults) as emulators:
        environment = dict(os.environ, KOVRA_INFO=emulators.info_file,
                           KOVRA_DATA_DIR=emulators.data_directory)
        return subprocess.call(arguments[1:], env=environment)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
