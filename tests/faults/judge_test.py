#!/usr/bin/env python3
"""The rules of the sweep: what a good program says passes, and each way to lose something fails."""
import sys
import unittest

sys.dont_write_bytecode = True
from converter import Fault, Film, Outcome  # noqa: E402
from judge import judge  # noqa: E402

WHOLE = Film(list(range(100, 112)))
READ = Fault("source", "read", "EIO", at=7)
BAD_PAGE = Fault("source", "read", "bad", at=7)
READ_ON = Fault("source", "read", "EIO", on=True, at=7)
SHRINK = Fault("source", "read", "shrink", at=7)
WRITE = Fault("output", "write", "ENOSPC", on=True, at=7)
CLOSE = Fault("output", "close", "EDQUOT", at=1)
HALF = Fault("output", "write", "half", on=True, at=1)
MEMORY = Fault("memory", "memory", "ENOMEM", at=1)
SIZE = Fault("size", how="limit", at=1000)
REPEATED = Film([100, 101, 102, 3, *range(104, 112)])
ONE_MISSING = ("Error reading source file (video) ! 1 of 12 frames is missing, the first is number "
               "3. (Input/output error)")


def run(status, event="failed", stderr="", **fields):
    return Outcome(status, stderr, events=[{"event": "start"}, {"event": event, **fields}])


def failed(message, **fields):
    return run(1, message=message, **fields)


def film(count):
    return Film(WHOLE.frames[:count])


def broken(fault, outcome, now, intact=True):
    return {kind for kind, _ in
            judge(fault, outcome, now, WHOLE, intact, now is not None and now is WHOLE)}


class Judge(unittest.TestCase):
    def test_what_a_good_program_does(self):
        rows = [
            (Fault(), run(0, "done", frames=12), WHOLE),
            (HALF, run(0, "done", frames=12, losses={}), WHOLE),
            (READ, run(0, "done", frames=12), Film(list(WHOLE.frames))),  # read a second time
            (READ, failed(ONE_MISSING, frames=12), REPEATED),
            (BAD_PAGE, failed(ONE_MISSING, frames=12), REPEATED),
            (READ, failed("Error opening source file. (Input/output error)", frames=0), None),
            (READ, failed("Error reading source file (audio) ! 0.04 seconds are missing. "
                          "(Input/output error)", frames=12), Film([0, *WHOLE.frames[1:]])),
            (READ_ON, failed("Error reading source file (video) ! 6 of 12 frames are missing, the "
                             "first is number 6. (Input/output error)", frames=6), film(6)),
            (SHRINK, failed("Error reading source file (video) ! 7 of 12 frames are missing, the "
                            "first is number 5.", frames=5), film(5)),
            (SHRINK, failed("Error reading source file (video) ! 1 of 6 frames is missing, the "
                            "first is number 5.", frames=5), film(5)),
            (READ, run(1, "done", frames=12, losses={"silenced": 1}), REPEATED),
            (WRITE, failed("Write error in destination file (video track)! The file holds 4 "
                           "frames. (No space left on device)", frames=4), film(4)),
            (WRITE, failed("Write error in destination file (video track)! The file holds no "
                           "frames. (No space left on device)", frames=0), None),
            (WRITE, failed("Write error in destination file (audio track)! The file holds 2 "
                           "frames. (No space left on device)", frames=2),
             Film([], "Error reading source file (video) ! The film has 2 frames.", 2)),
            (CLOSE, failed("Write error in destination file (video track)! The file holds 12 "
                           "frames. (Disk quota exceeded)", frames=12), WHOLE),
            (MEMORY, failed("Not enough memory.", frames=0), None),
        ]
        for fault, outcome, now in rows:
            self.assertEqual(set(), broken(fault, outcome, now), (fault.name(), outcome.message))

    def test_what_is_lost_without_a_word(self):
        done = run(0, "done", frames=12)
        twelve = ONE_MISSING.replace("1 of 12", "%d of %d")
        rows = [
            ("silent loss", READ, done, film(7)),
            ("silent loss", READ, done, REPEATED),
            ("silent loss", WRITE, done, None),
            ("silent loss", CLOSE, done, WHOLE),
            ("events", READ, run(0, "done", losses={"unread": 1}), WHOLE),
            ("events", READ, run(0, "failed", message="x"), WHOLE),
            ("losses untold", READ, run(1, "done", frames=12, losses=[]), REPEATED),
            ("wrong count", READ, run(0, "done", frames=13), WHOLE),
            ("wrong count", READ, failed(twelve % (1, 13), frames=12), REPEATED),
            ("wrong count", READ, failed(ONE_MISSING, frames=11), REPEATED),
            ("wrong count", READ, failed(ONE_MISSING, frames=9), film(9)),
            ("wrong count", READ, failed(ONE_MISSING.replace("number 3", "number 8"), frames=12),
             REPEATED),
            ("wrong count", READ, failed(ONE_MISSING, frames=12),
             Film([1, 2, *WHOLE.frames[2:]])),
            ("frames untold", Fault(), run(0, "done"), WHOLE),
            ("wrong count", SHRINK, failed("1 of 6 frames is missing.", frames=4), film(4)),
            ("lost frames", BAD_PAGE, failed(twelve % (6, 12), frames=6), film(6)),
            ("unfinished output", READ, failed(ONE_MISSING, frames=12),
             Film(REPEATED.frames, "1 of 12 frames is missing")),
            ("frames untold", READ, failed("Error. (Input/output error)"), film(4)),
            ("unopenable", WRITE, failed("Error. (No space left on device)", frames=4), None),
            ("wrong count", WRITE, failed("The file holds 5 frames. (No space left on device)",
                                          frames=4), film(4)),
            ("wrong count", SIZE, failed("The file holds 5 frames. (File too large)", frames=5),
             film(4)),
            ("reason untold", WRITE, failed("The file holds 4 frames.", frames=4), film(4)),
            ("message", WRITE, failed("Two\nlines (No space left on device)", frames=0), None),
            ("message", MEMORY, failed("", frames=0), None),
            ("needless failure", HALF, failed("The file holds 4 frames.", frames=4), film(4)),
        ]
        for kind, fault, outcome, now in rows:
            self.assertIn(kind, broken(fault, outcome, now), (fault.name(), outcome.message))

    def test_bad_ends(self):
        self.assertEqual({"crash"}, broken(MEMORY, Outcome(-6, ""), None))
        self.assertEqual({"crash"}, broken(MEMORY, Outcome(1, "terminate called after"), None))
        self.assertEqual({"crash"}, broken(MEMORY, Outcome(127, ""), None))
        self.assertEqual({"hang"}, broken(READ, Outcome(-9, "", hangs=True), None))
        self.assertEqual({"source changed"},
                         broken(READ, run(0, "done"), WHOLE, intact=False))
        loader = Outcome(127, "error while loading shared libraries: libx.so")
        self.assertEqual(set(), broken(Fault("address-space", how="limit", at=1), loader, None))


if __name__ == "__main__":
    unittest.main()
