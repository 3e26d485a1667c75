"""What the scripts know about movies: how to read one with ffprobe and ffmpeg, and how to kill a
recorder in the middle of one."""

import signal
import subprocess
import threading
import time


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


def record_and_kill(command, after):
    """Runs a recorder that prints "frame TIME" with the time stamp of every frame that it has
    appended. The time stamps that were appended before the kill, `after` seconds into the recording."""
    process = subprocess.Popen(command, stdout=subprocess.PIPE, text=True)
    appended = []
    first = threading.Event()

    def listen():
        for line in process.stdout:
            word, _, rest = line.strip().partition(" ")
            if word == "frame":
                appended.append(int(rest))
                first.set()

    listener = threading.Thread(target=listen)
    listener.start()
    try:
        if not first.wait(20):
            raise AssertionError("the recorder did not start")
        time.sleep(after)
    finally:
        process.send_signal(signal.SIGKILL)
        process.wait()
        listener.join()
    return appended


def missing_at_end(path, appended):
    """How many microseconds the killed recorder's movie misses at its end. What there is has to play."""
    if not path.exists():
        return appended[-1]
    times = frame_times(path)
    if not times:
        raise AssertionError(f"{path} holds no frame")
    # A frame may have got into the file and its line not out of the dying process.
    known = [t for t in times if t <= appended[-1]]
    if known != appended[:len(known)] or len(times) - len(known) > 1:
        raise AssertionError(f"{path} holds other frames than were recorded")
    decode(path)
    return appended[-1] - times[-1]
