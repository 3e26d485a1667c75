"""Kills the program at random moments inside stills: every file under its final name is whole, and what
a kill leaves behind has gone when the next still is saved.

    still_kills.py PROGRAM [--seed N] [--count N]     on a display; N kills
"""

import os
import subprocess
import sys
import time

from trial import Trial

from desk import key, wait_for

SIZE = (1280, 720)
LATEST = 0.4  # seconds after the first of a burst of stills


def names(folder):
    """The finished stills, and what is hidden."""
    found = sorted(os.listdir(folder))
    return [n for n in found if not n.startswith('.')], [n for n in found if n.startswith('.')]


def is_whole(path):
    done = subprocess.run(['ffmpeg', '-nostdin', '-v', 'error', '-xerror', '-i', path, '-f', 'null', '-'],
                          capture_output=True, text=True, check=False)
    return done.returncode == 0 and not done.stderr.strip()


def save_one(folder):
    before = names(folder)[0]
    key('space')
    wait_for('a still', lambda: names(folder)[0] != before)


def judge(trial, folder):
    """Looks at the finished stills and removes them; how many there were."""
    stills = names(folder)[0]
    for name in stills:
        path = os.path.join(folder, name)
        trial.expect(is_whole(path), f'{name} of {os.path.getsize(path)} bytes is not whole')
        os.unlink(path)
    return len(stills)


def kill_all(trial):
    folder = os.path.join(trial.folder, 'stills')
    os.mkdir(folder)
    hit = stills = 0
    left_for_good = set()
    for i in range(trial.count + 1):
        trial.write_settings(trial.program, imagePath=folder, imagePNG=trial.random.randint(0, 1))
        abandoned = set(names(folder)[1])
        program = trial.launch(trial.program, SIZE)
        save_one(folder)
        kept = abandoned & set(names(folder)[1])
        if kept - left_for_good:
            trial.fail(f'{len(kept - left_for_good)} hidden files of a killed run are still there after '
                       f'the next still: {sorted(kept - left_for_good)}')
        left_for_good |= kept
        if i == trial.count:  # the one that sees what the last kill left
            program.end()
            break
        burst = subprocess.Popen(['xdotool', 'key', '--delay', '15', *['space'] * 60])
        time.sleep(trial.random.uniform(0, LATEST))
        program.process.kill()
        program.process.wait()
        burst.wait()
        hit += bool(set(names(folder)[1]) - left_for_good)
        stills += judge(trial, folder)
        strangers = [n for n in os.listdir(trial.settings_folder(trial.program)) if not n.endswith('.ini')]
        trial.expect(not strangers, f'beside the settings: {strangers}')
    return (f'{stills} stills, {hit} of {trial.count} kills left a hidden file, '
            f'{len(left_for_good)} hidden files left for good')


if __name__ == '__main__':
    trial = Trial('program')
    sys.exit(trial.run(kill_all))
