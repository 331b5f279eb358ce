# SPDX-License-Identifier: MIT
"""The Python examples as programs on a display with a window manager, and the binding that they use."""
import contextlib
import ctypes
import gc
import io
import os
import re
import signal
import subprocess
import sys
import tempfile
import time
import unittest
import weakref
from ctypes import c_ulong, c_void_p

import numpy as np
import vistrel_constants
from vistrel import *

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")


def wait_for(condition):
    """Asks for at most a minute."""
    end = time.monotonic() + 60
    while time.monotonic() < end:
        if condition():
            return
        time.sleep(0.05)
    raise AssertionError("waited in vain")


# Programs ------------------------------------------------------------------------------------------------------------


x11 = ctypes.CDLL("libX11.so.6")
x11.XOpenDisplay.restype = x11.XDefaultRootWindow.restype = x11.XGetImage.restype = c_void_p
x11.XGetPixel.restype = c_ulong
display = c_void_p(x11.XOpenDisplay(None))
root = c_void_p(x11.XDefaultRootWindow(display))


def screen_rows():
    """Some rows of the screen, as 0xRRGGBB."""
    image = c_void_p(x11.XGetImage(display, root, 0, 0, 1280, 1024, c_ulong(-1), 2))
    rows = [[x11.XGetPixel(image, x, y) for x in range(1280)] for y in range(100, 1000, 100)]
    x11.XDestroyImage(image)
    return rows


def sees_ramp(is_gray, left=0):
    """Whether red is a ramp in a row right of there, and green as well, or not."""
    for row in screen_rows():
        reds, greens = ({pixel >> shift & 255 for pixel in row[left:left + 600]} for shift in (16, 8))
        if len(reds) > 100 and (len(greens) > 100) == is_gray:
            return True
    return False


class Program:
    """An example that runs, and its user."""

    def __init__(self, name):
        self.folder = tempfile.TemporaryDirectory()
        self.process = subprocess.Popen([sys.executable, "-B", os.path.join(ROOT, "examples", "python", name)],
                                        env={**os.environ, "XDG_RUNTIME_DIR": self.folder.name}, text=True,
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.communicate()
        self.folder.cleanup()

    def press(self, title, *keys):
        window = ["search", "--sync", "--onlyvisible", "--name", f"^{title}$", "windowactivate", "--sync"]
        # Refused while no window at all is active.
        wait_for(lambda: subprocess.run(["xdotool", *window], stderr=subprocess.PIPE, timeout=60).returncode == 0)
        subprocess.run(["xdotool", *keys], check=True, timeout=60)

    def result(self):
        """Exit code, output, and complaints but for the toolkit's on windows that went meanwhile."""
        output, errors = self.process.communicate(timeout=60)
        lines = [line for line in errors.splitlines() if "XCB error: 3 (BadWindow)" not in line]
        return self.process.returncode, output, lines


class Examples(unittest.TestCase):
    def test_interrupt(self):
        with Program("show_array.py") as program:
            wait_for(lambda: sees_ramp(is_gray=True))
            program.process.send_signal(signal.SIGINT)
            code, _, lines = program.result()
            self.assertEqual((code, lines[-1]), (-signal.SIGINT, "KeyboardInterrupt"))

    def test_camera(self):
        with Program("camera.py") as program:
            wait_for(lambda: sees_ramp(is_gray=True))
            wait_for(lambda: sees_ramp(is_gray=False, left=660))
            program.press("Colours", "key", "ctrl+w")
            program.press("Camera", "key", "ctrl+w")
            self.assertEqual(program.result(), (0, "", []))


# The binding ---------------------------------------------------------------------------------------------------------


class Binding(unittest.TestCase):
    def test_constants(self):
        with open(os.path.join(ROOT, "include", "Vistrel", "CConstants.h")) as header:
            declared = dict(re.findall(r"(VT_\w+) =\s*(-?\w+)", header.read()))
        held = {name: value for name, value in vars(vistrel_constants).items() if name.startswith("VT_")}
        self.assertEqual(held, {name: int(value, 0) for name, value in declared.items()})

    def test_lent_frames(self):
        """Each array lives until it is released, once; what a callback raises goes no further; then all is let go."""
        calls, pushed = [], []
        with Application() as application:
            window = Window(application, finished=lambda: calls.append("finished"))
            window[VT_WINDOW_VISIBLE] = True

            def next_frame():
                application.exit(7)
                raise ValueError("no frame today")

            window.on(VT_FEATURE_NEXT_FRAME, next_frame)
            errors = io.StringIO()
            with contextlib.redirect_stderr(errors):
                self.assertEqual(application.run(), 7)
            self.assertIn("ValueError: no frame today", errors.getvalue())
            window.on(VT_FEATURE_NEXT_FRAME, None)
            for level in range(3):
                pixels = np.full((2, 2), level, np.uint8)
                pushed.append(weakref.ref(pixels))
                self.assertTrue(window.push(Frame(pixels, None, calls.append)))
                del pixels
            gc.collect()
            self.assertIsNotNone(pushed[2]())
            window.close()
            self.assertFalse(window.push(Frame(np.zeros((2, 2), np.uint8))))
        self.assertEqual(calls.pop(), "finished")
        self.assertEqual(sorted(int(call[0, 0]) for call in calls), [0, 1, 2])
        calls.clear()
        gc.collect()
        self.assertEqual([frame() for frame in pushed], [None] * 3)


if __name__ == "__main__":
    unittest.main()
