// SPDX-License-Identifier: MIT
// The keys that an editor handles itself.
#pragma once

#include <QtGui/QKeyEvent>

namespace Vistrel {

/// Whether a key edits text or moves the cursor in an editor, and so must not trigger a shortcut of its window.
inline bool isPlain(const QKeyEvent& key)
{
    return !(key.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) &&
           (key.key() < Qt::Key_F1 || key.key() > Qt::Key_F35);
}

} // namespace Vistrel
