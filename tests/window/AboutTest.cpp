// SPDX-License-Identifier: MIT
// Tests the driver query, with driver libraries that are put beside this program, and the about and licensing dialogs.
#include "window/AboutDialog.h"
#include "window/DriverVersion.h"
#include "window/KVQtLgplDialog.h"

#include <QtCore/QFile>
#include <QtTest/QTest>
#include <QtWidgets/QLabel>
#include <QtWidgets/QScrollArea>
#include <QtWidgets/QScrollBar>

using namespace Vistrel;

class AboutTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QFile::remove(driverFile()); }
    void versionIsWritten_data();
    void versionIsWritten();
    void libraryWithoutExportIsUnknownAndUnloaded();
    void boxFitsWhatTheHostSays();
    void licensesAreReadByKeyboard();

private:
    static QString driverFile() { return QCoreApplication::applicationDirPath() + QStringLiteral("/" DRIVER_FILE); }
    static bool install(const char* library, const QByteArray& version)
    {
        qputenv("DRIVER_VERSION", version);
        QFile::remove(driverFile());
        return QFile::copy(QCoreApplication::applicationDirPath() + QLatin1Char('/') + QLatin1String(library),
                           driverFile());
    }
};

void AboutTest::versionIsWritten_data()
{
    QTest::addColumn<QByteArray>("words"); // major and minor, in hexadecimal; empty: there is no library
    QTest::addColumn<QString>("text");
    QTest::newRow("debug") << QByteArray("80000006 1f") << QStringLiteral("6.1f [debug]");
    QTest::newRow("release") << QByteArray("2 a") << QStringLiteral("2.a");
    QTest::newRow("largest") << QByteArray("7fffffff ffffffff") << QStringLiteral("2147483647.ffffffff");
    QTest::newRow("none") << QByteArray() << QString();
}

void AboutTest::versionIsWritten()
{
    QFETCH(QByteArray, words);
    QFETCH(QString, text);
    QVERIFY(words.isEmpty() || install("whole.driver", words));
    QCOMPARE(driverVersionText(), text);

    AboutDialog dialog;
    dialog.describeLibrary();
    const QString driver = text.isEmpty() ? QStringLiteral("Unknown") : text;
    for (const QString& value : {QStringLiteral("Version 1.0, Build 581.31679"), QStringLiteral("6.300"), driver})
        QVERIFY2(dialog.details().contains(QStringLiteral("<td>%1</td>").arg(value)), qPrintable(value));
}

void AboutTest::libraryWithoutExportIsUnknownAndUnloaded()
{
    QVERIFY(install("empty.driver", "6 1"));
    std::uint32_t majorVersion = 1, minorVersion = 2;
    bool isDebug = true;
    QVERIFY(!driverVersion(&majorVersion, &minorVersion, &isDebug));
    QVERIFY(majorVersion == 1 && minorVersion == 2 && isDebug);
    // Had the first one stayed, the system would not load another of its name.
    QVERIFY(install("whole.driver", "6 1"));
    QCOMPARE(driverVersionText(), QStringLiteral("6.1"));
}

void AboutTest::boxFitsWhatTheHostSays()
{
    AboutDialog dialog;
    QPixmap icon(32, 16);
    icon.fill(Qt::red);
    dialog.setHeader(QStringLiteral("A < B"), icon);
    for (const int words : {500, 1}) {
        dialog.setDetails(QStringLiteral("words ").repeated(words));
        dialog.fixSize();
        dialog.show();
        const auto* const details = dialog.findChild<QLabel*>(QStringLiteral("detailsLabel"));
        QVERIFY(details->height() >= details->heightForWidth(details->width()));
        dialog.hide();
    }
    QVERIFY(dialog.width() < 300); // no longer that of the long text
    QCOMPARE(dialog.minimumSize(), dialog.maximumSize());
    QImage shown = dialog.findChild<QLabel*>(QStringLiteral("titleLabel"))->grab().toImage(); // the icon: 128 x 64
    QCOMPARE(shown.pixelColor(shown.width() / 2 + 60, 60), QColor(Qt::red));
}

void AboutTest::licensesAreReadByKeyboard()
{
    KVQtLgplDialog dialog;
    const char* const ends[] = {"That's all there is to it!\n", "\nLibrary.\n", "modified version of the Library.\n"};
    const char* const labels[] = {"lgpl21Label", "lgpl30Label", "exceptionLabel"};
    for (int i = 0; i < 3; ++i)
        QVERIFY(dialog.findChild<QLabel*>(QLatin1String(labels[i]))->text().endsWith(QLatin1String(ends[i])));
    dialog.show();
    QTest::keyClick(dialog.focusWidget(), Qt::Key_Tab);
    QTest::keyClick(dialog.focusWidget(), Qt::Key_PageDown);
    QVERIFY(dialog.findChild<QScrollArea*>(QStringLiteral("lgpl21Area"))->verticalScrollBar()->value() > 0);
    QTest::keyClick(dialog.focusWidget(), Qt::Key_Return);
    QVERIFY(!dialog.isVisible());
}

QTEST_MAIN(AboutTest)
#include "AboutTest.moc"
