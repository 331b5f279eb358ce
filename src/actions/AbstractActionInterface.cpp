// SPDX-License-Identifier: MIT
// A host's own command in a display window.
#include <Vistrel/AbstractActionInterface.h>

namespace Vistrel {

AbstractActionInterface::AbstractActionInterface() : m_action(nullptr) {}

AbstractActionInterface::~AbstractActionInterface() = default;

void AbstractActionInterface::uxDestroyed() {}

void AbstractActionInterface::triggered(bool) {}

Action* AbstractActionInterface::action()
{
    return m_action;
}

const Action* AbstractActionInterface::action() const
{
    return m_action;
}

void AbstractActionInterface::setAction(Action* const action)
{
    m_action = action;
}

} // namespace Vistrel
