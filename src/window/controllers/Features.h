// SPDX-License-Identifier: MIT
// What the source of the main window offers: actions, tool bar and setup modes.
#pragma once

#include <QtCore/QObject>

#include <memory>

class QMenu;

namespace Vistrel {

class AbstractAcquisitionInterface;
class Commands;
class UserActions;
struct Form;

/// Shows the actions that the source offers, and no others.
class Features : public QObject
{
    Q_OBJECT

public:
    /// The source may be null. The others outlive this object.
    Features(const Form& form, const std::shared_ptr<AbstractAcquisitionInterface>& source, Commands* commands,
             const UserActions& userActions);

    QMenu* setupModes() const { return m_setupModes; }
    bool areNew() const { return m_areNew; } ///< whether `update` came while the source must not be asked
    void update();                           ///< asks the source, unless it must not be asked now

public Q_SLOTS:
    void layOutToolBar(); ///< asks the source nothing

Q_SIGNALS:
    void updated();

private:
    void showSetupModes();

    const Form& m_form;
    const std::shared_ptr<AbstractAcquisitionInterface> m_source;
    Commands* const m_commands;
    const UserActions& m_userActions;
    QMenu* const m_setupModes;
    bool m_areNew = false;
};

} // namespace Vistrel
