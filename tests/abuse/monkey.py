"""Somebody who presses everything: random clicks, drags, keys, menus, sheets and sizes of the window.
Afterwards, with everything closed again, the program answers, and has not grown.

    monkey.py PROGRAM HEAP_REPORT [--seed N] [--count N]     on a display; N events
"""

import collections
import os
import subprocess
import sys
import time

from trial import Heap, Trial, begun_movie, start_recording

from desk import Failure, key, wait_for, xdotool

SIZE = (1280, 720)
HEAP = 2_000_000       # bytes in use that may come in the second half of many events
FIRST_USES = 6_000_000  # and in few: what is made once, when it is first wanted, is not all there then
MANY = 1000
RESIDENT = 20_000_000  # bytes
TIDYING = 20           # events after which other windows are closed: some cover everything
SETTLING = 60          # seconds until threads that are no longer needed have gone
CHOOSER = 'Choose path'
HELP = 'Help'          # the one window that Escape doesn't close
QUITTING = 80          # pixels of the menu bar, from the left: the menu that quits opens there
ENDING = 3             # seconds in which a program that has lost its window ends
REMEMBERED = 12        # things done that are told with a failure

# Not here: what quits or opens the menu that does, and Delete, which in a folder chooser is meant for
# the user's files.
KEYS = ['space', 'ctrl+s', 'ctrl+1', 'ctrl+2', 'ctrl+3', 'ctrl+z', 'ctrl+comma', 'ctrl+m', 'ctrl+r',
        'ctrl+k', 'ctrl+t', 'ctrl+o', 'F1', 'Escape', 'Escape', 'Return', 'Return', 'Tab', 'Up', 'Down',
        'Left', 'Right', 'Home', 'End', 'Page_Up', '1', '7', 'a', 'period', 'comma', 'alt+b', 'alt+r',
        'alt+l', 'alt+a', 'alt+p', 'shift+Left']
MENUS = (0, 28)        # rows
WHERE = [MENUS, (28, 70), (70, None), (70, None), (70, None)]  # menus, toolbar, picture


class Monkey:
    def __init__(self, trial):
        self.trial, self.random = trial, trial.random
        self.heap = Heap(trial.heap_report, trial.folder)
        stills = os.path.join(trial.folder, 'stills')
        os.mkdir(stills)
        os.environ['HOME'] = trial.folder
        # What opens folders: nothing.
        opener = os.path.join(trial.folder, 'xdg-open')
        with open(opener, 'w', encoding='utf-8') as file:
            file.write('#!/bin/sh\n')
        os.chmod(opener, 0o755)
        os.environ['PATH'] = trial.folder + os.pathsep + os.environ['PATH']
        trial.write_settings(trial.program, imagePath=stills, width=SIZE[0], height=SIZE[1])
        self.stills = stills
        self.program = trial.launch(trial.program, SIZE, environment=self.heap.environment)
        self.done = {}
        self.last = collections.deque(maxlen=REMEMBERED)

    # Events.

    def keys(self, *names):
        self.last.append(' '.join(names))
        key(*names)

    def mouse(self, *steps):
        self.last.append(' '.join(map(str, steps)))
        xdotool(*steps)

    def place(self, rows=None):
        main = self.program.main.measure()
        rows = rows or self.random.choice(WHERE)
        top, bottom = rows
        return (main.x + self.random.randrange(QUITTING if rows == MENUS else 0, main.width),
                main.y + self.random.randrange(top, bottom or main.height))

    def click(self):
        self.mouse('mousemove', *self.place(), 'click', self.random.choice([1, 1, 1, 1, 3, 4, 5]))
        if self.random.random() < 0.2:
            self.mouse('click', '--repeat', 2, '--delay', 5, 1)

    def drag(self):
        steps = [self.place((70, None)) for _ in range(self.random.randint(2, 5))]
        self.mouse('mousemove', *steps[0], 'mousedown', 1)
        for step in steps[1:]:
            self.mouse('mousemove', *step)
        self.mouse('mouseup', 1)

    def press(self):
        self.keys(*[self.random.choice(KEYS) for _ in range(self.random.randint(1, 3))])

    def menu(self):
        """A random item of the tools' menu. The others are only looked at: one of theirs quits. The first
        Escape closes a menu, the second takes the keyboard from the menu bar."""
        letter = self.random.choice('temh')
        downs = ['Down'] * self.random.randint(0, 8)
        self.keys(f'alt+{letter}', *downs, *(['Return'] if letter == 'e' else ['Escape', 'Escape']))

    def sheet(self):
        """Opens one, does a little in it, and ends it, often twice as impatient people do."""
        opens = self.random.choice(['ctrl+comma', 'ctrl+m', 'ctrl+k', 'ctrl+t', 'ctrl+r', 'F1'])
        inside = [self.random.choice(['Tab', 'Down', 'Up', '3', 'alt+b']) for _ in range(3)]
        ends = self.random.choice(['Return', 'Escape'])
        self.keys(opens, *inside, *[ends] * self.random.randint(1, 2))

    def resize(self):
        self.mouse('windowsize', self.program.main.number, self.random.randint(400, 1700),
                   self.random.randint(300, 1000))

    def zoom(self):
        main = self.program.main.measure()
        y = main.y + main.height - 18
        self.mouse('mousemove', main.x + main.width - self.random.randint(20, 120), y, 'click', 1)

    def tool(self):
        """Measures something, as a user does most."""
        self.keys('alt+e', *['Down'] * self.random.randint(3, 9), 'Return')
        self.drag()
        self.mouse('mousemove', *self.place((70, None)), 'click', 1)

    def one(self):
        events = [(self.click, 30), (self.drag, 15), (self.press, 20), (self.menu, 5), (self.sheet, 12),
                  (self.resize, 3), (self.zoom, 5), (self.tool, 10)]
        event, = self.random.choices([e for e, _ in events], [weight for _, weight in events])
        if self.program.windows(CHOOSER):
            self.keys('Escape')  # it could rename what it shows
        else:
            event()
        self.done[event.__name__] = self.done.get(event.__name__, 0) + 1

    def play(self, events):
        """So many of them, and then everything closed."""
        for i in range(events):
            self.one()
            if i % TIDYING == TIDYING - 1:
                self.close_all()
        self.settle()
        self.still()

    def state(self):
        """Whether the program runs, or how it ended, and what was done last."""
        try:
            state = f'the program ended with {self.program.process.wait(ENDING)}'
        except subprocess.TimeoutExpired:
            state = 'the program runs'
        return f'{state}; last: {", ".join(self.last)}'

    # Before and after.

    def others(self):
        """The program's windows beside the main one."""
        return [number for number in self.program.windows('') if number != self.program.main.number]

    @staticmethod
    def active():
        return subprocess.run(['xdotool', 'getactivewindow'], text=True, check=False,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout.strip()

    @staticmethod
    def name_of(number):
        return subprocess.run(['xdotool', 'getwindowname', number], text=True, check=False,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout.strip()

    def close_one(self):
        """One step towards the main window alone; whether nothing is left to do."""
        others, main = self.others(), self.program.main.number
        if not others and self.active() == main:
            return True
        top = others[-1] if others else main
        if self.active() not in others:
            # A menu has the keyboard without being active.
            key('Escape')
            subprocess.run(['xdotool', 'windowactivate', top], check=False, stderr=subprocess.DEVNULL)
        active = self.active()
        if active in others:
            # Escape does no harm if that window has gone by now; the main one would end with this key.
            self.keys('alt+F4' if self.name_of(active).startswith(HELP) else 'Escape')
            end = time.monotonic() + 1
            while len(self.others()) >= len(others) and time.monotonic() < end:
                time.sleep(0.05)
        return False

    def close_all(self):
        """Until the main window is alone."""
        try:
            wait_for('the main window to be alone', self.close_one)
        except Failure as failure:
            names = [self.name_of(number) for number in self.others()]
            raise Failure(f'{failure}; beside it: {names}') from None

    def settle(self):
        """Everything closed and deleted, and a picture and a window as they were at first: another size
        and back."""
        self.close_all()
        key('alt+e', 'Up', 'Return')  # the last item: Delete All
        self.close_all()
        for size, downs in (((640, 480), []), (SIZE, ['Down'])):
            key('ctrl+m')
            self.program.dialog('Microscope')
            key('alt+r', 'Home', *downs, 'Return')
            self.program.no_dialog('Microscope')
            self.program.wait_for_picture(*size)

    def still(self):
        before = set(os.listdir(self.stills))
        key('space')
        wait_for('a still', lambda: set(os.listdir(self.stills)) - before, patience=15)

    def measure(self):
        """Heap in use, in blocks smaller than a frame, and resident memory in bytes, descriptors, threads."""
        process = self.program.process

        def proc(name):
            return f'/proc/{process.pid}/{name}'
        heap = self.heap.at_rest(process)
        with open(proc('smaps_rollup'), encoding='utf-8') as file:
            resident, = [int(line.split()[1]) * 1024 for line in file if line.startswith('Rss:')]
        return heap, resident, len(os.listdir(proc('fd'))), len(os.listdir(proc('task')))

    def warm_up(self):
        """Everything once, so that what is made once is there: dialogs, a movie, both kinds of size."""
        self.program.main.measure()
        for opens in ('ctrl+comma', 'ctrl+k', 'ctrl+t', 'ctrl+m', 'F1'):
            key(opens)
            wait_for('a window', self.others)
            self.close_all()
        start_recording(self.program)
        begun_movie(self.stills)
        key('Return')
        self.program.no_dialog('Record')
        for _ in range(20):
            self.tool()
        self.resize()
        self.close_all()
        self.still()
        self.settle()


def press_everything(trial):
    monkey = Monkey(trial)
    try:
        return weigh(trial, monkey)
    except (Failure, subprocess.CalledProcessError) as failure:
        raise Failure(f'{failure}; {monkey.state()}') from None


def weigh(trial, monkey):
    """Plays, between two looks at what the program takes; the figures."""
    monkey.warm_up()
    many = trial.count >= MANY
    if many:
        monkey.play(trial.count // 2)
    before = monkey.measure()
    monkey.play(trial.count - trial.count // 2 if many else trial.count)
    # Threads end by themselves when they have not been needed for a while.
    try:
        wait_for('descriptors and threads', lambda: all(
            now <= then for now, then in zip(monkey.measure()[2:], before[2:])), patience=SETTLING)
    except Failure:
        pass
    after = monkey.measure()
    grown = [now - then for now, then in zip(after, before)]
    trial.expect(grown[0] <= (HEAP if many else FIRST_USES), f'the heap has grown by {grown[0]} bytes')
    trial.expect(grown[1] <= RESIDENT, f'resident memory has grown by {grown[1]} bytes')
    trial.expect(grown[2] <= 0, f'{grown[2]} more descriptors')
    trial.expect(grown[3] <= 0, f'{grown[3]} more threads')
    key('ctrl+q')
    status = monkey.program.wait_for_end()
    trial.expect(status == 0, f'the program ended with {status}')
    events = ', '.join(f'{count} {name}' for name, count in sorted(monkey.done.items()))
    return (f'heap {before[0] / 1e6:.1f} to {after[0] / 1e6:.1f} MB, '
            f'resident {before[1] / 1e6:.0f} to {after[1] / 1e6:.0f} MB, '
            f'descriptors {before[2]} to {after[2]}, threads {before[3]} to {after[3]}; {events}')


if __name__ == '__main__':
    trial = Trial('program', 'heap_report')
    sys.exit(trial.run(press_everything))
