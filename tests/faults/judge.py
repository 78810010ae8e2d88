"""The rules that a run under a fault is held to. Each broken rule is a (kind, detail)."""
import errno
import os

import wording

# Calls after whose failure nobody knows what stands on the disk; no second one helps.
SURELY_LOST = ("close", "sync", "rename")
MOST_LOST = 2  # frames that one failed read may cost
ERRORS = {name: getattr(errno, name) for name in ("EIO", "ENOSPC", "EDQUOT")}


def judge(fault, outcome, film, undisturbed, intact, same_bytes):
    """`film`: what the output holds now, None when it cannot be opened; `undisturbed`: what it
    holds without the fault; `intact`: the source's bytes are the same as before."""
    broken = list(ends_badly(fault, outcome))
    if not intact:
        broken.append(("source changed", "its bytes are not the same as before"))
    if broken:
        return broken
    # Of a film that broke off nobody knows how long it was before it got shorter.
    if outcome.went_well and not (fault.how == "shrink" and outcome.losses):
        return list(judge_done(fault, outcome, film, undisturbed, same_bytes))
    broken += judge_message(fault, outcome)
    broken += judge_count(outcome, film)
    if is_harmless(fault):
        broken.append(("needless failure", outcome.message))
    elif fault.place == "source" and fault.call in ("read", "seek"):
        broken += judge_salvage(fault, outcome, film, undisturbed)
    return broken


def ends_badly(fault, outcome):
    if fault.place == "address-space" and "loading shared libraries" in outcome.stderr:
        return  # it never came to our program
    if outcome.hangs:
        yield "hang", "no end"
    elif outcome.status < 0:
        yield "crash", "killed by signal %d" % -outcome.status
    elif "terminate called" in outcome.stderr:
        yield "crash", outcome.stderr.strip()
    elif outcome.status not in (0, 1):
        yield "crash", "exit status %d" % outcome.status
    elif len([e for e in outcome.events if e.get("event") in ("done", "failed")]) > 1:
        yield "events", "more than one end is told"


def judge_done(fault, outcome, film, undisturbed, same_bytes):
    done = outcome.event("done")
    if not done:
        yield "events", "nothing told as done"
    elif outcome.status == 0 and outcome.losses:
        yield "events", "status 0 with losses"
    if not same_bytes and (film is None or film.frames != undisturbed.frames):
        yield "silent loss", "done, but " + difference(film, undisturbed)
    elif not same_bytes and film.problem:
        yield "silent loss", "done, but the output: " + film.problem
    if fault.place == "output" and fault.call in SURELY_LOST:
        yield "silent loss", "done, though %s failed" % fault.call
    if done and not fault.place and "frames" not in done:
        yield "frames untold", "the done event has no number of frames"
    if done and done.get("frames") not in (None, len(undisturbed.frames)):
        yield "wrong count", "done with %s frames, %d stand in the output" % (
            done["frames"], len(undisturbed.frames))


def difference(film, undisturbed):
    if film is None:
        return "the output cannot be opened"
    if len(film.frames) != len(undisturbed.frames):
        return "%d of %d frames" % (len(film.frames), len(undisturbed.frames))
    return "%d frames have other bytes" % len(differing(film, undisturbed))


def differing(film, undisturbed):
    return [i for i, (a, b) in enumerate(zip(film.frames, undisturbed.frames)) if a != b]


def judge_message(fault, outcome):
    if outcome.event("done"):
        if not outcome.losses:
            yield "losses untold", "done, status 1, and no losses"
        return
    # What was asked before anything was opened is told as skipped, or on standard error.
    message = outcome.message or outcome.stderr.strip()
    if not message or "\n" in message:
        yield "message", "not one line: %r" % message
    reason = reason_of(fault)
    if reason and "(%s)" % reason not in message and not message.endswith(reason):
        yield "reason untold", "%r lacks (%s)" % (message, reason)


def reason_of(fault):
    """The system's words for the fault; None where it has none."""
    if fault.place == "size":
        return os.strerror(errno.EFBIG)
    if fault.how in ("short", "bad"):
        return os.strerror(errno.ENOSPC if fault.call == "write" else errno.EIO)
    return os.strerror(ERRORS[fault.how]) if fault.how in ERRORS else None


def is_harmless(fault):
    return fault.how in ("half", "EINTR") or fault.place == "thread" or not fault.place


def judge_count(outcome, film):
    held = wording.holds(outcome.message)
    told = outcome.last.get("frames", held)
    stands = None if film is None else film.length if film.length is not None else len(film.frames)
    if told is None:
        if stands:
            yield "frames untold", "the output has %d: %r" % (stands, outcome.message)
    elif held is not None and held != told:
        yield "wrong count", "%d in the event, %d in the message" % (told, held)
    elif stands is None and told:
        yield "unopenable", "%d frames told: %r" % (told, outcome.message)
    elif stands is not None and told != stands and not (
            # A film of one or two frames cannot be read back.
            film.problem and film.length is None and told < 3):
        yield "wrong count", "%d frames told, %d stand in the output: %r" % (
            told, stands, outcome.message)


def judge_salvage(fault, outcome, film, undisturbed):
    """After an unreadable source: all that could be read is there and the rest is told."""
    if not film or not film.frames:
        return
    if film.problem:
        yield "unfinished output", film.problem
    missing, total, first = wording.missing(outcome.message)
    changed = differing(film, undisturbed)
    whole, stand = len(undisturbed.frames), len(film.frames)
    # Sound that was lost makes other bytes in frames that are there.
    excused = outcome.event("done") or wording.tells_lost_sound(outcome.message)
    # A file that was shorter before it was opened: what is left is told as salvaged.
    if missing is None and fault.how == "shrink" and outcome.last.get("losses", {}).get("frames_salvaged"):
        return
    if missing is None:
        if stand < whole or (changed and not excused):
            yield "frames untold", "what is missing is not told: %r" % outcome.message
        return
    if fault.how == "shrink" and total < whole:
        whole = total  # it was shorter before it was measured
    if stand + missing < whole or (len(changed) > missing and not excused):
        yield "wrong count", "%d missing told; %d of %d frames stand there, %d differ: %r" % (
            missing, stand, whole, len(changed), outcome.message)
    if missing > MOST_LOST and not fault.on and fault.how != "shrink":
        yield "lost frames", "one read failed, %d frames are lost" % missing
    if total != whole:
        yield "wrong count", "a film of %d frames is told to have %d" % (whole, total)
    gap = changed[0] if changed else stand
    if first is not None and gap < whole and first not in (gap, gap + 1) and not excused:
        yield "wrong count", "first missing told %d, is %d" % (first, gap)
