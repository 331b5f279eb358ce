// SPDX-License-Identifier: MIT
// Full screen and exhibit view: the image takes the whole window, and the bars come over it at the window's edges.
#pragma once

#include <QtCore/QObject>
#include <QtCore/QTimer>

class QAction;
class QMainWindow;
class QMenu;

namespace Ui {
class WindowQt;
} // namespace Ui

namespace Vistrel {

class SurfaceScrollArea;

class ViewModes : public QObject
{
    Q_OBJECT

public:
    /// All outlive this object.
    ViewModes(QMainWindow* window, const Ui::WindowQt& form, SurfaceScrollArea* scrollArea);

    bool isExhibited() const { return m_isExhibited; }
    bool keepsInformation() const; ///< whether the status bar stays over the image
    void setFullScreen(bool enabled);
    void setExhibited(bool enabled);
    void setKeepsInformation(bool enabled);

    void followWindowState(); ///< when the system may have changed it
    void followWindowSize();
    void followMenu(const QMenu* menu); ///< keeps the bars in view while the menu is open

public Q_SLOTS:
    void showWindowBars();
    void hideWindowBars(); ///< not while they are in use: then it looks again later
    void leave();          ///< full screen first

Q_SIGNALS:
    void imageAloneChanged(bool isAlone);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void apply();
    void setBarsVisible(bool visible);

    QMainWindow* const m_window;
    const Ui::WindowQt& m_form;
    SurfaceScrollArea* const m_scrollArea;
    QAction* const m_leaveAction;
    QTimer m_barsTimer; // of bars that come over the image
    bool m_isExhibited = false;
    bool m_isImageAlone = false; // full screen or exhibited
};

} // namespace Vistrel
