"""What the scripts of this folder know about movies: how to read one with ffprobe and ffmpeg."""

import subprocess


def frame_times(path):
    """The time stamps of all frames, in microseconds, as a player gets them."""
    out = subprocess.run(
        ["ffprobe", "-v", "error", "-select_streams", "v:0", "-show_entries", "packet=pts",
         "-of", "csv=p=0", str(path)],
        capture_output=True, text=True, check=False)
    if out.returncode != 0:
        raise AssertionError(f"ffprobe can't read {path}: {out.stderr.strip()}")
    return [int(line.split(",")[0]) for line in out.stdout.split()]


def decode(path):
    """Decodes every frame; a movie that does not decode without a fault fails."""
    out = subprocess.run(
        ["ffmpeg", "-nostdin", "-v", "error", "-xerror", "-i", str(path), "-f", "null", "-"],
        capture_output=True, text=True, check=False)
    if out.returncode != 0 or out.stderr.strip():
        raise AssertionError(f"{path} does not play: {out.stderr.strip()}")


def boxes(path):
    """The types of the outermost boxes; one that is cut short by the file's end is in brackets."""
    found = []
    with open(path, "rb") as file:
        end = file.seek(0, 2)
        at = 0
        while at < end:
            file.seek(at)
            header = file.read(16)
            size = int.from_bytes(header[:4], "big")
            kind = header[4:8].decode("latin-1")
            if size == 1:
                size = int.from_bytes(header[8:16], "big")
            if size < 8 or at + size > end:
                found.append(f"({kind})")
                break
            found.append(kind)
            at += size
    return found
