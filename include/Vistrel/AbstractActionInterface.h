// SPDX-License-Identifier: MIT
// A host's own command in a display window.
#pragma once

#include <Vistrel/BaseClass.h>

namespace Vistrel {

class Action;

/// A host's command, run when the user triggers its action. Bound to the user-interface thread. An exception that
/// leaves an operation is caught and reported in one line on the standard error stream.
class VISTREL_EXPORT AbstractActionInterface : public BaseClass
{
public:
    AbstractActionInterface();
    ~AbstractActionInterface() override;
    AbstractActionInterface(const AbstractActionInterface&) = delete;
    AbstractActionInterface& operator=(const AbstractActionInterface&) = delete;

    /// Called once when the window's entry has been removed, but not when the host deletes the action. After this
    /// returns, `action()`, which has no entry any more, is deleted and then the command.
    virtual void uxDestroyed();
    /// Called when the user triggers the action. `checked` is the new state of a checkable action, otherwise false.
    virtual void triggered(bool checked);

    /// The action that this belongs to; null before it is made and after it is deleted.
    Action* action();
    const Action* action() const;

private:
    friend class Action;
    void setAction(Action* const action);

    Action* m_action;
};

} // namespace Vistrel
