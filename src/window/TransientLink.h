// SPDX-License-Identifier: MIT
// Keeps a display window above a top-level window of the host.
#pragma once

#include <Vistrel/NativeTypes.h>

#include <QtCore/QObject>

class QWidget;

namespace Vistrel {

/// Registers the window again when its native window changes. The destructor ends the registration.
class TransientLink : public QObject
{
    Q_OBJECT

public:
    explicit TransientLink(QWidget* window); ///< which outlives this object
    ~TransientLink() override;

    void setParent(HWND parent); ///< null ends it; does nothing for a handle that is no top-level window
    HWND parentHandle() const;   ///< null from the moment that the parent is destroyed

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private Q_SLOTS:
    void renew();

private:
    void forget();

    QWidget* const m_window;
    HWND m_child = nullptr; // this window's handle in the registry
    HWND m_parent = nullptr;
};

} // namespace Vistrel
