# SPDX-License-Identifier: MIT
"""Shows a NumPy array live."""
import threading
import time

import numpy as np
from vistrel import VT_WINDOW_VISIBLE, Application, Frame, Window

picture = np.add.outer(np.arange(240), np.arange(320)).astype(np.uint8)


def play():
    while window.push(Frame(picture.copy())):
        np.add(picture, 1, out=picture)  # 256 levels, and around again
        time.sleep(0.02)


with Application() as application:
    window = Window(application)
    window[VT_WINDOW_VISIBLE] = True
    threading.Thread(target=play, daemon=True).start()
    application.run()
