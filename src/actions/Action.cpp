// SPDX-License-Identifier: MIT
// A host's action in a display window.
#include <Vistrel/Action.h>

#include "base/HostCall.h"
#include "base/TextOut.h"
#include "base/UserInterfaceCall.h"

#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QString>
#include <QtWidgets/QAction>

#include <memory>
#include <utility>

namespace Vistrel {

class Action::PrivateData : public QObject
{
    Q_OBJECT

public:
    PrivateData(Action* one, Window* itsWindow, QAction* entry, ScopedActionInterface&& actionInterface)
        : owner(one),
          window(itsWindow),
          windowLife(callTargetLife(itsWindow)),
          action(entry),
          command(std::move(actionInterface))
    {
    }

    void letGo();

    Action* owner; // null when it has been deleted
    Window* window;
    std::weak_ptr<const void> windowLife; // expires when the window is deleted
    QPointer<QAction> action;             // null from the moment it goes
    ScopedActionInterface command;

private Q_SLOTS:
    void actionQtDestroyed();
    void actionQtTriggered(bool checked);

private:
    template <typename Call>
    void callCommand(const char* operation, Call&& call);

    int m_callDepth = 0; // calls of the command that have not returned
};

// The command lives until its own operations have returned.
void Action::PrivateData::letGo()
{
    owner = nullptr;
    if (command)
        command->setAction(nullptr);
    if (m_callDepth == 0)
        delete this;
}

template <typename Call>
void Action::PrivateData::callCommand(const char* operation, Call&& call)
{
    ++m_callDepth;
    if (command)
        hostCall(operation, [&] { call(*command); });
    --m_callDepth;
}

void Action::PrivateData::actionQtTriggered(bool checked)
{
    callCommand("triggered", [&](AbstractActionInterface& one) { one.triggered(checked); });
    if (!owner && m_callDepth == 0)
        delete this;
}

void Action::PrivateData::actionQtDestroyed()
{
    callCommand("uxDestroyed", [](AbstractActionInterface& one) { one.uxDestroyed(); });
    if (owner)
        delete owner; // calls letGo()
    else if (m_callDepth == 0)
        delete this;
}

Action::Action(Window* const window, QAction* const action, ScopedActionInterface&& actionInterface)
    : m_data(new PrivateData(this, window, action, std::move(actionInterface)))
{
    if (m_data->command)
        m_data->command->setAction(this);
    QObject::connect(action, SIGNAL(destroyed()), m_data.get(), SLOT(actionQtDestroyed()));
    QObject::connect(action, SIGNAL(triggered(bool)), m_data.get(), SLOT(actionQtTriggered(bool)));
}

Action::~Action()
{
    if (QAction* const action = m_data->action) {
        action->disconnect(m_data.get());
        delete action;
    }
    m_data.release()->letGo();
}

Window* Action::window()
{
    return m_data->windowLife.expired() ? nullptr : m_data->window;
}

const Window* Action::window() const
{
    return const_cast<Action*>(this)->window();
}

QAction* Action::qt_handle()
{
    return m_data->action;
}

const QAction* Action::qt_handle() const
{
    return m_data->action;
}

AbstractActionInterface* Action::actionInterface()
{
    return m_data->command.get();
}

const AbstractActionInterface* Action::actionInterface() const
{
    return m_data->command.get();
}

// What the entry shows ------------------------------------------------------------------------------------------------

// There is no entry while uxDestroyed() runs.

bool Action::isCheckable() const
{
    return m_data->action && m_data->action->isCheckable();
}

bool Action::isChecked() const
{
    return m_data->action && m_data->action->isChecked();
}

bool Action::isEnabled() const
{
    return m_data->action && m_data->action->isEnabled();
}

void Action::setCheckable(bool checkable)
{
    if (m_data->action)
        m_data->action->setCheckable(checkable);
}

void Action::setChecked(bool checked)
{
    if (m_data->action)
        m_data->action->setChecked(checked);
}

void Action::setEnabled(bool enabled)
{
    if (m_data->action)
        m_data->action->setEnabled(enabled);
}

void Action::setText(const char* const text)
{
    if (m_data->action)
        m_data->action->setText(QString::fromLocal8Bit(text));
}

void Action::setToolTip(const char* const text)
{
    if (m_data->action)
        m_data->action->setToolTip(QString::fromLocal8Bit(text));
}

bool Action::text(char* const buffer, std::size_t* const bufferSize) const
{
    return localOut(m_data->action ? m_data->action->text() : QString(), buffer, bufferSize);
}

bool Action::toolTip(char* const buffer, std::size_t* const bufferSize) const
{
    return localOut(m_data->action ? m_data->action->toolTip() : QString(), buffer, bufferSize);
}

} // namespace Vistrel

#include "Action.moc"
