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
import threading
import time
import unittest
import weakref
from ctypes import POINTER, c_char_p, c_int, c_uint, c_ulong, c_void_p

import numpy as np
import vistrel_constants
from camera import exposure
from vistrel import *

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")


def wait_for(condition):
    """Asks for at most a minute."""
    end = time.monotonic() + 60
    while time.monotonic() < end:
        result = condition()
        if result is not None and result is not False:
            return result
        time.sleep(0.05)
    raise AssertionError("waited in vain")


# Programs ------------------------------------------------------------------------------------------------------------


class XImage(ctypes.Structure):  # its beginning
    _fields_ = [(name, c_int) for name in ("width", "height", "xoffset", "format")] + [("data", c_void_p)] + [
        (name, c_int) for name in ("order", "unit", "bits", "pad", "depth", "bytes_per_line", "bits_per_pixel")]


x11 = ctypes.CDLL("libX11.so.6")
x11.XOpenDisplay.restype, x11.XOpenDisplay.argtypes = c_void_p, [c_char_p]
x11.XDefaultRootWindow.restype, x11.XDefaultRootWindow.argtypes = c_ulong, [c_void_p]
x11.XGetImage.restype = POINTER(XImage)
x11.XGetImage.argtypes = [c_void_p, c_ulong, c_int, c_int, c_uint, c_uint, c_ulong, c_int]
x11.XDestroyImage.argtypes = [POINTER(XImage)]


class Screen:
    def __init__(self):
        self.display = x11.XOpenDisplay(None)

    def shot(self):
        """Rows x columns of 0xRRGGBB."""
        root = x11.XDefaultRootWindow(self.display)
        image = x11.XGetImage(self.display, root, 0, 0, 1280, 1024, c_ulong(-1).value, 2)
        assert (image[0].bits_per_pixel, image[0].bytes_per_line) == (32, 4 * 1280)
        words = np.frombuffer(ctypes.string_at(image[0].data, 4 * 1280 * 1024), np.uint32)
        x11.XDestroyImage(image)
        return words.reshape(1024, 1280) & 0xffffff

    def sees(self, pictures):
        """The number of that picture which is on the screen with every pixel, or None."""
        shot = self.shot()
        for number, picture in enumerate(pictures):
            words = picture.astype(np.uint32)
            words = words @ [0x10000, 0x100, 1] if words.ndim == 3 else words * 0x10101
            height, width = words.shape
            rows, columns = 1024 - height + 1, 1280 - width + 1
            fits = shot[:rows, :columns] == words[0, 0]
            for y, x in ((0, -1), (-1, 0), (-1, -1), (height // 2, width // 2)):
                fits &= shot[y % height:, x % width:][:rows, :columns] == words[y, x]
            if any(np.array_equal(shot[y:y + height, x:x + width], words) for y, x in np.argwhere(fits)):
                return number
        return None


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


def camera_pictures(gain):
    for step in range(64):
        words = np.empty((240, 320), np.uint16)
        exposure(step, gain, out=words)
        yield (words >> 4).astype(np.uint8)


class Examples(unittest.TestCase):
    def setUp(self):
        self.screen = Screen()

    def sees(self, pictures):
        pictures = list(pictures)
        return wait_for(lambda: self.screen.sees(pictures))

    def test_show_array(self):
        first = np.add.outer(np.arange(240), np.arange(320)).astype(np.uint8)
        pictures = [first + np.uint8(step) for step in range(256)]
        with Program("show_array.py") as program:
            seen = self.sees(pictures)
            self.sees(pictures[:seen] + pictures[seen + 1:])
            program.press("Image Display", "key", "ctrl+w")
            self.assertEqual(program.result(), (0, "", []))

    def test_interrupt(self):
        with Program("show_array.py") as program:
            self.sees([np.add.outer(np.arange(240), np.arange(320) + step).astype(np.uint8) for step in range(256)])
            program.process.send_signal(signal.SIGINT)
            code, _, lines = program.result()
            self.assertEqual((code, lines[-1]), (-signal.SIGINT, "KeyboardInterrupt"))

    def test_camera(self):
        y, x = np.mgrid[0:240, 0:320]
        colors = np.stack([x * 255 // 319, y * 255 // 239, (x // 32 + y // 32) % 2 * 255], axis=2).astype(np.uint8)
        with Program("camera.py") as program:
            self.sees(np.roll(colors, step, axis=1) for step in range(320))
            self.sees(camera_pictures(gain=1))
            program.press("Camera", "key", "alt+c", "a")
            program.press("Auto Gain", "key", "Return")
            self.sees(camera_pictures(gain=2))
            program.press("Colours", "key", "ctrl+w")
            program.press("Camera", "key", "ctrl+w")
            self.assertEqual(program.result(), (0, "", []))


# The binding ---------------------------------------------------------------------------------------------------------


class Binding(unittest.TestCase):
    def test_constants(self):
        with open(os.path.join(ROOT, "include", "Vistrel", "CInterface.h")) as header:
            declared = dict(re.findall(r"(VT_\w+) =\s*(-?\w+)", header.read()))
        held = {name: value for name, value in vars(vistrel_constants).items() if name.startswith("VT_")}
        self.assertEqual(held, {name: int(value, 0) for name, value in declared.items()})

    def test_properties(self):
        with Application() as application:
            window = Window(application)
            for number, value in ((VT_WINDOW_REFRESH_RATE, 25), (VT_WINDOW_ZOOM, 1.0), (VT_WINDOW_CLOSEABLE, False),
                                  (VT_WINDOW_TITLE, "50 \u00b0C"), (VT_WINDOW_IMAGE_OFFSET, bytes(8))):
                window[number] = value
                self.assertEqual(window[number], value)
            with self.assertRaisesRegex(Error, "^VT_WINDOW_ZOOM = 0: The property cannot have this value or size.$"):
                window[VT_WINDOW_ZOOM] = 0
            with self.assertRaises(Error) as refusal:
                Application()
            self.assertEqual(refusal.exception.code, VT_ERROR_APPLICATION_EXISTS)

            with self.assertRaisesRegex(ctypes.ArgumentError, "4294967321 does not fit into 32 bits"):
                window[VT_WINDOW_REFRESH_RATE] = 2 ** 32 + 25
            with self.assertRaisesRegex(TypeError, "not list"):
                window[VT_WINDOW_GEOMETRY] = [40, 80, 100, 100]
            with self.assertRaisesRegex(TypeError, "not ndarray"):
                window.push(np.zeros((4, 4), np.uint8))
            with self.assertRaises(Error):
                window.on(155, print)
            self.assertEqual((window._lent, window._callbacks), ({}, []))  # nothing that was refused is kept

    def test_end_of_python(self):
        """Without a `with`, while threads push: what they push comes back on them, in Python, while there is one."""
        program = """if True:
            import threading, numpy, vistrel
            window = vistrel.Window(vistrel.Application())
            def push():
                while window.push(vistrel.Frame(numpy.zeros((99, 99), numpy.uint8), None, len)): pass
            for _ in range(3): threading.Thread(target=push, daemon=True).start()
        """
        for _ in range(5):
            subprocess.run([sys.executable, "-B", "-c", program], timeout=60, stderr=subprocess.DEVNULL, check=True)

    def test_interrupt_before_the_loop(self):
        """Ctrl+C right before and right after Python's own way of noting it is given up; and over a message box."""
        for name in ("set_wakeup_fd", "signal"):
            def interrupted(*arguments, function=getattr(signal, name)):
                setattr(signal, name, function)
                result = function(*arguments)
                os.kill(os.getpid(), signal.SIGINT)
                return result
            with Application() as application, self.assertRaises(KeyboardInterrupt):
                setattr(signal, name, interrupted)
                application.run()
        with Application() as application, self.assertRaises(KeyboardInterrupt):
            threading.Timer(0.2, os.kill, (os.getpid(), signal.SIGINT)).start()
            Window(application).ask(VT_MESSAGE_QUESTION, "", "")

    def test_lent_frames(self):
        """Each array lives until it is released, once; what a callback raises goes no further; then all is let go."""
        calls = []
        pushed = []
        with Application() as application:
            window = Window(application, finished=lambda: calls.append("finished"))
            window[VT_WINDOW_VISIBLE] = True
            frames = iter([ValueError("no frame today"), Frame(np.zeros((3, 5), np.uint8), None, calls.append)])

            def next_frame():
                frame = next(frames, None)
                if isinstance(frame, Exception):
                    raise frame
                if frame is None:
                    application.exit(7)
                return frame

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
        self.assertEqual(sorted(int(call[0, 0]) for call in calls[:-1]), [0, 0, 1, 2])
        self.assertEqual(calls.pop(), "finished")
        calls.clear()
        gc.collect()
        self.assertEqual([frame() for frame in pushed], [None] * 3)

    def test_wrong_pixels(self):
        for pixels, format in ((np.zeros((4, 4), np.uint8), VT_FORMAT_MONO12), (np.zeros((4, 4)), None),
                               (np.zeros((4, 4, 3), np.uint8), VT_FORMAT_RGBA8), (np.zeros((4, 4, 3, 1), "B"), None)):
            with self.assertRaises(ValueError):
                Frame(pixels, format)
        big = np.array([[1, 2]], ">u2")
        self.assertEqual(Frame(big)._array.tobytes(), np.array([[1, 2]], np.uint16).tobytes())


if __name__ == "__main__":
    unittest.main()
