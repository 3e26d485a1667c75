"""Disks that are full, can only be read, are pulled, vanish, or stop answering, below the stills, the
movie or the settings. The picture never stands still for long, a line over it says what is wrong, once
the window is closed the process goes, and what is on the disk plays.

    disks.py PROGRAM MIRROR_DISK [--seed N] [--count N]     on a display; N cases, in random order

Needs the right to mount; pulled and hanging disks need FUSE, and are left out where it is missing.
"""

import contextlib
import os
import signal
import subprocess
import sys
import threading
import time

from trial import Trial, begun_movie, end, has_fuse, mirror, movies_in, start_recording

from desk import Failure, key, wait_for
import movies
from picture import Picture

SIZE = (1280, 720)
STANDSTILL = 3.0  # seconds: the two that a call may take, and what a busy machine takes besides
APPEARING = 30    # seconds until a launch shows its window, on a busy machine
TELLING = 10      # seconds until the line is there
GOING = 15        # seconds from closing to the end of the process
SMALL = 300_000   # bytes; a second or two of a movie


class Disk:
    """`folder` is what the program gets, `real` is where its files lie in truth."""

    breaks_before_movie = False  # otherwise in the middle of it
    harmless = ()                # actions that lose nothing when it goes wrong

    def __init__(self, trial):
        self.trial = trial
        self.folder = self.real = os.path.join(trial.folder, f'disk-{time.monotonic_ns()}')

    def heal(self):
        """What still waits for the disk gets an answer."""


class Full(Disk):
    def __init__(self, trial):
        super().__init__(trial)
        self.folder = self.real = trial.mount('-t', 'tmpfs', '-o', 'size=4m', 'none')

    def worsen(self, action):
        with open(os.path.join(self.folder, '.other'), 'wb', buffering=0) as filler:
            with contextlib.suppress(OSError):
                while filler.write(bytes(4096)):
                    pass
            if action == 'movie':  # which is to fill the rest itself
                filler.truncate(filler.tell() - SMALL)


class ReadOnly(Disk):
    breaks_before_movie = True  # the kernel refuses as long as a file is open for writing

    def __init__(self, trial):
        super().__init__(trial)
        self.folder = self.real = trial.mount('-t', 'tmpfs', '-o', 'size=64m', 'none')

    def worsen(self, _):
        subprocess.run(['mount', '-o', 'remount,ro', self.folder], check=True)


class Vanished(Disk):
    harmless = ('movie', 'settings')  # an open file goes along, and the settings' folder is made anew

    def __init__(self, trial):
        super().__init__(trial)
        self.real = self.folder + '-elsewhere'
        os.mkdir(self.folder)

    def worsen(self, _):
        os.rename(self.folder, self.real)


class Pulled(Disk):
    def __init__(self, trial):
        super().__init__(trial)
        self.real = self.folder + '-real'
        self.process = mirror(trial, trial.mirror_disk, self.real, self.folder)

    def worsen(self, _):
        end(self.process)


class Hanging(Pulled):
    def worsen(self, _):
        self.process.send_signal(signal.SIGSTOP)

    def heal(self):
        end(self.process)


def looked_at(width, height, x, y):
    """This part of the screen."""
    done = subprocess.run(['import', '-silent', '-window', 'root', '-depth', '8',
                           '-crop', f'{width}x{height}+{x}+{y}', '+repage', 'ppm:-'],
                          check=True, stdout=subprocess.PIPE)
    return Picture.from_ppm(done.stdout)


class Watcher:
    """Looks at the picture's running number again and again, for how long it ever stood still."""

    def __init__(self, program):
        x, y = program.origin()
        # The lowest rows: above them the numbers lie below a text.
        self.place = (96, 2, x, y + SIZE[1] - 3)
        self.longest, self.done = 0.0, threading.Event()
        self.thread = threading.Thread(target=self.watch)
        self.thread.start()

    def watch(self):
        last = None
        while not self.done.is_set():
            begin = time.monotonic()
            picture = looked_at(*self.place).pixels
            if picture != last:
                last, seen = picture, time.monotonic()
            self.longest = max(self.longest, begin - seen)  # what is sure: looking takes time too

    def end(self):
        self.done.set()
        self.thread.join()
        return self.longest


def line_shown(program):
    """Whether there is light text on a darkened ground at the left of the picture's upper half, beside any
    sheet: an upper edge as straight as nothing in the specimen, and light pixels below it."""
    x, y = program.origin()
    place = looked_at(100, SIZE[1] // 2, x + 16, y + 5)
    rows = [[min(place.at(x, y)) for x in range(place.width)] for y in range(place.height)]
    dark = [sum(value < 170 for value in row) for row in rows]
    for top in range(1, place.height - 20):
        if dark[top] >= 95 and dark[top - 1] <= 60:
            light = sum(value >= 200 for row in rows[top:top + 20] for value in row)
            if light >= 30 and min(dark[top:top + 15]) >= 25:
                return True
    return False


class Case:
    """One action on one disk that goes wrong."""

    def __init__(self, trial, disk, action):
        self.trial, self.action = trial, action
        self.name = f'{disk.__name__} below {action}'
        self.disk = disk(trial)
        self.elsewhere = os.path.join(trial.folder, f'fine-{time.monotonic_ns()}')
        os.mkdir(self.elsewhere)
        self.figures = {}

    def expect(self, condition, text):
        return self.trial.expect(condition, f'{self.name}: {text}')

    def launch(self):
        program, environment = self.trial.program, {}
        folder = self.elsewhere if self.action == 'settings' else self.disk.folder
        if self.action == 'settings':
            environment['XDG_CONFIG_HOME'] = self.disk.folder
        with contextlib.ExitStack() as restored:
            if environment:
                restored.callback(os.environ.__setitem__, 'XDG_CONFIG_HOME',
                                  os.environ['XDG_CONFIG_HOME'])
                os.environ.update(environment)
            self.trial.write_settings(program, imagePath=folder, width=SIZE[0], height=SIZE[1])
            if self.action == 'launch':
                self.disk.worsen(self.action)
            begin = time.monotonic()
            self.program = self.trial.launch(program, SIZE)
            self.figures['shown after'] = time.monotonic() - begin
        if self.action == 'launch':
            self.expect(self.figures['shown after'] <= APPEARING, 'the window came late')

    def act(self):
        if self.action == 'still':
            self.disk.worsen(self.action)
            key('space')
        elif self.action == 'movie':
            if self.disk.breaks_before_movie:
                self.disk.worsen(self.action)
                start_recording(self.program)
            else:
                start_recording(self.program)
                begun_movie(self.disk.folder)
                self.disk.worsen(self.action)
        elif self.action == 'settings':
            self.disk.worsen(self.action)
            key('ctrl+comma')
            self.program.dialog('Options')
            key('alt+p', 'Down', 'Return')
            self.program.no_dialog('Options')

    def is_told(self):
        begin = time.monotonic()
        try:
            wait_for('the line', lambda: line_shown(self.program), patience=TELLING)
        except Failure:
            self.expect(False, f'no line over the picture after {TELLING} s')
            return
        self.figures['told after'] = time.monotonic() - begin

    def close(self):
        """Stops what runs and closes the window; the process has to go."""
        if self.action == 'movie':
            self.program.dialog('Record')
            key('Return')
            self.program.no_dialog('Record')
        self.figures['stood still'] = self.watcher.end()
        self.watcher = None
        self.expect(self.figures['stood still'] <= STANDSTILL,
                    f'the picture stood still for {self.figures["stood still"]:.1f} s')
        begin = time.monotonic()
        key('ctrl+q')
        try:
            wait_for('the end', lambda: self.program.process.poll() is not None, patience=GOING)
        except Failure:
            if self.is_kept_by_kernel():
                self.figures['kept by the kernel after'] = GOING
            else:
                self.expect(False, f'the process is still there {GOING} s after closing')
            return
        self.figures['gone after'] = time.monotonic() - begin
        self.expect(self.program.process.returncode == 0,
                    f'the program ended with {self.program.process.returncode}')

    def is_kept_by_kernel(self):
        """Whether the program has ended, and only calls that the disk had taken when it stopped keep its
        process: nobody can end those, not even SIGKILL."""
        exiting = 0x4  # of a task's flags
        tasks = f'/proc/{self.program.process.pid}/task'
        ended = []
        for task in os.listdir(tasks):
            with contextlib.suppress(OSError), open(f'{tasks}/{task}/stat', encoding='utf-8') as file:
                fields = file.read().rpartition(')')[2].split()
                ended.append(fields[0] == 'D' or int(fields[6]) & exiting)
        return all(ended)

    def judge_files(self):
        if not os.path.isdir(self.disk.real):
            return
        for path in movies_in(self.disk.real):
            try:
                movies.decode(path)
            except AssertionError as failure:
                self.expect(False, str(failure))
        if self.action == 'movie' and not self.disk.breaks_before_movie:
            self.expect(movies_in(self.disk.real), 'no movie is left')
        if self.action in self.disk.harmless:
            if self.action == 'movie':
                for path in movies_in(self.disk.real):
                    self.expect(movies.boxes(path) == ['ftyp', 'mdat', 'moov'],
                                f'the movie is not finished: {movies.boxes(path)[:6]}')
            else:
                self.expect(self.program.setting('imagePNG') == '1', 'the setting is lost')

    def take_place(self):
        self.program = self.watcher = None
        try:
            self.launch()
            self.watcher = Watcher(self.program)
            self.act()
            if self.action != 'launch' and self.action not in self.disk.harmless:
                self.is_told()
            self.close()
        except Failure as failure:
            self.expect(False, str(failure))
        finally:
            if self.watcher:
                self.figures['stood still'] = self.watcher.end()
            if self.program:
                end(self.program.process)
            self.disk.heal()
        self.judge_files()
        print(f'  {self.name}: ' +
              ', '.join(f'{what} {seconds:.1f} s' for what, seconds in self.figures.items()), flush=True)


def all_cases(trial):
    disks = [Full, ReadOnly, Vanished]
    if has_fuse(trial.mirror_disk):
        disks += [Pulled, Hanging]
    cases = [(disk, action) for disk in disks for action in ('still', 'movie', 'settings')]
    cases.remove((Vanished, 'settings'))  # their folder is made anew: nothing goes wrong
    return cases + [(Hanging, 'launch')] * (Hanging in disks)


def spoil_all(trial):
    cases = all_cases(trial)
    trial.random.shuffle(cases)
    worst = {}
    for disk, action in cases[:trial.count]:
        case = Case(trial, disk, action)
        case.take_place()
        for what, seconds in case.figures.items():
            worst[what] = max(worst.get(what, 0), seconds)
    return f'{min(trial.count, len(cases))} cases; ' + ', '.join(
        f'{what} {seconds:.1f} s at the most' for what, seconds in worst.items())


if __name__ == '__main__':
    trial = Trial('program', 'mirror_disk')
    sys.exit(trial.run(spoil_all))
