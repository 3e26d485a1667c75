"""The installed demo as a new user meets it: the picture, a still, a movie, the end. On a display of
its own, driven by the keyboard.   tests/ui/with_display python3 -B debian/tests/demo.py"""

import glob
import json
import os
import pathlib
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / 'tests/day'))
# pylint: disable-next=wrong-import-position
from desk import Program, check, key, type_text, wait_for

WIDTH, HEIGHT = 1280, 720


def stream(path):
    """What the file's one stream is, all of it decoded without a complaint."""
    done = subprocess.run(['ffprobe', '-v', 'error', '-count_frames', '-show_streams', '-of', 'json',
                           path], check=True, capture_output=True, text=True)
    check(not done.stderr, f'{path}: {done.stderr}')
    only, = json.loads(done.stdout)['streams']
    check((only['width'], only['height']) == (WIDTH, HEIGHT), f'{path}: {only}')
    return only


def use(home):
    os.environ['HOME'] = home
    folder = os.path.join(home, 'Pictures', 'Samples')
    os.makedirs(folder)

    def saved(extension):
        return glob.glob(os.path.join(folder, '*.' + extension))

    program = Program('tessary-demo', os.path.join(home, 'log'))
    try:
        program.wait_for_picture(WIDTH, HEIGHT)
        picture = program.picture()
        colours = len({picture.at(x, y) for x in range(0, WIDTH, 4) for y in range(0, HEIGHT, 4)})
        check(colours > 1000, f'{colours} colours are no picture')
        print(f'a picture of {colours} colours')

        key('space')
        program.dialog('Choose path')
        type_text('Samples')
        key('Return')
        program.no_dialog('Choose path')
        still, = wait_for('a still', lambda: saved('jpg'))
        check(stream(still)['codec_name'] == 'mjpeg', 'the still is no JPEG')
        print('a still')

        key('ctrl+r')
        program.dialog('Record')
        key('Return')
        movie, = wait_for('the movie to begin', lambda: saved('mp4'))
        wait_for('a megabyte of it', lambda: os.path.getsize(movie) > 1_000_000)
        key('Return')
        program.no_dialog('Record')

        key('ctrl+q')
        check(program.wait_for_end() == 0, 'it ended badly')

        frames = int(stream(movie)['nb_read_frames'])
        check(frames > 5, f'{frames} frames are no movie')
        print(f'a movie of {frames} frames')
    finally:
        program.end()
        with open(program.log.name, encoding='utf-8') as log:
            print(log.read(), file=sys.stderr)


with tempfile.TemporaryDirectory() as new_home:
    use(new_home)
