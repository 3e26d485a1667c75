#!/usr/bin/env python3
"""Records in real time at three sizes, and has the ffmpeg program encode the same frames with the
same settings at the same pace right after, so that both meet the same machine.

    movie_bench.py MOVIE_BENCH [SECONDS]      default: 20 seconds each

CPU is user and system time of the whole process while it records; "ratio" is ours to ffmpeg's.
"""

import os
import pathlib
import resource
import subprocess
import sys
import tempfile

SIZES = ((640, 480), (1280, 720), (1920, 1080))


def bit_rate(width, height):
    pixels = width * height
    return int(pixels * (4.05 if pixels <= 640 * 480 else 10.1))


def ffmpeg_cpu(width, height, seconds, frames, movie, preset, features):
    rate = bit_rate(width, height)
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run(
        ["ffmpeg", "-nostdin", "-v", "error", "-y", "-re", "-stream_loop", "-1",
         "-f", "rawvideo", "-pix_fmt", "bgra", "-s", f"{width}x{height}", "-r", "30",
         "-i", str(frames), "-t", str(seconds), "-c:v", "libx264", "-preset", preset,
         "-tune", "zerolatency", "-threads", "2", "-g", "30", "-b:v", str(rate),
         "-maxrate", str(rate), "-bufsize", str(rate // 2), "-x264-params", features,
         "-pix_fmt", "yuvj420p", "-f", "mov", str(movie)],
        check=True)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def main():
    program = sys.argv[1]
    seconds = int(sys.argv[2]) if len(sys.argv) > 2 else 20
    print(f"load before: {os.getloadavg()[0]:.1f} on {os.cpu_count()} cores; {seconds} s a size")
    print(f"{'size':>10} {'preset':>10} {'offered':>8} {'written':>8} {'dropped':>8} {'CPU s':>7} "
          f"{'ffmpeg':>7} {'ratio':>6} {'Mbit/s':>7} {'wanted':>7} {'append us':>10} {'finish ms':>10}")
    with tempfile.TemporaryDirectory(prefix="tessary-bench-") as folder:
        frames = pathlib.Path(folder) / "frames.bgra"
        movie = pathlib.Path(folder) / "movie.mp4"
        for width, height in SIZES:
            run = subprocess.run(
                [program, "record", str(width), str(height), str(seconds), movie, frames],
                capture_output=True, text=True, check=True)
            words = run.stdout.split()
            got = dict(zip(words[::2], words[1::2]))
            movie.unlink()
            theirs = ffmpeg_cpu(width, height, seconds, frames, movie, got["preset"],
                                got["features"])
            print(f"{f'{width}x{height}':>10} {got['preset']:>10} {got['offered']:>8} "
                  f"{got['written']:>8} {got['dropped']:>8} {float(got['cpu']):7.2f} {theirs:7.2f} "
                  f"{float(got['cpu']) / theirs:6.2f} {float(got['bits']) / 1e6:7.2f} "
                  f"{bit_rate(width, height) / 1e6:7.2f} {got['append_us']:>10} "
                  f"{got['finish_ms']:>10}")
            for line in run.stderr.splitlines():
                print("    " + line)
    print(f"load after: {os.getloadavg()[0]:.1f}")


if __name__ == "__main__":
    main()
