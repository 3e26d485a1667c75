"""What is drawn lies under the pointer, at every scale factor of the screen.

    scale_factors.py PROGRAM LABEL_IMAGE OUT        leaves a picture of each in OUT
"""

import math
import os
import shutil
import sys

from desk import Failure, Program, check, screen, wait_for, xdotool

WIDTH, HEIGHT = 640, 480
LINE = 4  # in the menu Measure, below the first item
REMEMBERED = f'''[General]
uniqueID=simulated-microscope
videoType={int.from_bytes(b'dmb1', 'big')}
width={WIDTH}
height={HEIGHT}
'''


def drawn(picture, x, y):
    """Whether the overlay is there, smoothed by the scaling or not: nothing else is so green and
    blue."""
    red, green, blue = picture.at(x, y)
    return min(green, blue) > red + 60


def line_through(picture, row):
    """First and last column of what is drawn, and the row, of those near `row`, that holds most."""
    def columns(y):
        return [x for x in range(picture.width) if drawn(picture, x, y)]
    best = max(range(row - 8, row + 9), key=lambda y: len(columns(y)))
    found = columns(best)
    return (found[0], found[-1], best) if found else None


def draw_and_compare(program, factor, area, points, path):
    """Draws a line from point to point, in pixels of the screen, and compares it with them. The area is
    the picture's: x, y, width, height."""
    (x0, y0), (x1, _) = points
    program.menu('e', LINE)

    def at(x, y):
        return area[0] + x, area[1] + y

    def shown():
        return screen().cut(*area)
    xdotool('mousemove', *at(x0, y0), 'mousedown', 1)
    xdotool('mousemove', *at((x0 + x1) // 2, y0))
    xdotool('mousemove', *at(x1, y0))
    wait_for('the line', lambda: any(drawn(shown(), x1 - 2 * dx, y0 + dy)
                                     for dx in (2, 3) for dy in (-1, 0, 1)))
    xdotool('mouseup', 1)
    xdotool('mousemove', *at((x0 + x1) // 2, y0 // 3))  # nothing there to hover over

    def settled():
        found = line_through(shown(), y0)
        return found and found[1] - found[0] > (x1 - x0) // 2 and found
    left, right, row = wait_for('the line to settle', settled)
    shown().save(path)
    offsets = (left - x0, right - x1, row - y0)
    print(f'  from {x0},{y0} to {x1},{y0}: off by {offsets[0]} and {offsets[1]} across, {offsets[2]} down',
          flush=True)
    # One pixel of the camera's covers so many of the screen's; the line can lie anywhere in it.
    nearest = math.ceil(factor)
    check(all(abs(offset) <= nearest for offset in offsets), f'off by {offsets} at factor {factor}')


def judge(program_file, factor, out):
    print(f'scale factor {factor}', flush=True)
    program = Program(program_file, os.path.join(out, 'log.txt'), {'QT_SCALE_FACTOR': str(factor)})
    try:
        width, height = int(WIDTH * factor), int(HEIGHT * factor)
        program.wait_for_picture(width, height)
        # Bars above the picture, and at most a pixel of the window more than the picture needs.
        bars = program.main.height - height
        area = (*program.origin(), width, height)
        points = [(int(101 * factor) + 1, int(330 * factor) + 1), (int(502 * factor), 0)]
        draw_and_compare(program, factor, area, points, os.path.join(out, f'{factor}-whole.png'))
        # The same in a window that shows a part of the picture, scrolled.
        width, height = int(500 * factor), int(400 * factor)
        xdotool('windowsize', program.main.number, width, height + bars)
        wait_for('the smaller window', lambda: program.main.place()[2:] == (width, height + bars))
        area = (program.main.x, program.main.y + bars, width, height)
        points = [(int(77 * factor) + 1, int(255 * factor)), (int(398 * factor) + 1, 0)]
        draw_and_compare(program, factor, area, points, os.path.join(out, f'{factor}-part.png'))
    except Failure:
        screen().save(os.path.join(out, f'{factor}-failed.png'))
        raise
    finally:
        program.end()


def main(program_file, _, out):
    shutil.rmtree(out, ignore_errors=True)
    os.makedirs(out)
    folder = os.path.join(os.environ['XDG_CONFIG_HOME'], 'tessary-demo')
    os.makedirs(folder)
    with open(os.path.join(folder, 'tessary-demo.ini'), 'w', encoding='utf-8') as file:
        file.write(REMEMBERED)
    try:
        for factor in (1, 1.5, 2):
            judge(program_file, factor, out)
    except Failure as failure:
        print(failure, file=sys.stderr)
        return 1
    return 0


if __name__ == '__main__':
    sys.exit(main(*sys.argv[1:4]))
