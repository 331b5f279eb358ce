// SPDX-License-Identifier: MIT
// Asks for how many frames an acquisition is to run, and starts it.
#include "window/panels/StartFixedEditor.h"

#include "window/controllers/Commands.h"
#include "window/controllers/Features.h"
#include "window/panels/Panels.h"

#include <QtCore/QSignalBlocker>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSpinBox>

#include <algorithm>

namespace Vistrel {

namespace {

QWidget* makeStartFixedEditor(const PanelContext& context)
{
    auto* const editor = new StartFixedEditor;
    const QAction* const action = context.form.actionStart_Fixed;
    QObject::connect(action, &QAction::changed, editor, [=] { editor->setStartEnabled(action->isEnabled()); });
    if (const AbstractAcquisitionInterface* const source = context.source)
        QObject::connect(context.features, &Features::updated, editor, [=] {
            editor->setBounds(source->startFixedMin(), source->startFixedMax(), source->startFixedInc());
        });
    Commands* const commands = context.commands;
    QObject::connect(editor, &StartFixedEditor::started, commands, [=](int count) {
        editor->window()->close();
        if (action->isEnabled() && count > 0)
            commands->startFixedAsync(static_cast<std::size_t>(count));
    });
    return editor;
}

const PanelRegistration registration(&Ui_WindowQt::actionStart_Fixed, makeStartFixedEditor);

} // namespace

StartFixedEditor::StartFixedEditor(QWidget* parent)
    : QWidget(parent), m_spinBox(new QSpinBox(this)), m_button(new QPushButton(tr("&Start"), this))
{
    setAccessibleName(tr("Start of a fixed number of frames"));
    auto* const label = new QLabel(tr("&Frames:"), this);
    label->setBuddy(m_spinBox);
    m_spinBox->setAccessibleName(tr("Number of frames"));
    m_spinBox->setAlignment(Qt::AlignRight);
    m_button->setToolTip(tr("Start acquisition of this number of frames."));

    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(label);
    layout->addWidget(m_spinBox, 1);
    layout->addWidget(m_button);
    setFocusProxy(m_spinBox);

    setBounds(1, 65536, 1);
    connect(m_spinBox, QOverload<int>::of(&QSpinBox::valueChanged), this, [this](int value) { m_wanted = value; });
    connect(m_button, &QPushButton::clicked, this, &StartFixedEditor::start);
}

// The box may take in what was typed when it loses the focus, which is when the widget under this one goes.
StartFixedEditor::~StartFixedEditor()
{
    m_spinBox->disconnect(this);
}

void StartFixedEditor::setBounds(int min, int max, int step)
{
    min = std::max(min, 0);
    max = std::max(max, min);
    m_spinBox->setSingleStep(std::max(step, 1));
    // The same again must not disturb who types.
    if (min == m_spinBox->minimum() && max == m_spinBox->maximum())
        return;
    const QSignalBlocker blocker(m_spinBox);
    m_spinBox->setRange(min, max);
    m_spinBox->setValue(m_wanted);
}

int StartFixedEditor::count() const
{
    return m_spinBox->value();
}

void StartFixedEditor::setStartEnabled(bool isEnabled)
{
    m_button->setEnabled(isEnabled);
}

void StartFixedEditor::start()
{
    m_spinBox->interpretText();
    if (m_button->isEnabled())
        Q_EMIT started(count());
}

// Enter comes here from the number and from the button. A key that is held starts once.
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

} // namespace Vistrel
