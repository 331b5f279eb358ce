// SPDX-License-Identifier: MIT
// A host's action in a display window.
#pragma once

#include <Vistrel/ScopedActionInterface.h>

#include <cstddef>
#include <memory>

class QAction;

namespace Vistrel {

class Window;

/// Ties a host's command to an entry of a window's menu, tool bar or image information bar. A window makes it; it lives
/// until the host deletes it, which removes the entry, or until the window goes, which tells the command and then
/// deletes the action.
///
/// Bound to the user-interface thread. Texts are in the local 8-bit encoding; a null text counts as empty.
class VISTREL_EXPORT Action : public BaseClass
{
public:
    /// For `Window`, which passes an entry of its own: it is the action's from now on.
    Action(Window* const window, QAction* const action, ScopedActionInterface&& actionInterface);
    /// Removes the entry. The command goes with the action or, when one of its operations is running, after that.
    ~Action() override;
    Action(const Action&) = delete;
    Action& operator=(const Action&) = delete;

    Window* window(); ///< null from the moment that the host deletes it
    const Window* window() const;
    QAction* qt_handle(); ///< null while the command is told that it has gone
    const QAction* qt_handle() const;
    /// The command, or null when none was given.
    AbstractActionInterface* actionInterface();
    const AbstractActionInterface* actionInterface() const;

    bool isCheckable() const;
    bool isChecked() const;
    bool isEnabled() const;
    void setCheckable(bool checkable);
    void setChecked(bool checked);
    void setEnabled(bool enabled);

    void setText(const char* const text);
    void setToolTip(const char* const text);
    /// Copies the text and a terminating zero into `buffer`, whose capacity `*bufferSize` is on entry; stores the
    /// length plus one in `*bufferSize`. A text too long arrives cut and terminated; a null buffer only measures. False
    /// only for a null `bufferSize`.
    bool text(char* const buffer, std::size_t* const bufferSize) const;
    bool toolTip(char* const buffer, std::size_t* const bufferSize) const; ///< in the same way

private:
    class VISTREL_LOCAL PrivateData;
    std::unique_ptr<PrivateData> m_data;
};

} // namespace Vistrel
