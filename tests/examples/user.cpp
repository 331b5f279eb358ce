// SPDX-License-Identifier: MIT
// Plays the user of an example program, which it is linked into: looks at its windows, uses them and closes them. The
// program is to end by itself then.
#include <Vistrel/AbstractAcquisitionInterface.h>
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>
#include <Vistrel/SurfaceStream.h>
#include <Vistrel/WindowQt.h>

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QMap>
#include <QtCore/QTimer>
#include <QtGui/QImage>
#include <QtWidgets/QAction>
#include <QtWidgets/QApplication>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <vector>

using namespace Vistrel;

namespace {

constexpr int patienceMs = 30000; // for all steps

struct Step
{
    const char* name;
    std::function<bool()> isDone; // asked until it is so
};

WindowQt* windowOf(const char* title = "")
{
    for (QWidget* const widget : QApplication::topLevelWidgets()) {
        auto* const window = qobject_cast<WindowQt*>(widget);
        if (window && window->isVisible() && window->windowTitle().startsWith(QLatin1String(title)))
            return window;
    }
    return nullptr;
}

QImage pictureIn(WindowQt* window)
{
    return window ? window->surfaceScrollArea()->surface()->pixmap().toImage() : QImage();
}

// The entry of this text, or a window's own of this name.
QAction* entry(const char* text, const char* title = "")
{
    for (QAction* const action : windowOf(title)->findChildren<QAction*>()) {
        if (action->text() == QLatin1String(text) || action->objectName() == QLatin1String(text))
            return action;
    }
    return nullptr;
}

template <typename Dialog>
Dialog* openDialog()
{
    return qobject_cast<Dialog*>(QApplication::activeModalWidget());
}

// Steps ---------------------------------------------------------------------------------------------------------------

Step sees(const QSize& size, const char* title = "")
{
    return {"sees a picture", [=] { return pictureIn(windowOf(title)).size() == size; }};
}

Step seesMore(const char* title = "")
{
    return {"sees another picture", [=, first = QImage()]() mutable {
                const QImage picture = pictureIn(windowOf(title));
                if (first.isNull())
                    first = picture;
                return !picture.isNull() && picture != first;
            }};
}

// Later, for a dialog that opens then would keep this step.
Step triggers(const char* text, const char* title = "")
{
    return {text, [=] {
                QAction* const action = entry(text, title);
                return action && action->isEnabled() && action->isVisible() &&
                       QMetaObject::invokeMethod(action, "trigger", Qt::QueuedConnection);
            }};
}

Step choosesFile(const QString& fileName, const QString& filter = QStringLiteral("Camera Frame (*.frame)"))
{
    return {"chooses the format and a file", [=] {
                auto* const dialog = openDialog<QFileDialog>();
                if (!dialog || !dialog->nameFilters().contains(filter))
                    return false;
                dialog->selectNameFilter(filter);
                dialog->selectFile(fileName);
                return QMetaObject::invokeMethod(dialog, "accept", Qt::QueuedConnection);
            }};
}

Step answersYes()
{
    return {"answers yes", [] {
                auto* const box = openDialog<QMessageBox>();
                return box && QMetaObject::invokeMethod(box->button(QMessageBox::Yes), "click", Qt::QueuedConnection);
            }};
}

Step closes(const char* title = "")
{
    return {"closes a window", [=] { return windowOf(title)->close(); }};
}

bool isShownFrameIn(const QString& fileName, const QByteArray& header)
{
    QFile file(fileName);
    RawImage raw;
    ScopedLock lock;
    if (!file.open(QIODevice::ReadOnly) || !windowOf()->surfaceStream()->latestImage(&raw, &lock))
        return false;
    const QByteArray pixels(reinterpret_cast<const char*>(raw.data),
                            static_cast<int>(raw.width * raw.height * bytesPerPixel(raw.format)));
    return file.readAll() == header + pixels;
}

// The C host's
// ---------------------------------------------------------------------------------------------------------

AbstractAcquisitionInterface* source()
{
    return windowOf()->acquisitionInterface();
}

// By a command after which one frame comes, and no other.
std::vector<Step> takesOne(const char* command, bool (AbstractAcquisitionInterface::*isWaiting)() const)
{
    const auto before = std::make_shared<std::size_t>();
    return {
        {"counts", [=] { return *before = source()->framesDelivered(), true; }},
        triggers(command),
        {"takes one frame", [=] { return source()->framesDelivered() == *before + 1 && (source()->*isWaiting)(); }}};
}

bool looksColored()
{
    const QImage picture = pictureIn(windowOf());
    const QColor right = picture.pixelColor(picture.width() - 20, 20);
    const QColor bottom = picture.pixelColor(20, picture.height() - 20);
    return right.red() > 200 && right.green() < 50 && bottom.red() < 50 && bottom.green() > 200;
}

QByteArray cFrameHeader(const QString& format)
{
    const QMap<QString, int> numbers = {
        {QStringLiteral("mono8"), 8}, {QStringLiteral("rgb8"), 24}, {QStringLiteral("bayer12"), 0x300 + 12}};
    return "FRAME " + QByteArray::number(numbers.value(format)) + " 1280 960\n";
}

std::vector<Step> cameraSteps(const QString& format)
{
    const QString saved = QStringLiteral("%1.%2.frame").arg(QCoreApplication::applicationFilePath(), format);
    QFile::remove(saved);
    const auto window = std::make_shared<const void*>();
    const QSize size(701, 555);
    const std::vector<std::vector<Step>> chapters = {
        {sees({640, 480}),
         {"sees the colours", [=] { return looksColored() == (format != QLatin1String("mono8")); }},
         seesMore(),
         triggers("actionPause"),
         {"sees it paused", [] { return source()->isPaused(); }}},
        takesOne("actionTrigger", &AbstractAcquisitionInterface::isPaused),
        takesOne("actionStart_Single", &AbstractAcquisitionInterface::isStopped),
        {triggers("actionStart_Reverse"),
         {"sees it reversed", [] { return source()->isRunningReverse(); }},
         seesMore(),
         triggers("Full"),
         {"sees the mode", [] { return entry("Full")->isChecked(); }},
         triggers("actionStart"),
         sees({1280, 960}),
         triggers("actionStop"),
         {"sees all frames back but one", [] { return source()->isStopped() && source()->framesQueued() == 5; }},
         triggers("actionSave_Image"),
         choosesFile(saved),
         {"finds the frame in the file", [=] { return isShownFrameIn(saved, cFrameHeader(format)); }},
         triggers("Crosshair"),
         {"sees the crosshair", [] { return windowOf()->pixelCrosshairVisible(); }},
         triggers("Reset..."),
         answersYes(),
         {"sees it reset", [] { return source()->framesDelivered() == 0; }},
         {"resizes the window", [=] { return windowOf()->resize(size), *window = windowOf(), true; }},
         triggers("Reopen &Window"),
         {"finds another in its place", [=] { return windowOf() != *window && windowOf()->size() == size; }},
         triggers("actionStart"),
         seesMore(),
         closes()}};
    std::vector<Step> steps;
    for (const std::vector<Step>& chapter : chapters)
        steps.insert(steps.end(), chapter.begin(), chapter.end());
    return steps;
}

std::vector<Step> stepsFor(const QString& program)
{
    if (program == QLatin1String("push_frames_test"))
        return {sees({640, 480}), seesMore(), closes()};
    if (program == QLatin1String("pull_source_test")) {
        return {sees({320, 240}),
                seesMore(),
                triggers("actionStop"),
                triggers("Full"),
                {"sees the mode", [] { return entry("Full")->isChecked(); }},
                triggers("actionStart"),
                sees({1280, 960}),
                triggers("actionStop"),
                triggers("actionCleanup"),
                {"sees it cleaned up", [] { return entry("actionSetup")->isEnabled(); }},
                closes()};
    }
    if (program == QLatin1String("file_format_test")) {
        const char* const ramp = "FRAME Mono16 640 480\n";
        const QString given = QCoreApplication::arguments().value(1);
        if (!given.isEmpty())
            return {
                sees({640, 480}), {"sees what is in the file", [=] { return isShownFrameIn(given, ramp); }}, closes()};
        const QString saved = QCoreApplication::applicationFilePath() + QStringLiteral(".frame");
        QFile::remove(saved);
        return {sees({640, 480}),
                triggers("actionSave_Image"),
                choosesFile(saved),
                {"finds the frame in the file", [=] { return isShownFrameIn(saved, ramp); }},
                closes()};
    }
    if (program == QLatin1String("user_actions_test")) {
        const auto looksInverse = [] { return pictureIn(windowOf()).pixelColor(0, 0) == QColor(Qt::white); };
        return {sees({256, 256}),
                triggers("&Invert"),
                {"sees it inverse", [=] { return entry("&Invert")->isChecked() && looksInverse(); }},
                triggers("Crosshair"),
                {"sees the crosshair", [] { return windowOf()->pixelCrosshairVisible(); }},
                triggers("Reset"),
                answersYes(),
                {"sees it as it was", [=] { return !entry("&Invert")->isChecked() && !looksInverse(); }},
                triggers("&Go Away"),
                {"sees it gone", [] { return !entry("&Go Away"); }},
                closes()};
    }
    if (program == QLatin1String("c_host_test")) {
        const QStringList arguments = QCoreApplication::arguments();
        if (arguments.size() > 2)
            return cameraSteps(arguments[2]);
        return {sees({1280, 960}),
                {"sees what is in the file",
                 [=] { return isShownFrameIn(arguments[1], cFrameHeader(QStringLiteral("bayer12"))); }},
                closes()};
    }
    if (program == QLatin1String("README_test"))
        return {sees({1280, 960}), closes()};
    if (program == QLatin1String("hosting_test")) {
        const QString saved = QCoreApplication::applicationFilePath() + QStringLiteral(".raw");
        QFile::remove(saved);
        return {sees({640, 480}, "Camera"),
                seesMore("Camera"),
                triggers("Mark", "Camera"),
                {"sees the crosshair", [] { return windowOf("Camera")->pixelCrosshairVisible(); }},
                sees({320, 240}, "Called back"),
                seesMore("Called back"),
                sees({160, 120}, "Controlled"),
                triggers("actionStop", "Controlled"),
                triggers("Full", "Controlled"),
                {"sees the mode", [] { return entry("Full", "Controlled")->isChecked(); }},
                triggers("&Take Over...", "Controlled"),
                answersYes(),
                seesMore("Controlled"),
                sees({640, 480}, "Saves in full depth"),
                triggers("actionSave_Image", "Saves raw pixels"),
                choosesFile(saved, QStringLiteral("Raw Pixels (*.raw)")),
                {"finds the frame in the file", [=] { return QFileInfo(saved).size() == 640 * 480; }},
                closes("Camera"),
                closes("Called back"),
                closes("Controlled"),
                closes("Saves in full depth"),
                closes("Saves raw pixels")};
    }
    if (program == QLatin1String("two_windows_test")) {
        return {sees({640, 480}, "First"), sees({640, 480}, "Second"), closes("First"), seesMore("Second"),
                closes("Second")};
    }
    return {{"knows the example", [] { return false; }}};
}

// The user ------------------------------------------------------------------------------------------------------------

class User : public QObject
{
    Q_OBJECT

public:
    User();

public Q_SLOTS:
    void takeStep();
    void giveUp();
    void endReached();

private:
    QTimer m_timer;
    std::vector<Step> m_steps;
    std::size_t m_next = 0;
};

User::User() : QObject(qApp)
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    m_steps = stepsFor(QFileInfo(QCoreApplication::applicationFilePath()).baseName());
    connect(&m_timer, SIGNAL(timeout()), this, SLOT(takeStep()));
    connect(qApp, SIGNAL(aboutToQuit()), this, SLOT(endReached()));
    m_timer.start(10);
    QTimer::singleShot(patienceMs, this, SLOT(giveUp()));
}

void User::takeStep()
{
    if (m_next == m_steps.size() || !m_steps[m_next].isDone())
        return;
    std::printf("The user: %s\n", m_steps[m_next].name);
    ++m_next;
}

void User::giveUp()
{
    std::printf("FAIL: never: %s\n", m_next < m_steps.size() ? m_steps[m_next].name : "the program ends");
    std::fflush(stdout);
    std::_Exit(1);
}

// The last step closes the last window, from which the end may come at once.
void User::endReached()
{
    if (m_next + 1 < m_steps.size())
        giveUp();
}

// But for the platform's own, which tell what it cannot do.
void refuseWarnings(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    std::printf("%s\n", qPrintable(text));
    if (type == QtDebugMsg || type == QtInfoMsg || text.startsWith(QLatin1String("This plugin ")))
        return;
    std::printf("FAIL: a warning\n");
    std::fflush(stdout);
    std::_Exit(1);
}

void makeUser()
{
    qInstallMessageHandler(refuseWarnings);
    new User;
}

Q_COREAPP_STARTUP_FUNCTION(makeUser)

} // namespace

#include "user.moc"
