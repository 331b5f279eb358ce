// SPDX-License-Identifier: MIT
// Which keys an editor keeps for itself.
#pragma once

#include <QtGui/QKeyEvent>

namespace Vistrel {

/// Whether a key edits or moves within an editor, rather than being a command of the window around it.
inline bool isPlain(const QKeyEvent& key)
{
    return !(key.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) &&
           (key.key() < Qt::Key_F1 || key.key() > Qt::Key_F35);
}

} // namespace Vistrel
