// SPDX-License-Identifier: MIT
// The menu "Analyze": how the image is looked at closely.
#pragma once

#include <QtCore/QObject>

class QMenu;
class QPoint;

namespace Vistrel {

struct Form;

/// Keeps the menu's entries in step with the surface.
class Analysis : public QObject
{
    Q_OBJECT

public:
    explicit Analysis(const Form& form); ///< which outlives this object

    bool isMenuVisible() const;
    void setMenuVisible(bool visible);
    /// Adds "Zoom to Pixel Values", about a point of the surface.
    void addZoomTo(QMenu* menu, const QPoint& position) const;

public Q_SLOTS:
    void update();
    void zoomToPixelValues(); ///< at the pointer if it is over the surface

private:
    const Form& m_form;
};

} // namespace Vistrel
