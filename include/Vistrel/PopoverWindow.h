// SPDX-License-Identifier: MIT
// A small panel that opens beside the button that it belongs to.
#pragma once

#include <Vistrel/Export.h>

#include <QtWidgets/QWidget>

#include <memory>

namespace Vistrel {

/// A frameless panel over its window, for one widget. It takes the keyboard focus and returns it. It closes on Esc,
/// when it is no longer the active window, and with its window. It grabs no input: the press outside that closes it
/// reaches the widget under it. A press on its anchor leaves it open, so that a button can toggle it.
///
/// While a child of the contents has the focus, plain keys go to that child and trigger no shortcuts of the window.
/// Keys with Ctrl or Alt and the function keys stay shortcuts; so does every key but Esc while the contents themselves
/// have the focus.
///
/// Bound to the user-interface thread.
class VISTREL_EXPORT PopoverWindow : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(bool open READ isOpen)

public:
    /// `parent` is a widget of the window that the panel belongs to, or null.
    explicit PopoverWindow(QWidget* parent = nullptr);
    ~PopoverWindow() override;

    /// Takes ownership of the widget, which may be null, and deletes the previous one. The panel takes over its
    /// accessible name.
    void setContents(QWidget* contents);

    bool isOpen() const;

    /// Opens below the leading edge of `anchor`, or above it if there is no room; if `anchor` is null or hidden, at the
    /// top centre of `fallback`, and if that is too, of the panel's window. The panel lies completely on one screen. An
    /// open panel is placed again. While its window is hidden or minimised nothing happens.
    void popUp(QWidget* anchor, QWidget* fallback);

    void setVisible(bool visible) override;

Q_SIGNALS:
    void opened();
    void closed();

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    class VISTREL_LOCAL PrivateData;
    std::unique_ptr<PrivateData> m_data;
};

} // namespace Vistrel
