"""What the program says, taken apart. The one place that knows its words."""
import re

# "5 of 12 frames are missing, the first one is number 3"
MISSING = re.compile(r"(\d+) (?:frames? )?(?:out )?of (?:the )?(\d+)")
FIRST_MISSING = re.compile(r"\bfirst\b\D*(\d+)")
# "The file holds 7 frames."
HOLDS = re.compile(r"\bholds (\d+|no|one) frames?\b")
# A film that is too short to be read tells its length.
FRAMES = re.compile(r"\b(\d+|no|one) frames?\b")
SOUND_LOST = re.compile(r"\(audio\)|\(audio track\)|\bsound\b", re.IGNORECASE)
WORDS = {"no": 0, "one": 1}


def number(text):
    return WORDS[text] if text in WORDS else int(text)


def missing(message):
    """How many frames of how many, and the first one's number; None for what is not said."""
    counts = MISSING.search(message)
    first = FIRST_MISSING.search(message)
    return (int(counts[1]) if counts else None, int(counts[2]) if counts else None,
            int(first[1]) if first else None)


def holds(message):
    found = HOLDS.search(message)
    return number(found[1]) if found else None


def length_of_short_film(message):
    found = FRAMES.search(message)
    return number(found[1]) if found else None


def tells_lost_sound(message):
    return bool(SOUND_LOST.search(message))


def losses(event):
    """True when an event tells losses; warnings are none."""
    told = event.get("losses")
    if isinstance(told, dict):
        return any(told.values())
    return bool(told)
