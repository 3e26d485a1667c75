"""What the trials in Python share: options, a time limit, a folder that goes when they end, processes
that they end by their ids, and the one line of result."""

import argparse
import contextlib
import os
import random
import signal
import subprocess
import sys
import tempfile
import time

TESTS = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
# Import this one before desk and movies: it knows where they are.
sys.path += [os.path.join(TESTS, 'day'), os.path.join(TESTS, 'movie')]

from desk import (Failure, Program, key, settings_folder, wait_for,  # noqa: E402
                  write_settings)

BUSY = [sys.executable, '-c', 'while True: pass']
SKIPPED = 77


class Skipped(Exception):
    """Why the trial can't take place here."""


class Trial:
    """`arguments` are the names of what stands before --seed, --count and --limit; each becomes a field."""

    def __init__(self, *arguments):
        self.name = os.path.splitext(os.path.basename(sys.argv[0]))[0]
        parser = argparse.ArgumentParser(prog=self.name)
        for argument in arguments:
            parser.add_argument(argument)
        parser.add_argument('--seed', type=int, default=time.time_ns() // 1000 % 1_000_000)
        parser.add_argument('--count', type=int, default=1)
        parser.add_argument('--limit', type=int, default=1800, help='seconds')
        parser.parse_args(namespace=self)
        self.random = random.Random(self.seed)
        self.failures = []
        self.at_end = contextlib.ExitStack()
        self.folder = None

    # Failures are collected: what a trial finds beside its first failure counts as well.

    def fail(self, text):
        self.failures.append(text)
        print(f'{self.name}: failed: {text}', flush=True)

    def expect(self, condition, text):
        if not condition:
            self.fail(text)
        return condition

    # What ends with the trial.

    def start(self, command, **options):
        """A process that is killed at the end unless it has ended before."""
        process = subprocess.Popen(command, **options)
        self.at_end.callback(end, process)
        return process

    def mount(self, *options):
        """A new folder with this mounted on it, as for mount(8)."""
        folder = tempfile.mkdtemp(dir=self.folder)
        done = subprocess.run(['mount', *options, folder], capture_output=True, text=True,
                              check=False)
        if done.returncode != 0:
            raise Skipped(f'nothing can be mounted here ({done.stderr.strip()})')
        # Lazily: what still hangs in it must not keep the trial.
        self.at_end.callback(subprocess.run, ['umount', '-l', folder], check=False,
                             stderr=subprocess.DEVNULL)
        return folder

    @contextlib.contextmanager
    def load(self, processes):
        """While so many busy processes run."""
        busy = [subprocess.Popen(BUSY) for _ in range(processes)]
        try:
            yield
        finally:
            for process in busy:
                end(process)

    # The program under trial.

    settings_folder = staticmethod(settings_folder)
    write_settings = staticmethod(write_settings)

    def launch(self, program, size, log=None, environment=None):
        """The program with the picture of its microscope in its window."""
        program = Program(program, log or os.path.join(self.folder, 'log.txt'), environment)
        self.at_end.callback(end, program.process)
        program.wait_for_picture(*size)
        return program

    def run(self, body):
        """Runs body(trial), which returns the figures. The exit status for main."""
        print(f'{self.name}: seed {self.seed}, count {self.count}', flush=True)
        begin = time.monotonic()

        def out_of_time(*_):
            raise Failure(f'not done after {self.limit} seconds')

        def ended(*_):
            raise Failure('ended from outside')
        signal.signal(signal.SIGALRM, out_of_time)
        signal.signal(signal.SIGTERM, ended)
        signal.alarm(self.limit)
        figures = ''
        try:
            with tempfile.TemporaryDirectory(prefix=f'tessary-{self.name}-',
                                             ignore_cleanup_errors=True) as self.folder:
                with self.at_end:
                    figures = body(self)
        except (Failure, subprocess.CalledProcessError) as failure:
            self.fail(str(failure))
        except Skipped as reason:
            print(f'{self.name}: skipped, {reason}')
            return SKIPPED
        verdict = 'FAILED' if self.failures else 'passed'
        print(f'{self.name}: {verdict}, {len(self.failures)} failures; {figures} '
              f'(seed {self.seed}, {time.monotonic() - begin:.0f} s)')
        return 1 if self.failures else 0


class Heap:
    """What a program has in use in blocks smaller than a frame, by the library `heap_report` in it."""

    STEADY = 50_000  # bytes that come and go at rest
    LOOKS = 4        # a second apart

    def __init__(self, heap_report, folder):
        self.report = os.path.join(folder, 'heap')
        self.environment = {'LD_PRELOAD': heap_report, 'TESSARY_HEAP_REPORT': self.report}

    def look(self, process):
        """Bytes."""
        if os.path.exists(self.report):
            os.unlink(self.report)
        process.send_signal(signal.SIGRTMIN)
        wait_for('the heap', lambda: os.path.exists(self.report), patience=10)
        with open(self.report, encoding='utf-8') as file:
            return int(file.read())

    def at_rest(self, process):
        """Bytes, once they have ceased to grow: for seconds after its start the simulated microscope
        makes the frames that it then sends over and over, and an encoder may be on its way out."""
        looks = []

        def stands():
            looks.append(self.look(process))
            if len(looks) >= self.LOOKS and looks[-1] <= min(looks[-self.LOOKS:]) + self.STEADY:
                return True
            time.sleep(1)
            return False
        wait_for('the heap to stand still', stands)
        return min(looks[-self.LOOKS:])


def end(process):
    """By its id, and at once; nothing happens if it has ended."""
    if process.poll() is None:
        process.kill()
    with contextlib.suppress(subprocess.TimeoutExpired):  # it may be stuck in a disk that hangs
        process.wait(10)


def has_fuse(mirror_disk):
    """Whether `mirror_disk`, that program's path, has been built and can be used."""
    return os.path.exists(mirror_disk) and os.access('/dev/fuse', os.W_OK)


def mirror(trial, mirror_disk, real, shown):
    """Makes both folders and shows the one as the other until the trial ends; the process to stop."""
    os.mkdir(real)
    os.mkdir(shown)
    process = trial.start([mirror_disk, real, shown])
    trial.at_end.callback(subprocess.run, ['umount', '-l', shown], check=False,
                          stderr=subprocess.DEVNULL)
    wait_for('the mirror', lambda: os.path.ismount(shown))
    return process


def start_recording(program):
    key('ctrl+r')
    program.dialog('Record')
    key('Return')


def movies_in(folder):
    return sorted(os.path.join(folder, name) for name in os.listdir(folder) if name.endswith('.mp4'))


def begun_movie(folder):
    """Waits until a movie holds something, and returns its path."""
    return wait_for('the movie to begin', lambda: [
        path for path in movies_in(folder) if os.path.getsize(path) > 0])[0]
