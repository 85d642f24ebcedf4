#!/usr/bin/env python3
"""Drives the library's dialogs as a user does: dialogs_test.py PROBE LIBRARY FOLDER [RUNNER]

PROBE is the dialog_probe that saves and loads, LIBRARY the built file, FOLDER a scratch folder. RUNNER, tools/wine,
runs 32-bit Windows programs; without it the dialogs are those of zenity.

Each case waits for what it expects to see, with a limit. Ends with 77 where there can be no screen."""

import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

LIMIT = 60  # seconds that a window or a program may take; machines are busy
SKIPPED = 77

AIR_BRUSH = "106"

SAVED = b"""<?xml version="1.0" standalone="no" ?>
<!-- Effect's Preset File -->
<Preset Name="Probe" LibraryName="Larkvee Kelmora" EffectName="Air Brush">
    <parameter type="2" value="0.390000" />
    <parameter type="2" value="1.000000" />
</Preset>
"""

LOADED = """result 0
name Probe
library Larkvee Kelmora
effect Air Brush
knob 2 3ec7ae14
knob 2 3f800000
"""


class NoScreen(Exception):
    pass


def wait_for(what, look):
    """What `look` gives as soon as it is something."""
    end = time.monotonic() + LIMIT
    while time.monotonic() < end:
        found = look()
        if found:
            return found
        time.sleep(0.1)
    raise AssertionError(f"waited {LIMIT} s for {what}; on the screen: {Screen.titles()}")


class Screen:
    """A screen and its window manager, without which no key arrives. Keys do not repeat themselves on it: a busy
    machine may be slow to let go of one."""

    def __enter__(self):
        read, write = os.pipe()
        try:
            self.server = subprocess.Popen(
                ["Xvfb", "-displayfd", str(write), "-screen", "0", "1024x768x24", "-nolisten", "tcp", "-r"],
                pass_fds=[write], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        except FileNotFoundError:
            raise NoScreen("Xvfb is not installed") from None
        os.close(write)
        with os.fdopen(read) as told:
            number = told.readline().strip()
        if not number:
            raise NoScreen("Xvfb does not start")
        os.environ["DISPLAY"] = ":" + number
        os.environ["GSETTINGS_BACKEND"] = "memory"  # the user's own settings stay as they are
        os.environ.pop("WAYLAND_DISPLAY", None)
        self.manager = subprocess.Popen(["openbox"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        wait_for("the window manager", lambda: Screen.do("get_num_desktops"))
        return self

    def __exit__(self, *_):
        for program in (self.manager, self.server):
            program.terminate()
            program.wait()

    @staticmethod
    def do(*words):
        done = subprocess.run(["xdotool", *map(str, words)], capture_output=True, text=True, check=False)
        return done.stdout.split() if done.returncode == 0 else []

    @staticmethod
    def windows():
        return Screen.do("search", "--onlyvisible", "--name", ".")

    @staticmethod
    def titles():
        return [" ".join(Screen.do("getwindowname", window)) for window in Screen.windows()]

    @staticmethod
    def active():
        return (Screen.do("getactivewindow") or [None])[0]

    @staticmethod
    def window(title):
        """Waits for the window of that very title and gives it the keys."""
        pattern = f"^{re.escape(title)}$"

        def look():
            windows = Screen.do("search", "--onlyvisible", "--name", pattern)
            if windows:
                Screen.do("windowactivate", windows[-1])
            return windows[-1] if windows and Screen.active() == windows[-1] else None
        return wait_for(f'the window "{title}"', look)

    @staticmethod
    def press(key):
        Screen.do("key", "--clearmodifiers", key)

    @staticmethod
    def cancel():
        """Closes a dialog that has just come, after a moment, as a user would: Wine's does not always get over it while
        it still reads its folder."""
        time.sleep(1)
        Screen.press("Escape")

    @staticmethod
    def write(text):
        """Writes into the field for the name, which the open dialog of the desktop first has to show."""
        if Screen.do("getactivewindow", "getwindowname")[:1] in (["Load"], ["Open"]):
            Screen.press("ctrl+l")
        Screen.press("ctrl+a")
        for part in re.findall(r"[ -~]+|[^ -~]", text):
            # For a letter that no key has one is changed for a while; a busy program takes its time to notice.
            Screen.do("type", "--clearmodifiers", "--delay", "20" if part.isascii() else "2000", part)


class Probe:
    """A host that shows one dialog."""

    running = []

    def __init__(self, place, operation, language="none"):
        command = [*place.runner, place.probe, place.library, operation, AIR_BRUSH, language]
        # Not a pipe: what Wine leaves running in the background would keep it open.
        self.output = tempfile.TemporaryFile()
        self.program = subprocess.Popen(command, stdout=self.output, cwd=place.folder, start_new_session=True)
        Probe.running.append(self.program)

    @staticmethod
    def end_all():
        """What a case that failed left behind."""
        for program in Probe.running:
            try:
                os.killpg(program.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
            program.wait()
        Probe.running.clear()

    @staticmethod
    def confirm(window, text=None):
        """Types and presses Return until another window comes or this one goes: a dialog that is still reading
        its folder takes no heed."""
        for _ in range(8):
            if text:
                Screen.write(text)
            Screen.press("Return")
            end = time.monotonic() + 2
            while time.monotonic() < end:
                if Screen.active() not in (window, None) or window not in Screen.windows():
                    return
                time.sleep(0.1)
        raise AssertionError(f"the dialog stays; on the screen: {Screen.titles()}")

    def says(self):
        try:
            self.program.wait(timeout=LIMIT)
        except subprocess.TimeoutExpired:
            self.program.kill()
            raise AssertionError(f"the program does not end; on the screen: {Screen.titles()}") from None
        with self.output:
            self.output.seek(0)
            return self.output.read().decode("utf-8").replace("\r", "")


class Place:
    """Where the cases run: natively or under Wine."""

    def __init__(self, probe, library, folder, *runner):
        self.probe, self.library, self.runner = probe, library, list(runner)
        self.windows = bool(runner)
        self.folder = pathlib.Path(folder)
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder.mkdir(parents=True)
        if self.windows:
            # A server of its own: one that runs already draws on another screen, or on none.
            os.environ["KELMORA_WINE_PREFIX"] = str(self.folder.parent / "wine-prefix")
            subprocess.run([*self.runner, "--stop"], capture_output=True, check=False)

    def close(self):
        if self.windows:
            subprocess.run([*self.runner, "--stop"], capture_output=True, check=False)

    def typed(self, name):
        """The full path of a file, as the user types it."""
        path = str(self.folder / name)
        return "Z:" + path.replace("/", "\\") if self.windows else path

    def bytes_of(self, name):
        return (self.folder / name).read_bytes()

    def put(self, name, content):
        (self.folder / name).write_bytes(content)


def expect(what, expected):
    if what != expected:
        raise AssertionError(f"is {what!r}\nnot {expected!r}")


def save_adds_the_extension(place):
    probe = Probe(place, "save")
    window = Screen.window("Save Preset")
    probe.confirm(window, place.typed("mine"))
    expect(probe.says().splitlines()[0], "result 0")
    expect(place.bytes_of("mine.fxpklmg"), SAVED)


def answer_overwrite(place, name, answer):
    """Saves over the file `name` up to the question, and answers it."""
    probe = Probe(place, "save")
    window = Screen.window("Save Preset")
    probe.confirm(window, place.typed(name))
    question = wait_for("the question about the file that is there",
                        lambda: Screen.active() not in (window, None) and Screen.active())
    expect(place.bytes_of("there.fxpklmg"), b"old")
    Screen.press(answer)
    wait_for("the end of the question", lambda: question not in Screen.windows())
    return probe


def save_over_a_file_asks_and_replaces(place):
    place.put("there.fxpklmg", b"old")
    probe = answer_overwrite(place, "there.fxpklmg", "y" if place.windows else "alt+r")
    expect(probe.says().splitlines()[0], "result 0")
    expect(place.bytes_of("there.fxpklmg"), SAVED)


def save_over_a_file_asks_and_leaves_it(place):
    place.put("there.fxpklmg", b"old")
    probe = answer_overwrite(place, "there.fxpklmg", "n" if place.windows else "Escape")
    Screen.window("Save Preset")
    Screen.press("Escape")
    expect(probe.says().splitlines()[0], "result 0")
    expect(place.bytes_of("there.fxpklmg"), b"old")


def save_without_an_extension_asks_too(place):
    place.put("there.fxpklmg", b"old")
    probe = answer_overwrite(place, "there", "n" if place.windows else "Escape")
    Screen.window("Save Preset")
    Screen.press("Escape")
    expect(probe.says().splitlines()[0], "result 0")
    expect(place.bytes_of("there.fxpklmg"), b"old")


def save_cancelled(place):
    probe = Probe(place, "save", "de")
    Screen.window("Save Preset As")
    Screen.cancel()
    # As the probe filled it: the library has not written its names.
    expect(probe.says(), "result 0\nname Probe\nlibrary \neffect \nknob 2 3ec7ae14\nknob 2 3f800000\n")
    expect(list(place.folder.iterdir()), [])


def load(place, name, title="Load Preset", language="none"):
    probe = Probe(place, "load", language)
    window = Screen.window(title)
    probe.confirm(window, place.typed(name))
    return probe


def load_takes_files_of_every_system(place):
    for content in (SAVED, SAVED.replace(b"\n", b"\r\n")):
        place.put("mine.fxpklmg", content)
        expect(load(place, "mine.fxpklmg").says(), LOADED)


def load_with_a_language(place):
    place.put("mine.fxpklmg", SAVED)
    expect(load(place, "mine.fxpklmg", "Open Preset", "en").says(), LOADED)


def load_cancelled(place):
    place.put("mine.fxpklmg", SAVED)
    probe = Probe(place, "load")
    Screen.window("Load Preset")
    Screen.cancel()
    expect(probe.says(), "result 0\nname \nlibrary \neffect \n")


def load_of_another_effect_warns(place):
    place.put("other.fxpklmg", SAVED.replace(b"Air Brush", b"Water <b>Color".replace(b"<b>", b"&lt;b&gt;")))
    probe = load(place, "other.fxpklmg")
    warning = Screen.window("Preset open warning")
    probe.confirm(warning)
    expect(probe.says().splitlines()[0], "result 2")


def load_of_an_unreadable_file_fails(place):
    place.put("bad.fxpklmg", b"<Preset")
    probe = load(place, "bad.fxpklmg")
    message = Screen.window("Preset load error")
    probe.confirm(message)
    expect(probe.says().splitlines()[0], "result 1")


def a_path_beyond_narrow_text_fails(place):
    folder = place.folder / "\u0101"
    folder.mkdir()
    (folder / "mine.fxpklmg").write_bytes(SAVED)
    for operation, title, failed in (("load", "Load Preset", "Preset load error"),
                                     ("save", "Save Preset", "Preset save error")):
        probe = Probe(place, operation)
        window = Screen.window(title)
        name = "mine.fxpklmg" if operation == "load" else "new"
        probe.confirm(window, place.typed(f"\u0101/{name}"))
        probe.confirm(Screen.window(failed))
        expect(probe.says().splitlines()[0], "result 1")
    expect([file.name for file in folder.iterdir()], ["mine.fxpklmg"])


CASES = [save_cancelled, save_adds_the_extension, save_over_a_file_asks_and_replaces,
         save_over_a_file_asks_and_leaves_it, save_without_an_extension_asks_too,
         load_takes_files_of_every_system, load_with_a_language, load_cancelled, load_of_another_effect_warns,
         load_of_an_unreadable_file_fails, a_path_beyond_narrow_text_fails]


def run(place, only):
    failed = 0
    for case in CASES:
        if only and case.__name__ not in only:
            continue
        for file in place.folder.iterdir():
            shutil.rmtree(file) if file.is_dir() else file.unlink()
        began = time.monotonic()
        try:
            case(place)
            print(f"passed  {case.__name__}  {time.monotonic() - began:.1f} s", flush=True)
        except AssertionError as error:
            failed += 1
            print(f"FAILED  {case.__name__}: {error}", flush=True)
        Probe.end_all()
    return failed


def main():
    place = Place(*sys.argv[1:5])
    try:
        with Screen():
            try:
                failed = run(place, os.environ.get("KELMORA_DIALOG_CASES", "").split())
            finally:
                place.close()
    except NoScreen as reason:
        print(f"skipped: {reason}")
        return SKIPPED
    print(f"{len(CASES) - failed} of {len(CASES)} passed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
