// SPDX-License-Identifier: MIT
// The about box of the library and of its host.
#include "window/AboutDialog.h"

#include "ui_AboutDialog.h"
#include "window/DriverVersion.h"

#include <QtCore/QBuffer>
#include <QtGui/QPixmap>

#include <algorithm>

namespace Vistrel {

namespace {

constexpr int iconSide = 128;      // logical pixels
constexpr int widestDetails = 600; // logical pixels

QString maker()
{
    return QStringLiteral("Korvane");
}

QString makerLink()
{
    return QStringLiteral("<a href=\"https://www.korvane.example\">%1</a>").arg(maker());
}

QString known(const QString& version)
{
    return version.isEmpty() ? AboutDialog::tr("Unknown") : version;
}

// Returns a table of captions and these texts.
QString table(const QString& version, const QString& sdk, const QString& driver, const QString& copyright)
{
    const QString row = QStringLiteral("<tr><td align=\"right\"><b>%1</b></td><td>%2</td></tr>");
    return QStringLiteral("<table align=\"center\" cellpadding=\"2\">") +
           row.arg(AboutDialog::tr("Vistrel Version"), version) + row.arg(AboutDialog::tr("SDK Version"), sdk) +
           row.arg(AboutDialog::tr("Driver Version"), driver) + row.arg(AboutDialog::tr("Copyright"), copyright) +
           QStringLiteral("</table>");
}

// Returns rich text, so that a label can show the picture above other text.
QString imageHtml(const QPixmap& picture)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    picture.save(&buffer, "PNG");
    const QSize size = picture.size() / picture.devicePixelRatio();
    return QStringLiteral("<img src=\"data:image/png;base64,%1\" width=\"%2\" height=\"%3\">")
        .arg(QLatin1String(bytes.toBase64()))
        .arg(size.width())
        .arg(size.height());
}

} // namespace

AboutDialog::AboutDialog(QWidget* parent) : QDialog(parent), m_form(std::make_unique<Ui::AboutDialog>())
{
    m_form->setupUi(this);
    setAttribute(Qt::WA_QuitOnClose, false);
    m_form->okButton->setFocus(); // not the link in the details
}

AboutDialog::~AboutDialog() = default;

void AboutDialog::describeLibrary()
{
    const QString heading = QStringLiteral("<p align=\"center\"><span style=\"font-size:16pt; font-weight:600;\">%1"
                                           "</span><br><span style=\"font-size:12pt;\">%2</span></p>")
                                .arg(tr("Vistrel"), tr("Library for image render and display."));
    setDetails(heading + table(tr("Version 1.0, Build 581.31679"), known(sdkVersionText()), known(driverVersionText()),
                               tr("Copyright &copy; %1. All rights reserved.").arg(makerLink())));

    const QString explanation = table(
        tr("The release version of the Vistrel library."),
        tr("The version of the %1 SDK that this build of Vistrel was built with.").arg(maker()),
        tr("The version of the %1 driver that is currently running. This need not match the SDK version.").arg(maker()),
        tr("The Vistrel copyright notice."));
    m_form->detailsLabel->setToolTip(explanation);
    m_form->detailsLabel->setWhatsThis(explanation);

    setHeader(QString(), QPixmap(QStringLiteral(":/Icons/VistrelIcon.png")));
    fixSize();
}

void AboutDialog::setHeader(const QString& title, const QPixmap& icon)
{
    QLabel* const label = m_form->titleLabel;
    label->setVisible(!title.isEmpty() || !icon.isNull());
    label->setAccessibleName(title);

    QPixmap picture;
    if (!icon.isNull()) {
        const qreal ratio = qApp->devicePixelRatio();
        const int side = qRound(iconSide * ratio);
        picture = icon.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        picture.setDevicePixelRatio(ratio);
    }
    if (title.isEmpty() && !icon.isNull()) {
        label->setPixmap(picture);
        return;
    }
    const QString heading = QStringLiteral("<big><b>%1</b></big>").arg(title.toHtmlEscaped());
    label->setText(icon.isNull() ? heading : imageHtml(picture) + QStringLiteral("<br>") + heading);
}

void AboutDialog::setDetails(const QString& text)
{
    QLabel* const label = m_form->detailsLabel;
    label->setText(text);
    label->setWordWrap(false);
    label->setWordWrap(label->sizeHint().width() > widestDetails);
}

QString AboutDialog::details() const
{
    return m_form->detailsLabel->text();
}

void AboutDialog::fixSize()
{
    setMinimumSize(0, 0);
    setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    layout()->activate(); // updates the inner layout first
    adjustSize();
    // On a small screen adjustSize() gives less than wrapped text needs.
    setFixedSize(width(), std::max(height(), heightForWidth(width())));
}

} // namespace Vistrel
