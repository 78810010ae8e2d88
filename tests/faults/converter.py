"""Runs kelvane-convert under a fault and brings back what it did."""
import json
import os
import shutil
import subprocess
import zlib
from dataclasses import dataclass, field

from wording import length_of_short_film, losses

TIMEOUT = 60  # seconds
SOURCE, OUTPUT = "kelvane-source", "kelvane-output"  # folders whose names the fault library knows


@dataclass(frozen=True)
class Fault:
    """Where, what and how; `at` counts from 1. Without a `call` nothing goes wrong."""
    place: str = ""  # "source", "output", "memory", "thread", "size", "address-space"
    call: str = ""
    how: str = ""
    on: bool = False  # all later calls too
    at: int = 0       # number of the call; limits: bytes of a file, megabytes of memory

    def kind(self):
        parts = (self.place, self.call if self.call != self.place else "", self.how,
                 "on" if self.on else "")
        return "-".join(part for part in parts if part) or "undisturbed"

    def name(self):
        return "%s/%d" % (self.kind(), self.at)

    def environment(self):
        if not self.call:
            return {}
        values = {"CALL": self.call, "HOW": self.how, "AT": str(self.at)}
        if self.on:
            values["ON"] = "1"
        if self.place in ("source", "output"):
            values["PATH"] = "/%s/" % (SOURCE if self.place == "source" else OUTPUT)
        return values

    def prefix(self):
        limit = {"size": "--fsize=%d" % self.at, "address-space": "--as=%d" % (self.at << 20)}
        return ["prlimit", limit[self.place]] if self.place in limit else []


@dataclass
class Outcome:
    status: int
    stderr: str
    hangs: bool = False
    events: list = field(default_factory=list)

    def event(self, name):
        return next((event for event in self.events if event.get("event") == name), None)

    @property
    def last(self):
        """The event that ends the file, or an empty one."""
        return self.event("done") or self.event("failed") or {}

    @property
    def message(self):
        return str(self.last.get("message", ""))

    @property
    def losses(self):
        return losses(self.last)

    @property
    def went_well(self):
        """Done, with no losses but that its source was salvaged."""
        told = self.last.get("losses") or {}
        return self.status == 0 or bool(self.event("done") and set(told) == {"frames_salvaged"})


@dataclass
class Film:
    """A file as our own reader has it: a checksum a frame, brought into raw DV with its sound."""
    frames: list
    problem: str = ""   # what the reader said when it did not end well
    length: int = None  # when the reader only said it


class Converter:
    def __init__(self, program, library):
        self.program, self.library = program, library
        self.films = {}

    def run(self, arguments, fault=Fault(), counts=None):
        """`counts`: (text in the paths, file) to count calls on these files."""
        values = fault.environment()
        if counts:
            values["PATH"], values["COUNTS"] = counts
        environment = dict(os.environ, LC_ALL="C")
        for name, value in values.items():
            environment["KELVANE_FAULT_" + name] = value
        if values:
            environment["LD_PRELOAD"] = self.library
        command = fault.prefix() + [self.program, "--progress", "json"] + arguments
        process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL, text=True,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   errors="replace")
        hangs = False
        try:
            out, err = process.communicate(timeout=TIMEOUT)
        except subprocess.TimeoutExpired:
            process.kill()
            out, err = process.communicate()
            hangs = True
        return Outcome(process.returncode, err, hangs, list(events_of(out)))

    def film(self, path, scratch):
        """What the file at `path` holds; None when it is not there or cannot be opened."""
        if not os.path.exists(path):
            return None
        key = checksum(os.path.dirname(path)), path.rpartition(".")[2]
        if key not in self.films:
            self.films[key] = self.read_back(path, scratch)
        return self.films[key]

    def read_back(self, path, scratch):
        if path.endswith(".dv"):
            return raw_film(path)
        back = os.path.join(scratch, "back.dv")
        remove(back)
        outcome = self.run(["--threads", "1", "--no-companion-audio", "--format", "dv",
                            path, "-o", back])
        film = raw_film(back) if os.path.exists(back) else Film([])
        remove(back)
        if outcome.status == 0:
            return film
        film.problem = outcome.message or outcome.stderr.strip() or "status %d" % outcome.status
        if not film.frames:
            film.length = length_of_short_film(film.problem)
            if film.length is None and outcome.status == 1 and \
                    self.run(["--describe", path]).status != 0:
                return None
        return film


def raw_film(path):
    with open(path, "rb") as file:
        data = file.read()
    size = 144000 if len(data) > 3 and data[3] & 0x80 else 120000
    frames = [zlib.crc32(data[at:at + size]) for at in range(0, len(data) // size * size, size)]
    return Film(frames, "a piece of a frame at the end" if len(data) % size else "")


def events_of(text):
    for line in text.splitlines():
        try:
            event = json.loads(line)
        except ValueError:
            event = {"event": "no JSON", "text": line}
        yield event


def checksum(folder):
    """Of all files in a folder, with their names."""
    total = 0
    for name in sorted(os.listdir(folder)):
        with open(os.path.join(folder, name), "rb") as file:
            total = zlib.crc32(file.read(), zlib.crc32(name.encode(), total))
    return total


def remove(path):
    if os.path.isdir(path):
        shutil.rmtree(path)
    elif os.path.exists(path):
        os.remove(path)


def empty_folder(*parts):
    path = os.path.join(*parts)
    remove(path)
    os.makedirs(path)
    return path
