"""Kills recordings at random moments, small and large ones, on an idle and on a loaded machine, on
disks with and without files that have no name yet: each time a movie is left that plays and that
misses no more than its last half second, and never an empty one.

    kills.py RECORDER MIRROR_DISK [--seed N] [--count N]     N kills; MIRROR_DISK may be missing
"""

import os
import pathlib
import sys

from trial import Trial, has_fuse, mirror

import movies

HALF_SECOND = 500_000  # microseconds
LATEST = 3.0           # seconds of recording before the kill
SIZES = {'640x480': (640, 480, 1_244_160), '1280x720': (1280, 720, 9_308_160)}
BUSY = 8               # processes that want a core each, where the machine is loaded


def kill(trial, path, size):
    """How many seconds into the recording, and the time stamps of what had been appended."""
    after = trial.random.uniform(0, LATEST) ** 2 / LATEST  # early ones more often
    command = [trial.recorder, path, '60', *map(str, SIZES[size])]
    return after, movies.record_and_kill(command, after)


def judge(trial, path, after, appended):
    """How many microseconds are lost; None where the movie does not play."""
    try:
        missing = movies.missing_at_end(path, appended)
    except AssertionError as failure:
        trial.fail(f'killed after {after:.3f} s: {failure}')
        return None
    trial.expect(missing <= HALF_SECOND,
                 f'{path.name}, killed after {after:.3f} s, misses {missing / 1000:.0f} ms')
    return missing


def kill_all(trial):
    plain = os.path.join(trial.folder, 'plain')
    os.mkdir(plain)
    disks = {'': plain}
    if has_fuse(trial.mirror_disk):
        disks[' without nameless files'] = os.path.join(trial.folder, 'shown')
        mirror(trial, trial.mirror_disk, os.path.join(trial.folder, 'real'),
               disks[' without nameless files'])
    # The mirror is a process too, and would suffer from the load where a disk does not.
    kinds = [(size, load, disk) for load in (False, True) for size in SIZES for disk in disks
             if not (load and disk)]
    figures = []
    for number, (size, load, disk) in enumerate(kinds):
        share = trial.count * (number + 1) // len(kinds) - trial.count * number // len(kinds)
        if not share:
            continue
        paths = [pathlib.Path(disks[disk]) / f'{number}-{i}.mp4' for i in range(share)]
        with trial.load(BUSY if load else 0):
            killed = [kill(trial, path, size) for path in paths]
        lost = [judge(trial, path, *one) for path, one in zip(paths, killed)]
        lost = [missing for missing in lost if missing is not None]
        figures.append(f'{size}{" loaded" if load else ""}{disk}: {len(lost)} of {share} play, '
                       f'{max(lost, default=0) / 1000:.0f} ms lost at the most')
    return '; '.join(figures)


if __name__ == '__main__':
    trial = Trial('recorder', 'mirror_disk')
    sys.exit(trial.run(kill_all))
