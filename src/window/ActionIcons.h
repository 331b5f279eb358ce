// SPDX-License-Identifier: MIT
// The icons of the main window's actions, in colours that can be seen on its palette.
#pragma once

class QAction;
class QPalette;
class QString;
class QWidget;

namespace Vistrel {

/// Whether the palette's window colour is nearer to black than to white.
bool isDark(const QPalette& palette);

/// Sets the icon of that name, which `showIcons` sets again.
void showIcon(QAction* action, const QString& name, const QPalette& palette);

/// Sets the icon of each action in the window that has a name of an icon, its property "iconName", and of the button
/// for what a narrow tool bar leaves out. Call it again when the window's palette has changed.
void showIcons(const QWidget& window);

} // namespace Vistrel
