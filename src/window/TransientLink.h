// SPDX-License-Identifier: MIT
// Keeps a display window above a top-level window of the host.
#pragma once

#include <Vistrel/NativeTypes.h>

#include <QtCore/QObject>

class QWidget;

namespace Vistrel {

/// The window is registered anew when its native window is another one. Registered no more with the end of this object.
class TransientLink : public QObject
{
    Q_OBJECT

public:
    explicit TransientLink(QWidget* window); ///< which outlives this object
    ~TransientLink() override;

    void setParent(HWND parent); ///< null ends it; without effect for what is no top-level window
    HWND parentHandle() const;   ///< null from the moment that it has gone

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private Q_SLOTS:
    void renew();

private:
    void forget();

    QWidget* const m_window;
    HWND m_child = nullptr; // this window, as it was registered
    HWND m_parent = nullptr;
};

} // namespace Vistrel
