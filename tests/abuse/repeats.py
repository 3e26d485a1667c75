"""The same thing again and again: each dialog opened and closed, stills, recordings, sessions, shapes.
Whatever is done for the hundredth time takes no memory that the tenth time did not.
Less than a hundred times each tells little.

    repeats.py PROGRAM HEAP_REPORT [--seed N] [--count N]     on a display; N times each
"""

import os
import sys

from trial import Heap, Trial, end, start_recording

from desk import key, wait_for, xdotool

SIZE = (640, 480)
FIRST = 10             # times before anything is measured: what is made once is there then
BREATH = 150_000       # bytes that the toolkit's cache of scaled icons comes and goes by
RESIDENT = 20_000_000  # bytes


class Repeats:
    def __init__(self, trial):
        self.trial = trial
        self.heap = Heap(trial.heap_report, trial.folder)
        self.stills = os.path.join(trial.folder, 'stills')
        os.mkdir(self.stills)
        trial.write_settings(trial.program, imagePath=self.stills, width=SIZE[0], height=SIZE[1])
        self.program = trial.launch(trial.program, SIZE, environment=self.heap.environment)

    # What is done.

    def dialog(self, opens, title, *ends):
        key(opens)
        self.program.dialog(title)
        key(*ends)
        self.program.no_dialog(title)

    def options(self):
        self.dialog('ctrl+comma', 'Options', 'Escape')

    def calibrations(self):
        self.dialog('ctrl+k', 'Calibrations', 'Escape')

    def texts(self):
        self.dialog('ctrl+t', 'Text', 'Escape')

    def microscope_sheets(self):
        self.dialog('ctrl+m', 'Microscope', 'Escape')

    def sessions(self):
        self.dialog('ctrl+m', 'Microscope', 'alt+r', 'Home', 'Return')
        self.program.wait_for_picture(*SIZE)

    def stills_saved(self):
        before = len(os.listdir(self.stills))
        key('space')
        wait_for('a still', lambda: len(os.listdir(self.stills)) > before)

    def recordings(self):
        start_recording(self.program)
        wait_for('a movie', lambda: any(name.endswith('.mp4') for name in os.listdir(self.stills)))
        key('Return')
        self.program.no_dialog('Record')
        for name in os.listdir(self.stills):
            os.unlink(os.path.join(self.stills, name))

    def shapes(self):
        x, y = self.program.origin()
        key('alt+e', *['Down'] * 4, 'Return')  # the line
        xdotool('mousemove', x + 100, y + 100, 'mousedown', 1, 'mousemove', x + 300, y + 200, 'mouseup', 1)
        key('ctrl+z')

    # What it takes.

    def resident(self):
        with open(f'/proc/{self.program.process.pid}/smaps_rollup', encoding='utf-8') as file:
            return next(int(line.split()[1]) * 1024 for line in file if line.startswith('Rss:'))


def repeat_all(trial):
    repeats = Repeats(trial)
    actions = [repeats.options, repeats.calibrations, repeats.texts, repeats.microscope_sheets,
               repeats.sessions, repeats.stills_saved, repeats.recordings, repeats.shapes]
    for action in actions:
        for _ in range(FIRST):
            action()
    resident = repeats.resident()
    figures = []
    for action in actions:
        before = repeats.heap.at_rest(repeats.program.process)
        for _ in range(trial.count):
            action()
        kept = repeats.heap.at_rest(repeats.program.process) - before
        figures.append(f'{action.__name__} {kept / 1000:+.0f}')
        trial.expect(kept <= BREATH, f'{action.__name__}: {kept} bytes are kept')
    grown = repeats.resident() - resident
    trial.expect(grown <= RESIDENT, f'resident memory has grown by {grown} bytes')
    end(repeats.program.process)
    return f'kB kept: {", ".join(figures)}; resident {grown / 1e6:+.0f} MB'


if __name__ == '__main__':
    trial = Trial('program', 'heap_report')
    sys.exit(trial.run(repeat_all))
