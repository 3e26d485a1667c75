"""A day's work with the program: choose the microscope, calibrate, measure, save, record, quit, and
find things next morning as they were left.

    day.py PROGRAM LABEL_IMAGE OUT      leaves pictures of every step, the stills and the movie in OUT

PROGRAM is tessary-demo, or tessary where a microscope with a stage micrometer like the simulated
one's is plugged in: 1 mm over 0.625 of the width, centred.
"""

import glob
import json
import math
import os
import shutil
import subprocess
import sys
import time

from desk import SLOW, Failure, Program, check, key, screen, type_text, wait_for, xdotool
from picture import Labels, Picture

WIDTH, HEIGHT = 1280, 720
NOWHERE = (600, 200)  # in the picture, with nothing to hover over

# The buttons in the toolbar's order.
BUTTONS = ['Help', 'Options', 'Microscope', 'Shutter', 'Record', 'Folder', 'Calibration', 'Crosshair',
           'Grid', 'Concentric', 'Line', 'Line2', 'Circle', 'Rectangle', 'Angle', 'Pencil', 'Text',
           'Stop measure', 'Delete Last', 'Delete All']

# What lies over the picture besides the overlay: frame rate, zoom in per cent, zoom slider.
WIDGETS = [(15, HEIGHT - 28, 150, 19), (WIDTH - 160, HEIGHT - 28, 37, 19),
           (WIDTH - 120, HEIGHT - 28, 100, 20)]


class Day:
    def __init__(self, program, label_image, out):
        self.program_file, self.out = program, out
        self.simulated = os.path.basename(program) == 'tessary-demo'
        shutil.rmtree(out, ignore_errors=True)
        os.makedirs(out)
        self.labels = Labels(label_image)
        os.environ['HOME'] = os.path.join(out, 'home')
        self.folder = os.path.join(out, 'home', 'Pictures', 'Samples')
        self.pictures = 0
        self.began = time.monotonic()
        # What opens folders on this desk: it only notes what it was asked to open.
        self.opened = os.path.join(out, 'opened')
        tools = os.path.join(out, 'bin')
        os.makedirs(tools)
        with open(os.path.join(tools, 'xdg-open'), 'w', encoding='utf-8') as file:
            file.write(f'#!/bin/sh\nprintf "%s\\n" "$1" >"{self.opened}"\n')
        os.chmod(os.path.join(tools, 'xdg-open'), 0o755)
        os.environ['PATH'] = tools + os.pathsep + os.environ['PATH']
        self.program = None

    def launch(self):
        self.program = Program(self.program_file, os.path.join(self.out, 'log.txt'))

    def show(self, name):
        """Leaves a picture of the screen for people to look at."""
        self.pictures += 1
        path = os.path.join(self.out, f'{self.pictures:02}-{name}.png')
        main = self.program.main
        picture = screen()
        left, top = max(main.x - 4, 0), max(main.y - 28, 0)
        right = min(main.x + main.width + 4, picture.width)
        bottom = min(main.y + main.height + 8, picture.height)
        picture.cut(left, top, right - left, bottom - top).save(path)
        print(f'{time.monotonic() - self.began:5.1f} s  {name}', flush=True)

    def command(self, name):
        self.program.click_screen(self.places[name])

    def find_buttons(self):
        self.program.move_to(NOWHERE)  # a button below the pointer is framed

        def places_of_all():
            places = self.program.buttons()
            return places if len(places) == len(BUTTONS) else None
        places = wait_for(f'{len(BUTTONS)} buttons in the toolbar', places_of_all)
        self.places = dict(zip(BUTTONS, places))

    # Morning.

    def read_help(self):
        key('F1')
        self.program.dialog('Help')
        self.show('help')
        key('alt+F4')
        self.program.no_dialog('Help')

    def choose(self, steps, width, height):
        """The resolution that is so many steps below the smallest one, in the sheet."""
        key('ctrl+m')
        self.program.dialog('Microscope')
        key('alt+r')
        key('Home', *['Down'] * steps)
        self.show(f'microscope-{width}x{height}')
        key('Return')
        self.program.no_dialog('Microscope')
        self.program.wait_for_picture(width, height)
        remembered = [self.program.setting(name) for name in ('width', 'height')]
        check(remembered == [str(width), str(height)], remembered)
        self.microscope = self.program.setting('uniqueID')
        check(self.microscope, 'no microscope was remembered')

    def axis(self, picture, x):
        """How much of the picture's height a line down at x takes."""
        return max(picture.overlay_share((column, y) for y in range(HEIGHT))
                   for column in (x - 1, x))

    def handles(self):
        """The columns of the calibration line's two handles."""
        picture = self.program.picture()
        rows = range(HEIGHT // 2 - 50, HEIGHT // 2 - 40)
        return [x for x in range(picture.width)
                if picture.overlay_share((x, y) for y in rows) == 1.0]

    def calibrate(self):
        program = self.program
        self.command('Calibration')
        program.dialog('Calibrations')
        self.show('calibrations')
        key('alt+b')
        program.dialog('Calibrate')
        left, right = wait_for('the calibration line', lambda: self.two_handles())
        check(abs(left + right - WIDTH) <= 2, f'the line is not centred: {left} to {right}')
        height = HEIGHT // 2 - 20
        # From edge to edge of the stage micrometer's millimetre.
        for handle, mark in ((left, 240), (right, 1040)):
            program.move_to((handle, height))
            xdotool('mousedown', 1)
            program.move_to((handle + (mark - handle) // 2, height))
            program.move_to((handle + mark - handle, height))
            wait_for(f'the handle to reach {mark}',
                     lambda: any(abs(x - mark) <= 1 for x in self.handles()))
            xdotool('mouseup', 1)
        program.move_to(NOWHERE)
        self.show('calibrating')
        window = program.window('Calibrate')
        # Into its title bar, so that the keyboard is in it again.
        program.click_screen((window.x + window.width // 2, window.y - 8))
        program.dialog('Calibrate')
        key('alt+l', 'ctrl+a')
        type_text('1')
        self.show('length')
        key('Return')
        program.no_dialog('Calibrate')
        slot = program.setting('calibrations').split(';')[0].split(',')
        # Unit, pixels, length, and the size of the frame.
        check(slot[1:5] == ['0', '800', '1.000000', str(WIDTH + HEIGHT * 65536)],
              f'the first slot is {slot}')

    def two_handles(self):
        columns = self.handles()
        return (columns[0], columns[-1]) if columns and columns[-1] - columns[0] > 50 else None

    def rename(self):
        self.command('Calibration')
        window = self.program.dialog('Calibrations')
        key('alt+r')
        # The selected row is dark, the field in it is light.
        wait_for('the name to be editable',
                 lambda: min(screen().at(window.x + 180, window.y + 40)) > 230)
        key('ctrl+a')
        type_text('Objective 4x')
        key('Return')
        wait_for('the name to be kept',
                 lambda: self.program.setting('calibrations').startswith('Objective 4x,'))
        self.show('renamed')
        key('alt+c')
        self.program.no_dialog('Calibrations')

    def reticles(self):
        program, middle, step = self.program, WIDTH // 2, 80  # 0.1 mm
        program.move_to(NOWHERE)
        # A calibration brings the crosshair up, with the length of its marks.
        label_x = middle + step - self.label_width('0.1mm') / 2

        def crosshair(picture):
            return (self.axis(picture, middle) > 0.98 and self.axis(picture, middle + step) < 0.2 and
                    self.labels.share(picture, '0.1mm', (int(label_x), HEIGHT // 2 + 4)) > 0.98)
        wait_for('the crosshair', lambda: crosshair(program.picture()))
        self.show('crosshair')
        self.command('Grid')
        program.move_to(NOWHERE)
        wait_for('the grid', lambda: all(
            self.axis(program.picture(), middle + step * i) > 0.9 for i in (-2, -1, 0, 1, 2)))
        self.show('grid')
        self.command('Concentric')
        program.move_to(NOWHERE)

        def ring(picture, radius):
            points = [(middle + radius * math.cos(a), HEIGHT // 2 + radius * math.sin(a))
                      for a in (i * math.pi / 90 for i in range(180))]
            return sum(any(picture.is_overlay(round(x) + dx, round(y) + dy)
                           for dx in (-1, 0, 1) for dy in (-1, 0, 1)) for x, y in points) / 180
        wait_for('the rings', lambda: all(ring(program.picture(), step * i) > 0.95
                                          for i in (1, 2, 3)))
        self.show('rings')
        # Once more puts them away; the menu brings the crosshair back.
        self.command('Concentric')
        program.move_to(NOWHERE)
        wait_for('the rings to go', lambda: self.axis(program.picture(), middle) < 0.2)
        program.menu('e', 1)
        wait_for('the crosshair', lambda: crosshair(program.picture()))

    def label_width(self, text):
        """The room that a reticle leaves for its label."""
        label, = self.labels.draw([text])
        return label['width'] + 8

    # What is measured: the tool, its points, and the label that is expected at one of them.

    def measure(self):
        program = self.program
        for tool, points, third in (('Line', [(200, 120), (520, 120)], None),
                                    ('Line2', [(120, 480), (420, 480)], (270, 560)),
                                    ('Circle', [(860, 200), (960, 200)], None),
                                    ('Rectangle', [(760, 440), (1000, 620)], None),
                                    ('Angle', [(1100, 640), (1220, 640)], (1100, 520)),
                                    ('Pencil', [(480, 560), (540, 520), (600, 580)], None)):
            self.command(tool)
            program.drag(*points)
            if third:
                program.move_to(third)
                wait_for(f'the third point of {tool}', lambda: program.picture().overlay_share(
                    [(third[0] + dx, third[1] + dy) for dx in (-1, 0, 1) for dy in (-1, 0, 1)]) > 0)
                xdotool('click', 1)
        program.move_to(NOWHERE)
        self.expected = {'0.400mm': (200, 120), '0.100mm': (270, 560), 'R:0.125mm': (860, 200),
                         '0.300x0.225mm': (760, 440), '90.000°': (1100, 640)}
        wait_for('the labels', lambda: self.labels_show(program.picture()))
        self.show('measured')

    def labels_show(self, picture):
        return all(self.labels.share(picture, text, place) == 1.0
                   for text, place in self.expected.items())

    def write(self):
        program = self.program
        key('ctrl+t')
        program.dialog('Text')
        type_text('Onion skin')
        self.show('text')
        key('Return')
        program.no_dialog('Text')
        # It comes up in the middle of the picture, and is dragged to its place.
        start, place = (WIDTH // 2 + 10, HEIGHT // 2 - 38), (1050, 60)
        wait_for('the text', lambda: self.labels.share(
            program.picture(), 'Onion skin', start) > 0.9)
        program.move_to((start[0] + 20, start[1] + 15))
        xdotool('mousedown', 1)
        program.move_to((place[0] + 20, place[1] + 15))
        wait_for('the text in its place', lambda: self.labels.share(
            program.picture(), 'Onion skin', place) > 0.9)
        xdotool('mouseup', 1)
        program.click(NOWHERE)
        self.expected['Onion skin'] = place
        wait_for('the text to be let go', lambda: self.labels_show(program.picture()))
        self.show('written')

    # What is saved.

    def saved(self, extension):
        return sorted(glob.glob(os.path.join(self.folder, '*.' + extension)))

    def still(self, extension):
        """Saves a still with the Space key, and returns its path once the notice has gone."""
        before = set(self.saved(extension))
        key('space')
        if not before and extension == 'jpg':
            self.program.dialog('Choose path')
            type_text('Samples')  # it opens with the user's pictures
            self.show('folder')
            key('Return')
            self.program.no_dialog('Choose path')
        notice = self.program.window('File saved')
        self.show(f'saved-{extension}')
        path, = set(self.saved(extension)) - before
        self.program.click_screen((notice.x + notice.width // 2, notice.y + notice.height // 2))
        wait_for('the notice to go', lambda: not self.program.windows('File saved'))
        self.program.move_to(NOWHERE)
        return path

    def check_overlay(self, picture, tolerance):
        """The overlay's lines, where they were drawn, in a still."""
        check((picture.width, picture.height) == (WIDTH, HEIGHT), 'size of a still')
        middle = WIDTH // 2

        def across(y, x0, x1):
            return max(picture.overlay_share(((x, row) for x in range(x0, x1)), tolerance)
                       for row in (y - 1, y))
        for name, share in (('line', across(120, 200, 520)), ('baseline', across(480, 120, 420)),
                            ('parallel', across(560, 120, 420)), ('radius', across(200, 866, 959)),
                            ('side', across(620, 760, 1000)), ('arm', across(640, 1100, 1220)),
                            ('crosshair', across(HEIGHT // 2, 0, WIDTH))):
            check(share > 0.95, f'{name}: {share:.2f} of it is in the still')
        check(picture.overlay_share([(300, 240), (middle + 33, 700), (20, 20)], tolerance) == 0,
              'the overlay is where nothing was drawn')

    def stills(self):
        jpeg = self.still('jpg')
        with open(jpeg, 'rb') as file:
            check(file.read(3) == b'\xff\xd8\xff', 'not a JPEG')
        self.check_overlay(Picture.from_file(jpeg), 60)

        key('ctrl+comma')
        self.program.dialog('Options')
        key('alt+p', 'Down')
        self.show('options')
        key('Return')
        self.program.no_dialog('Options')
        check(self.program.setting('imagePNG') == '1', 'the photo format was not kept')

        path = self.still('png')
        with open(path, 'rb') as file:
            check(file.read(8) == b'\x89PNG\r\n\x1a\n', 'not a PNG')
        still = Picture.from_file(path)
        self.check_overlay(still, 1)
        for text, place in self.expected.items():
            check(self.labels.share(still, text, place) == 1.0, f'"{text}" is not in the still')
        if self.simulated:  # whose pictures come round in time
            self.compare_with_screen(still)
        check(self.saved('jpg') == [jpeg] and self.saved('png') == [path], 'files of more names')

    @staticmethod
    def index(picture):
        """Which picture of its loop the simulated microscope shows: the squares at the bottom."""
        return sum((picture.at(16 * bit + 8, HEIGHT - 4)[0] > 128) << bit for bit in range(16))

    def compare_with_screen(self, still):
        """The still is what the window shows, to the last bit, when the same picture comes round."""
        wanted, loop = self.index(still), 48
        for _ in range(60):
            begin = time.monotonic()
            shown = self.program.picture()
            if self.index(shown) == wanted:
                break
            # Aim the next look at the moment when it is due again.
            ahead = (wanted - self.index(shown)) % loop / 30
            wait_for('the picture to come round', lambda: time.monotonic() >= begin + ahead)
        else:
            raise Failure(f'picture {wanted} never came round')
        different = 0
        for y in range(HEIGHT):
            row = slice(y * WIDTH * 3, (y + 1) * WIDTH * 3)
            if still.pixels[row] == shown.pixels[row]:
                continue
            for x in range(WIDTH):
                in_widget = any(a <= x < a + w and b <= y < b + h for a, b, w, h in WIDGETS)
                different += not in_widget and still.at(x, y) != shown.at(x, y)
        check(different == 0, f'{different} pixels of the still differ from the screen')

    def record(self):
        key('ctrl+r')
        self.program.dialog('Record')
        started = time.monotonic()
        key('Return')

        def has_begun(path):
            try:
                return os.path.getsize(path) > 0
            except FileNotFoundError:  # some disks are asked for a file of this name first
                return False

        def movie():
            return [path for path in self.saved('mp4') if has_begun(path)]
        path, = wait_for('the movie to begin', movie)
        begin = time.monotonic()
        wait_for('five seconds', lambda: time.monotonic() >= begin + 5)
        self.show('recording')
        key('Return')
        self.program.no_dialog('Record')
        longest = time.monotonic() - started
        wait_for('the movie to be whole', lambda: self.is_whole(path))
        self.check_movie(path, longest)

    @staticmethod
    def boxes(path):
        with open(path, 'rb') as file:
            data = file.read()
        at, names = 0, []
        while at + 8 <= len(data):
            size = int.from_bytes(data[at:at + 4], 'big')
            header = 8
            if size == 1:
                size, header = int.from_bytes(data[at + 8:at + 16], 'big'), 16
            names.append((data[at + 4:at + 8], data[at + header:at + size] if size < 64 else b''))
            if size < header:
                break
            at += size
        return names

    def is_whole(self, path):
        names = [name for name, _ in self.boxes(path)]
        return b'moov' in names and b'moof' not in names

    def check_movie(self, path, longest):
        """`longest` is the time in seconds that the recording can have taken."""
        kind, content = self.boxes(path)[0]
        check(kind == b'ftyp' and content[:4] == b'qt  ', f'it begins with {kind} {content}')
        done = subprocess.run(['ffprobe', '-v', 'error', '-of', 'json', '-count_frames',
                               '-show_streams', '-show_packets', '-show_format', path],
                              check=True, text=True, stdout=subprocess.PIPE)
        answer = json.loads(done.stdout)
        stream, = answer['streams']
        check((stream['codec_name'], stream['width'], stream['height']) == ('h264', WIDTH, HEIGHT),
              f'{stream["codec_name"]} {stream["width"]}x{stream["height"]}')
        seconds, frames = float(answer['format']['duration']), int(stream['nb_read_frames'])
        print(f'         movie: {seconds:.2f} s, {frames} frames', flush=True)
        # The last frame lasts as long as the one before it, a second at the most, and so beyond the
        # recording's end.
        *_, before, last = sorted(float(packet['pts_time']) for packet in answer['packets'])
        check(abs(seconds - last - min(last - before, 1)) < 0.002,
              f'the last frame lasts {seconds - last} s, the one before it {last - before} s')
        # Frames are dropped where the machine can't encode them in time, and never shown late.
        fewest = 0.2 if SLOW else 3
        check(4.5 < seconds and last < longest and fewest < frames / seconds < 31,
              f'{frames} frames in {seconds} s, the last after {last} of at most {longest} s')
        frame = os.path.join(self.out, 'movie-frame.png')
        subprocess.run(['ffmpeg', '-v', 'error', '-y', '-ss', '2', '-i', path, '-frames:v', '1', frame],
                       check=True)
        picture = Picture.from_file(frame)
        check((picture.width, picture.height) == (WIDTH, HEIGHT), 'size of a frame')
        everywhere = [(x, y) for y in range(0, HEIGHT, 2) for x in range(WIDTH)]
        everywhere += [(WIDTH // 2 - dx, y) for y in range(HEIGHT) for dx in (0, 1)]
        check(picture.overlay_share(everywhere, 60) == 0, 'the overlay is in the movie')
        # The picture itself is: the micrometer's first line and the ground beside it.
        check(max(picture.at(240, 320)) < 70 and min(picture.at(30, 180)) > 90, 'not the picture')

    def open_folder(self):
        self.command('Folder')
        wait_for('the folder to be opened', lambda: os.path.exists(self.opened) and
                 os.path.getsize(self.opened) > 0)
        with open(self.opened, encoding='utf-8') as file:
            check(file.read() == f'file://{self.folder}\n', 'another folder was opened')

    def quit(self):
        # With another window open, which must not keep the program running.
        key('F1')
        self.program.dialog('Help')
        self.program.give_keyboard(self.program.main)
        key('ctrl+q')
        check(self.program.wait_for_end() == 0, 'the program ended with an error')
        self.program.end()

    # Next morning.

    def next_morning(self):
        self.launch()
        self.program.wait_for_picture(WIDTH, HEIGHT)
        check(self.program.setting('uniqueID') == self.microscope, 'the microscope')
        self.find_buttons()
        self.command('Line')
        self.program.drag((240, 500), (640, 500))
        self.program.move_to(NOWHERE)
        # Without a calibration nothing is labelled.
        lengths = [f'{value / 1000:.3f}mm' for value in range(490, 511)]
        picture = self.program.picture()
        check(picture.overlay_share((x, y) for x in range(246, 400) for y in range(504, 540)) == 0,
              'a label without a calibration')
        self.show('uncalibrated')
        key('ctrl+k')
        self.program.dialog('Calibrations')
        self.show('calibrations-kept')
        key('alt+a')
        self.program.no_dialog('Calibrations')
        self.program.move_to(NOWHERE)
        wait_for('the length', lambda: self.labels.read(
            self.program.picture(), (240, 500), lengths))
        self.show('applied')
        path = self.still('png')
        read = self.labels.read(Picture.from_file(path), (240, 500), lengths)
        check(read, 'no length can be read in the still')
        print(f'         400 pixels, half a millimetre: {read}', flush=True)
        check(abs(float(read.removesuffix('mm')) - 0.5) <= 0.005, f'half a millimetre reads {read}')

    def spend(self):
        try:
            os.makedirs(self.folder)
            self.launch()
            if self.simulated:  # the demo opens its microscope by itself
                self.program.wait_for_picture(WIDTH, HEIGHT)
            self.show('launched')
            self.read_help()
            self.choose(0, 640, 480)
            self.choose(1, WIDTH, HEIGHT)
            self.find_buttons()
            self.calibrate()
            self.rename()
            self.reticles()
            self.measure()
            self.write()
            self.stills()
            self.record()
            self.open_folder()
            self.quit()
            self.next_morning()
            self.quit()
        except Failure as failure:
            self.show('failed')
            print(failure, file=sys.stderr)
            return 1
        finally:
            if self.program:
                self.program.end()
        return 0


if __name__ == '__main__':
    sys.exit(Day(*sys.argv[1:4]).spend())
