// SPDX-License-Identifier: MIT
// A host's own command in a display window.
#pragma once

#include <Vistrel/BaseClass.h>

namespace Vistrel {

class Action;

/// What a host does when the user triggers its action. Bound to the user-interface thread. An exception that leaves an
/// operation is caught and reported in one line on the standard error stream.
class VISTREL_EXPORT AbstractActionInterface : public BaseClass
{
public:
    AbstractActionInterface();
    ~AbstractActionInterface() override;
    AbstractActionInterface(const AbstractActionInterface&) = delete;
    AbstractActionInterface& operator=(const AbstractActionInterface&) = delete;

    /// The window's entry has gone, and `action()`, which has none now, is deleted after this returns, before the
    /// command. It comes once, and not when the host deletes the action itself.
    virtual void uxDestroyed();
    /// The user triggered the action. `checked` is the new state of a checkable one, otherwise false.
    virtual void triggered(bool checked);

    /// The action that this belongs to, or null before there is one and when it has gone.
    Action* action();
    const Action* action() const;

private:
    friend class Action;
    void setAction(Action* const action);

    Action* m_action;
};

} // namespace Vistrel
