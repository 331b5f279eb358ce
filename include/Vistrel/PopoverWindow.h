// SPDX-License-Identifier: MIT
// A small panel that opens beside the button that it belongs to.
#pragma once

#include <Vistrel/Export.h>

#include <QtWidgets/QWidget>

#include <memory>

namespace Vistrel {

/// A frameless panel over its window, for one widget. It takes the keyboard focus and gives it back; it closes by Esc,
/// when it is no longer the active window, and with its window. It grabs nothing: the press outside that closes it
/// reaches what is pressed. A press on the widget that it stands at leaves it open, so that a button can toggle it.
///
/// While a child of the contents has the focus, plain keys are its own and no shortcuts of the window; keys with Ctrl
/// or Alt and the function keys stay shortcuts, as does every key but Esc when the contents have the focus themselves.
///
/// Bound to the user-interface thread.
class VISTREL_EXPORT PopoverWindow : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(bool open READ isOpen)

public:
    /// `parent` is a widget of the window that the panel belongs to; null for a panel by itself.
    explicit PopoverWindow(QWidget* parent = nullptr);
    ~PopoverWindow() override;

    /// Takes ownership of the widget, or of none for null; the one before it is deleted. Its accessible name becomes
    /// the panel's.
    void setContents(QWidget* contents);

    bool isOpen() const;

    /// Opens under the start of `anchor`, or above it when there is no room; if it is null or hidden, at the top centre
    /// of `fallback`, and of the panel's window if that is, too. The panel is wholly on one screen. When it is open
    /// already it is placed anew; while its window is hidden or minimised nothing happens.
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
