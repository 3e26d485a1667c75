"""What ends the program from outside while it records: each signal that asks for an end, and the end of
its display, leave an ordinary movie within five seconds. A log that nobody reads, or whose reader has
gone, ends nothing and holds up nothing.

    signals.py PROGRAM [--seed N] [--count N]     on a display; N times each
"""

import os
import signal
import sys
import time

from trial import Trial, begun_movie, end, movies_in, start_recording

from desk import Failure, key, wait_for, xdotool
import movies

SIZE = (640, 480)
ENDS = 5  # seconds
LATEST = 2.0


def launch(trial, folder, log=None):
    trial.write_settings(trial.program, imagePath=folder, width=SIZE[0], height=SIZE[1])
    return trial.launch(trial.program, SIZE, log)


def new_folder(trial, name):
    folder = os.path.join(trial.folder, name)
    os.makedirs(folder)
    return folder


def judge_movie(trial, what, folder):
    """The one movie in the folder is an ordinary one and plays."""
    for path in movies_in(folder):
        try:
            movies.decode(path)
            trial.expect(movies.boxes(path) == ['ftyp', 'mdat', 'moov'],
                         f'{what}: the movie is not finished: {movies.boxes(path)[:6]}')
        except AssertionError as failure:
            trial.fail(f'{what}: {failure}')
    trial.expect(len(movies_in(folder)) == 1, f'{what}: {len(movies_in(folder))} movies')


def end_a_recording(trial, number, what, ask):
    """ask(program) has to bring an orderly end. How many seconds that took; None where it never came."""
    folder = new_folder(trial, f'{what}-{number}')
    program = launch(trial, folder)
    start_recording(program)
    begun_movie(folder)
    time.sleep(trial.random.uniform(0, LATEST))
    begin = time.monotonic()
    ask(program)
    try:
        wait_for('the end', lambda: program.process.poll() is not None, patience=ENDS)
    except Failure:
        trial.fail(f'{what}: the program has not ended after {ENDS} s')
        end(program.process)
        return None
    took = time.monotonic() - begin
    # A display that ends is no success, but it is no crash either.
    statuses = (0, 1) if what == 'display' else (0,)
    trial.expect(program.process.returncode in statuses,
                 f'{what}: the program ended with {program.process.returncode}')
    judge_movie(trial, what, folder)
    return took


def use(program, folder):
    """What makes the program write to its log, and shows that it answers."""
    stills = len(os.listdir(folder))
    key('space')
    wait_for('a still', lambda: len(os.listdir(folder)) > stills, patience=10)
    key('ctrl+comma')
    program.dialog('Options')
    key('Return')
    program.no_dialog('Options')


def bad_log(trial, number, what):
    """Runs with a pipe for a log; `what` says what is wrong with the pipe."""
    folder = new_folder(trial, f'{what}-{number}')
    pipe = os.path.join(folder, '.log')
    os.mkfifo(pipe)
    reader = os.open(pipe, os.O_RDONLY | os.O_NONBLOCK)
    writer = None
    if what == 'unread log':
        # To the brim, so that the program's first line finds no room.
        writer = os.open(pipe, os.O_WRONLY | os.O_NONBLOCK)
        try:
            while True:
                os.write(writer, bytes(4096))
        except BlockingIOError:
            pass
    try:
        program = launch(trial, folder, pipe)
        if what == 'closed log':
            os.close(reader)
            reader = None
        elif what == 'SIGPIPE':
            program.process.send_signal(signal.SIGPIPE)
        use(program, folder)
        key('ctrl+q')
        status = program.wait_for_end()
        trial.expect(status == 0, f'{what}: the program ended with {status}')
        return True
    except Failure as failure:
        trial.fail(f'{what}: {failure}')
        return False
    finally:
        for file in (reader, writer):
            if file is not None:
                os.close(file)


def end_all(trial):
    ways = {name: (lambda program, number=getattr(signal, name): program.process.send_signal(number))
            for name in ('SIGTERM', 'SIGINT', 'SIGHUP')}
    ways['display'] = lambda program: xdotool('windowkill', program.main.number)
    figures = []
    for what, ask in ways.items():
        took = [end_a_recording(trial, i, what, ask) for i in range(trial.count)]
        ended = [seconds for seconds in took if seconds is not None]
        figures.append(f'{what}: {len(ended)} of {trial.count} ended, '
                       f'{max(ended, default=0):.1f} s at the most')
    for what in ('closed log', 'SIGPIPE', 'unread log'):
        lived = sum(bad_log(trial, i, what) for i in range(trial.count))
        figures.append(f'{what}: {lived} of {trial.count} went on')
    return '; '.join(figures)


if __name__ == '__main__':
    trial = Trial('program')
    sys.exit(trial.run(end_all))
