// SPDX-License-Identifier: MIT
// Sets the zoom of a picture by slider, number and presets.
#include "window/panels/ZoomEditor.h"

#include "window/panels/Panels.h"

#include "widgets/SurfaceGeometry.h"

#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>

#include <QtCore/QSignalBlocker>
#include <QtWidgets/QDoubleSpinBox>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QSlider>
#include <QtWidgets/QToolButton>

namespace Vistrel {

namespace {

constexpr int presets[] = {25, 50, 100, 200, 400, 800}; // percent
constexpr int sliderWidth = 180;                        // pixels
constexpr int levelsPerPage = 6;                        // about a doubling

// Its arrows go from one zoom level to the next.
class PercentBox : public QDoubleSpinBox
{
public:
    using QDoubleSpinBox::QDoubleSpinBox;

    void stepBy(int steps) override
    {
        interpretText();
        setValue(100 * SurfaceGeometry::scalingOf(SurfaceGeometry::levelOf(value() / 100) + steps));
        selectAll();
    }
    bool isBeingTyped() const { return lineEdit()->hasFocus() && lineEdit()->isModified(); }
    void setTyped() { lineEdit()->setModified(false); }
};

QWidget* makeZoomEditor(const PanelContext& context)
{
    auto* const editor = new ZoomEditor(context.form.scrollArea);
    QObject::connect(context.form.actionZoom_Fit, SIGNAL(triggered()), editor, SLOT(updateView()));
    return editor;
}

const PanelRegistration registration(&Ui_WindowQt::actionZoom_Editor, makeZoomEditor);

} // namespace

ZoomEditor::ZoomEditor(SurfaceScrollArea* area, QWidget* parent) : QWidget(parent), m_area(area)
{
    setAccessibleName(tr("Zoom editor"));

    m_slider = new QSlider(Qt::Horizontal, this);
    m_slider->setRange(SurfaceGeometry::levelOf(Surface::scalingMin()),
                       SurfaceGeometry::levelOf(Surface::scalingMax()));
    m_slider->setPageStep(levelsPerPage);
    m_slider->setMinimumWidth(sliderWidth);
    m_slider->setAccessibleName(tr("Zoom level"));
    m_slider->setToolTip(m_slider->accessibleName());

    auto* const percent = new PercentBox(this);
    percent->setDecimals(1);
    percent->setRange(100 * Surface::scalingMin(), 100 * Surface::scalingMax());
    percent->setSuffix(QStringLiteral(" %"));
    percent->setAlignment(Qt::AlignRight);
    percent->setKeyboardTracking(false);
    percent->setAccessibleName(tr("Zoom in percent"));
    percent->setToolTip(percent->accessibleName());
    m_percent = percent;

    auto* const fit = new QToolButton(this);
    fit->setText(tr("Fit"));
    fit->setCheckable(true);
    fit->setAccessibleName(tr("Fit the image to the view"));
    fit->setToolTip(fit->accessibleName());
    fit->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_fit = fit;

    auto* const layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    int column = 0;
    for (const int preset : presets) {
        auto* const button = new QToolButton(this);
        button->setText(tr("%1 %").arg(preset));
        button->setAccessibleName(tr("Zoom to %1 %").arg(preset));
        button->setToolTip(button->accessibleName());
        button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        layout->addWidget(button, 1, column++);
        connect(button, &QAbstractButton::clicked, this, [this, preset] { zoomTo(preset / 100.0); });
    }
    layout->addWidget(fit, 1, column++);
    layout->addWidget(m_slider, 0, 0, 1, column - 2);
    layout->addWidget(m_percent, 0, column - 2, 1, 2);
    setTabOrder(m_slider, m_percent);
    setFocusProxy(m_percent);

    connect(m_slider, &QSlider::valueChanged, this, [this](int level) { zoomTo(SurfaceGeometry::scalingOf(level)); });
    connect(m_percent, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
            [this](double value) { zoomTo(value / 100); });
    connect(m_percent, &QDoubleSpinBox::editingFinished, this, [percent, this] {
        percent->setTyped();
        updateView();
    });
    connect(m_fit, &QAbstractButton::clicked, this, &ZoomEditor::setFit);
    if (area)
        connect(area->surface(), SIGNAL(scalingChanged(bool, double)), this, SLOT(updateView()), Qt::QueuedConnection);
    updateView();
}

// The box ends its editing when it loses the focus, which is when the widget under this one goes.
ZoomEditor::~ZoomEditor()
{
    m_percent->disconnect(this);
}

void ZoomEditor::zoomTo(double scaling)
{
    if (m_area)
        m_area->setZoomTo(scaling, {-1, -1});
    updateView();
}

// Letting go of the fitting keeps the zoom. It is done by setting that zoom, which the surface announces.
void ZoomEditor::setFit(bool isFit)
{
    if (m_area && isFit)
        m_area->setZoomToFit(true);
    else if (m_area)
        m_area->surface()->setScaling(m_area->zoomScaling());
    updateView();
}

void ZoomEditor::updateView()
{
    const double scaling = m_area ? m_area->zoomScaling() : 1.0;
    const QSignalBlocker blockSlider(m_slider);
    const QSignalBlocker blockPercent(m_percent);
    m_slider->setValue(SurfaceGeometry::levelOf(scaling));
    m_fit->setChecked(m_area && m_area->zoomToFit());
    if (!static_cast<PercentBox*>(m_percent)->isBeingTyped())
        m_percent->setValue(100 * scaling);
}

void ZoomEditor::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    updateView();
    m_percent->selectAll();
}

} // namespace Vistrel
