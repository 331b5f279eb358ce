// SPDX-License-Identifier: MIT
// The menu "Analyze": how the image is looked at closely.
#include "window/controllers/Analysis.h"

#include "widgets/SurfaceGeometry.h"
#include "window/Form.h"

#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>

#include <QtGui/QCursor>
#include <QtWidgets/QActionGroup>

#include <cstddef>
#include <iterator>

namespace Vistrel {

namespace {

// By the values of PixelValues and of ShrinkMode.
constexpr QAction* Ui_WindowQt::*valuesActions[] = {&Ui_WindowQt::actionPixel_Values_Off,
                                                    &Ui_WindowQt::actionPixel_Values_With_Position,
                                                    &Ui_WindowQt::actionPixel_Values_Value_Only};
constexpr QAction* Ui_WindowQt::*shrinkActions[] = {
    &Ui_WindowQt::actionShrink_By_Sample, &Ui_WindowQt::actionShrink_By_Mean, &Ui_WindowQt::actionShrink_By_Maximum};

} // namespace

Analysis::Analysis(const Form& form) : m_form(form)
{
    for (QMenu* const menu : {form.menuPixel_Values, form.menuShrink_By}) {
        auto* const group = new QActionGroup(menu);
        for (QAction* const action : menu->actions())
            group->addAction(action);
    }
    Surface* const surface = form.scrollArea->surface();
    for (std::size_t i = 0; i < std::size(valuesActions); ++i)
        connect(form.*valuesActions[i], &QAction::triggered, surface,
                [=] { surface->setPixelValues(static_cast<PixelValues>(i)); });
    for (std::size_t i = 0; i < std::size(shrinkActions); ++i)
        connect(form.*shrinkActions[i], &QAction::triggered, surface,
                [=] { surface->setShrinkMode(static_cast<ShrinkMode>(i)); });
    connect(form.actionZoom_Pixel_Values, SIGNAL(triggered()), this, SLOT(zoomToPixelValues()));
    connect(surface, SIGNAL(pixelValuesChanged()), this, SLOT(update()));
    connect(surface, SIGNAL(shrinkModeChanged()), this, SLOT(update()));
    connect(surface, SIGNAL(pixelRangeChanged()), this, SLOT(update())); // there may be an image now, or none
    update();
}

bool Analysis::isMenuVisible() const
{
    return m_form.menuAnalyze->menuAction()->isVisible();
}

void Analysis::setMenuVisible(bool visible)
{
    m_form.menuAnalyze->menuAction()->setVisible(visible);
}

void Analysis::addZoomTo(QMenu* menu, const QPoint& position) const
{
    const QAction* const zoom = m_form.actionZoom_Pixel_Values;
    const QString text = zoom->text() + QLatin1Char('\t') + zoom->shortcut().toString(QKeySequence::NativeText);
    SurfaceScrollArea* const area = m_form.scrollArea;
    menu->addAction(text, area, [=] { area->doZoomToPixelValues(position); })->setEnabled(zoom->isEnabled());
}

void Analysis::update()
{
    const Surface* const surface = m_form.scrollArea->surface();
    (m_form.*valuesActions[static_cast<std::size_t>(surface->pixelValues())])->setChecked(true);
    (m_form.*shrinkActions[static_cast<std::size_t>(surface->shrinkMode())])->setChecked(true);
    const bool hasImage = !surface->viewGeometry().imageSize().isEmpty();
    m_form.actionZoom_Pixel_Values->setEnabled(hasImage && surface->pixelValues() != PixelValues::Off);
}

void Analysis::zoomToPixelValues()
{
    const Surface* const surface = m_form.scrollArea->surface();
    m_form.scrollArea->doZoomToPixelValues(surface->underMouse() ? surface->mapFromGlobal(QCursor::pos())
                                                                 : QPoint(-1, -1));
}

} // namespace Vistrel
