// SPDX-License-Identifier: MIT
// Sets what the rainbow palette is computed from.
#include "window/panels/Panels.h"

#include "widgets/PlainKey.h"
#include "window/controllers/Palettes.h"
#include "window/controllers/ViewModes.h"

#include <QtGui/QKeyEvent>

namespace Vistrel {

namespace {

/// Shows the form's dock from the choice of the rainbow on, while the bars are in view.
class RainbowDock : public QObject
{
    Q_OBJECT

public:
    explicit RainbowDock(const PanelContext& context); ///< a child of the palettes

public Q_SLOTS:
    void follow(Vistrel::ColorTable table);
    void setImageAlone(bool isAlone);
    void updateRainbow();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void show();

    const Form& m_form;
    Palettes* const m_palettes;
    bool m_isWanted = false;
    bool m_isImageAlone = false;
};

const PanelRegistration registration(nullptr, [](const PanelContext& context) -> QWidget* {
    new RainbowDock(context);
    return nullptr;
});

RainbowDock::RainbowDock(const PanelContext& context)
    : QObject(context.palettes), m_form(context.form), m_palettes(context.palettes)
{
    m_form.rainbowRulesDockWidget->installEventFilter(this);
    connect(m_form.rainbow_generatePushButton, SIGNAL(clicked()), context.form.window, SLOT(setColorTableRainbow()));
    for (const QDoubleSpinBox* const box : m_form.rainbowRulesContentsWidget->findChildren<QDoubleSpinBox*>())
        connect(box, SIGNAL(valueChanged(double)), this, SLOT(updateRainbow()));
    connect(m_palettes, SIGNAL(colorTableChosen(Vistrel::ColorTable)), this, SLOT(follow(Vistrel::ColorTable)));
    connect(context.viewModes, SIGNAL(imageAloneChanged(bool)), this, SLOT(setImageAlone(bool)));
    updateRainbow();
}

void RainbowDock::follow(ColorTable table)
{
    m_isWanted = table == ColorTable::Rainbow;
    show();
}

void RainbowDock::setImageAlone(bool isAlone)
{
    m_isImageAlone = isAlone;
    show();
}

void RainbowDock::show()
{
    m_form.rainbowRulesDockWidget->setVisible(m_isWanted && !m_isImageAlone);
}

void RainbowDock::updateRainbow()
{
    m_palettes->setRainbow({m_form.rainbow_periodSpinBox->value(), m_form.rainbow_rPhaseSpinBox->value(),
                            m_form.rainbow_gPhaseSpinBox->value(), m_form.rainbow_bPhaseSpinBox->value(),
                            m_form.rainbow_amplitudeSpinBox->value(), m_form.rainbow_centerSpinBox->value()});
}

// Keys typed into the dock's boxes are no commands of the window. Esc goes back to the image.
bool RainbowDock::eventFilter(QObject*, QEvent* event)
{
    if (event->type() == QEvent::Close) // by its own button
        m_isWanted = false;
    if (event->type() != QEvent::ShortcutOverride && event->type() != QEvent::KeyPress)
        return false;
    auto& key = *static_cast<QKeyEvent*>(event);
    const bool isEscape = key.key() == Qt::Key_Escape;
    if (event->type() == QEvent::ShortcutOverride) {
        key.setAccepted(isEscape || isPlain(key));
        return key.isAccepted();
    }
    if (isEscape)
        m_form.scrollArea->setFocus();
    return isEscape;
}

} // namespace

} // namespace Vistrel

#include "RainbowDock.moc"
