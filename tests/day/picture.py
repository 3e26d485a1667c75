"""Pictures as the tests see them: decoded pixels, and the labels in them."""

import json
import subprocess

# The overlay's colour until another one is chosen: 0.0, 0.9, 0.9.
OVERLAY = (0, 230, 230)


class Picture:
    """Decoded pixels, red, green and blue of 8 bits each."""

    def __init__(self, width, height, pixels):
        self.width, self.height, self.pixels = width, height, pixels

    @classmethod
    def from_ppm(cls, data):
        # "P6", width, height, 255, each followed by white space, and then the pixels.
        fields, at = [], 0
        while len(fields) < 4:
            end = at
            while data[end] not in b' \n\t':
                end += 1
            if end > at:
                fields.append(data[at:end])
            at = end + 1
        assert fields[0] == b'P6' and fields[3] == b'255', fields
        return cls(int(fields[1]), int(fields[2]), data[at:])

    @classmethod
    def from_file(cls, path):
        """Any format that ImageMagick reads."""
        done = subprocess.run(['convert', path, '-depth', '8', 'ppm:-'], check=True,
                              stdout=subprocess.PIPE)
        return cls.from_ppm(done.stdout)

    def at(self, x, y):
        i = (y * self.width + x) * 3
        return tuple(self.pixels[i:i + 3])

    def cut(self, x, y, width, height):
        inside = 0 <= x <= x + width <= self.width and 0 <= y <= y + height <= self.height
        assert inside, f'{width}x{height} at {x},{y} reaches out of {self.width}x{self.height}'
        rows = []
        for row in range(y, y + height):
            i = (row * self.width + x) * 3
            rows.append(self.pixels[i:i + width * 3])
        return Picture(width, height, b''.join(rows))

    def is_overlay(self, x, y, tolerance=3):
        return close(self.at(x, y), OVERLAY, tolerance)

    def overlay_share(self, points, tolerance=3):
        """How many of these points have the overlay's colour, from 0 to 1."""
        points = list(points)
        return sum(self.is_overlay(x, y, tolerance) for x, y in points) / len(points)

    def save(self, path):
        header = b'P6 %d %d 255\n' % (self.width, self.height)
        subprocess.run(['convert', 'ppm:-', '-define', 'png:compression-level=1', path],
                       input=header + self.pixels, check=True)


def close(color, other, tolerance):
    return all(abs(a - b) <= tolerance for a, b in zip(color, other))


class Labels:
    """Reads labels by drawing what they could say, as the program does, and comparing pixels."""

    def __init__(self, label_image, size=26, color=(0.0, 0.9, 0.9)):
        self.command = [label_image, str(size)] + [str(part) for part in color]
        self.drawn = {}

    def draw(self, texts):
        missing = [text for text in texts if text not in self.drawn]
        if missing:
            done = subprocess.run(self.command, input='\n'.join(missing) + '\n', text=True,
                                  check=True, stdout=subprocess.PIPE)
            for text, line in zip(missing, done.stdout.splitlines(), strict=True):
                self.drawn[text] = json.loads(line)
        return [self.drawn[text] for text in texts]

    def share(self, picture, text, anchor, tolerance=2):
        """How much of the label's ink is where a label at `anchor` has it, from 0 to 1."""
        label, = self.draw([text])
        x, y = anchor[0] + 2, anchor[1] + int(label['height']) + 8
        hits = sum(close(picture.at(x + column, y + row), color, tolerance)
                   for column, row, *color in label['pixels'])
        return hits / len(label['pixels'])

    def read(self, picture, anchor, texts):
        """The one of `texts` that stands at `anchor`, every pixel of it; None if none does. Two that
        both fit would be no reading at all."""
        self.draw(texts)
        found = [text for text in texts if self.share(picture, text, anchor) == 1.0]
        assert len(found) <= 1, f'{found} look the same at {anchor}'
        return found[0] if found else None
