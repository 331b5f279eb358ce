# SPDX-License-Identifier: MIT
"""Two windows: a camera whose thread pushes 12-bit frames in six buffers, and colour frames that are pulled."""
import queue
import threading
import time

import numpy as np
from vistrel import *


def exposure(step, gain, out):
    """Draws the camera's picture: 12-bit words."""
    ramp = np.add.outer(np.arange(out.shape[0]), np.arange(out.shape[1])) + 4 * step
    np.multiply(ramp * 8 % 2048, gain, out=out, casting="unsafe")


class Camera:
    def __init__(self, application):
        self.gain = 1
        self.running = threading.Event()
        self.running.set()
        self.free = queue.Queue()  # buffers that the window does not read; a release puts them back
        for _ in range(6):
            self.free.put(np.empty((240, 320), np.uint16))

        self.window = Window(application)
        self.window[VT_WINDOW_TITLE] = "Camera"
        self.window.on(VT_FEATURE_START, self.running.set)
        self.window.on(VT_FEATURE_STOP, self.running.clear)
        self.window.on(VT_FEATURE_IS_RUNNING, self.running.is_set)
        self.window.on(VT_FEATURE_CAN_START, lambda: not self.running.is_set())
        self.window.on(VT_FEATURE_CAN_STOP, self.running.is_set)
        self.window.on(VT_FEATURE_FILE_SAVE, self.save)
        self.window.add_file_format("npy", "NumPy Array")
        Action(self.window, VT_PLACE_MENU, "&Camera", "&Auto Gain", self.start_measuring)
        threading.Thread(target=self.expose, daemon=True).start()

    def expose(self):
        step = 0
        while self.running.wait():
            pixels = self.free.get()
            exposure(step, self.gain, out=pixels)  # here the camera's driver fills the buffer
            if not self.window.push(Frame(pixels, VT_FORMAT_MONO12, self.free.put)):
                return
            step += 1
            time.sleep(0.02)

    def save(self, pixels, format, file_name):
        np.save(file_name, pixels)

    def start_measuring(self, checked):
        threading.Thread(target=self.measure, daemon=True).start()  # does not block the user interface

    def measure(self):
        try:
            answer = self.window.ask(VT_MESSAGE_QUESTION, "Auto Gain", "Show the picture twice as bright?",
                                     VT_BUTTON_YES | VT_BUTTON_NO, VT_BUTTON_YES)
        except Error as error:  # for example, the window was closed
            print("Auto Gain:", error)
            return
        if answer == VT_BUTTON_YES:
            self.gain = 2


class Colors:
    """Asked for a frame whenever the window refreshes."""

    def __init__(self, application):
        y, x = np.mgrid[0:240, 0:320]
        self.pixels = np.stack([x * 255 // 319, y * 255 // 239, (x // 32 + y // 32) % 2 * 255], axis=2).astype(np.uint8)
        self.window = Window(application)
        self.window[VT_WINDOW_TITLE] = "Colours"
        self.window.on(VT_FEATURE_NEXT_FRAME, self.next_frame)

    def next_frame(self):
        self.pixels = np.roll(self.pixels, 1, axis=1)  # a new array: the last one is still in view
        return Frame(self.pixels)


def main():
    with Application() as application:
        camera, colors = Camera(application), Colors(application)
        for x, window in ((40, camera.window), (660, colors.window)):
            window[VT_WINDOW_GEOMETRY] = np.array([x, 80, 580, 480], np.int32)
            window[VT_WINDOW_VISIBLE] = True
        try:
            application.run()
        except KeyboardInterrupt:
            print("Interrupted")


if __name__ == "__main__":
    main()
