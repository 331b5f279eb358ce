// SPDX-License-Identifier: MIT
// The about boxes of the main window: the host's, the library's and the toolkit's.
#include "window/controllers/AboutBoxes.h"

#include "window/AboutDialog.h"
#include "window/Form.h"
#include "window/KVQtLgplDialog.h"

#include <QtWidgets/QMessageBox>

namespace Vistrel {

AboutBoxes::AboutBoxes(const Form& form) : m_form(form)
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
        m_vistrel = new AboutDialog(m_form.window);
        m_vistrel->describeLibrary();
    }
    m_vistrel->exec();
}

void AboutBoxes::showAboutQt()
{
    QMessageBox::aboutQt(m_form.window);
}

void AboutBoxes::showLicensing()
{
    if (!m_licensing)
        m_licensing = new KVQtLgplDialog(m_form.window);
    m_licensing->exec();
}

} // namespace Vistrel
