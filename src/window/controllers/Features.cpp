// SPDX-License-Identifier: MIT
// What the source of the main window offers: actions, tool bar and setup modes.
#include "window/controllers/Features.h"

#include "window/Form.h"
#include "window/HostText.h"
#include "window/InfoItems.h"
#include "window/SourceAnswers.h"
#include "window/controllers/Commands.h"
#include "window/controllers/UserActions.h"

#include <QtWidgets/QToolButton>

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <utility>
#include <vector>

namespace Vistrel {

namespace {

using Source = AbstractAcquisitionInterface;

// A hidden action emits nothing, so its shortcut does nothing.
bool offer(QAction* action, bool isOffered)
{
    if (isOffered)
        action->blockSignals(false);
    action->setVisible(isOffered);
    action->blockSignals(!isOffered);
    return isOffered;
}

} // namespace

Features::Features(const Form& form, const std::shared_ptr<Source>& source, Commands* commands,
                   const UserActions& userActions)
    : m_form(form),
      m_source(source),
      m_commands(commands),
      m_userActions(userActions),
      m_setupModes(new QMenu(form.window))
{
    form.actionSetup_Mode->setMenu(m_setupModes);
    connect(&userActions, SIGNAL(toolBarChanged()), this, SLOT(layOutToolBar()));
}

void Features::update()
{
    m_areNew = !m_commands->isAskable();
    if (m_areNew)
        return;
    const auto has = [this](bool (Source::*feature)() const) { return m_source && (m_source.get()->*feature)(); };
    bool hasPlayback = false;
    for (std::size_t i = 0; i < commandRows().size(); ++i) {
        const bool isOffered = offer(m_form.*commandRows()[i].action, has(commandRows()[i].has));
        hasPlayback = hasPlayback || (isOffered && i >= firstPlaybackRow);
    }
    m_form.actionNo_Controls_Available->setVisible(!hasPlayback);
    offer(m_form.actionSetup_Cleanup, has(&Source::hasSetup) || has(&Source::hasCleanup));
    offer(m_form.actionSetup_Mode, has(&Source::hasSetupMode));
    showSetupModes();
    layOutToolBar();
    for (std::size_t i = 0; i < infoItemCount; ++i) {
        if (const auto feature = infoRow(InfoItem(i)).has)
            offer(m_form.*infoRow(InfoItem(i)).action, has(feature));
    }
    Q_EMIT updated();
}

// Rebuilds the bar only when its contents change. New buttons flicker and lose a press that is under way.
void Features::layOutToolBar()
{
    QToolBar* const bar = m_form.acquisitionToolBar;
    QList<QAction*> wanted; // null: a separator of the bar
    const auto addGroup = [&wanted](std::initializer_list<QAction*> group) {
        const int before = wanted.size();
        std::copy_if(group.begin(), group.end(), std::back_inserter(wanted),
                     [](const QAction* action) { return action->isVisible(); });
        if (wanted.size() > before)
            wanted.append(nullptr);
    };
    addGroup({m_form.actionSetup_Cleanup});
    addGroup({m_form.actionStart_Single_Reverse, m_form.actionStart_Reverse, m_form.actionStart,
              m_form.actionStart_Fixed, m_form.actionStart_Single, m_form.actionPause, m_form.actionStop});
    addGroup({m_form.actionTrigger});
    wanted.append(
        {m_form.actionZoom_Editor, m_form.actionZoom_Fit, m_form.actionZoom_100, nullptr, m_form.actionQuick_View});
    if (!m_userActions.ofToolBar().isEmpty())
        wanted.append(nullptr);
    wanted.append(m_userActions.ofToolBar());

    QList<QAction*> present;
    for (QAction* const entry : bar->actions())
        present.append(entry->isSeparator() && entry->parent() == bar ? nullptr : entry);
    if (present != wanted) {
        for (QAction* const entry : bar->actions()) {
            if (entry->isSeparator() && entry->parent() == bar)
                delete entry; // clear() does not delete it
        }
        bar->clear();
        for (QAction* const entry : qAsConst(wanted))
            entry ? bar->addAction(entry) : static_cast<void>(bar->addSeparator());
    }
    if (auto* const button = qobject_cast<QToolButton*>(bar->widgetForAction(m_form.actionSetup_Cleanup))) {
        const bool hasModes = m_form.actionSetup_Mode->isVisible();
        button->setMenu(hasModes ? m_setupModes : nullptr);
        button->setPopupMode(hasModes ? QToolButton::MenuButtonPopup : QToolButton::DelayedPopup);
    }
}

// The same modes keep their entries, because the menu may be open.
void Features::showSetupModes()
{
    const bool hasSetupMode = m_source && m_source->hasSetupMode();
    m_setupModes->setEnabled(hasSetupMode);
    std::vector<std::pair<QByteArray, QByteArray>> modes; // name and description
    for (std::size_t i = 0; hasSetupMode && i < m_source->setupModeCount(); ++i) {
        const QByteArray name = hostText(
            "setupModeName", [&](char* text, std::size_t* size) { return m_source->setupModeName(i, text, size); });
        if (!name.isNull())
            modes.emplace_back(name, hostText("setupModeDescription", [&](char* text, std::size_t* size) {
                                   return m_source->setupModeDescription(i, text, size);
                               }));
    }
    const QList<QAction*> entries = m_setupModes->actions();
    if (std::equal(modes.begin(), modes.end(), entries.begin(), entries.end(), [](const auto& mode, QAction* entry) {
            return mode.first == entry->data().toByteArray() && QString::fromLocal8Bit(mode.second) == entry->toolTip();
        }))
        return;
    m_setupModes->clear();
    for (const auto& [bytes, description] : modes) {
        const QString name = QString::fromLocal8Bit(bytes);
        QString text = name;
        QAction* const action = m_setupModes->addAction(text.replace(QLatin1Char('&'), QLatin1String("&&")));
        action->setCheckable(true);
        action->setWhatsThis(name);
        action->setData(bytes);
        action->setToolTip(QString::fromLocal8Bit(description));
        connect(action, SIGNAL(triggered()), m_commands, SLOT(setupModeAsync()));
    }
}

} // namespace Vistrel
