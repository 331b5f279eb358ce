// SPDX-License-Identifier: MIT
// A host's action in a display window.
#pragma once

#include <Vistrel/ScopedActionInterface.h>

#include <cstddef>
#include <memory>

class QAction;

namespace Vistrel {

class Window;

/// Connects a host's command to an entry of a window's menu, tool bar or image information bar. A window makes it. The
/// host may delete it, which removes the entry. A window that is destroyed calls the command's `uxDestroyed` and then
/// deletes the action.
///
/// Bound to the user-interface thread. Texts are in the local 8-bit encoding; a null text counts as empty.
class VISTREL_EXPORT Action : public BaseClass
{
public:
    /// For `Window`, which passes one of its entries. The action takes ownership of it.
    Action(Window* const window, QAction* const action, ScopedActionInterface&& actionInterface);
    /// Removes the entry and deletes the command; if an operation of the command is running, after it has returned.
    ~Action() override;
    Action(const Action&) = delete;
    Action& operator=(const Action&) = delete;

    Window* window(); ///< null from the moment that the host deletes it
    const Window* window() const;
    QAction* qt_handle(); ///< null during `uxDestroyed`
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
    /// Copies the text and a terminating zero into `buffer`. `*bufferSize` is the buffer's capacity on entry and the
    /// text's length plus one on return. A text that is too long is cut and terminated; a null buffer only measures.
    /// Returns false only for a null `bufferSize`.
    bool text(char* const buffer, std::size_t* const bufferSize) const;
    bool toolTip(char* const buffer, std::size_t* const bufferSize) const; ///< in the same way

private:
    class VISTREL_LOCAL PrivateData;
    std::unique_ptr<PrivateData> m_data;
};

} // namespace Vistrel
