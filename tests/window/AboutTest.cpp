// SPDX-License-Identifier: MIT
// Tests the driver query, with driver libraries that are put beside this program, and that the about dialog tells it.
#include "window/AboutDialog.h"
#include "window/DriverVersion.h"

#include <QtCore/QFile>
#include <QtTest/QTest>

using namespace Vistrel;

class AboutTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QFile::remove(driverFile()); }
    void versionIsWritten();

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

void AboutTest::versionIsWritten()
{
    QCOMPARE(driverVersionText(), QString());
    QVERIFY(install("empty.driver", "6 1"));
    std::uint32_t majorVersion = 1, minorVersion = 2;
    bool isDebug = true;
    QVERIFY(!driverVersion(&majorVersion, &minorVersion, &isDebug));
    QVERIFY(majorVersion == 1 && minorVersion == 2 && isDebug);
    // Had the empty one stayed, the system would not load another of its name.
    QVERIFY(install("whole.driver", "7fffffff ffffffff"));
    QCOMPARE(driverVersionText(), QStringLiteral("2147483647.ffffffff"));
    QVERIFY(install("whole.driver", "80000006 1f"));
    AboutDialog dialog;
    dialog.describeLibrary();
    QVERIFY(dialog.details().contains(QLatin1String("<td>6.1f [debug]</td>")));
}

QTEST_MAIN(AboutTest)
#include "AboutTest.moc"
