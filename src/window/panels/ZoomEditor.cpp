// SPDX-License-Identifier: MIT
// Sets the zoom of the image by slider, number and presets.
#include "window/panels/Panels.h"

#include "widgets/Navigator.h"

#include <Vistrel/Surface.h>

#include <QtCore/QPointer>
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

// Its arrows step from one zoom level to the next.
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

/// Shows the zoom of an area while it changes, and changes it about the view's centre. Without an image it shows the
/// old zoom again. A number takes effect when it is complete, not digit by digit.
class ZoomEditor : public QWidget
{
    Q_OBJECT

public:
    explicit ZoomEditor(const PanelContext& context);

public Q_SLOTS:
    void zoomToLevel(int level) { zoomTo(SurfaceGeometry::scalingOf(level), Navigator::Move::Step); }
    void zoomToPercent(double percent) { zoomTo(percent / 100); }
    void setFit(bool isFit);
    void endTyping();
    void updateView();

protected:
    void showEvent(QShowEvent* event) override;

private:
    void zoomTo(double scaling, Navigator::Move move = Navigator::Move::Jump);
    template <typename Control>
    Control* named(Control* control, const QString& name);

    const QPointer<SurfaceScrollArea> m_area; // null while the window is being deleted
    QSlider* const m_slider;                  // in zoom levels: powers of the scaling ratio
    PercentBox* const m_percent;
    QToolButton* const m_fit;
};

const PanelRegistration registration(&Ui_WindowQt::actionZoom_Editor,
                                     [](const PanelContext& context) -> QWidget* { return new ZoomEditor(context); });

template <typename Control>
Control* ZoomEditor::named(Control* control, const QString& name)
{
    control->setAccessibleName(name);
    control->setToolTip(name);
    return control;
}

ZoomEditor::ZoomEditor(const PanelContext& context)
    : m_area(context.form.scrollArea),
      m_slider(named(new QSlider(Qt::Horizontal, this), tr("Zoom level"))),
      m_percent(named(new PercentBox(this), tr("Zoom in percent"))),
      m_fit(named(new QToolButton(this), tr("Fit the image to the view")))
{
    setAccessibleName(tr("Zoom editor"));
    m_slider->setRange(SurfaceGeometry::levelOf(Surface::scalingMin()),
                       SurfaceGeometry::levelOf(Surface::scalingMax()));
    m_slider->setPageStep(levelsPerPage);
    m_slider->setMinimumWidth(sliderWidth);
    m_percent->setDecimals(1);
    m_percent->setRange(100 * Surface::scalingMin(), 100 * Surface::scalingMax());
    m_percent->setSuffix(QStringLiteral(" %"));
    m_percent->setAlignment(Qt::AlignRight);
    m_percent->setKeyboardTracking(false);
    m_fit->setText(tr("Fit"));
    m_fit->setCheckable(true);
    m_fit->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);

    auto* const layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    int column = 0;
    for (const int preset : presets) {
        auto* const button = named(new QToolButton(this), tr("Zoom to %1 %").arg(preset));
        button->setText(tr("%1 %").arg(preset));
        button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        layout->addWidget(button, 1, column++);
        connect(button, &QAbstractButton::clicked, this, [this, preset] { zoomToPercent(preset); });
    }
    layout->addWidget(m_fit, 1, column++);
    layout->addWidget(m_slider, 0, 0, 1, column - 2);
    layout->addWidget(m_percent, 0, column - 2, 1, 2);
    setTabOrder(m_slider, m_percent);
    setFocusProxy(m_percent);

    connect(m_slider, SIGNAL(valueChanged(int)), this, SLOT(zoomToLevel(int)));
    connect(m_percent, SIGNAL(valueChanged(double)), this, SLOT(zoomToPercent(double)));
    connect(m_percent, SIGNAL(editingFinished()), this, SLOT(endTyping()));
    connect(m_fit, SIGNAL(clicked(bool)), this, SLOT(setFit(bool)));
    connect(m_area->surface(), SIGNAL(scalingChanged(bool, double)), this, SLOT(updateView()), Qt::QueuedConnection);
    connect(context.form.actionZoom_Fit, SIGNAL(triggered()), this, SLOT(updateView()));
    updateView();
}

void ZoomEditor::zoomTo(double scaling, Navigator::Move move)
{
    if (m_area)
        m_area->navigator().zoomTo(scaling, Navigator::viewCentre, move);
    updateView();
}

// Switching off keeps the zoom. Setting the zoom switches off, and the surface announces it.
void ZoomEditor::setFit(bool isFit)
{
    if (m_area && isFit)
        m_area->setZoomToFit(true);
    else if (m_area)
        m_area->surface()->setScaling(m_area->zoomScaling());
    updateView();
}

void ZoomEditor::endTyping()
{
    m_percent->setTyped();
    updateView();
}

void ZoomEditor::updateView()
{
    if (!m_area)
        return;
    const double scaling = m_area->zoomScaling();
    const QSignalBlocker blockSlider(m_slider);
    const QSignalBlocker blockPercent(m_percent);
    m_slider->setValue(SurfaceGeometry::levelOf(scaling));
    m_fit->setChecked(m_area->zoomToFit());
    if (!m_percent->isBeingTyped())
        m_percent->setValue(100 * scaling);
}

void ZoomEditor::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    updateView();
    m_percent->selectAll();
}

} // namespace

} // namespace Vistrel

#include "ZoomEditor.moc"
