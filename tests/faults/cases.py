"""Which conversions run under which faults: every one, or a selection that stays short."""
from dataclasses import dataclass

from clips import DESTINATIONS, MORE_FORMATS, SOURCES
from converter import Fault

LIMITS = (1, 300, 3000, 9000)  # bytes that a file's size limit is below the full size


@dataclass(frozen=True)
class Pair:
    """A conversion: a kind of source, a kind of destination, and what else is asked."""
    source: str
    destination: object
    options: tuple = ("--threads", "1")
    label: str = ""

    def name(self):
        return "%s/%s%s" % (self.source, self.destination.name, self.label)


@dataclass
class Kind:
    """A kind of fault and how many calls there are that may have it."""
    fault: Fault
    calls: int

    def at(self, numbers):
        return [Fault(self.fault.place, self.fault.call, self.fault.how, self.fault.on, n)
                for n in sorted(set(numbers)) if 1 <= n <= self.calls]

    def every(self):
        return self.at(range(1, self.calls + 1))

    def some(self, count):
        """The last, one in the middle, the one before the last, the first."""
        return self.at([self.calls, (self.calls + 1) // 2, self.calls - 1, 1][:count])


# Place, call, how, on; and how many of each the short sweep takes.
SOURCE_FAULTS = [
    ("read", "bad", False, 3),
    ("read", "EIO", False, 1),
    ("read", "EIO", True, 2),
    ("read", "short", False, 1),
    ("read", "shrink", False, 2),
    ("open", "EIO", False, 1),
    ("seek", "EIO", False, 1),
    ("close", "EIO", False, 1),
]
OUTPUT_FAULTS = [
    ("write", "ENOSPC", True, 2),
    ("write", "EDQUOT", False, 3),
    ("write", "short", False, 1),
    ("create", "ENOSPC", False, 1),
    ("read", "EIO", False, 2),
    ("seek", "EIO", False, 2),
    ("truncate", "EIO", False, 2),
    ("sync", "EIO", False, 2),
    ("close", "EDQUOT", False, 2),
    ("rename", "EIO", False, 1),
]


def file_pairs(every):
    """Pairs, each with the places that go wrong. The short sweep takes each source once for faults
    of its own and each destination once for its own, with another partner each time."""
    if every:
        return [(Pair(source, destination), ("source", "output"))
                for source in SOURCES for destination in DESTINATIONS]
    # Pictures that are coded again take longer; they have their turn as a source.
    dv = [source for source in SOURCES if source != "huffyuv"]
    return [(Pair(source, DESTINATIONS[(5 * i + 1) % len(DESTINATIONS)]), ("source",))
            for i, source in enumerate(SOURCES)] + \
           [(Pair(dv[(3 * i + 2) % len(dv)], destination), ("output",))
            for i, destination in enumerate(DESTINATIONS)]


def limit_pairs(every):
    """Pairs, each with the limits below the full size; the short sweep gives each two of them."""
    if every:
        return [(Pair("raw-dv", destination), LIMITS)
                for destination in DESTINATIONS + MORE_FORMATS]
    pairs = [pair for pair, places in file_pairs(every) if "output" in places]
    return [(pair, LIMITS[i % 2::2]) for i, pair in enumerate(pairs)]


def memory_pairs(every):
    """A copy, and conversions of the standard with what takes most memory."""
    formats = {destination.name: destination for destination in DESTINATIONS}
    made = []
    for threads in ("1", "2"):
        use = ("--threads", threads)
        made += [
            Pair("raw-dv", formats["mov-audio-64"], use, "-copy-" + threads),
            Pair("raw-dv", formats["avi2-odml"], use + ("--to", "ntsc"), "-ntsc-" + threads),
            Pair("avi1", formats["dv"], use + ("--to", "ntsc", "--resample", "motion",
                                               "--target-interlace", "adaptive"),
                 "-motion-" + threads),
        ]
    return made if every else [made[0], made[4], made[5]]


def file_faults(counts, every, places):
    """`counts`: by place, how many there are of each call."""
    faults = []
    for place in places:
        calls = counts(place)
        rows, moves = (SOURCE_FAULTS, "read") if place == "source" else (OUTPUT_FAULTS, "write")
        # All transfers move half of what was asked, or a signal comes: nobody may notice.
        faults.append(Fault(place, moves, "half", True, 1))
        faults += Kind(Fault(place, moves, "EINTR"), calls[moves]).some(2 if every else 0)
        for call, how, on, picks in rows:
            kind = Kind(Fault(place, call, how, on), calls[call])
            faults += kind.every() if every else kind.some(picks)
    return faults


def limit_faults(largest, limits):
    return [Fault("size", how="limit", at=largest - less) for less in limits if largest > less]


def memory_faults(counts, every):
    faults = []
    for place, how in (("memory", "ENOMEM"), ("thread", "EAGAIN")):
        for on in (False, True):
            kind = Kind(Fault(place, place, how, on), counts[place])
            faults += kind.every() if every else kind.some(2)
    return faults


def address_space_faults(enough):
    """`enough`: the least megabytes with which the run succeeds."""
    steps = (1, 2, 3, 4, 6, 8, 12, 16, 24, 32, 48, 64, 96, 128)
    return [Fault("address-space", how="limit", at=enough - step)
            for step in steps if step < enough]
