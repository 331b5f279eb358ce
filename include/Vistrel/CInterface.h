/* SPDX-License-Identifier: MIT */
/* The library for hosts without C++: functions, handles and result codes, in C99. `docs/c-interface.md` is its guide.
 *
 * A host makes the application, makes windows, pushes frames to them or registers functions that the windows call, and
 * runs the event loop.
 *
 * Results: every function but `VTWindowIsGood` and `VTResultText` returns one of VTResult. A call that fails has no
 * effect, and no exception leaves a function. The checks come in this order: NO_APPLICATION; NULL_HANDLE;
 * NULL_POINTER or NULL_RESULT, for a null pointer to which a result goes; WRONG_HANDLE; WRONG_THREAD; then the codes
 * that the function's comment lists, in its order. EXCEPTION may come from any function. An application's handle is
 * checked before the pointers, and null is a WRONG_HANDLE.
 *
 * Threads: the thread that calls `VTAppCreate` is the user-interface thread. All functions belong there, except those
 * marked "any thread". A call on another thread that comes too late returns NO_APPLICATION, WRONG_HANDLE (the window is
 * destroyed) or WINDOW_CLOSED.
 *
 * Handles: a window's handle is valid until `VTWindowDestroy` or the end of the application; once the user has closed
 * the window, functions return WINDOW_CLOSED. An action's handle is valid until `VTActionDestroy` or the end of its
 * window. A handle that has ended is a WRONG_HANDLE until its address is used for a new one.
 *
 * Text is in the local 8-bit encoding, except window titles and about texts, which are Latin-1. Text that goes in is
 * copied. Text that comes out is written to `char* buffer, size_t* size`: `*size` is the buffer's capacity on entry and
 * the text's length plus one on return. A text that is too long is cut and terminated, which is a success; a null
 * buffer only measures. */
#ifndef VISTREL_CINTERFACE_H
#define VISTREL_CINTERFACE_H

#include <Vistrel/CConstants.h>
#include <Vistrel/Export.h>
#include <Vistrel/Version.h>

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef void* VTHandle; /* any of the three below */
typedef struct VTAppObject* VTAppHandle;
typedef struct VTWindowObject* VTWindowHandle;
typedef struct VTActionObject* VTActionHandle;

/* Describes one frame buffer. */
typedef struct VTRawImage
{
    const uint8_t* data; /* first byte: height rows of width pixels, without padding between rows */
    size_t width;        /* pixels a row */
    size_t height;       /* rows */
    uint32_t format;     /* one of VTFormat */
    void* userData;      /* for the host; not changed */
} VTRawImage;

/* Results --------------------------------------------------------------------------------------------------------- */

/* Returns the result in words: a static English text, never null. Any thread. */
VISTREL_EXPORT const char* VTResultText(int32_t result);

/* The application ------------------------------------------------------------------------------------------------- */

/* Makes the application and makes this thread the user-interface thread. A process has one application at a time. The
 * arguments are copied; C needs the cast `(const char* const*)argv`. On Linux the process's locale becomes that of its
 * environment. APPLICATION_EXISTS; NULL_POINTER (argv); NULL_RESULT; APPLICATION_FAILED: a negative `argc`, a null
 * argument, an application that Qt or the class interface made or that is ending, or no platform plug-in, display or
 * screen. A line on the standard error stream says which. */
VISTREL_EXPORT int32_t VTAppCreate(int argc, const char* const* argv, VTAppHandle* result);

/* Ends the application with all its windows and handles. Waits three seconds for running host functions. A line on the
 * standard error stream reports those that have not returned by then; what they use must stay valid. Meanwhile every
 * call from a host function returns NO_APPLICATION. When this returns, every VT_FEATURE_FINISHED has been called,
 * except for windows whose functions did not return. APPLICATION_BUSY (inside VTAppExec or a callback). */
VISTREL_EXPORT int32_t VTAppDestroy(VTAppHandle app);

/* Runs the event loop until `VTAppExit`, or until the last window has been closed, and stores the exit code unless
 * `exitCode` is null. APPLICATION_BUSY (the loop is running, or the call comes from a callback). */
VISTREL_EXPORT int32_t VTAppExec(VTAppHandle app, int* exitCode);

/* Ends the event loop; if none runs, the next one at its start. Any thread. */
VISTREL_EXPORT int32_t VTAppExit(VTAppHandle app, int returnCode);

/* Stores the application that VTAppCreate has made. Any thread. */
VISTREL_EXPORT int32_t VTAppGetGlobal(VTAppHandle* result);

/* Calls `method(userData)` whenever the event loop is idle, in the order of registration, until the application ends. A
 * null method is stored and skipped. */
VISTREL_EXPORT int32_t VTAppAddIdleMethod(VTAppHandle app, void (*method)(void*), void* userData);

/* Windows --------------------------------------------------------------------------------------------------------- */

/* Makes a window, which is not shown yet. `userData` is passed to every function that is registered with it. */
VISTREL_EXPORT int32_t VTWindowCreate(VTAppHandle app, VTWindowHandle* result, void* userData);

/* Closes the window without asking, and ends its handle and those of its actions. Waits for no host function:
 * VT_FEATURE_FINISHED is called when the last one has returned. May be called in any callback. */
VISTREL_EXPORT int32_t VTWindowDestroy(VTWindowHandle window);

/* Whether the window exists: false without an application, for a wrong handle, and once the user has closed it. Any
 * thread. */
VISTREL_EXPORT bool VTWindowIsGood(VTWindowHandle window);

/* Stores the native window: a window handle on Windows; on X11 the window's number. WINDOW_CLOSED. */
VISTREL_EXPORT int32_t VTWindowGetNativeHandle(VTWindowHandle window, void** result);

/* Stores the `userData` of VTWindowCreate. WINDOW_CLOSED. */
VISTREL_EXPORT int32_t VTWindowGetUserData(VTWindowHandle window, void** result);

/* Makes a frame the pending one, which the window shows at its next refresh (VT_SIGNAL_GET_FRAME_NOW: at once), or
 * takes the pending one away when `image` is null. Copies only the description: the pixels are lent until they are
 * released, see VT_FEATURE_FRAME_RELEASED. Null `data` clears the picture. Never blocks. Any thread. WINDOW_CLOSED. */
VISTREL_EXPORT int32_t VTWindowSetNextFrame(VTWindowHandle window, const VTRawImage* image);

/* Adds a named setup mode, which the window offers when VT_FEATURE_SETUP_MODE is registered. The description may be
 * empty. WINDOW_CLOSED; SETUP_MODE. */
VISTREL_EXPORT int32_t VTWindowAddSetupMode(VTWindowHandle window, const char* name, const char* description);
/* WINDOW_CLOSED. */
VISTREL_EXPORT int32_t VTWindowClearSetupModes(VTWindowHandle window);

/* Adds a file format that "Save Image..." offers and VT_FEATURE_FILE_SAVE writes. `extension` is the primary one;
 * `extensions` lists further ones, separated by spaces; it and `description` may be null. An extension consists of
 * ASCII letters and digits, with or without its leading dot. WINDOW_CLOSED; FILE_FORMAT. */
VISTREL_EXPORT int32_t VTWindowAddFileFormat(VTWindowHandle window, const char* extension, const char* extensions,
                                             const char* description);
/* WINDOW_CLOSED. */
VISTREL_EXPORT int32_t VTWindowClearFileFormats(VTWindowHandle window);

/* Actions of the host --------------------------------------------------------------------------------------------- */

/* Adds an action to the window. "&" in a text precedes its mnemonic. `triggered`, which may be null, is called on the
 * user-interface thread when the user triggers it; `checked` is the new state of a checkable one. `gone`, which may be
 * null, is the last call with `user`, exactly once, however the action ends. ACTION_ARGUMENT; WINDOW_CLOSED;
 * ACTION_REFUSED. */
VISTREL_EXPORT int32_t VTWindowAddAction(VTWindowHandle window, int32_t place, const char* menuTitle, const char* text,
                                         void (*triggered)(VTActionHandle action, bool checked, void* user),
                                         void (*gone)(void* user), void* user, VTActionHandle* result);

/* Removes the action. May be called in its own `triggered`; `gone` is then called after that. */
VISTREL_EXPORT int32_t VTActionDestroy(VTActionHandle action);

/* Stores the action's `user`. */
VISTREL_EXPORT int32_t VTActionGetUserData(VTActionHandle action, void** result);

/* Message boxes --------------------------------------------------------------------------------------------------- */

/* Shows a message box over the window and blocks until it is answered; events of other windows are handled meanwhile.
 * `buttons` is a sum of VTButton, 0 for Ok; `defaultButton` is one of those shown, or 0. A caller on another thread
 * must hold nothing that the user-interface thread waits for. `*pressed` is written only with VT_OK. Any thread.
 * NULL_POINTER (also title, text); MESSAGE_KIND; MESSAGE_BUTTONS; WINDOW_CLOSED; NO_ANSWER (also when the window, the
 * event loop or the application ends). */
VISTREL_EXPORT int32_t VTMessageBoxDialogShow(VTWindowHandle window, int32_t kind, const char* title, const char* text,
                                              uint32_t buttons, uint32_t defaultButton, uint32_t* pressed);

/* Properties ------------------------------------------------------------------------------------------------------ */

/* Write a property. `size` is the data's in bytes; `data` may be null when it is 0. NULL_POINTER (value, data);
 * WRONG_HANDLE (also a live one to which the property does not belong); UNKNOWN_PROPERTY; PROPERTY_TYPE; READ_ONLY;
 * OUT_OF_RANGE; WINDOW_CLOSED; PROPERTY_REFUSED. */
VISTREL_EXPORT int32_t VTSetPropInt32(VTHandle handle, int32_t property, int32_t value);
VISTREL_EXPORT int32_t VTSetPropDouble(VTHandle handle, int32_t property, double value);
VISTREL_EXPORT int32_t VTSetPropBool(VTHandle handle, int32_t property, bool value);
VISTREL_EXPORT int32_t VTSetPropCStr(VTHandle handle, int32_t property, const char* value);
VISTREL_EXPORT int32_t VTSetPropData(VTHandle handle, int32_t property, const void* data, size_t size);

/* Read a property. Data is never cut: `*size` is the buffer's capacity on entry and the data's size on return; a null
 * buffer only measures. `value` and `size` are required. WRONG_HANDLE (as above); UNKNOWN_PROPERTY; PROPERTY_TYPE;
 * WRITE_ONLY; WINDOW_CLOSED; BUFFER_TOO_SMALL. */
VISTREL_EXPORT int32_t VTGetPropInt32(VTHandle handle, int32_t property, int32_t* value);
VISTREL_EXPORT int32_t VTGetPropDouble(VTHandle handle, int32_t property, double* value);
VISTREL_EXPORT int32_t VTGetPropBool(VTHandle handle, int32_t property, bool* value);
VISTREL_EXPORT int32_t VTGetPropCStr(VTHandle handle, int32_t property, char* buffer, size_t* size);
VISTREL_EXPORT int32_t VTGetPropData(VTHandle handle, int32_t property, void* buffer, size_t* size);

/* Features: the host's functions ---------------------------------------------------------------------------------- */

typedef bool (*VTCommandCallback)(void* user);
typedef bool (*VTCountCallback)(size_t count, void* user);
typedef bool (*VTNameCallback)(const char* name, void* user);
typedef bool (*VTQueryCallback)(void* user);
typedef bool (*VTTextCallback)(char* buffer, size_t* size, void* user);
typedef double (*VTDoubleCallback)(void* user);
typedef size_t (*VTSizeCallback)(void* user);
typedef bool (*VTNextFrameCallback)(VTRawImage* frame, void* user);
typedef void (*VTReleasedCallback)(const VTRawImage* frame, void* user);
typedef void (*VTNotifyCallback)(void* user);
typedef bool (*VTLoadCallback)(const char* fileName, VTRawImage* frame, void* user);
typedef bool (*VTSaveCallback)(const VTRawImage* frame, const char* fileName, void* user);

/* Register a function, or remove it with null; the window is updated. A running call may outlast the removal.
 * UNKNOWN_FEATURE; FEATURE_SIGNATURE; WINDOW_CLOSED. */
VISTREL_EXPORT int32_t VTSetFeatureCommand(VTWindowHandle window, int32_t feature, VTCommandCallback callback);
VISTREL_EXPORT int32_t VTSetFeatureCount(VTWindowHandle window, int32_t feature, VTCountCallback callback);
VISTREL_EXPORT int32_t VTSetFeatureName(VTWindowHandle window, int32_t feature, VTNameCallback callback);
VISTREL_EXPORT int32_t VTSetFeatureQuery(VTWindowHandle window, int32_t feature, VTQueryCallback callback);
VISTREL_EXPORT int32_t VTSetFeatureText(VTWindowHandle window, int32_t feature, VTTextCallback callback);
VISTREL_EXPORT int32_t VTSetFeatureDouble(VTWindowHandle window, int32_t feature, VTDoubleCallback callback);
VISTREL_EXPORT int32_t VTSetFeatureSize(VTWindowHandle window, int32_t feature, VTSizeCallback callback);
VISTREL_EXPORT int32_t VTSetFeatureNextFrame(VTWindowHandle window, int32_t feature, VTNextFrameCallback callback);
VISTREL_EXPORT int32_t VTSetFeatureReleased(VTWindowHandle window, int32_t feature, VTReleasedCallback callback);
VISTREL_EXPORT int32_t VTSetFeatureNotify(VTWindowHandle window, int32_t feature, VTNotifyCallback callback);
VISTREL_EXPORT int32_t VTSetFeatureLoad(VTWindowHandle window, int32_t feature, VTLoadCallback callback);
VISTREL_EXPORT int32_t VTSetFeatureSave(VTWindowHandle window, int32_t feature, VTSaveCallback callback);

/* Stores whether a function is registered. UNKNOWN_FEATURE; WINDOW_CLOSED. */
VISTREL_EXPORT int32_t VTIsFeatureSet(VTWindowHandle window, int32_t feature, bool* set);

/* Signals --------------------------------------------------------------------------------------------------------- */

/* Tells the window that something has changed. Never blocks. Any thread. UNKNOWN_SIGNAL; WINDOW_CLOSED. */
VISTREL_EXPORT int32_t VTSendSignal(VTWindowHandle window, int32_t signal);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif
