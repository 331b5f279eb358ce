// SPDX-License-Identifier: MIT
// The about boxes of the main window: the host's, the library's and the toolkit's.
#pragma once

#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtWidgets/QDialog>

namespace Vistrel {

class AboutDialog;
class KVQtLgplDialog;
struct Form;

class AboutBoxes : public QObject
{
    Q_OBJECT

public:
    explicit AboutBoxes(const Form& form); ///< which outlives this object

    void setApplicationAbout(QDialog* dialog); ///< not owned; null hides the entry

public Q_SLOTS:
    void showApplicationAbout();
    void showAboutVistrel();
    void showAboutQt();
    void showLicensing();

private:
    const Form& m_form;
    QPointer<QDialog> m_application;
    AboutDialog* m_vistrel = nullptr; // made at the first use, as the next
    KVQtLgplDialog* m_licensing = nullptr;
};

} // namespace Vistrel
