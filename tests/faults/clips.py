"""The kinds of sources and destinations of the sweep, and the small films that stand for them."""
import os
import struct
import wave
from dataclasses import dataclass

FRAMES = 12
FRAME_BYTES = 144000  # PAL


@dataclass(frozen=True)
class Destination:
    name: str
    options: tuple
    extension: str = "avi"
    is_dv: bool = True


def destination(name, *options, extension="avi", is_dv=True):
    return Destination(name, options or ("--format", name), extension, is_dv)


DESTINATIONS = [
    destination("dv", extension="dv"),
    destination("avi1"),
    destination("avi2"),
    destination("avi1-odml"),
    destination("avi2-odml"),
    destination("avi1-ref"),
    destination("canopus2"),
    destination("matrox"),
    destination("mov", extension="mov"),
    destination("mov-audio-64", extension="mov"),
    destination("avi-yuy2", "--format", "avi2-odml", "--codec", "yuy2", is_dv=False),
    destination("mov-yuv422", "--format", "mov-audio-64", "--codec", "yuv422", extension="mov",
                is_dv=False),
]
MORE_FORMATS = [
    destination("avi2-ref"),
    destination("canopus1"),
    destination("mov-64", extension="mov"),
    destination("mov-audio", extension="mov"),
]

# Each makes its files in a folder and answers the one to convert. `convert` makes a file of the raw
# film with options.
SOURCES = {}


def source(name):
    def note(maker):
        SOURCES[name] = maker
        return maker
    return note


def converted(name, extension, *options):
    def make(folder, raw, convert):
        return convert(raw, os.path.join(folder, "clip." + extension), *options)
    SOURCES[name] = make


@source("raw-dv")
def make_raw_dv(folder, raw, _):
    path = os.path.join(folder, "clip.dv")
    with open(raw, "rb") as film, open(path, "wb") as clip:
        clip.write(film.read())
    return path


@source("raw-dv-wav")
def make_raw_dv_with_wav(folder, raw, convert):
    """The sound beside the film is another one than that in its frames."""
    samples = bytearray()
    for i in range(FRAMES * 48000 // 25):
        samples += struct.pack("<hh", i * 37 % 20000 - 10000, i * 53 % 16000 - 8000)
    with wave.open(os.path.join(folder, "clip.wav"), "wb") as sound:
        sound.setnchannels(2)
        sound.setsampwidth(2)
        sound.setframerate(48000)
        sound.writeframes(bytes(samples))
    return make_raw_dv(folder, raw, convert)


converted("avi1", "avi", "--format", "avi1")
converted("avi2-odml", "avi", "--format", "avi2-odml")
converted("avi1-ref", "avi", "--format", "avi1-ref")
converted("mov-audio", "mov", "--format", "mov-audio-64")
converted("huffyuv", "avi", "--format", "avi2-odml", "--codec", "huffyuv-yuv")


@source("mov-broken-off")
def make_broken_off(folder, raw, convert):
    """A movie without its header; what lies between its frames is nothing."""
    path = convert(raw, os.path.join(folder, "clip.mov"), "--format", "mov")
    with open(path, "rb") as file:
        media = dict(atoms(file.read()))[b"mdat"]
    with open(path, "wb") as file:
        file.write(struct.pack(">I4s", 0, b"mdat"))
        for at in range(0, len(media), FRAME_BYTES):
            file.write(media[at:at + FRAME_BYTES] + bytes(3000))
    return path


@source("mov-external")
def make_external(folder, raw, convert):
    """A movie without media of its own: that of both tracks lies in the file beside it."""
    media = convert(raw, os.path.join(folder, "media.mov"), "--format", "mov-audio-64")
    with open(media, "rb") as file:
        movie = dict(atoms(file.read()))[b"moov"]
    path = os.path.join(folder, "clip.mov")
    with open(path, "wb") as file:
        file.write(atom(b"moov", refer_to(movie, media)))
    return path


def atoms(data):
    at = 0
    while at + 8 <= len(data):
        size, kind = struct.unpack_from(">I4s", data, at)
        head = 8
        if size == 1:
            size, head = struct.unpack_from(">Q", data, at + 8)[0], 16
        size = size or len(data) - at
        yield kind, data[at + head:at + size]
        at += size


def atom(kind, body):
    return struct.pack(">I4s", len(body) + 8, kind) + body


def refer_to(body, path):
    """The atoms of a movie with each data reference replaced by an alias of `path`."""
    alias = struct.pack(">III", 0, 1, 12 + 20 + len(path)) + b"alis" + bytes(4 + 20) + path.encode()
    made = b""
    for kind, inner in atoms(body):
        if kind in (b"trak", b"mdia", b"minf", b"dinf"):
            inner = refer_to(inner, path)
        made += atom(kind, alias if kind == b"dref" else inner)
    return made
