// SPDX-License-Identifier: MIT
// The about boxes of the main window: the host's, the library's and the toolkit's.
#include "window/controllers/AboutBoxes.h"

#include "ui_WindowQt.h"
#include "window/AboutDialog.h"
#include "window/KVQtLgplDialog.h"

#include <QtWidgets/QMessageBox>

namespace Vistrel {

AboutBoxes::AboutBoxes(QWidget* window, const Ui::WindowQt& form) : m_window(window), m_form(form)
{
    connect(form.actionAbout_Vistrel, SIGNAL(triggered()), this, SLOT(showAboutVistrel()));
    connect(form.actionAbout_Qt, SIGNAL(triggered()), this, SLOT(showAboutQt()));
    connect(form.actionQt_LGPL_Licensing, SIGNAL(triggered()), this, SLOT(showLicensing()));
    connect(form.actionAbout_Application, SIGNAL(triggered()), this, SLOT(showApplicationAbout()));
    setApplicationAbout(nullptr);
}

void AboutBoxes::setApplicationAbout(QDialog* dialog)
{
    m_application = dialog;
    m_form.actionAbout_Application->setVisible(dialog);
}

void AboutBoxes::showApplicationAbout()
{
    if (m_application)
        m_application->exec();
}

void AboutBoxes::showAboutVistrel()
{
    if (!m_vistrel) {
        m_vistrel = new AboutDialog(m_window);
        m_vistrel->describeLibrary();
    }
    m_vistrel->exec();
}

void AboutBoxes::showAboutQt()
{
    QMessageBox::aboutQt(m_window);
}

void AboutBoxes::showLicensing()
{
    if (!m_licensing)
        m_licensing = new KVQtLgplDialog(m_window);
    m_licensing->exec();
}

} // namespace Vistrel
