// SPDX-License-Identifier: MIT
// The about boxes of the main window: the host's, the library's and the toolkit's.
#pragma once

#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtWidgets/QDialog>

namespace Ui {
class WindowQt;
} // namespace Ui

namespace Vistrel {

class AboutDialog;
class KVQtLgplDialog;

class AboutBoxes : public QObject
{
    Q_OBJECT

public:
    AboutBoxes(QWidget* window, const Ui::WindowQt& form);

    void setApplicationAbout(QDialog* dialog); ///< not owned; null takes the entry away

public Q_SLOTS:
    void showApplicationAbout();
    void showAboutVistrel();
    void showAboutQt();
    void showLicensing();

private:
    QWidget* const m_window;
    const Ui::WindowQt& m_form;
    QPointer<QDialog> m_application;
    AboutDialog* m_vistrel = nullptr; // made when it is first asked for, as the next
    KVQtLgplDialog* m_licensing = nullptr;
};

} // namespace Vistrel
