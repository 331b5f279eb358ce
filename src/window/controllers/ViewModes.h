// SPDX-License-Identifier: MIT
// Full screen and exhibit view: the image fills the window, and the bars appear over it at the window's edges.
#pragma once

#include <QtCore/QObject>
#include <QtCore/QTimer>

class QAction;
class QMenu;

namespace Vistrel {

struct Form;

class ViewModes : public QObject
{
    Q_OBJECT

public:
    explicit ViewModes(const Form& form); ///< which outlives this object

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
    void hideWindowBars(); ///< later while they are in use
    void leave();          ///< full screen first

Q_SIGNALS:
    void imageAloneChanged(bool isAlone);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void apply();
    void setBarsVisible(bool visible);

    const Form& m_form;
    QAction* const m_leaveAction;
    QTimer m_barsTimer; // hides the bars over the image
    bool m_isExhibited = false;
    bool m_isImageAlone = false; // full screen or exhibited
};

} // namespace Vistrel
