"""Sources, undisturbed conversions and single runs of the sweep, in a folder of its own."""
import os
import threading
from dataclasses import dataclass

from clips import FRAME_BYTES, FRAMES, SOURCES
from converter import OUTPUT, SOURCE, Fault, Film, checksum, empty_folder, remove
from judge import judge


@dataclass
class Undisturbed:
    """A conversion when nothing goes wrong."""
    outcome: object
    film: Film
    bytes: int     # checksum of the output's files
    largest: int   # bytes of the largest of them


@dataclass
class Result:
    pair: object
    fault: Fault
    outcome: object
    film: Film
    broken: list

    def name(self):
        return "%s %s" % (self.pair.name(), self.fault.name())


class SetUpError(Exception):
    """The undisturbed program does not do what the sweep stands on."""


class Workshop:
    def __init__(self, folder, converter):
        self.folder, self.converter = folder, converter
        self.local = threading.local()
        self.raw = os.path.join(folder, "film.dv")
        self.sources, self.intact = {}, {}

    def make_sources(self, names):
        long = os.path.join(self.folder, "long.dv")
        self.must(["--make-sample", long, "--sample-seconds", "1"])
        with open(long, "rb") as file, open(self.raw, "wb") as film:
            film.write(file.read(FRAMES * FRAME_BYTES))
        for name in names:
            self.sources[name] = self.make_source(name, os.path.join(self.folder, name))
            self.intact[name] = checksum(os.path.dirname(self.sources[name]))

    def make_source(self, name, folder):
        return SOURCES[name](empty_folder(folder, SOURCE), self.raw, self.convert)

    def convert(self, path, output, *options):
        self.must(["--threads", "1", *options, path, "-o", output])
        return output

    def must(self, arguments):
        outcome = self.converter.run(arguments)
        if outcome.status != 0:
            raise SetUpError("%s: %s" % (" ".join(arguments), outcome.stderr.strip()))

    def bench(self):
        """This thread's folder. Outputs that tell their own path have others in each."""
        if not hasattr(self.local, "folder"):
            self.local.folder = empty_folder(self.folder, "bench-%d" % threading.get_ident())
        return self.local.folder

    def run(self, pair, fault=Fault(), counts=None):
        """Answers the outcome, the output's path, and whether the source kept its bytes."""
        shrinks = fault.how == "shrink"
        source = self.make_source(pair.source, os.path.join(self.bench(), "shrinking")) \
            if shrinks else self.sources[pair.source]
        output = os.path.join(empty_folder(self.bench(), OUTPUT),
                              "out." + pair.destination.extension)
        arguments = [*pair.options, *pair.destination.options, source, "-o", output]
        outcome = self.converter.run(arguments, fault, counts)
        intact = shrinks or checksum(os.path.dirname(source)) == self.intact[pair.source]
        return outcome, output, intact

    def undisturbed(self, pair):
        outcome, output, _ = self.run(pair)
        if not outcome.went_well:
            raise SetUpError("%s: %s" % (pair.name(), outcome.stderr.strip()))
        folder = os.path.dirname(output)
        film = self.converter.film(output, self.bench())
        if "--to" not in pair.options and len(film.frames) != FRAMES:
            raise SetUpError("%s: %d frames" % (pair.name(), len(film.frames)))
        largest = max(os.path.getsize(os.path.join(folder, name)) for name in os.listdir(folder))
        return Undisturbed(outcome, film, checksum(folder), largest)

    def counts(self, pair, place):
        """How many there are of each call on the files of this place."""
        file = os.path.join(self.bench(), "counts")
        text = SOURCE if place == "source" else OUTPUT
        remove(file)
        self.run(pair, counts=("/%s/" % text, file))
        if not os.path.exists(file):
            raise SetUpError("%s: the fault library was not loaded" % pair.name())
        with open(file) as lines:
            counts = {call: int(number) for call, number in map(str.split, lines)}
        if not counts["read" if place == "source" else "write"]:
            raise SetUpError("%s: the fault library sees no calls" % pair.name())
        return counts

    def least_address_space(self, pair):
        """Megabytes with which the conversion succeeds, to the megabyte."""
        low, high = 16, 4096
        while high - low > 1:
            middle = (low + high) // 2
            outcome, _, _ = self.run(pair, Fault("address-space", how="limit", at=middle))
            low, high = (low, middle) if outcome.status == 0 else (middle, high)
        return high

    def judged(self, pair, undisturbed):
        """The undisturbed run itself."""
        broken = judge(Fault(), undisturbed.outcome, undisturbed.film, undisturbed.film, True, True)
        return Result(pair, Fault(), undisturbed.outcome, undisturbed.film, broken)

    def case(self, pair, fault, undisturbed):
        outcome, output, intact = self.run(pair, fault)
        same = checksum(os.path.dirname(output)) == undisturbed.bytes
        film = undisturbed.film if same else self.converter.film(output, self.bench())
        broken = judge(fault, outcome, film, undisturbed.film, intact, same)
        return Result(pair, fault, outcome, film, broken)
