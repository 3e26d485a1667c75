"""The desk that a test sits at: a display with the program on it, a pointer and a keyboard."""

import os
import re
import subprocess
import time

from picture import Picture

# On an emulated machine everything takes long, and little fits into a second of a movie.
SLOW = 'TESSARY_SLOW_MACHINE' in os.environ
# Seconds; a busy machine may be slow, so this says only when to give up.
PATIENCE = 300 if SLOW else 60


class Failure(Exception):
    pass


def check(condition, message):
    if not condition:
        raise Failure(message)


def wait_for(what, condition, patience=PATIENCE):
    """Asks again and again until `condition` answers something, and returns that."""
    end = time.monotonic() + patience
    while True:
        answer = condition()
        if answer:
            return answer
        if time.monotonic() > end:
            raise Failure(f'still waiting for {what} after {patience} seconds')
        time.sleep(0.02)


def xdotool(*arguments):
    subprocess.run(['xdotool', *map(str, arguments)], check=True, stdout=subprocess.DEVNULL)


def key(*names):
    xdotool('key', '--clearmodifiers', *names)


def type_text(text):
    xdotool('type', '--clearmodifiers', text)


def screen():
    done = subprocess.run(['import', '-silent', '-window', 'root', '-depth', '8', 'ppm:-'],
                          check=True, stdout=subprocess.PIPE)
    return Picture.from_ppm(done.stdout)


def settings_folder(program):
    """Where that program keeps its settings."""
    return os.path.join(os.environ['XDG_CONFIG_HOME'], os.path.basename(program))


def settings_file(program):
    return os.path.join(settings_folder(program), os.path.basename(program) + '.ini')


def write_settings(program, **values):
    """What it finds at its next start, in place of what is there."""
    os.makedirs(settings_folder(program), exist_ok=True)
    with open(settings_file(program), 'w', encoding='utf-8') as file:
        file.write('[General]\n' + ''.join(f'{name}={value}\n' for name, value in values.items()))


class Window:
    """A window of the program by its X id; x, y, width and height without its frame."""

    def __init__(self, number):
        self.number = number
        self.measure()

    def measure(self):
        text = subprocess.run(['xwininfo', '-id', self.number], check=True, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout

        def value(name):
            return int(re.search(name + r':\s+(-?\d+)', text).group(1))
        self.x, self.y = value('Absolute upper-left X'), value('Absolute upper-left Y')
        self.width, self.height = value('Width'), value('Height')
        return self

    def place(self):
        self.measure()
        return self.x, self.y, self.width, self.height


class Program:
    """The program under test. `settings` is the file that it keeps its settings in."""

    def __init__(self, program, log, environment=None):
        self.settings = settings_file(program)
        self.log = open(log, 'a', encoding='utf-8')
        self.process = subprocess.Popen([program], stdout=self.log, stderr=self.log,
                                        env={**os.environ, **(environment or {})})
        try:
            self.main = self.window('$')  # the one window without a title of its own
        except Failure:
            self.end()
            raise

    # What is on screen.

    def windows(self, title):
        """X ids of the visible windows whose title matches `title` from its start."""
        # Searching fails now and then while windows come and go; the next try finds them.
        done = subprocess.run(['xdotool', 'search', '--all', '--onlyvisible', '--pid',
                               str(self.process.pid), '--name', '^' + title],
                              text=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        check(self.process.poll() is None, 'the program has ended')
        return done.stdout.split()

    def window(self, title):
        """Waits for the window of that title."""
        number, = wait_for(f'a window "{title}"', lambda: self.windows(title))[:1]
        return Window(number)

    def dialog(self, title):
        """Waits for the window of that title, and until the keyboard is its own."""
        window = self.window(title)
        self.wait_for_keyboard(window)
        return window

    def has_keyboard(self, window):
        return subprocess.run(['xdotool', 'getactivewindow'], text=True, stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL).stdout.strip() == window.number

    def wait_for_keyboard(self, window):
        wait_for('the keyboard', lambda: self.has_keyboard(window))

    def give_keyboard(self, window):
        """Asks for it until it is granted: now and then the window manager lets a wish pass."""
        def granted():
            if self.has_keyboard(window):
                return True
            subprocess.run(['xdotool', 'windowactivate', window.number], check=False,
                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            return False
        wait_for('the keyboard', granted)

    def no_dialog(self, title):
        """Waits until no window has that title and the main window has the keyboard again."""
        wait_for(f'"{title}" to go', lambda: not self.windows(title))
        self.wait_for_keyboard(self.main)

    def wait_for_picture(self, width, height):
        """Until the window fits a picture of this size, stands still, and shows it."""
        last = None

        def settled():
            nonlocal last
            before, last = last, self.main.place()
            return before == last and last[2] == width and last[3] >= height
        wait_for(f'a window for {width}x{height}', settled)
        self.wait_for_keyboard(self.main)
        self.picture_size = (width, height)
        wait_for('a picture in it', lambda: max(self.picture().at(width // 2, height // 4)) > 60)

    def origin(self):
        """Where the picture's upper left corner is on screen: it fills the window's lower part."""
        width, height = self.picture_size
        return self.main.x, self.main.y + self.main.height - height

    def picture(self):
        """The picture area as it is on screen."""
        return screen().cut(*self.origin(), *self.picture_size)

    def buttons(self):
        """The toolbar's buttons from the left, as the places of their icons on screen: whatever
        stands out from the ground between the menu bar and the picture."""
        bottom = self.origin()[1]
        band = screen().cut(self.main.x, bottom - 34, self.main.width, 30)
        marked = []
        for x in range(band.width):
            ground = (band.at(0, y) for y in range(band.height))
            if any(max(abs(a - b) for a, b in zip(band.at(x, y), g)) > 24
                   for y, g in enumerate(ground)):
                marked.append(x)
        runs = []
        for x in marked:
            if runs and x - runs[-1][1] <= 6:
                runs[-1][1] = x
            else:
                runs.append([x, x])
        return [(self.main.x + (a + b) // 2, bottom - 19) for a, b in runs]

    # Pointer and keyboard. Points are the picture's own pixels.

    def menu(self, letter, item):
        """A command by the menu of that letter: the item that many steps below the first one. While a
        menu is open, it has the pointer."""
        key(f'alt+{letter}')
        wait_for('the menu', lambda: len(self.windows('$')) > 1)
        key(*['Down'] * item, 'Return')
        wait_for('the menu to close', lambda: len(self.windows('$')) == 1)

    def move_to(self, point):
        x, y = self.origin()
        xdotool('mousemove', x + point[0], y + point[1])

    def drag(self, *points):
        """Press at the first point, on to each further one, release at the last. What is drawn has to
        reach each point before the pointer goes on."""
        self.move_to(points[0])
        xdotool('mousedown', 1)
        for point in points[1:]:
            self.move_to(point)
            wait_for(f'what is drawn to reach {point}', lambda: self.picture().overlay_share(
                [(point[0] + dx, point[1] + dy) for dx in range(-2, 3) for dy in range(-2, 3)]) > 0)
        xdotool('mouseup', 1)

    def click(self, point):
        self.move_to(point)
        xdotool('click', 1)

    def click_screen(self, place):
        xdotool('mousemove', *place, 'click', 1)

    # What it keeps.

    def setting(self, name):
        try:
            with open(self.settings, encoding='utf-8') as file:
                for line in file:
                    left, _, right = line.rstrip('\n').partition('=')
                    if left == name:
                        return right
        except FileNotFoundError:
            pass
        return None

    def wait_for_end(self):
        """Waits until the process ends by itself, and returns its exit status."""
        return wait_for('the program to end', lambda: self.process.poll() is not None and
                        [self.process.returncode])[0]

    def end(self):
        if self.process.poll() is None:
            self.process.terminate()
            self.process.wait(10)
        self.log.close()
