/* SPDX-License-Identifier: MIT */
/* The numbers of the C interface, in C99: formats, results, properties, features and their values. They never change.
 * `CInterface.h` includes this header. */
#ifndef VISTREL_CCONSTANTS_H
#define VISTREL_CCONSTANTS_H

/* Pixel formats: the sum of depth, mosaic pattern, channel order and packing. Words of 10 to 16 bits are unsigned
 * 16-bit little-endian, right-aligned. In the RGB orders of 8-bit and 16-bit channels the first channel in memory is
 * blue, in the BGR orders it is red (RGB8 + ORDER_BGR is what most array libraries call RGB). In the 30-bit word RGB
 * has red in bits 0 to 9, BGR in bits 20 to 29. Bytes a pixel: 1 for a depth of 8, 2 for 10 to 16 (rows of packed
 * formats are as long as without packing), 3 for 24, 4 for 30 and 32, 6 above. */
enum VTFormat {
    VT_FORMAT_MONO8 = 8,
    VT_FORMAT_MONO10 = 10,
    VT_FORMAT_MONO12 = 12,
    VT_FORMAT_MONO14 = 14,
    VT_FORMAT_MONO16 = 16,
    VT_FORMAT_RGB8 = 24,
    VT_FORMAT_RGB10P32 = 30,
    VT_FORMAT_RGBA8 = 32,
    VT_FORMAT_RGB12 = 36,
    VT_FORMAT_RGB14 = 42,
    VT_FORMAT_RGB16 = 48,

    VT_FORMAT_BAYER_GB = 0x100, /* added to a monochrome depth; first two rows G B / R G */
    VT_FORMAT_BAYER_GR = 0x200, /* G R / B G */
    VT_FORMAT_BAYER_RG = 0x300, /* R G / G B */
    VT_FORMAT_BAYER_BG = 0x400, /* B G / G R */

    VT_FORMAT_ORDER_BGR = 0x2000, /* added to a colour depth */

    VT_FORMAT_PACKED = 0x4000,        /* added to a depth of 10: most significant bit first */
    VT_FORMAT_PACKED_NO_SWAP = 0x8000 /* the same: groups taken from a little-endian 64-bit load */
};

enum VTResult {
    VT_OK = 0,
    VT_ERROR_EXCEPTION = -1000,      /* an exception was caught, such as that memory has run out */
    VT_ERROR_NULL_POINTER = -1001,   /* a required pointer is null */
    VT_ERROR_NULL_HANDLE = -1002,    /* the handle is null */
    VT_ERROR_NULL_RESULT = -1003,    /* the pointer to which a handle goes is null */
    VT_ERROR_WRONG_HANDLE = -1004,   /* no live handle of this kind */
    VT_ERROR_NO_APPLICATION = -1005, /* VTAppCreate has made no application, or it is ending */
    VT_ERROR_WRONG_THREAD = -1006,   /* not the thread of VTAppCreate */

    VT_ERROR_APPLICATION_EXISTS = -2000, /* VTAppCreate has made one already */
    VT_ERROR_APPLICATION_FAILED = -2001, /* the application could not be made */
    VT_ERROR_APPLICATION_BUSY = -2002,   /* the event loop is running, or the call comes from a callback */

    VT_ERROR_WINDOW_CLOSED = -3000,   /* the user has closed the window */
    VT_ERROR_SETUP_MODE = -3400,      /* a null text, or a name that exists already */
    VT_ERROR_FILE_FORMAT = -3500,     /* an extension that is null, invalid or registered already */
    VT_ERROR_MESSAGE_KIND = -3600,    /* none of VTMessage */
    VT_ERROR_MESSAGE_BUTTONS = -3601, /* unknown buttons, or a default button that is not shown */
    VT_ERROR_NO_ANSWER = -3700,       /* the message box ended without a button being pressed */
    VT_ERROR_ACTION_ARGUMENT = -3801, /* none of VTPlace, or a null or empty text */
    VT_ERROR_ACTION_REFUSED = -3802,  /* the window is closing */

    VT_ERROR_UNKNOWN_PROPERTY = -4000,  /* none of VTProperty */
    VT_ERROR_PROPERTY_TYPE = -4001,     /* the property has another type */
    VT_ERROR_READ_ONLY = -4002,         /* the property can only be read */
    VT_ERROR_WRITE_ONLY = -4003,        /* the property can only be written */
    VT_ERROR_OUT_OF_RANGE = -4004,      /* the property cannot have this value, or the data this size */
    VT_ERROR_BUFFER_TOO_SMALL = -4005,  /* nothing was copied; the required size has been stored */
    VT_ERROR_PROPERTY_REFUSED = -4006,  /* the window or the system did not accept the value */
    VT_ERROR_UNKNOWN_FEATURE = -4100,   /* none of VTFeature */
    VT_ERROR_FEATURE_SIGNATURE = -4101, /* the feature is registered by another function */
    VT_ERROR_UNKNOWN_SIGNAL = -4200     /* none of VTSignal */
};

/* Actions and message boxes ---------------------------------------------------------------------------------------- */

enum VTPlace {
    VT_PLACE_MENU = 1,       /* the menu with the title `menuTitle`, created if needed */
    VT_PLACE_TOOL_BAR = 2,   /* `menuTitle` is ignored, and may be null */
    VT_PLACE_INFORMATION = 3 /* the image information bar; `menuTitle` is ignored */
};

enum VTMessage { VT_MESSAGE_CRITICAL = 1, VT_MESSAGE_WARNING = 2, VT_MESSAGE_INFORMATION = 3, VT_MESSAGE_QUESTION = 4 };

enum VTButton {
    VT_BUTTON_NONE = 0,
    VT_BUTTON_OK = 0x1,
    VT_BUTTON_OPEN = 0x2,
    VT_BUTTON_SAVE = 0x4,
    VT_BUTTON_CANCEL = 0x8,
    VT_BUTTON_CLOSE = 0x10,
    VT_BUTTON_DISCARD = 0x20,
    VT_BUTTON_APPLY = 0x40,
    VT_BUTTON_RESET = 0x80,
    VT_BUTTON_RESTORE_DEFAULTS = 0x100,
    VT_BUTTON_HELP = 0x200,
    VT_BUTTON_SAVE_ALL = 0x400,
    VT_BUTTON_YES = 0x800,
    VT_BUTTON_YES_TO_ALL = 0x1000,
    VT_BUTTON_NO = 0x2000,
    VT_BUTTON_NO_TO_ALL = 0x4000,
    VT_BUTTON_ABORT = 0x8000,
    VT_BUTTON_RETRY = 0x10000,
    VT_BUTTON_IGNORE = 0x20000
};

/* Properties ------------------------------------------------------------------------------------------------------- */

/* A property's number is owner x 1000 + type x 100 + index. Owner: 1 application, 2 window, 3 the window's source (by
 * the window's handle), 4 action. Type: 0 Int32, 1 Double, 2 Bool, 3 CStr, 4 Data. All can be read and written, unless
 * a comment says otherwise. */
enum VTProperty {
    VT_APP_QUIT_ON_LAST_WINDOW_CLOSED = 1200, /* whether VTAppExec returns then; true at first */

    VT_WINDOW_COLOR_TABLE = 2000,           /* VTColorTable: the palette of monochrome images */
    VT_WINDOW_BAYER_FILTER_OVERRIDE = 2001, /* one of the four patterns of VTFormat, or 0: each image's own */
    VT_WINDOW_REFRESH_RATE = 2002,          /* hertz, from 1, in whole milliseconds; writing ends the automatic rate */
    VT_WINDOW_SHOW_STATE = 2003,            /* VTShowState; writing it shows the window */
    VT_WINDOW_ACQUISITION_STATE = 2004,     /* VTAcquisitionState; writing it queues the commands that lead there */
    VT_WINDOW_PIXEL_VALUES = 2005,          /* VTPixelValues: what is written into the pixels where there is room */
    VT_WINDOW_SHRINK_MODE = 2006,           /* VTShrinkMode: what a screen pixel shows that covers several pixels */

    VT_WINDOW_ZOOM = 2100, /* logical screen pixels an image pixel, 1.125^-40 to 1.125^40 (about 0.009 to 111) */

    VT_WINDOW_VISIBLE = 2200,
    VT_WINDOW_RAISE = 2201,     /* write only: true brings the window to the front */
    VT_WINDOW_CLOSEABLE = 2202, /* whether the user may close it; true at first */
    VT_WINDOW_FULL_SCREEN = 2203,
    VT_WINDOW_EXHIBIT_VIEW = 2204, /* the image alone, in an ordinary window */
    VT_WINDOW_ZOOM_TO_FIT = 2205,
    VT_WINDOW_PIXEL_CROSSHAIR_VISIBLE = 2206,
    VT_WINDOW_BAYER_DEMOSAIC_ENABLED = 2207,
    VT_WINDOW_RGB_ORDER_REVERSED = 2208,
    /* Whether frames are fetched at the refresh rate while the source is set up. VT_SIGNAL_GET_FRAME_NOW shows a frame
     * in any case. */
    VT_WINDOW_REFRESH_ENABLED = 2209,
    VT_WINDOW_REFRESH_RATE_AUTO = 2210,       /* refreshes at the primary screen's rate */
    VT_WINDOW_KEEP_IMAGE_INFO_VISIBLE = 2211, /* also in full screen and exhibit view */
    VT_WINDOW_ANALYZE_MENU_VISIBLE = 2212,    /* the keys of its entries work also without it; true at first */
    /* Which items the image information bar shows, of those that the source has. */
    VT_WINDOW_PREVIEW_FRAME_RATE = 2220,
    VT_WINDOW_PREVIEW_BUFFERS_QUEUED = 2221,
    VT_WINDOW_PREVIEW_BUFFERS_FILLED = 2222,
    VT_WINDOW_PREVIEW_BUFFERS_DROPPED = 2223,
    VT_WINDOW_PREVIEW_BUFFERS_DELIVERED = 2224,
    VT_WINDOW_PREVIEW_IMAGE_DIMENSIONS = 2225,
    VT_WINDOW_PREVIEW_IMAGE_FORMAT = 2226,
    VT_WINDOW_PREVIEW_PIXEL_VALUE = 2227,
    VT_WINDOW_PREVIEW_ZOOM_LEVEL = 2228,
    VT_WINDOW_PREVIEW_SETUP_MODE = 2229,

    VT_WINDOW_TITLE = 2300,         /* Latin-1 */
    VT_WINDOW_GEOMETRY_TEXT = 2301, /* position and size, to be stored and written back; any other text is REFUSED */
    VT_WINDOW_ABOUT_TITLE = 2302,   /* Latin-1; heading of "About Application...", removed when both texts are empty */
    VT_WINDOW_ABOUT_TEXT = 2303,    /* Latin-1 */

    /* Sides are clamped to 1 to 32,767. A position outside all screens is moved by the least distance. */
    VT_WINDOW_GEOMETRY = 2400,         /* int32_t[4]: x, y, width, height in logical screen pixels, without the frame */
    VT_WINDOW_FRAME_GEOMETRY = 2401,   /* the same with the frame, whose width is known once the window was shown */
    VT_WINDOW_IMAGE_OFFSET = 2402,     /* int32_t[2]: of the view in the scaled image, in logical pixels */
    VT_WINDOW_TRANSIENT_PARENT = 2403, /* void*: a top-level window of the host above which this one stays, or null */
    /* uint32_t[3]: width, height and format (MONO8, RGB8 or RGBA8) of a bitmap that the host draws into. Size 0 means
     * none; writing it unlocks. */
    VT_WINDOW_BITMAP_LOCK = 2404,
    /* VTRawImage, read only: the locked bitmap, or size 0 for none. The host shows what it has drawn by pushing this
     * same description. A frame of the bitmap's size and format is copied into it. The bitmap is freed when it is
     * unlocked or locked anew and when the window ends; the host must stop writing before VT_FEATURE_CLOSED returns. */
    VT_WINDOW_BITMAP = 2405,

    /* Bounds and step of the frame count of VT_FEATURE_START_FIXED, from 1. */
    VT_SOURCE_START_FIXED_MIN = 3000,
    VT_SOURCE_START_FIXED_MAX = 3001,
    VT_SOURCE_START_FIXED_INC = 3002,
    VT_SOURCE_SETUP_MODE_COUNT = 3003, /* read only */
    /* Read only: whether the feature is registered. */
    VT_SOURCE_HAS_SETUP = 3200,
    VT_SOURCE_HAS_SETUP_MODE = 3201,
    VT_SOURCE_HAS_CLEANUP = 3202,
    VT_SOURCE_HAS_TRIGGER = 3203,
    VT_SOURCE_HAS_START_SINGLE_REVERSE = 3204,
    VT_SOURCE_HAS_START_REVERSE = 3205,
    VT_SOURCE_HAS_START = 3206,
    VT_SOURCE_HAS_START_FIXED = 3207,
    VT_SOURCE_HAS_START_SINGLE = 3208,
    VT_SOURCE_HAS_PAUSE = 3209,
    VT_SOURCE_HAS_STOP = 3210,
    VT_SOURCE_HAS_FRAME_RATE = 3211,
    VT_SOURCE_HAS_FRAMES_QUEUED = 3212,
    VT_SOURCE_HAS_FRAMES_FILLED = 3213,
    VT_SOURCE_HAS_FRAMES_DROPPED = 3214,
    VT_SOURCE_HAS_FRAMES_DELIVERED = 3215,

    VT_ACTION_CHECKABLE = 4200,
    VT_ACTION_CHECKED = 4201,
    VT_ACTION_ENABLED = 4202,
    VT_ACTION_TEXT = 4300,
    VT_ACTION_TOOL_TIP = 4301
};

enum VTColorTable {
    VT_COLOR_TABLE_GRAY = 0,
    VT_COLOR_TABLE_GRAY_2X = 1,
    VT_COLOR_TABLE_GRAY_INVERSE = 2,
    VT_COLOR_TABLE_SINE = 3,
    VT_COLOR_TABLE_COSINE = 4,
    VT_COLOR_TABLE_RAINBOW = 5,
    VT_COLOR_TABLE_RANDOM = 6,
    VT_COLOR_TABLE_CONTOURS = 7
};

enum VTPixelValues {
    VT_PIXEL_VALUES_OFF = 0,
    VT_PIXEL_VALUES_WITH_POSITION = 1, /* coordinates and value, in a box; at first */
    VT_PIXEL_VALUES_VALUE_ONLY = 2     /* the value on the pixel itself */
};

enum VTShrinkMode {
    VT_SHRINK_SAMPLE = 0, /* one of the covered pixels; at first */
    VT_SHRINK_MEAN = 1,
    VT_SHRINK_MAXIMUM = 2 /* no bright pixel is lost */
};

enum VTShowState { VT_SHOW_NORMAL = 0, VT_SHOW_MINIMIZED = 1, VT_SHOW_MAXIMIZED = 2 };

enum VTAcquisitionState {
    VT_ACQUISITION_UNCONFIGURED = 0, /* not set up */
    VT_ACQUISITION_CONFIGURED = 1,   /* set up, and not running */
    VT_ACQUISITION_RUNNING = 2
};

/* Features and signals --------------------------------------------------------------------------------------------- */

/* A feature's number is signature x 100 + index; each signature has its own function that registers it. `user` is the
 * `userData` of VTWindowCreate. C++ hosts: an exception that leaves a callback is caught, reported in one line on the
 * standard error stream, and counts as the callback's failure. */
enum VTFeature {
    /* Command. The window offers those registered and runs them on its busy-work thread, one at a time; true on
     * success. */
    VT_FEATURE_SETUP = 100,
    VT_FEATURE_CLEANUP = 101,
    VT_FEATURE_TRIGGER = 102,
    VT_FEATURE_START_SINGLE_REVERSE = 103,
    VT_FEATURE_START_REVERSE = 104,
    VT_FEATURE_START = 105,
    VT_FEATURE_START_SINGLE = 106,
    VT_FEATURE_PAUSE = 107,
    VT_FEATURE_STOP = 108,

    VT_FEATURE_START_FIXED = 200, /* Count: a command with the number of frames */
    VT_FEATURE_SETUP_MODE = 300,  /* Name: a command with the setup mode's name */

    /* Query. Called often on the user-interface thread: must return at once. Without a function, a registered command
     * is always possible, the source is set up, is running unless a start command is registered, is stopped when it is
     * not running, and the other states are false. */
    VT_FEATURE_CAN_SETUP = 400,
    VT_FEATURE_CAN_SETUP_MODE = 401,
    VT_FEATURE_CAN_CLEANUP = 402,
    VT_FEATURE_CAN_TRIGGER = 403,
    VT_FEATURE_CAN_START_SINGLE_REVERSE = 404,
    VT_FEATURE_CAN_START_REVERSE = 405,
    VT_FEATURE_CAN_START = 406,
    VT_FEATURE_CAN_START_FIXED = 407,
    VT_FEATURE_CAN_START_SINGLE = 408,
    VT_FEATURE_CAN_PAUSE = 409,
    VT_FEATURE_CAN_STOP = 410,
    VT_FEATURE_IS_SETUP = 420,
    VT_FEATURE_IS_RUNNING_SINGLE_REVERSE = 421,
    VT_FEATURE_IS_RUNNING_REVERSE = 422,
    VT_FEATURE_IS_RUNNING = 423,
    VT_FEATURE_IS_RUNNING_FIXED = 424,
    VT_FEATURE_IS_RUNNING_SINGLE = 425,
    VT_FEATURE_IS_PAUSED = 426,
    VT_FEATURE_IS_STOPPED = 427,

    /* Text: writes the name of the active setup mode in the way in which the library writes text; false: none. */
    VT_FEATURE_ACTIVE_SETUP_MODE = 500,

    VT_FEATURE_FRAME_RATE = 600, /* Double: frames a second; user-interface thread */

    /* Size. Statistics; user-interface thread. */
    VT_FEATURE_FRAMES_QUEUED = 700,
    VT_FEATURE_FRAMES_FILLED = 701,
    VT_FEATURE_FRAMES_DROPPED = 702,
    VT_FEATURE_FRAMES_DELIVERED = 703,

    /* NextFrame. Called on the window's stream thread whenever the window refreshes and no pushed frame is pending.
     * Lends the next frame, or returns false when there is none. May block. */
    VT_FEATURE_NEXT_FRAME = 800,

    /* Released. Called exactly once for every lent frame, pushed or pulled, with its fields unchanged, when the library
     * reads it no more: it was replaced unseen, taken away or refused, or is no longer in view. Five may be lent at
     * once: in view, about to be, ready, being converted, pending. With a sixth buffer the camera always has one to
     * fill, with a seventh also while a save function shows a message box. Register it before the first frame. Any
     * thread; must not push a frame. */
    VT_FEATURE_FRAME_RELEASED = 900,

    /* Notify. User-interface thread. CLOSED: the user closes the window. FINISHED: the last call of all with `user`,
     * also by actions and released frames, after the window has ended and every callback has returned; from then on
     * user data, code and buffers are the host's. It comes from the event loop or VTAppDestroy, but not for a callback
     * that returns after that. */
    VT_FEATURE_CLOSED = 1000,
    VT_FEATURE_FINISHED = 1001,

    /* Load, Save. The window itself only saves. File names are in the local 8-bit encoding. The frame to be saved is
     * readable until the function returns; a loaded one is copied and then released. User-interface thread. */
    VT_FEATURE_FILE_LOAD = 1100,
    VT_FEATURE_FILE_SAVE = 1200
};

enum VTSignal {
    VT_SIGNAL_ACQUISITION_STATE_CHANGED = 1, /* the answer to an IS query has changed */
    VT_SIGNAL_FEATURE_SET_CHANGED = 2,       /* the answer to a CAN query has changed */
    VT_SIGNAL_GET_FRAME_NOW = 3              /* a frame is available: fetch it before the next refresh */
};

#endif
