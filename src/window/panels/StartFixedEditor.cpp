// SPDX-License-Identifier: MIT
// Asks for how many frames an acquisition runs, and starts it.
#include "window/panels/Panels.h"

#include "window/controllers/Commands.h"
#include "window/controllers/Features.h"

#include <QtCore/QSignalBlocker>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSpinBox>

#include <algorithm>

namespace Vistrel {

namespace {

/// A number and a button. Enter starts, too. The editor keeps the count that was entered last, and shows the nearest
/// one within the source's bounds.
class StartFixedEditor : public QWidget
{
    Q_OBJECT

public:
    explicit StartFixedEditor(const PanelContext& context);

public Q_SLOTS:
    void updateState();
    void updateBounds();
    void keepCount(int count) { m_wanted = count; }
    void start();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    const QAction* const m_action;
    const AbstractAcquisitionInterface* const m_source;
    Commands* const m_commands;
    QSpinBox* const m_spinBox;
    QPushButton* const m_button;
    int m_wanted = 1; // not limited by the bounds
};

const PanelRegistration registration(&Ui_WindowQt::actionStart_Fixed, [](const PanelContext& context) -> QWidget* {
    return new StartFixedEditor(context);
});

StartFixedEditor::StartFixedEditor(const PanelContext& context)
    : m_action(context.form.actionStart_Fixed),
      m_source(context.source),
      m_commands(context.commands),
      m_spinBox(new QSpinBox(this)),
      m_button(new QPushButton(tr("&Start"), this))
{
    setAccessibleName(tr("Start of a fixed number of frames"));
    auto* const label = new QLabel(tr("&Frames:"), this);
    label->setBuddy(m_spinBox);
    m_spinBox->setAccessibleName(tr("Number of frames"));
    m_spinBox->setAlignment(Qt::AlignRight);
    m_spinBox->setRange(1, 65536);
    m_button->setToolTip(tr("Start acquisition of this number of frames."));

    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(label);
    layout->addWidget(m_spinBox, 1);
    layout->addWidget(m_button);
    setFocusProxy(m_spinBox);

    connect(m_action, SIGNAL(changed()), this, SLOT(updateState()));
    connect(m_spinBox, SIGNAL(valueChanged(int)), this, SLOT(keepCount(int)));
    connect(m_button, SIGNAL(clicked()), this, SLOT(start()));
    if (m_source)
        connect(context.features, SIGNAL(updated()), this, SLOT(updateBounds()));
}

void StartFixedEditor::updateState()
{
    m_button->setEnabled(m_action->isEnabled());
}

// Bounds below zero count as zero, an upper bound below the lower one as that one, and a step below one as one.
void StartFixedEditor::updateBounds()
{
    const int min = std::max(m_source->startFixedMin(), 0);
    const int max = std::max(m_source->startFixedMax(), min);
    m_spinBox->setSingleStep(std::max(m_source->startFixedInc(), 1));
    // Setting the same range again would replace what is being typed.
    if (min == m_spinBox->minimum() && max == m_spinBox->maximum())
        return;
    const QSignalBlocker blocker(m_spinBox);
    m_spinBox->setRange(min, max);
    m_spinBox->setValue(m_wanted);
}

void StartFixedEditor::start()
{
    m_spinBox->interpretText();
    if (!m_button->isEnabled())
        return;
    const int count = m_spinBox->value();
    window()->close();
    if (m_action->isEnabled() && count > 0)
        m_commands->startFixedAsync(static_cast<std::size_t>(count));
}

// The number and the button pass Enter on to here. A key that is held starts once.
void StartFixedEditor::keyPressEvent(QKeyEvent* event)
{
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter)
        QWidget::keyPressEvent(event);
    else if (!event->isAutoRepeat())
        start();
}

void StartFixedEditor::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    m_spinBox->selectAll();
}

} // namespace

} // namespace Vistrel

#include "StartFixedEditor.moc"
