"""What the program asks of the system in a day's work: sockets on this machine only, nothing written but
its settings, what is in the chosen folder, and the toolkit's caches, and nothing run but what opens the
folder.

    system_calls.py PROGRAM LABEL_IMAGE [--seed N] [--count N]     on a display

N is how many days; with 0 it's a short morning, with help, a still, a movie and the folder opened.
"""

import collections
import os
import re
import shutil
import subprocess
import sys

os.environ['TESSARY_SLOW_MACHINE'] = 'being watched takes time, and how fast it is isn\'t judged here'

from trial import SKIPPED, Trial  # noqa: E402

from day import Day  # noqa: E402
from desk import wait_for  # noqa: E402

# A call that opens with one of these flags can write.
WRITING = re.compile(r'O_(WRONLY|RDWR|CREAT|TRUNC|APPEND)')
OPENING = {'open', 'openat', 'openat2', 'creat'}
CHANGING = {'mkdir', 'mkdirat', 'rmdir', 'unlink', 'unlinkat', 'rename', 'renameat', 'renameat2', 'link',
            'linkat', 'symlink', 'symlinkat', 'truncate', 'chmod', 'fchmodat', 'chown', 'lchown',
            'fchownat', 'mknod', 'mknodat', 'utime', 'utimes', 'utimensat', 'setxattr', 'lsetxattr'}
TRACED = ['socket', 'execve', 'execveat', 'clone', 'clone3', 'fork', 'vfork', *OPENING, *CHANGING]
# What can be written to and keeps nothing: devices, and the names of threads.
KEEPS_NOTHING = re.compile(r'/dev/(null|zero|u?random|tty|video\d+|dri/\w+)$|/proc/self/task/\d+/comm$')
LINE = re.compile(r'(?P<pid>\d+) +(?P<name>\w+)\((?P<arguments>.*)\) += +(?P<result>-?\d+|\?)')


class Watched:
    """A program like another one, which leaves what it asks of the system in a file. It has the
    other's name and process id."""

    def __init__(self, program, folder):
        self.calls = os.path.join(folder, 'calls')
        self.program = os.path.join(folder, os.path.basename(program))
        with open(self.program, 'w', encoding='utf-8') as file:
            file.write(f'#!/bin/sh\nexec strace -D -f -y -qq -s 4096 --seccomp-bpf -o {self.calls} -A '
                       f'-e trace={",".join("?" + name for name in TRACED)} -e signal=none '
                       f'{os.path.abspath(program)} "$@"\n')
        os.chmod(self.program, 0o755)

    def lines(self):
        """Each call once, also those that another thread's came between."""
        begun = {}
        with open(self.calls, encoding='utf-8', errors='replace') as file:
            for line in file:
                pid, _, rest = line.partition(' ')
                rest = rest.strip()
                if rest.endswith('<unfinished ...>'):
                    begun[pid] = rest.removesuffix('<unfinished ...>')
                    continue
                resumed = re.match(r'<\.\.\. \w+ resumed>', rest)
                if resumed:
                    rest = begun.pop(pid, '') + rest[resumed.end():]
                yield f'{pid} {rest}'


def paths(arguments):
    """The paths among a call's arguments, made whole: a folder in <> before a path is what it starts at."""
    for folder, path in re.findall(r'(?:(?:AT_FDCWD|\d+)<([^>]*)>, )?"((?:[^"\\]|\\.)*)"', arguments):
        yield os.path.normpath(os.path.join(folder or '/', path))


class Judge:
    """`allowed` are folders, `toolkit` how paths begin that the toolkit may write to."""

    def __init__(self, trial, program, allowed, toolkit, cache):
        self.trial, self.program = trial, os.path.abspath(program)
        self.allowed, self.toolkit, self.cache = allowed, tuple(toolkit), cache
        self.count = collections.Counter()
        self.strangers = set()  # processes that run something else by now
        self.told = set()

    def expect(self, condition, text):
        if not condition and text not in self.told:
            self.told.add(text)
            self.trial.fail(text)

    def may_write(self, path):
        if KEEPS_NOTHING.match(path) or path == self.cache or path.startswith(self.toolkit):
            return True
        return any(path == place or path.startswith(place + '/') for place in self.allowed)

    def judge(self, line):
        call = LINE.match(line)
        if not call:
            return
        pid, name, arguments, result = call.group('pid', 'name', 'arguments', 'result')
        if pid in self.strangers:
            if name in ('clone', 'clone3', 'fork', 'vfork'):
                self.strangers.add(result)
        elif name == 'socket':
            self.count['sockets'] += 1
            self.expect(arguments.startswith(('AF_UNIX', 'AF_LOCAL')) or
                        arguments.startswith('AF_NETLINK') and 'NETLINK_KOBJECT_UEVENT' in arguments,
                        f'a socket: {arguments}')
        elif name in ('execve', 'execveat'):
            self.judge_run(pid, arguments, result)
        elif name in CHANGING or name in OPENING and (name == 'creat' or WRITING.search(arguments)):
            # A file without a name is judged when it gets one.
            if result.startswith('-') or 'O_TMPFILE' in arguments:
                return
            self.count['writing calls'] += 1
            changed = list(paths(arguments))
            for path in changed[-1:] if 'link' in name and name[:2] != 'un' else changed:
                self.expect(self.may_write(path), f'written outside: {name}({arguments})')

    def judge_run(self, pid, arguments, result):
        run, = list(paths(arguments))[:1]
        if run == self.program or result != '0':
            return
        self.count['programs run'] += 1
        self.strangers.add(pid)
        self.expect(os.path.basename(run) == 'xdg-open', f'run: {run}')


def spend(day, whole):
    """How the day went: 0 if well."""
    if whole:
        return day.spend()
    os.makedirs(day.folder)
    try:
        day.launch()
        day.program.wait_for_picture(1280, 720)
        day.find_buttons()
        day.read_help()
        day.still('jpg')
        day.record()
        day.open_folder()
        day.quit()
    finally:
        if day.program:
            day.program.end()
    return 0


def watch_days(trial):
    watched = Watched(trial.program, trial.folder)
    # Where a desktop has a session bus, the toolkit looks for one, and starts one where it finds none.
    os.environ['DBUS_SESSION_BUS_ADDRESS'] = 'disabled:'
    counts = collections.Counter()
    for i in range(max(trial.count, 1)):
        out = os.path.join(trial.folder, f'day-{i}')
        cache = os.environ['XDG_CACHE_HOME'] = os.path.join(out, 'home', '.cache')
        day = Day(watched.program, trial.label_image, out)
        trial.expect(spend(day, trial.count > 0) == 0, 'the day went wrong')
        config = os.environ['XDG_CONFIG_HOME']
        allowed = [os.path.join(config, os.path.basename(trial.program)), day.folder,
                   os.environ['XDG_RUNTIME_DIR']]
        # The toolkit's and the display driver's: fonts and shaders in the user's cache, and what
        # folders the chooser showed last.
        toolkit = [os.path.join(config, 'QtProject.conf'),
                   *(os.path.join(cache, name) for name in ('fontconfig', 'mesa_shader_cache',
                                                            'qtshadercache'))]
        judge = Judge(trial, trial.program, allowed, toolkit, cache)
        wait_for('the calls', lambda: os.path.getsize(watched.calls) > 0)
        for line in watched.lines():
            judge.judge(line)
        counts += judge.count
        os.unlink(watched.calls)
        shutil.rmtree(out, ignore_errors=True)
    for what in ('sockets', 'writing calls', 'programs run'):
        trial.expect(counts[what] > 0, f'no {what} were seen, so nothing was watched')
    return ', '.join(f'{count} {what}' for what, count in counts.items())


if __name__ == '__main__':
    trial = Trial('program', 'label_image')
    if not shutil.which('strace') or subprocess.run(
            ['strace', '-o', '/dev/null', 'true'], check=False, capture_output=True).returncode:
        print('system_calls: skipped, strace can\'t be used here')
        sys.exit(SKIPPED)
    sys.exit(trial.run(watch_days))
