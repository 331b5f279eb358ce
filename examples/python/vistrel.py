# SPDX-License-Identifier: MIT
"""Vistrel for Python, by ctypes and NumPy on the library's flat C interface. Copy it and add what you need.

Loads the library that VISTREL_LIBRARY names, or else the one in this file's folder, or else the installed one. The
thread that makes the `Application` is the user-interface thread. Everything belongs there, except `Window.push`,
`Window.signal`, `Window.ask` and `Application.exit`.
"""

import atexit
import contextlib
import ctypes
import itertools
import operator
import os
import signal
import socket
import sys
import threading
import traceback
from ctypes import CFUNCTYPE, POINTER, byref, c_bool, c_char_p, c_double, c_int, c_int32, c_size_t, c_uint32, c_void_p

import numpy as np

from vistrel_constants import *


def _find_library():
    name = "Vistrel.dll" if sys.platform == "win32" else "libVistrel.so.0.1"
    beside = os.path.join(os.path.dirname(os.path.abspath(__file__)), name)
    return os.environ.get("VISTREL_LIBRARY") or (beside if os.path.exists(beside) else name)


_library = ctypes.CDLL(_find_library())


# Text is in the local 8-bit encoding.
if sys.platform == "win32":
    def _encode(text):
        return text if isinstance(text, bytes) else text.encode("mbcs")

    def _decode(text):
        return text.decode("mbcs")
else:
    _encode, _decode = os.fsencode, os.fsdecode


class RawImage(ctypes.Structure):
    _fields_ = [("data", c_void_p), ("width", c_size_t), ("height", c_size_t), ("format", c_uint32),
                ("userData", c_void_p)]


class Error(Exception):
    """A call was refused; `code` is one of VT_ERROR_..."""

    def __init__(self, code, about=""):
        super().__init__(about + _library.VTResultText(code).decode())
        self.code = code


def _check(result):
    if result != VT_OK:
        raise Error(result)


def _declare(name, *argtypes, restype=_check):
    function = getattr(_library, name)
    function.argtypes, function.restype = argtypes, restype


def _fitting(type_, value):
    """Returns the integer, which ctypes would truncate, or raises OverflowError."""
    number = operator.index(value)
    if type_(number).value != number:
        raise OverflowError(f"{number} does not fit into {8 * ctypes.sizeof(type_)} bits")
    return number


def _exact(type_):
    """The integer type for arguments that must not be truncated."""
    return type("exact", (type_,), {"from_param": classmethod(lambda _, value: type_(_fitting(type_, value)))})


_int32, _uint32 = _exact(c_int32), _exact(c_uint32)

_NotifyCallback = CFUNCTYPE(None, c_void_p)
_ReleasedCallback = CFUNCTYPE(None, POINTER(RawImage), c_void_p)
_TriggeredCallback = CFUNCTYPE(None, c_void_p, c_bool, c_void_p)

_declare("VTResultText", c_int32, restype=c_char_p)
_declare("VTAppCreate", c_int, POINTER(c_char_p), POINTER(c_void_p))
_declare("VTAppDestroy", c_void_p)
_declare("VTAppExec", c_void_p, POINTER(c_int))
_declare("VTAppExit", c_void_p, _int32)
_declare("VTWindowCreate", c_void_p, POINTER(c_void_p), c_void_p)
_declare("VTWindowDestroy", c_void_p)
_declare("VTWindowSetNextFrame", c_void_p, POINTER(RawImage), restype=c_int32)
_declare("VTWindowAddSetupMode", c_void_p, c_char_p, c_char_p)
_declare("VTWindowAddFileFormat", c_void_p, c_char_p, c_char_p, c_char_p)
_declare("VTWindowAddAction", c_void_p, _int32, c_char_p, c_char_p, _TriggeredCallback, _NotifyCallback, c_void_p,
         POINTER(c_void_p))
_declare("VTActionDestroy", c_void_p)
_declare("VTMessageBoxDialogShow", c_void_p, _int32, c_char_p, c_char_p, _uint32, _uint32, POINTER(c_uint32))
_declare("VTSendSignal", c_void_p, _int32)
_VALUES = {0: ("Int32", c_int32), 1: ("Double", c_double), 2: ("Bool", c_bool)}
for _name, _type in _VALUES.values():
    _declare("VTSetProp" + _name, c_void_p, _int32, _int32 if _type is c_int32 else _type)
    _declare("VTGetProp" + _name, c_void_p, _int32, POINTER(_type))
_declare("VTSetPropCStr", c_void_p, _int32, c_char_p)
_declare("VTGetPropCStr", c_void_p, _int32, c_char_p, POINTER(c_size_t))
_declare("VTSetPropData", c_void_p, _int32, c_char_p, c_size_t)
_declare("VTGetPropData", c_void_p, _int32, c_char_p, POINTER(c_size_t))

# Windows and actions by the number that the library has as `user`; kept until its last call.
_live = {}
_numbers = itertools.count(1)


def _guarded(function, failure=None):
    """Prints an exception, which must not leave a callback."""
    def call(*arguments):
        try:
            return function(*arguments)
        except BaseException:
            traceback.print_exc()
            return failure
    return call


# Properties ----------------------------------------------------------------------------------------------------------

_LATIN1 = (VT_WINDOW_TITLE, VT_WINDOW_ABOUT_TITLE, VT_WINDOW_ABOUT_TEXT)
_NAMES = {value: name for name, value in globals().items() if name.startswith(("VT_WINDOW_", "VT_ACTION_", "VT_APP_"))}


def _bytes(value):
    if isinstance(value, np.ndarray):
        return value.astype(value.dtype.newbyteorder("=")).tobytes()
    try:
        return bytes(memoryview(value))
    except TypeError:
        raise TypeError(f"bytes or an array are needed, such as np.array([x, y, width, height], np.int32) for a "
                        f"geometry, not {type(value).__name__}") from None


class _Object:
    """Gives access to properties by their numbers, such as `window[VT_WINDOW_ZOOM] = 2`. Data are bytes."""

    def __init__(self):
        self._handle = c_void_p()

    def __getitem__(self, number):
        kind = number // 100 % 10
        if kind in _VALUES:
            name, type_ = _VALUES[kind]
            value = type_()
            getattr(_library, "VTGetProp" + name)(self._handle, number, byref(value))
            return value.value
        get = _library.VTGetPropCStr if kind == 3 else _library.VTGetPropData
        size = c_size_t()
        get(self._handle, number, None, byref(size))
        buffer = ctypes.create_string_buffer(size.value)
        get(self._handle, number, buffer, byref(size))
        if kind != 3:
            return buffer.raw[:size.value]
        return buffer.value.decode("latin-1") if number in _LATIN1 else _decode(buffer.value)

    def __setitem__(self, number, value):
        kind = number // 100 % 10
        size = ""
        wanted = {2: ("True or False", (bool, int, np.bool_)), 3: ("a text", str)}.get(kind)
        if wanted and not isinstance(value, wanted[1]):
            raise TypeError(f"{_NAMES.get(number, number)} is {wanted[0]}, not {value!r}")
        try:
            if kind in _VALUES:
                getattr(_library, "VTSetProp" + _VALUES[kind][0])(self._handle, number, value)
            elif kind == 3:
                text = value.encode("latin-1") if number in _LATIN1 else _encode(value)
                _library.VTSetPropCStr(self._handle, number, text)
            else:
                data = _bytes(value)
                size = f", {len(data)} bytes"
                _library.VTSetPropData(self._handle, number, data, len(data))
        except Error as error:
            raise Error(error.code, f"{_NAMES.get(number, number)} = {value!r}{size}: ") from None


# The application -----------------------------------------------------------------------------------------------------


class Application(_Object):
    """Ends, with all windows, at the end of its `with`, by `close`, or else when Python ends: after that, no thread of
    the library may call Python functions."""

    def __init__(self):
        super().__init__()
        self._is_interruptible = False
        arguments = [_encode(argument) for argument in sys.argv]
        _library.VTAppCreate(len(arguments), (c_char_p * len(arguments))(*arguments), byref(self._handle))
        atexit.register(self.close)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        if self._handle:
            _library.VTAppDestroy(self._handle)
            self._handle = c_void_p()  # another application may get the address
            atexit.unregister(self.close)

    def exit(self, code=0):
        _library.VTAppExit(self._handle, code)

    def run(self):
        """Runs the event loop until `exit` or the end of the last window. Ctrl+C also ends it."""
        code = c_int()
        with self._interruptible():
            _library.VTAppExec(self._handle, byref(code))
        return code.value

    @contextlib.contextmanager
    def _interruptible(self):
        """Lets Ctrl+C end an event loop that runs inside, and raise KeyboardInterrupt: Python writes the signal to the
        socket at once, but would handle it only after the loop. Only on the main thread, which gets signals."""
        if self._is_interruptible or threading.current_thread() is not threading.main_thread():
            yield
            return
        interrupts = []
        reader, writer = socket.socketpair()
        writer.setblocking(False)

        def watch():
            for number in iter(lambda: reader.recv(1), b""):
                if number[0] == signal.SIGINT:
                    interrupts.append(True)
                    self.exit()  # before the loop, it ends the next one

        watcher = threading.Thread(target=watch)
        watcher.start()
        handler, wakeup = signal.getsignal(signal.SIGINT), -1
        try:
            # Watch first: until the handler is replaced, Python's own handles the signal.
            wakeup = signal.set_wakeup_fd(writer.fileno())
            signal.signal(signal.SIGINT, lambda *_: None)
            self._is_interruptible = True
            yield
        finally:
            self._is_interruptible = False
            signal.signal(signal.SIGINT, handler)
            signal.set_wakeup_fd(wakeup)
            writer.close()
            watcher.join()
            reader.close()
            if interrupts:
                raise KeyboardInterrupt from None


# Frames --------------------------------------------------------------------------------------------------------------

# The type and number of a pixel's values, by the depth of the format.
_PIXELS = {8: (np.uint8, 1), 24: (np.uint8, 3), 30: (np.uint32, 1), 32: (np.uint8, 4), 36: (np.uint16, 3),
           42: (np.uint16, 3), 48: (np.uint16, 3)}
_FORMATS = {(np.uint8, 1): VT_FORMAT_MONO8, (np.uint16, 1): VT_FORMAT_MONO16,
            (np.uint8, 3): VT_FORMAT_RGB8 | VT_FORMAT_ORDER_BGR, (np.uint8, 4): VT_FORMAT_RGBA8 | VT_FORMAT_ORDER_BGR,
            (np.uint16, 3): VT_FORMAT_RGB16 | VT_FORMAT_ORDER_BGR}


def _pixel_of(format):
    return _PIXELS.get(format & 0xff, (np.uint16, 1))


class Frame:
    """Pixels, rows x columns or rows x columns x channels with red first. A window reads them until it calls
    `released(pixels)`, on any thread; until then they must not change. `released` must not push a frame."""

    def __init__(self, pixels, format=None, released=None):
        self.pixels, self.released = pixels, released
        array = np.asarray(pixels)
        if array.ndim not in (2, 3) or array.size == 0:
            raise ValueError(f"a frame is rows x columns, or rows x columns x channels, and not {array.shape}")
        self._array = np.ascontiguousarray(array, array.dtype.newbyteorder("="))
        channels = array.shape[2] if array.ndim == 3 else 1
        self.format = _FORMATS.get((self._array.dtype.type, channels)) if format is None else _fitting(c_uint32, format)
        if self.format is None:
            raise ValueError(f"no format for {array.dtype} x {channels} channels: it takes np.uint8 x 1, 3 or 4, or "
                             "np.uint16 x 1 or 3")
        type_, count = _pixel_of(self.format)
        if (type_, count) != (self._array.dtype.type, channels):
            raise ValueError(f"format {self.format:#x} is np.{type_.__name__} x {count} channels, not {array.dtype} x "
                             f"{channels}")

    def _describe(self, image, number):
        height, width = self._array.shape[:2]
        image.data, image.width, image.height = self._array.ctypes.data, width, height
        image.format, image.userData = self.format, number


def _array_of(image):
    type_, channels = _pixel_of(image.format)
    shape = (image.height, image.width) + ((channels,) if channels > 1 else ())
    size = int(np.prod(shape)) * np.dtype(type_).itemsize
    return np.frombuffer((ctypes.c_uint8 * size).from_address(image.data), type_).reshape(shape)


# Windows -------------------------------------------------------------------------------------------------------------


def _command(window, function):
    return _guarded(lambda *arguments: function(*arguments[:-1]) is not False, False)


def _named_command(window, function):
    return _guarded(lambda name, user: function(_decode(name)) is not False, False)


def _answer(otherwise):
    return lambda window, function: _guarded(lambda user: function(), otherwise)


def _size(window, function):
    return _guarded(lambda user: _fitting(c_size_t, function()), 0)


def _text(window, function):
    def answer(buffer, size, user):
        text = function()
        if text is None:
            return False
        text = _encode(text) + b"\0"
        if buffer and size[0]:
            ctypes.memmove(buffer, text, min(size[0], len(text)))
            buffer[min(size[0], len(text)) - 1] = 0
        size[0] = len(text)
        return True
    return _guarded(answer, False)


def _next_frame(window, function):
    def answer(image, user):
        frame = function()
        if frame is None:
            return False
        window._lend(frame, image[0])
        return True
    return _guarded(answer, False)


def _save(window, function):
    def save(image, name, user):
        return function(_array_of(image[0]), image[0].format, _decode(name)) is not False
    return _guarded(save, False)


# By a feature's hundreds: the signature's name, its function type, and the adapter for a Python function.
_SIGNATURES = {
    1: ("Command", CFUNCTYPE(c_bool, c_void_p), _command),
    2: ("Count", CFUNCTYPE(c_bool, c_size_t, c_void_p), _command),
    3: ("Name", CFUNCTYPE(c_bool, c_char_p, c_void_p), _named_command),
    4: ("Query", CFUNCTYPE(c_bool, c_void_p), _answer(False)),
    5: ("Text", CFUNCTYPE(c_bool, POINTER(ctypes.c_ubyte), POINTER(c_size_t), c_void_p), _text),
    6: ("Double", CFUNCTYPE(c_double, c_void_p), _answer(0.0)),
    7: ("Size", CFUNCTYPE(c_size_t, c_void_p), _size),
    8: ("NextFrame", CFUNCTYPE(c_bool, POINTER(RawImage), c_void_p), _next_frame),
    10: ("Notify", _NotifyCallback, _answer(None)),
    12: ("Save", CFUNCTYPE(c_bool, POINTER(RawImage), c_char_p, c_void_p), _save),
}
for _name, _type, _ in _SIGNATURES.values():
    _declare("VTSetFeature" + _name, c_void_p, _int32, _type)
_declare("VTSetFeatureReleased", c_void_p, _int32, _ReleasedCallback)


@_ReleasedCallback
@_guarded
def _released(image, user):
    frame = _live[user]._lent.pop(image[0].userData)
    if frame.released:
        frame.released(frame.pixels)


@_NotifyCallback
@_guarded
def _finished(user):
    window = _live.pop(user)
    if window.finished:
        window.finished()


class Window(_Object):
    """Not shown before `window[VT_WINDOW_VISIBLE] = True`. `finished`, if given, is the last call of all."""

    _GONE = (VT_ERROR_NO_APPLICATION, VT_ERROR_NULL_HANDLE, VT_ERROR_WRONG_HANDLE, VT_ERROR_WINDOW_CLOSED)

    def __init__(self, application, finished=None):
        super().__init__()
        self.finished = finished
        self._application = application
        self._callbacks = []  # also replaced ones, which may still be running
        self._lent = {}  # by the number in `userData`
        number = next(_numbers)
        _library.VTWindowCreate(application._handle, byref(self._handle), number)
        _live[number] = self
        _library.VTSetFeatureNotify(self._handle, VT_FEATURE_FINISHED, _finished)
        _library.VTSetFeatureReleased(self._handle, VT_FEATURE_FRAME_RELEASED, _released)

    def close(self):
        handle, self._handle = self._handle, c_void_p()  # another window may get the address
        _library.VTWindowDestroy(handle)

    def _lend(self, frame, image):
        if not isinstance(frame, Frame):
            raise TypeError(f"a Frame is needed, such as Frame(pixels), not {type(frame).__name__}")
        number = next(_numbers)
        self._lent[number] = frame
        frame._describe(image, number)

    def push(self, frame):
        """Shows a Frame at the window's next refresh. Returns False when the window has been closed."""
        image = RawImage()
        self._lend(frame, image)
        result = _library.VTWindowSetNextFrame(self._handle, byref(image))
        if result != VT_OK:
            del self._lent[image.userData]  # it was refused
            if result not in Window._GONE:
                raise Error(result)
        return result == VT_OK

    def on(self, feature, function):
        """Registers a function for one of VT_FEATURE_...; None removes it. The function gets the parameters of its
        signature, without `user`. A command returns False when it failed, a next-frame function a Frame or None. A save
        function gets pixels, their format and a file name."""
        if feature in (VT_FEATURE_FINISHED, VT_FEATURE_FRAME_RELEASED):
            raise ValueError("given to the window, and to each Frame")
        if feature // 100 not in _SIGNATURES:
            raise Error(VT_ERROR_UNKNOWN_FEATURE)
        if function is not None and not callable(function):
            raise TypeError(f"a function is needed, or None, not {type(function).__name__}")
        name, type_, adapt = _SIGNATURES[feature // 100]
        callback = type_(adapt(self, function)) if function is not None else type_()
        getattr(_library, "VTSetFeature" + name)(self._handle, feature, callback)
        self._callbacks.append(callback)

    def signal(self, number):
        _library.VTSendSignal(self._handle, number)

    def add_setup_mode(self, name, description=""):
        _library.VTWindowAddSetupMode(self._handle, _encode(name), _encode(description))

    def add_file_format(self, extension, description):
        _library.VTWindowAddFileFormat(self._handle, _encode(extension), None, _encode(description))

    def ask(self, kind, title, text, buttons=VT_BUTTON_OK, default=VT_BUTTON_NONE):
        """Shows a message box and returns the button that the user pressed. Blocks its thread."""
        pressed = c_uint32()
        with self._application._interruptible():
            _library.VTMessageBoxDialogShow(self._handle, kind, _encode(title), _encode(text), buttons, default,
                                            byref(pressed))
        return pressed.value


# Actions -------------------------------------------------------------------------------------------------------------


@_TriggeredCallback
@_guarded
def _triggered(handle, checked, user):
    _live[user].triggered(checked)


@_NotifyCallback
@_guarded
def _gone(user):
    _live.pop(user, None)


class Action(_Object):
    """An entry of the window that calls `triggered(checked)`. `menu` is the menu's title, only for VT_PLACE_MENU."""

    def __init__(self, window, place, menu, text, triggered):
        super().__init__()
        self.triggered = triggered
        number = next(_numbers)
        _live[number] = self
        try:
            _library.VTWindowAddAction(window._handle, place, menu and _encode(menu), _encode(text), _triggered,
                                       _gone, number, byref(self._handle))
        except BaseException:
            _live.pop(number, None)
            raise

    def remove(self):
        _library.VTActionDestroy(self._handle)
