// SPDX-License-Identifier: MIT
// Shows the state of the source: enabled actions, words in the status bar and over the empty view, the window's icon.
#include "window/controllers/States.h"

#include "window/ActionIcons.h"
#include "window/Form.h"
#include "window/controllers/Commands.h"
#include "window/controllers/Features.h"
#include "window/controllers/Information.h"
#include "window/controllers/Palettes.h"
#include "window/controllers/Saving.h"

#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceStream.h>

#include <QtGui/QPainter>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLabel>

#include <utility>

namespace Vistrel {

namespace {

// The state's picture in a rounded frame over the lower right of the application's icon, a little over half of it. The
// size is in device pixels, whatever the screen's scale is.
QPixmap withBadge(const QIcon& icon, const QSize& size, const QString& state)
{
    QPixmap badged(size);
    badged.fill(Qt::transparent);
    const int side = badged.width() * 9 / 16;
    const QRectF frame(badged.width() - side + 0.5, badged.height() - side + 0.5, side - 1, side - 1);
    const double inset = side / 8.0;
    QPainter painter(&badged);
    icon.paint(&painter, badged.rect());
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QColor(0x60, 0x60, 0x60));
    painter.setBrush(QColor(0xF4, 0xF4, 0xF4));
    painter.drawRoundedRect(frame, side / 6.0, side / 6.0);
    const QRect inner = frame.adjusted(inset, inset, -inset, -inset).toRect();
    QIcon(QStringLiteral(":/Icons/%1.png").arg(state)).paint(&painter, inner);
    return badged;
}

QIcon makeBadgedIcon(const QIcon& application, const QString& state)
{
    QIcon plain = application;
    if (plain.availableSizes().isEmpty()) {
        plain = QIcon();
        for (const int side : {16, 24, 32, 48, 64, 128})
            plain.addFile(QStringLiteral(":/Icons/VistrelIcon-%1.png").arg(side));
    }
    QIcon icon;
    for (const QSize& size : plain.availableSizes())
        icon.addPixmap(withBadge(plain, size, state));
    return icon;
}

} // namespace

States::States(const Form& form, const AbstractAcquisitionInterface* source, SurfaceStream* stream, Commands* commands,
               const Features& features, const Saving& saving, Palettes* palettes, Information* information)
    : m_form(form),
      m_source(source),
      m_stream(stream),
      m_commands(commands),
      m_features(features),
      m_saving(saving),
      m_palettes(palettes),
      m_information(information),
      m_label(new QLabel(form.window))
{
    m_label->setToolTip(tr("State of the acquisition"));
    m_label->setAccessibleName(tr("Acquisition State"));
    m_label->setContentsMargins(6, 0, 6, 0);
    m_label->setMinimumWidth(m_label->fontMetrics().horizontalAdvance(tr("Not set up")) + 12);
    form.statusBar->addWidget(m_label);

    connect(stream, SIGNAL(imageUpdated()), this, SLOT(updateActionStates()), Qt::QueuedConnection);
    connect(commands, SIGNAL(shown()), this, SLOT(updateActionStates()));
    connect(&saving, SIGNAL(stateChanged()), this, SLOT(updateActionStates()));
    connect(&features, SIGNAL(updated()), this, SLOT(updateActionStates()));
    connect(information, SIGNAL(ticked()), this, SLOT(updateHint()));
}

void States::updateActionStates()
{
    const Format format = m_stream->latestImageFormat();
    const bool hasImage = format != 0;
    m_form.actionSave_Image->setEnabled(hasImage && !m_saving.isWriting());
    for (QAction* const action : {m_form.actionCopy_Image, m_form.actionCopy_Image_Stats, m_form.actionCopy_Pixel_Value,
                                  m_form.actionQuick_View})
        action->setEnabled(hasImage);
    m_palettes->setEnabled(isMonochrome(format) && (format & formatPatternMask) == 0);

    if (m_commands->isAskable())
        m_known = askSource(m_source, !m_features.setupModes()->isEmpty());
    // A command that returns within its grace changes no action.
    if (m_commands->isAskable() || m_commands->hasEnded() || m_commands->isShown())
        showCommands();
    showBadge(m_known.statePicture == QLatin1String("Stop") && !hasImage ? QStringLiteral("Setup")
                                                                         : m_known.statePicture);
    m_label->setText(m_known.stateWords);
}

void States::showCommands()
{
    const bool isIdle = m_commands->isAskable();
    const bool canSetup = m_known.can[setupRow];
    const bool canCleanup = m_known.can[cleanupRow];
    for (std::size_t i = 0; i < m_known.can.size(); ++i)
        (m_form.*commandRows()[i].action)->setEnabled(isIdle && m_known.can[i]);
    m_form.actionSetup_Cleanup->setEnabled(isIdle && (canSetup || canCleanup));
    if (isIdle)
        showSetupToggle(canSetup, canCleanup);

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

    // The two share a key. It pauses when both are possible.
    const bool isPauseFirst =
        m_form.actionStart->isEnabled() && m_form.actionPause->isEnabled() && m_form.actionPause->isVisible();
    const QKeySequence startKey = isPauseFirst ? QKeySequence() : m_form.actionPause->shortcut();
    if (m_form.actionStart->shortcut() != startKey)
        m_form.actionStart->setShortcut(startKey);
    updateHint();
}

void States::showSetupToggle(bool canSetup, bool canCleanup)
{
    QAction* const toggle = m_form.actionSetup_Cleanup;
    if (!canSetup && !canCleanup)
        return;
    const QAction* const other = canCleanup ? m_form.actionCleanup : m_form.actionSetup;
    toggle->setChecked(canCleanup); // the click itself has toggled it
    const QString toolTip = (canCleanup ? tr("Depress to %1") : tr("Press to %1")).arg(other->toolTip());
    if (toggle->toolTip() == toolTip)
        return;
    showIcon(toggle, canCleanup ? QStringLiteral("Setup") : QStringLiteral("Cleanup"), m_form.window->palette());
    toggle->setText(other->text());
    toggle->setIconText(other->iconText());
    toggle->setToolTip(toolTip);
    disconnect(toggle, SIGNAL(triggered()), m_commands, nullptr);
    connect(toggle, SIGNAL(triggered()), m_commands, canCleanup ? SLOT(cleanupAsync()) : SLOT(setupAsync()));
}

void States::updateHint()
{
    if (m_commands->isAskable())
        m_form.scrollArea->surface()->setHint(m_stream->latestImageFormat() == 0 ? hint() : QString());
}

QString States::hint() const
{
    const QString refusal = m_stream->refusal();
    if (!refusal.isEmpty() && m_known.isSetUp)
        return refusal;
    const std::pair<const QAction*, QString> steps[] = {
        {m_form.actionSetup, tr("Set up")},
        {m_form.actionStart, tr("Start")},
        {m_form.actionStart_Single, tr("Take one image")},
        {m_form.actionTrigger, tr("Trigger")},
    };
    for (const auto& [action, text] : steps) {
        if (action->isVisible() && action->isEnabled() && (!m_known.isRunning || action == m_form.actionTrigger)) {
            const QString key = action->shortcut().toString(QKeySequence::NativeText);
            return key.isEmpty() ? text : tr("%1: %2").arg(text, key);
        }
    }
    if (!refusal.isEmpty())
        return refusal;
    return m_known.isRunning ? tr("Waiting for the first image") : tr("No image");
}

// Sets the window's icon only when the state or the application's icon has changed.
void States::showBadge(const QString& picture)
{
    const QIcon application = QApplication::windowIcon();
    const QString key = picture + QString::number(application.cacheKey());
    if (std::exchange(m_badge, key) == key)
        return;
    QIcon& icon = m_icons[key];
    if (icon.isNull())
        icon = makeBadgedIcon(application, picture);
    m_form.window->setWindowIcon(icon);
}

} // namespace Vistrel
