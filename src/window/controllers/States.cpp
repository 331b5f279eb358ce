// SPDX-License-Identifier: MIT
// Keeps the main window's actions in step with the state that its source is in.
#include "window/controllers/States.h"

#include "ui_WindowQt.h"
#include "window/controllers/Commands.h"
#include "window/controllers/Features.h"
#include "window/controllers/Information.h"
#include "window/controllers/Palettes.h"
#include "window/controllers/Saving.h"

#include <Vistrel/SurfaceScrollArea.h>
#include <Vistrel/SurfaceStream.h>

#include <QtWidgets/QLabel>

#include <utility>

namespace Vistrel {

States::States(QMainWindow* window, const Ui::WindowQt& form, const AbstractAcquisitionInterface* source,
               SurfaceStream* stream, SurfaceScrollArea* scrollArea, Commands* commands, const Features& features,
               const Saving& saving, Palettes* palettes, Information* information)
    : m_form(form),
      m_source(source),
      m_stream(stream),
      m_commands(commands),
      m_features(features),
      m_saving(saving),
      m_palettes(palettes),
      m_information(information),
      m_label(new QLabel(window)),
      m_hint(form, *stream, scrollArea->surface()),
      m_badge(window)
{
    m_label->setToolTip(tr("State of the acquisition"));
    m_label->setAccessibleName(tr("Acquisition State"));
    m_label->setContentsMargins(6, 0, 6, 0);
    m_label->setMinimumWidth(m_label->fontMetrics().horizontalAdvance(tr("Not set up")) + 12);
    form.statusBar->addWidget(m_label);
}

void States::update()
{
    const Format format = m_stream->latestImageFormat();
    const bool hasImage = format != 0;
    m_form.actionSave_Image->setEnabled(hasImage && !m_saving.isWriting());
    m_form.actionCopy_Image->setEnabled(hasImage);
    m_form.actionCopy_Image_Stats->setEnabled(hasImage);
    m_form.actionCopy_Pixel_Value->setEnabled(hasImage);
    m_form.actionQuick_View->setEnabled(hasImage);
    m_palettes->setEnabled(isMonochrome(format) && (format & formatPatternMask) == 0);
    m_hint.setShown(!hasImage);

    if (m_commands->isAskable())
        m_known = askSource(m_source, !m_features.setupModes()->isEmpty());
    // A command that returns within its grace changes nothing in view.
    if (m_commands->isAskable() || m_commands->hasEnded() || m_commands->isShown())
        showCommands();
    m_badge.show(m_known.statePicture == QLatin1String("Stop") && !hasImage ? QStringLiteral("Setup")
                                                                            : m_known.statePicture);
    m_label->setText(m_known.stateWords);
}

void States::showCommands()
{
    const bool isIdle = m_commands->isAskable();
    const std::pair<QAction*, bool> offers[] = {
        {m_form.actionSetup, m_known.canSetup},
        {m_form.actionCleanup, m_known.canCleanup},
        {m_form.actionSetup_Cleanup, m_known.canSetup || m_known.canCleanup},
        {m_form.actionTrigger, m_known.canTrigger},
        {m_form.actionStart_Single_Reverse, m_known.canStartSingleReverse},
        {m_form.actionStart_Reverse, m_known.canStartReverse},
        {m_form.actionStart, m_known.canStart},
        {m_form.actionStart_Fixed, m_known.canStartFixed},
        {m_form.actionStart_Single, m_known.canStartSingle},
        {m_form.actionPause, m_known.canPause},
        {m_form.actionStop, m_known.canStop},
    };
    for (const auto& [action, isPossible] : offers)
        action->setEnabled(isIdle && isPossible);
    if (isIdle)
        showSetupToggle(m_known.canSetup, m_known.canCleanup);

    m_information->setSetupMode(m_known.activeMode);
    for (QAction* const mode : m_features.setupModes()->actions()) {
        const bool isActive = !m_known.activeMode.isNull() && mode->data().toByteArray() == m_known.activeMode;
        mode->setEnabled(isIdle && m_known.canSetupMode);
        mode->setChecked(isActive);
        QFont font = mode->font();
        if (font.bold() != isActive) {
            font.setBold(isActive);
            mode->setFont(font);
        }
    }

    // The two share a key; when both can be done it pauses.
    const bool isPauseFirst =
        m_form.actionStart->isEnabled() && m_form.actionPause->isEnabled() && m_form.actionPause->isVisible();
    const QKeySequence startKey = isPauseFirst ? QKeySequence() : m_form.actionPause->shortcut();
    if (m_form.actionStart->shortcut() != startKey)
        m_form.actionStart->setShortcut(startKey);
    if (isIdle)
        m_hint.update(m_known);
}

void States::showSetupToggle(bool canSetup, bool canCleanup)
{
    QAction* const toggle = m_form.actionSetup_Cleanup;
    if (!canSetup && !canCleanup)
        return;
    const QAction* const other = canCleanup ? m_form.actionCleanup : m_form.actionSetup;
    toggle->setChecked(canCleanup); // a click has turned it already
    const QString toolTip = (canCleanup ? tr("Depress to %1") : tr("Press to %1")).arg(other->toolTip());
    if (toggle->toolTip() == toolTip)
        return;
    toggle->setIcon(QIcon(canCleanup ? QStringLiteral(":/Icons/Setup.png") : QStringLiteral(":/Icons/Cleanup.png")));
    toggle->setText(other->text());
    toggle->setIconText(other->iconText());
    toggle->setToolTip(toolTip);
    disconnect(toggle, SIGNAL(triggered()), m_commands, nullptr);
    connect(toggle, SIGNAL(triggered()), m_commands, canCleanup ? SLOT(cleanup()) : SLOT(setup()));
}

void States::updateHint()
{
    if (m_hint.isShown() && m_commands->isAskable())
        m_hint.update(m_known);
}

} // namespace Vistrel
