#!/usr/bin/env python3
"""What the program takes over a long time at 1920x1080 and 30 frames a second: memory, threads, open
files and processor, read every ten seconds.

    TESSARY_TEST_SCREEN=2560x1440 tests/ui/with_display bench/endurance.py MINUTES [--record] [--busy]

--record records a movie all the while, and counts the frames that it lacks; --busy keeps one core busy
elsewhere. Leaves build/endurance/<what>.csv and its curves, <what>.png. Exit status 1: memory in the
last minute is more than 5 MB from that of the second, threads or files have become more, or a frame
was lost.
"""

import argparse
import os
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(HERE)
sys.path += [os.path.join(ROOT, 'tests', 'day'), os.path.join(ROOT, 'tests', 'movie')]
from desk import Program, key, wait_for  # noqa: E402

INTERVAL = 10  # seconds
ALLOWED_MB = 5.0
FIELDS = ('seconds', 'resident MB', 'threads', 'files', 'CPU s a second')


def resident(pid):
    with open(f'/proc/{pid}/statm', encoding='ascii') as file:
        return int(file.read().split()[1]) * os.sysconf('SC_PAGE_SIZE') / 1e6


def cpu(pid):
    with open(f'/proc/{pid}/stat', encoding='utf-8') as file:
        fields = file.read().rsplit(')', 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf('SC_CLK_TCK')


def count(pid, what):
    return len(os.listdir(f'/proc/{pid}/{what}'))


def watch(pid, minutes):
    """A row of FIELDS every INTERVAL."""
    rows = []
    start = before = time.monotonic()
    used = cpu(pid)
    while time.monotonic() < start + minutes * 60:
        time.sleep(INTERVAL)
        now, now_used = time.monotonic(), cpu(pid)
        rows.append((now - start, resident(pid), count(pid, 'task'), count(pid, 'fd'),
                     (now_used - used) / (now - before)))
        before, used = now, now_used
        print('{:6.0f} s {:7.1f} MB {:3d} threads {:3d} files {:5.2f} CPU s a second'.format(*rows[-1]),
              flush=True)
    return rows


def mean(rows, begin, end, field=1):
    values = [row[field] for row in rows if begin < row[0] <= end + INTERVAL / 2]
    return sum(values) / len(values)


def draw(rows, title, path):
    """The curves of all fields, one over the other, each from 0 to its largest."""
    width, height, left = 900, 130, 60
    parts = []
    for field in range(1, len(FIELDS)):
        top = 40 + (field - 1) * height
        largest = max(row[field] for row in rows) * 1.1 or 1
        points = ' '.join(f'{left + row[0] / rows[-1][0] * (width - left - 20):.1f},'
                          f'{top + height - 30 - row[field] / largest * (height - 40):.1f}' for row in rows)
        parts.append(f'<text x="{left}" y="{top + 2}">{FIELDS[field]}: {rows[0][field]:.4g} to '
                     f'{rows[-1][field]:.4g}, at most {max(row[field] for row in rows):.4g}</text>'
                     f'<polyline points="{points}" fill="none" stroke="#06c" stroke-width="1.5"/>'
                     f'<path d="M{left} {top + 10}V{top + height - 30}H{width - 20}" fill="none" stroke="#888"/>')
    svg = path[:-4] + '.svg'
    with open(svg, 'w', encoding='utf-8') as file:
        file.write(f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{40 + height * 4}" '
                   f'font-family="sans-serif" font-size="13"><rect width="100%" height="100%" fill="#fff"/>'
                   f'<text x="{left}" y="20" font-weight="bold">{title}</text>{"".join(parts)}</svg>')
    subprocess.run(['convert', svg, path], check=True)
    os.remove(svg)


def frames_in(movie):
    done = subprocess.run(['ffprobe', '-v', 'error', '-select_streams', 'v', '-show_entries',
                           'packet=pts_time', '-of', 'csv=p=0', movie],
                          check=True, text=True, stdout=subprocess.PIPE)
    return sorted(float(line.rstrip(',')) for line in done.stdout.split())


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument('minutes', type=float)
    parser.add_argument('--record', action='store_true')
    parser.add_argument('--busy', action='store_true')
    options = parser.parse_args()
    what = ('recording' if options.record else 'live') + ('-busy' if options.busy else '')
    results = os.path.join(ROOT, 'build', 'endurance')
    os.makedirs(results, exist_ok=True)
    failures = []
    with tempfile.TemporaryDirectory() as folder:
        name = 'tessary-demo'
        settings = os.path.join(os.environ['XDG_CONFIG_HOME'], name)
        os.makedirs(settings)
        with open(os.path.join(settings, name + '.ini'), 'w', encoding='utf-8') as file:
            file.write('[General]\nuniqueID=simulated-microscope\nvideoType=1684890161\nwidth=1920\n'
                       f'height=1080\nimagePath={folder}\nmaxRecord=0\n')
        log = os.path.join(folder, 'log')
        program = Program(os.path.join(ROOT, 'build/release/src/app', name), log)
        busy = subprocess.Popen([sys.executable, '-c', 'while True: pass']) if options.busy else None
        try:
            program.wait_for_picture(1920, 1080)
            time.sleep(5)  # the simulated microscope encodes its loop of frames first
            if options.record:
                key('ctrl+r')
                program.dialog('Record$')
                key('Return')
                movie = wait_for('the movie', lambda: [entry.path for entry in os.scandir(folder)
                                                       if entry.name.endswith('.mp4')])[0]
            rows = watch(program.process.pid, options.minutes)
            if options.record:
                key('Return')
                wait_for('the movie to be finished', lambda: not any(
                    os.path.realpath(f'/proc/{program.process.pid}/fd/{fd}') == movie
                    for fd in os.listdir(f'/proc/{program.process.pid}/fd')))
        finally:
            if busy:
                busy.kill()
                busy.wait()
            program.end()
        if options.record:
            times = frames_in(movie)
            lost = sum(round((b - a) * 30) - 1 for a, b in zip(times, times[1:]))
            print(f'{len(times)} frames in {times[-1] - times[0]:.2f} s, {lost} lost')
            if lost:
                failures.append(f'{lost} frames were lost')
    with open(os.path.join(results, what + '.csv'), 'w', encoding='utf-8') as file:
        file.write(','.join(FIELDS) + '\n')
        file.writelines(','.join(f'{value:.5g}' for value in row) + '\n' for row in rows)
    end = rows[-1][0]
    early, late = mean(rows, 60, 120), mean(rows, end - 60, end)
    summary = (f'{what}, {options.minutes:g} minutes: {early:.1f} MB in the second minute, {late:.1f} in the '
               f'last; {mean(rows, 0, end, 4):.2f} CPU s a second')
    draw(rows, summary, os.path.join(results, what + '.png'))
    print(summary)
    if abs(late - early) > ALLOWED_MB:
        failures.append(f'memory went from {early:.1f} to {late:.1f} MB')
    for field in (2, 3):
        if rows[-1][field] > max(row[field] for row in rows if row[0] <= 120):
            failures.append(f'{FIELDS[field]} became more: {rows[0][field]} to {rows[-1][field]}')
    for failure in failures:
        print('not ok:', failure)
    return 1 if failures else 0


if __name__ == '__main__':
    sys.exit(main())
