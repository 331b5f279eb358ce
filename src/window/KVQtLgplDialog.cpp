// SPDX-License-Identifier: MIT
// The licences of Qt.
#include "window/KVQtLgplDialog.h"

#include "ui_KVQtLgplDialog.h"

#include <QtCore/QFile>
#include <QtGui/QFontDatabase>
#include <QtGui/QScreen>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QTabBar>

#include <utility>

namespace Vistrel {

namespace {

constexpr int shownLines = 30;

QString licenseText(const char* name)
{
    QFile file(QStringLiteral(":/licenses/%1.txt").arg(QLatin1String(name)));
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    return QString::fromUtf8(file.readAll()).remove(QLatin1Char('\f')); // page breaks
}

} // namespace

KVQtLgplDialog::KVQtLgplDialog(QWidget* parent) : QDialog(parent)
{
    Ui::KVQtLgplDialog form;
    form.setupUi(this);
    setAttribute(Qt::WA_QuitOnClose, false);

    const std::pair<QLabel*, const char*> licenses[] = {
        {form.lgpl21Label, "LGPL-2.1"}, {form.lgpl30Label, "LGPL-3.0"}, {form.exceptionLabel, "Qt-LGPL-exception-1.1"}};
    for (const auto& [label, name] : licenses) {
        label->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
        label->setText(licenseText(name));
    }

    form.sourceCodeLabel->setText(
        tr("The source code of Qt %1, which this library uses, with the patches that it was built with, is in the "
           "archive that is distributed beside this library's package and made by the same script.")
            .arg(QLatin1String(qVersion())));

    // As wide as the text and a page high, within the screen.
    const int lineHeight = form.lgpl21Label->fontMetrics().lineSpacing();
    const int textWidth =
        form.lgpl21Label->sizeHint().width() + form.lgpl21Area->verticalScrollBar()->sizeHint().width();
    const QSize wanted(textWidth + 3 * lineHeight, shownLines * lineHeight);
    resize(wanted.boundedTo(screen()->availableSize() * 0.8));
    form.tabWidget->tabBar()->setFocus();
}

} // namespace Vistrel
