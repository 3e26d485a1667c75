"""The program as a screen reader finds it: what it tells of itself when asked, and what it says by itself.

    heard.py PROGRAM        PROGRAM is tessary-demo; on a display and a session bus of its own
"""

import contextlib
import os
import re
import signal
import subprocess
import sys
import tempfile
import time

from gi.repository import Gio, GLib

TESTS = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.append(os.path.join(TESTS, 'day'))

from desk import (Failure, Program, check, key, type_text, wait_for, write_settings,  # noqa: E402
                  xdotool)

LAUNCHER = '/usr/libexec/at-spi-bus-launcher'
SIZE = (640, 480)
LIMIT = 100  # seconds, on a busy machine
PATIENCE = 20
# One calibration: 400 pixels are 1 mm.
CALIBRATIONS = f',0,400,1.000000,{SIZE[0] + SIZE[1] * 65536},20260101;'
BUSY = 'Frames are being lost'  # what a busy machine may have to tell
WORDS_OF_THE_BUS = ('dbus', 'd-bus', 'at-spi', 'atspi', 'accessib')


def descendants(pid):
    """The processes below this one, by their ids."""
    found = []
    for name in filter(str.isdigit, os.listdir('/proc')):
        try:
            with open(f'/proc/{name}/stat', encoding='utf-8', errors='replace') as file:
                parent = int(file.read().rpartition(')')[2].split()[1])
        except (FileNotFoundError, ProcessLookupError):
            continue
        if parent == pid:
            found += [int(name), *descendants(int(name))]
    return found


def is_alive(pid):
    try:
        with open(f'/proc/{pid}/stat', encoding='utf-8', errors='replace') as file:
            return file.read().rpartition(')')[2].split()[0] != 'Z'
    except (FileNotFoundError, ProcessLookupError):
        return False


class Bus:
    """The bus on which screen readers listen."""

    def __init__(self):
        self.launcher = subprocess.Popen([LAUNCHER, '--launch-immediately', '--a11y=1'],
                                         stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        # Who asked for the bus before would get another one, on which nobody is expected.
        session = Gio.bus_get_sync(Gio.BusType.SESSION)
        wait_for('the bus of screen readers', lambda: session.call_sync(
            'org.freedesktop.DBus', '/', 'org.freedesktop.DBus', 'NameHasOwner',
            GLib.Variant('(s)', ('org.a11y.Bus',)), None, 0, -1)[0], PATIENCE)

    def end(self):
        started = descendants(self.launcher.pid)
        self.launcher.terminate()
        self.launcher.wait(10)
        end = time.monotonic() + 5
        while any(map(is_alive, started)) and time.monotonic() < end:
            time.sleep(0.05)
        for pid in filter(is_alive, started):
            os.kill(pid, signal.SIGKILL)


class Reader:
    """A screen reader that notes what it hears."""

    def __init__(self):
        import pyatspi  # only now: it looks for the bus at once
        self.pyatspi, self.context = pyatspi, GLib.MainContext.default()
        self.said, self.changes = [], []
        pyatspi.Registry.registerEventListener(self.shown, 'object:state-changed:showing')
        pyatspi.Registry.registerEventListener(self.changed,
                                               'object:property-change:accessible-description')
        self.application = None

    # What it hears.

    def shown(self, event):
        with contextlib.suppress(GLib.GError):  # what has gone by now, as windows do, said nothing
            # What screen readers read out without being asked.
            if event.detail1 and event.source.getRole() == self.pyatspi.ROLE_NOTIFICATION:
                words = event.source.name
                if not words.startswith(BUSY):
                    self.said.append(words)

    def changed(self, event):
        with contextlib.suppress(GLib.GError):
            self.changes.append((event.source.name, event.source.description))

    def listen(self):
        while self.context.iteration(False):
            pass

    def wait_for(self, what, condition):
        def heard():
            self.listen()
            return condition()
        return wait_for(what, heard, PATIENCE)

    def wait_for_words(self, *words):
        """Until all this was said, each once and nothing else."""
        self.wait_for(f'{words} to be said', lambda: len(self.said) >= len(words))
        check(sorted(self.said) == sorted(words), f'{words} was to be said, and {self.said} was')
        self.said.clear()

    def nothing_was_said(self):
        # An answer comes after all that was said before it.
        check(self.application.childCount >= 1, 'the program has no window')
        self.listen()
        check(not self.said, f'{self.said} was said')

    # What it looks at.

    def find_application(self, name):
        desktop = self.pyatspi.Registry.getDesktop(0)

        def found():
            return next((each for each in desktop if each and each.name == name), None)
        self.application = self.wait_for(f'the program {name}', found)

    def find(self, role, name, window=None):
        """What can be seen in a window, or in any, with this role and a name that is this regular
        expression."""
        def matches(each):
            return (each.getRole() == role and re.fullmatch(name, each.name) and
                    each.getState().contains(self.pyatspi.STATE_SHOWING))

        def found():
            return self.pyatspi.findDescendant(window or self.application, matches)
        return self.wait_for(f'"{name}"', found)

    def wait_for_description(self, source, text):
        try:
            self.wait_for(f'"{text}"', lambda: source.description == text)
        except Failure as failure:
            raise Failure(f'{failure}; it is "{source.description}"') from failure

    def wait_for_change(self, name, text):
        """Until it was told, without being asked, that this is the description of `name` now."""
        self.wait_for(f'"{name}" to tell "{text}"', lambda: (name, text) in self.changes)


class Heard:
    def __init__(self, program, folder):
        self.program_file, self.folder = program, folder
        self.stills = os.path.join(folder, 'stills & movies')
        os.mkdir(self.stills)
        self.program = self.reader = self.bus = None

    def launch(self, log):
        write_settings(self.program_file, width=SIZE[0], height=SIZE[1], imagePath=self.stills,
                       calibrations=CALIBRATIONS)
        self.program = Program(self.program_file, os.path.join(self.folder, log))
        self.program.wait_for_picture(*SIZE)

    def end_program(self, log):
        self.program.end()
        with open(os.path.join(self.folder, log), encoding='utf-8') as file:
            lines = [line for line in file
                     if any(word in line.lower() for word in WORDS_OF_THE_BUS)]
        check(not lines, f'the program complains of the bus: {lines}')

    def end(self):
        if self.program:
            self.program.end()
        if self.bus:
            self.bus.end()

    def files(self):
        return {name for name in os.listdir(self.stills) if not name.startswith('.')}

    # Without anybody who listens.

    def silent_run(self):
        session = os.environ.pop('DBUS_SESSION_BUS_ADDRESS')
        os.environ['DBUS_SESSION_BUS_ADDRESS'] = 'unix:path=/nonexistent'
        self.launch('silent.txt')
        key('space')
        wait_for('a still', self.files, PATIENCE)
        self.end_program('silent.txt')
        os.environ['DBUS_SESSION_BUS_ADDRESS'] = session

    # With a screen reader.

    def heard_run(self):
        self.bus = Bus()
        self.reader = Reader()
        self.launch('heard.txt')
        self.reader.find_application(os.path.basename(self.program_file))
        pyatspi = self.reader.pyatspi
        self.window = self.reader.find(pyatspi.ROLE_FRAME, 'Tessary')
        self.picture = self.reader.find(pyatspi.ROLE_IMAGE, 'Microscope picture')
        for step in (self.overlay, self.measurement, self.stills_and_failures, self.movie,
                     self.zoom, self.options):
            self.reader.changes.clear()
            step()
            self.reader.nothing_was_said()
        self.end_program('heard.txt')

    def wait_for_overlay(self, tool='None', reticle='None', calibration='None', selected='None'):
        text = (f'Tool: {tool}. Reticle: {reticle}. Calibration: {calibration}. '
                f'Selected: {selected}.')
        self.reader.wait_for_description(self.picture, text)
        return text

    def overlay(self):
        self.wait_for_overlay()
        key('ctrl+2')
        text = self.wait_for_overlay(reticle='Grid')
        self.reader.wait_for_change('Microscope picture', text)
        key('ctrl+2')
        self.wait_for_overlay()
        key('ctrl+k')
        self.program.dialog('Calibrations')
        key('alt+a')
        self.program.no_dialog('Calibrations')
        self.wait_for_overlay(calibration='400.00 pixels per mm')
        key('ctrl+6')
        self.wait_for_overlay(tool='Circle', calibration='400.00 pixels per mm')

    def measurement(self):
        key('ctrl+4')
        self.wait_for_overlay(tool='Line', calibration='400.00 pixels per mm')
        self.program.move_to((100, 150))
        xdotool('mousedown', 1)
        for x in (140, 180, 200):
            self.program.move_to((x, 150))
            wait_for(f'the line to reach {x}', lambda: self.program.picture().overlay_share(
                [(x - 2, 150 + y) for y in (-1, 0, 1)]) > 0, PATIENCE)
            self.reader.nothing_was_said()
        xdotool('mouseup', 1)
        self.reader.wait_for_words('Line, 0.250mm')
        self.program.click((100, 150))
        self.wait_for_overlay(calibration='400.00 pixels per mm', selected='Line, 0.250mm')
        self.program.drag((100, 150), (120, 170))
        self.program.click((400, 400))
        self.wait_for_overlay(calibration='400.00 pixels per mm')
        # A click that changes nothing is nothing to tell.
        self.reader.nothing_was_said()
        self.reader.changes.clear()
        self.program.click((400, 400))
        key('ctrl+1')
        text = self.wait_for_overlay(reticle='Crosshair', calibration='400.00 pixels per mm')
        self.reader.wait_for_change('Microscope picture', text)
        check(len(self.reader.changes) == 1, f'{self.reader.changes} was told')
        key('ctrl+1')
        self.wait_for_overlay(calibration='400.00 pixels per mm')

    def stills_and_failures(self):
        # Two, before it is asked what they are.
        before = self.files()
        key('space', 'space')
        wait_for('two stills', lambda: len(self.files() - before) == 2, PATIENCE)
        self.reader.wait_for_words(*(f'Saved {name}' for name in self.files() - before))
        aside = self.stills + ' aside'
        os.rename(self.stills, aside)
        key('space')
        self.reader.wait_for_words(f'The picture was not saved: the folder "{self.stills}" is gone. '
                                   'Choose another folder in Options.')
        os.rename(aside, self.stills)

    def movie(self):
        before = self.files()
        key('ctrl+r')
        self.program.dialog('Record')
        key('Return')  # Start
        self.reader.find(self.reader.pyatspi.ROLE_LABEL, r'[1-9]\.\d')  # seconds
        key('Return')  # Stop
        self.program.no_dialog('Record')
        name, = wait_for('a movie', lambda: self.files() - before, PATIENCE)
        self.reader.wait_for_words(f'Saved {name}')

    def zoom(self):
        slider = self.reader.find(self.reader.pyatspi.ROLE_SLIDER, 'Zoom')
        value = slider.queryValue()
        check((value.minimumValue, value.maximumValue, value.minimumIncrement) == (50, 150, 25),
              'the zoom is not from 50 to 150 percent')
        check((value.currentValue, slider.description) == (100, '100 percent'),
              f'the zoom is {value.currentValue}, "{slider.description}"')
        key('ctrl+plus')
        self.reader.wait_for_change('Zoom', '125 percent')
        check((value.currentValue, slider.description) == (125, '125 percent'),
              f'the zoom is {value.currentValue}, "{slider.description}"')
        value.currentValue = 80
        self.reader.wait_for_description(slider, '75 percent')
        self.reader.find(self.reader.pyatspi.ROLE_LABEL, '75%')
        key('ctrl+0')
        self.reader.wait_for_description(slider, '100 percent')

    def options(self):
        button = self.reader.pyatspi.ROLE_PUSH_BUTTON
        key('ctrl+comma')
        self.program.dialog('Options')
        options = self.reader.find(self.reader.pyatspi.ROLE_DIALOG, 'Options.*')
        self.reader.wait_for_description(self.reader.find(button, 'Folder', options), self.stills)
        colour = self.reader.find(button, 'Line colour', options)
        self.reader.wait_for_description(colour, 'cyan, #00E6E6')
        key('alt+l')
        self.program.dialog('Line colour')
        key('alt+h', 'ctrl+a')
        type_text('#ff0000')
        key('Return')
        self.program.dialog('Options')
        self.reader.wait_for_change('Line colour', 'red, #FF0000')
        key('Escape')
        self.program.no_dialog('Options')


def main():
    program, = sys.argv[1:]
    os.environ.pop('QT_ACCESSIBILITY', None)
    os.environ.pop('NO_AT_BRIDGE', None)

    def out_of_time(*_):
        raise Failure(f'not done after {LIMIT} seconds')
    signal.signal(signal.SIGALRM, out_of_time)
    signal.signal(signal.SIGTERM, out_of_time)
    signal.alarm(LIMIT)
    with tempfile.TemporaryDirectory() as folder:
        heard = Heard(program, folder)
        try:
            heard.silent_run()
            heard.heard_run()
        except Failure as failure:
            print(failure)
            return 1
        finally:
            signal.alarm(0)
            heard.end()
    return 0


if __name__ == '__main__':
    sys.exit(main())
