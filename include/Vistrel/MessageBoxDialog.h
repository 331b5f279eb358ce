// SPDX-License-Identifier: MIT
// Message boxes over a display window, from any thread.
#pragma once

#include <Vistrel/Export.h>

namespace Vistrel {

class Window;

/// A button of a message box; the values are flags. None is 0.
enum class DialogButton : int {
    NoButton = 0x0,
    Ok = 0x1,
    Open = 0x2,
    Save = 0x4,
    Cancel = 0x8,
    Close = 0x10,
    Discard = 0x20,
    Apply = 0x40,
    Reset = 0x80,
    RestoreDefaults = 0x100,
    Help = 0x200,
    SaveAll = 0x400,
    Yes = 0x800,
    YesToAll = 0x1000,
    No = 0x2000,
    NoToAll = 0x4000,
    Abort = 0x8000,
    Retry = 0x10000,
    Ignore = 0x20000,
};

/// A set of buttons.
union DialogButtons {
    constexpr DialogButtons() : value(0) {}
    constexpr DialogButtons(DialogButton button) : value(static_cast<int>(button)) {}
    constexpr explicit DialogButtons(int flags) : value(flags) {}

    int value; ///< the flags, added
};

constexpr DialogButtons operator|(DialogButtons left, DialogButtons right)
{
    return DialogButtons(left.value | right.value);
}

constexpr DialogButtons operator|(DialogButton left, DialogButton right)
{
    return DialogButtons(left) | DialogButtons(right);
}

/// Each shows a box over `window`, or over no window when it is null or closed, and returns the button that the user
/// pressed: `NoButton` when the box, the window, the event loop or the application ends without an answer, even before
/// the box is shown. Unknown flags are ignored; without any button there is Ok. A default button that is not shown is
/// ignored. Texts are in the local 8-bit encoding.
///
/// Events of the other windows are handled while the box is shown. A call on another thread blocks until the user has
/// answered; the caller must hold nothing that the user-interface thread waits for. Thread-safe; `window` may be closed
/// and deleted during the call.
class VISTREL_EXPORT MessageBoxDialog
{
public:
    MessageBoxDialog() = delete;

    static DialogButton critical(Window* const window, const char* const title, const char* const text,
                                 const DialogButtons& buttons, DialogButton defaultButton);
    static DialogButton warning(Window* const window, const char* const title, const char* const text,
                                const DialogButtons& buttons, DialogButton defaultButton);
    static DialogButton information(Window* const window, const char* const title, const char* const text,
                                    const DialogButtons& buttons, DialogButton defaultButton);
    static DialogButton question(Window* const window, const char* const title, const char* const text,
                                 const DialogButtons& buttons, DialogButton defaultButton);
};

} // namespace Vistrel
