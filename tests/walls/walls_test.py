"""That rooms see what stands below them and nothing else, as the floors in docs/architecture.md say.

Each room tries to include a header of every other room, of every adapter and of the toolkit, with the
very flags that its own sources are compiled with: what the floors name is found, and nothing else.
The tests of a room try the adapters.

    walls_test.py BUILD_FOLDER COMPILER
"""

import concurrent.futures
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys

HOUSE = pathlib.Path(__file__).resolve().parents[2]
SRC = HOUSE / 'src'
TOOLKIT = '<QString>'
ADAPTERS = sorted(folder.name for folder in (SRC / 'adapters').iterdir() if folder.is_dir())
USES_TOOLKIT = {'ui', 'app', 'qt'}


def floors(rooms):
    """For each room, by the lines `room -> room, room` of the map, which others it sees."""
    seen = {'app': {*rooms, *ADAPTERS} - {'simulated'}}
    for line in (HOUSE / 'docs/architecture.md').read_text().splitlines():
        found = re.fullmatch(r'    ([\w/<>]+) +-> +([\w, ]+)', line)
        if not found or found[1] == 'app':
            continue
        rooms = {name for name in re.split(r'[ ,]+', found[2]) if name not in ('', 'nothing')}
        for room in ADAPTERS if found[1] == 'adapters/<name>' else [found[1]]:
            seen[room] = rooms
    return seen


def include_root(room):
    return SRC / 'adapters' / room if room in ADAPTERS else SRC / room


def any_header(room):
    return f'"{room}/{min(path.name for path in (include_root(room) / room).glob("*.h"))}"'


def compile_flags(build):
    """For each folder of sources, the flags that one of them is compiled with."""
    flags = {}
    for entry in json.loads((build / 'compile_commands.json').read_text()):
        words = shlex.split(entry['command'])[1:]
        for option, operands in (('-c', 2), ('-o', 2)):  # -c FILE, -o FILE
            at = words.index(option)
            del words[at:at + operands]
        flags.setdefault(pathlib.Path(entry['file']).parent, words)
    return flags


def main():
    build, compiler = pathlib.Path(sys.argv[1]), sys.argv[2]
    rooms = sorted(path.name for path in SRC.iterdir() if path.is_dir() and path.name != 'adapters')
    allowed = floors(rooms)
    assert set(allowed) == set(rooms) | set(ADAPTERS), f'the map has other rooms: {set(allowed) ^ {*rooms, *ADAPTERS}}'
    flags = compile_flags(build)

    def is_found(folder, header):
        command = [compiler, *flags[folder], '-E', '-o', os.devnull, '-x', 'c++', '-']
        tried = subprocess.run(command, cwd=build, text=True, input=f'#include {header}\n', capture_output=True)
        if tried.returncode == 0:
            return True
        assert f'fatal error: {header[1:-1]}: No such file' in tried.stderr, tried.stderr
        return False

    tries = []  # folder, header, whether it is meant to be found
    for room in [*rooms, *ADAPTERS]:
        folder = include_root(room) / room
        if folder not in flags:
            continue  # headers alone
        for other in [*rooms, *ADAPTERS]:
            tries.append((folder, any_header(other), other == room or other in allowed[room]))
        tries.append((folder, TOOLKIT, room in USES_TOOLKIT))
        tests = HOUSE / 'tests' / room
        if tests in flags and room not in USES_TOOLKIT:
            tries += [(tests, any_header(adapter), False) for adapter in ADAPTERS]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        found = list(pool.map(lambda t: is_found(t[0], t[1]), tries))
    wrong = [f'{folder.relative_to(HOUSE)} {"can" if got else "cannot"} include {header}'
             for (folder, header, meant), got in zip(tries, found) if got != meant]
    print(f'{len(tries)} includes tried, {found.count(False)} of them not found')
    print('\n'.join(wrong))
    return 1 if wrong or found.count(False) < 12 else 0


if __name__ == '__main__':
    sys.exit(main())
