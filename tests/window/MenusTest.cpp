// SPDX-License-Identifier: MIT
// Tests the main window's menus and tool bar against a table of all their entries, each command by mouse and key, and
// what is left of the window when its source fails it.
#include <Vistrel/AcquisitionSignalHandler.h>
#include <Vistrel/SurfaceStream.h>
#include <Vistrel/WindowQt.h>

#include "base/Report.h"
#include "support/FakeSources.h"
#include "window/StartFixedEditor.h"

#include <QtCore/QPointer>
#include <QtCore/QRegularExpression>
#include <QtCore/QTimer>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QToolBar>
#include <QtWidgets/QToolButton>

#include <thread>

using namespace Vistrel;

namespace {

// Menus and their entries, one deeper for each ">", then the actions that are in none, by name: object name | text |
// tool tip, where it is not the text | shortcut | icon | flags | flags where nothing is offered, when others.
// Flags: d disabled, h hidden, c checkable, x checked, w "what's this" is the tool tip, t it is the text; ! not there.
const char* const entries[] = {
    "menuImage|&Image||||",
    ">Save_Image|&Save Image...|Save the currently displayed image.|Ctrl+S||d",
    ">Copy_Image|C&opy Image|Copy the current image to the system clipboard.|Ctrl+C|CopyImage|d",
    ">-",
    ">Copy_Image_Stats|Copy Image Info|Copy the Image Info text to the clipboard.|Ctrl+I||d",
    ">-",
    ">Close|&Close|Close the Vistrel display window.|Ctrl+W||",
    "menuView|&View||||",
    ">Zoom_Editor|Zoom &Editor|Open the zoom level editor.|Ctrl+=|Zoom|c",
    ">Quick_View|&Quick View|Open the quick view image overview.|Ctrl+`|Outline|dc",
    ">Image_Stats|Image &Info||Ctrl+\\||",
    ">-",
    ">Zoom_In|&Zoom In|Zoom in on the image.|Ctrl++|ZoomIn|",
    ">Zoom_Out|Zoom &Out|Zoom out from the image.|Ctrl+-|ZoomOut|",
    ">Zoom_Fit|Zoom &Fit|Zoom to fit the image within the display area.|Ctrl+F|ZoomToFit|cx",
    ">menuZoom_Level|Zoom &Level||||",
    ">>Zoom_25|&25%|Set the image zoom level to 25%|||",
    ">>Zoom_50|&50%|Set the image zoom level to 50%|||",
    ">>Zoom_100|&100%|Zoom the image to its original size.|Ctrl+0|ZoomTo100|",
    ">>Zoom_200|2&00%|Set the image zoom level to 200%|||",
    ">>Zoom_400|&400%|Set the image zoom level to 400%|||",
    ">>Zoom_800|&800%|Set the image zoom level to 800%|||",
    ">-",
    ">menuColor_Palette|Color &Palette||||d",
    ">>Color_Palette_Gray|&Gray|A linear grayscale rendering of the image with a slope of one.||other|cx",
    ">>Color_Palette_Gray_2x|Gray &2x|A linear grayscale rendering of the image with a slope of two.||other|c",
    ">>Color_Palette_Gray_Inverse|Gray &Inverse|An inverted direct grayscale rendering of the image.||other|c",
    ">>Color_Palette_Sine|&Sine|||other|c",
    ">>Color_Palette_Cosine|&Cosine|||other|c",
    ">>Color_Palette_Contours|Con&tours|A rendering of the image using dramatic contours.||other|c",
    ">>Color_Palette_Rainbow|&Rainbow|A colorful rendering of the image.||other|c",
    ">>Color_Palette_Random|R&andom|A rendering of the image using randomly selected colors.||other|c",
    ">-",
    ">Pixel_Crosshair_Visible|Pixel &Crosshair||X||c",
    ">-",
    ">Exhibit_View|E&xhibit View|Enter Exhibit View|Ctrl+F11||c",
    ">Full_Screen|Full &Screen|Enter Full Screen|F11||c",
    "menuFilters|&Filters||||",
    ">Decode_Bayer_Images|&Enable Bayer Demosaic|<p>If enabled, demosaic images with Bayer encoding (Auto), or "
    "demosaic all grayscale images using the specific filter.|||cxw",
    ">menuBayer_Filter|&Bayer Filter||||",
    ">>Bayer_Filter_Auto|&Auto|<p>Automatically select the Bayer filter format from the image metadata.|||cx",
    ">>BayerRG_Filter|&RGGB|<table>RGGB||BayerRG|c",
    ">>BayerGR_Filter|&GRBG|<table>GRBG||BayerGR|c",
    ">>BayerGB_Filter|GBRG|<table>GBRG||BayerGB|c",
    ">>BayerBG_Filter|&BGGR|<table>BGGR||BayerBG|c",
    ">-",
    ">Reverse_RGB_Order|&Reverse RGB Order (non-Bayer)|<p>Reverse the order of RGB sub-pixels when rendering color "
    "images. This setting does not apply to demosaiced Bayer images.|||cw",
    "menuAcquisition|&Playback||||",
    ">Setup|Set&up|Setup the interface for acquisition.|F5||d|h",
    ">Setup_Mode|&Mode|||||h",
    ">>|Fast|Short exposure|||ct|!",
    ">Cleanup|&Cleanup|Cleanup the acquisition interface, freeing its resources.|Shift+F5|Cleanup||h",
    ">-",
    ">Start_Single_Reverse|Start O&ne Reverse|Acquire a single previous frame|-|PlayOneReverse||h",
    ">Start_Reverse|Start &Reverse|Start or resume a reverse acquisition|Shift+Space|PlayReverse||h",
    ">Start|&Start|Start or resume acquisition|Space|Play||h",
    ">Start_Single|Start &One|Acquire a single frame.|+|PlayOne||h",
    ">Start_Fixed|Start &Fixed|Start acquisition of a fixed number of frames.|*|PlayFixed|c|hc",
    ">Pause|&Pause|Pause the image display|Space|Pause|d|h",
    ">Stop|S&top|Stop the acquisition|.|Stop|d|h",
    ">-",
    ">Trigger|Trigger|<p>Trigger the camera from software.|F10|Trigger||h",
    ">No_Controls_Available|No Controls Available|<p>Playback controls are not currently available for this "
    "window.|||h|d",
    "menuHelp|&Help||||",
    ">About_Qt|About &Qt...|||Qt-logo|",
    ">Qt_LGPL_Licensing|Qt &LGPL Licensing...||||",
    ">-",
    ">About_Vistrel|&About Vistrel...|||VistrelIcon|",
    ">-",
    ">About_Application|About Application...||||h",
    "Active_Setup_Mode|Playback Mode:|The active configuration mode.|||cx|hcx",
    "Buffers_Delivered|Frames Delivered:|<p>The number of buffers successfully acquired from the acquisition "
    "engine.|||c|hc",
    "Buffers_Dropped|Frames Dropped:|<p>The number of buffers dropped by the acquisition engine.|||c|hc",
    "Buffers_Filled|Frames Filled|<p>The number of filled buffers waiting for retrieval.|||c|hc",
    "Buffers_Queued|Frames Queued:|<p>The number of buffers queued to the acquired by the acquisition engine.|||c|hc",
    "Copy_Pixel_Value|Copy Pixel Value|Copy the value of image pixel beneath the cursor.|Ctrl+P||",
    "Frame_Rate|Frame Rate:|<p>The frame-rate of the internal acquisition. This may be different from the image "
    "display refresh rate.|||cx|hcx",
    "ImageDimensions|Dimensions:|<p>The width, height, and bit-depth of the currently displayed image.|||c",
    "Image_Format|Image Format|<p>The format, including encoding, of the received image.|||c",
    "Keep_Stats_Visible|Keep Info Bar Visible|<p>Keep the info bar visible at all times.|Ctrl+K||c",
    "Pixel_Value|Pixel Value:|<p>The location and RGB value of the pixel currently under the mouse pointer.|||cx",
    "Setup_Cleanup|&Cleanup|Depress to Cleanup the acquisition interface, freeing its resources.||Setup|cx|!",
    "Setup_Cleanup|Setup/Cleanup|||Setup|!|hc",
    "Zoom_Level|Zoom Level|<p>The current zoom level as a percentage value.|||cx",
};

struct Command
{
    const char *call, *action, *key, *argument;
};

const Command commands[] = {
    {"setup", "actionSetup", "F5", ""},
    {"setupMode", "actionSetup_Mode", "", "(Fast)"},
    {"cleanup", "actionCleanup", "Shift+F5", ""},
    {"trigger", "actionTrigger", "F10", ""},
    {"startSingleReverse", "actionStart_Single_Reverse", "-", ""},
    {"startReverse", "actionStart_Reverse", "Shift+Space", ""},
    {"start", "actionStart", "Space", ""},
    {"startFixed", "actionStart_Fixed", "*", "(1)"},
    {"startSingle", "actionStart_Single", "+", ""},
    {"pause", "actionPause", "Space", ""},
    {"stop", "actionStop", ".", ""},
};
constexpr unsigned anyCommand = (1u << std::size(commands)) - 1;

unsigned bit(const char* call)
{
    unsigned i = 0;
    while (qstricmp(commands[i].call, call) != 0)
        ++i;
    return 1u << i;
}

std::atomic<const char*> thrower{nullptr}; // the query or command that throws
std::atomic<int> thrown{0};
std::atomic<int> reported{0};
std::atomic<int> reportedOther{0};

// What a source and its test share; the source may go first.
struct Log
{
    bool add(const std::string& event)
    {
        const std::lock_guard<std::mutex> guard(mutex);
        list += list.empty() ? event : " " + event;
        return success;
    }
    std::string seen()
    {
        const std::lock_guard<std::mutex> guard(mutex);
        return list;
    }

    std::mutex mutex;
    std::string list;
    std::atomic<bool> success{true};
    Gate gate; // that commands pass
};

// Offers everything or nothing, and tells what it is asked to do.
class Camera : public PushSource
{
public:
    explicit Camera(std::shared_ptr<Log> log) : m_log(std::move(log))
    {
        m_log->gate.openForGood();
        addSetupMode("Fast", "Short exposure");
    }
    ~Camera() override { m_log->add("gone"); }

    void offer(bool all)
    {
        using Source = AbstractAcquisitionInterface;
        for (const auto feature :
             {&Source::setHasSetup, &Source::setHasSetupMode, &Source::setHasCleanup, &Source::setHasTrigger,
              &Source::setHasStartSingleReverse, &Source::setHasStartReverse, &Source::setHasStart,
              &Source::setHasStartFixed, &Source::setHasStartSingle, &Source::setHasPause, &Source::setHasStop,
              &Source::setHasFrameRate, &Source::setHasFramesQueued, &Source::setHasFramesFilled,
              &Source::setHasFramesDropped, &Source::setHasFramesDelivered})
            (this->*feature)(all);
    }
    using PushSource::signalFeatureSetChange;

    bool setup() override { return run("setup"); }
    bool setupMode(const char* const name) override { return run("setupMode", name); }
    bool cleanup() override { return run("cleanup"); }
    bool trigger() override { return run("trigger"); }
    bool startSingleReverse() override { return run("startSingleReverse"); }
    bool startReverse() override { return run("startReverse"); }
    bool start() override { return run("start"); }
    bool startFixed(std::size_t frames) override { return run("startFixed", std::to_string(frames).c_str()); }
    bool startSingle() override { return run("startSingle"); }
    bool pause() override { return run("pause"); }
    bool stop() override { return run("stop"); }
    void uxClosed() override { answer("uxClosed", m_log->add("closed")); }

    bool canSetup() const override { return can("canSetup"); }
    bool canSetupMode() const override { return can("canSetupMode"); }
    bool canCleanup() const override { return can("canCleanup"); }
    bool canTrigger() const override { return can("canTrigger"); }
    bool canStartSingleReverse() const override { return can("canStartSingleReverse"); }
    bool canStartReverse() const override { return can("canStartReverse"); }
    bool canStart() const override { return can("canStart"); }
    bool canStartFixed() const override { return can("canStartFixed"); }
    bool canStartSingle() const override { return can("canStartSingle"); }
    bool canPause() const override { return can("canPause"); }
    bool canStop() const override { return can("canStop"); }

    bool isSetup() const override { return answer("isSetup", true); }
    bool isRunningSingleReverse() const override { return answer("isRunningSingleReverse", false); }
    bool isRunningReverse() const override { return answer("isRunningReverse", false); }
    bool isRunning() const override { return answer("isRunning", false); }
    bool isRunningFixed() const override { return answer("isRunningFixed", false); }
    bool isRunningSingle() const override { return answer("isRunningSingle", false); }
    bool isPaused() const override { return answer("isPaused", false); }
    bool isStopped() const override { return answer("isStopped", false); }
    bool activeSetupMode(char* const buffer, std::size_t* const size) const override
    {
        return answer("activeSetupMode", setupModeName(1, buffer, size));
    }
    double frameRate() const override { return answer("frameRate", 25.0); }
    std::size_t framesQueued() const override { return answer("framesQueued", 1u); }
    std::size_t framesFilled() const override { return answer("framesFilled", 1u); }
    std::size_t framesDropped() const override { return answer("framesDropped", 1u); }
    std::size_t framesDelivered() const override { return answer("framesDelivered", 1u); }

    std::atomic<unsigned> able{anyCommand};

private:
    template <typename Value>
    static Value answer(const char* query, Value value)
    {
        if (thrower && std::strcmp(thrower, query) == 0) {
            ++thrown;
            throw std::runtime_error("no camera");
        }
        return value;
    }
    bool can(const char* query) const { return answer(query, (able & bit(query + 3)) != 0); }
    bool run(const char* call, const char* argument = nullptr)
    {
        m_log->gate.pass();
        return answer(call, m_log->add(argument ? std::string(call) + "(" + argument + ")" : call));
    }

    const std::shared_ptr<Log> m_log;
};

struct ShownWindow
{
    explicit ShownWindow(bool all = true, unsigned able = anyCommand)
    {
        offer(all, able);
        window->resize(1200, 600); // room for the whole tool bar
        window->show();
        QVERIFY(QTest::qWaitForWindowActive(window));
    }
    ~ShownWindow()
    {
        delete window;
        log->gate.openForGood();
        QTRY_VERIFY(QByteArray::fromStdString(log->seen()).endsWith("gone"));
    }

    void offer(bool all, unsigned able)
    {
        camera->offer(all);
        camera->able = able;
        if (!window)
            window = new WindowQt(ScopedAcquisitionInterface(camera));
        window->updateFeatureSet();
    }
    QAction* action(const char* name) const { return window->findChild<QAction*>(QLatin1String(name)); }
    QMenu* modes() const { return action("actionSetup_Mode")->menu(); }
    QWidget* button(const char* name) const { return window->findChild<QToolBar*>()->widgetForAction(action(name)); }

    // By the mouse, through the menus that lead there; nothing happens when there is no such entry.
    void choose(const char* name) const
    {
        QMenuBar* const bar = window->menuBar();
        auto* const menu = window->findChild<QMenu*>(QStringLiteral("menuAcquisition"));
        QTest::mouseClick(bar, Qt::LeftButton, {}, bar->actionGeometry(menu->menuAction()).center());
        QTRY_VERIFY(menu->isVisible());
        click(menu, action(name));
        if (action(name)->isVisible() && action(name)->menu()) {
            QTRY_VERIFY(modes()->isVisible());
            click(modes(), modes()->actions().last());
            modes()->close();
        }
        menu->close();
    }
    static void click(QMenu* menu, QAction* entry)
    {
        const QRect place = menu->actionGeometry(entry);
        if (entry->isVisible())
            QTest::mouseClick(menu, Qt::LeftButton, {}, place.topLeft() + QPoint(8, place.height() / 2));
    }

    const std::shared_ptr<Log> log = std::make_shared<Log>();
    Camera* camera = new Camera(log);
    QPointer<WindowQt> window;
};

// "<table>" and the letters of a mosaic's tool tip, each bold on its colour.
QString mosaic(const QString& html)
{
    const QRegularExpression cells(QStringLiteral("<td bgcolor=\"#(ff0000|00ff00|0000ff)\"><b>([RGB])</b></td>"));
    QString letters = QStringLiteral("<table>");
    for (auto cell = cells.globalMatch(html); cell.hasNext();) {
        const QRegularExpressionMatch match = cell.next();
        const int channel = match.captured(1).indexOf(QLatin1String("ff")) / 2;
        letters += match.captured(2) == QStringLiteral("RGB")[channel] ? match.captured(2) : QStringLiteral("?");
    }
    return letters;
}

// The action as the list of entries has it; `icons` are the names of pictures that it may show.
QString described(const QAction* action, const QStringList& icons)
{
    QString text = action->text();
    text.remove(QLatin1Char('&')).remove(QLatin1String("..."));
    QString toolTip = action->toolTip() == text ? QString() : action->toolTip();
    const QRegularExpression paragraph(QStringLiteral("^<html><head/><body>(<p>.*)</p></body></html>$"));
    toolTip =
        toolTip.contains(QLatin1String("<table")) ? mosaic(toolTip) : toolTip.replace(paragraph, QStringLiteral("\\1"));
    QString icon = action->icon().isNull() ? QString() : QStringLiteral("other");
    const QImage picture = action->icon().pixmap(32).toImage();
    for (const QString& name : icons) {
        if (!icon.isEmpty() && picture == QIcon(QStringLiteral(":/Icons/%1.png").arg(name)).pixmap(32).toImage())
            icon = name;
    }
    const bool isVisible = action->isVisible();
    const bool saysMore = !action->whatsThis().isEmpty();
    QString flags;
    for (const auto& [isSo, letter] : {std::pair(isVisible && !action->isEnabled(), 'd'),
                                       {!isVisible, 'h'},
                                       {action->isCheckable(), 'c'},
                                       {action->isChecked(), 'x'},
                                       {saysMore && action->whatsThis() == action->toolTip(), 'w'},
                                       {saysMore && action->whatsThis() == action->text(), 't'},
                                       {action->iconText() != text, 'i'}})
        flags += isSo ? QString(QLatin1Char(letter)) : QString();
    const bool isMenu = action->menu() && action->objectName().isEmpty();
    const QString name = isMenu ? action->menu()->objectName() : action->objectName().mid(6);
    const QString shortcut = action->shortcut().toString();
    return QStringList{name, action->text(), toolTip, shortcut, icon, flags}.join(QLatin1Char('|'));
}

void listEntries(const QWidget* menu, const QString& depth, const QStringList& icons, QStringList& rows)
{
    for (const QAction* const entry : menu->actions()) {
        rows.append(depth + (entry->isSeparator() ? QStringLiteral("-") : described(entry, icons)));
        if (entry->menu())
            listEntries(entry->menu(), depth + QLatin1Char('>'), icons, rows);
    }
}

} // namespace

class MenusTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void entriesAreAsListed_data();
    void entriesAreAsListed();
    void commandsRunOnceWhenTheyCan_data();
    void commandsRunOnceWhenTheyCan();
    void throwingQueryIsReported_data();
    void throwingQueryIsReported();
    void modeNameReachesTheSourceAsBytes_data();
    void modeNameReachesTheSourceAsBytes();
    void answersChangeWhileACommandRuns();
    void windowGoesWhileACommandRuns_data();
    void windowGoesWhileACommandRuns();
    void nothingPilesUp();
};

void MenusTest::initTestCase()
{
    setReportSink([](const std::string& line) {
        const char* const name = thrower;
        ++(name && line == std::string("Vistrel: ") + name + ": no camera" ? reported : reportedOther);
    });
}

void MenusTest::init()
{
    thrower = nullptr;
    thrown = reported = reportedOther = 0;
}

void MenusTest::entriesAreAsListed_data()
{
    QTest::addColumn<bool>("offersAll");
    QTest::addColumn<QString>("toolBar");
    const QString commandsBar = QStringLiteral("Setup_Cleanup | Start_Single_Reverse Start_Reverse Start Start_Fixed "
                                               "Start_Single Pause Stop | Trigger | ");
    const QString view = QStringLiteral("Zoom_Editor Zoom_Fit Zoom_100 | Quick_View ");
    QTest::newRow("everything") << true << commandsBar + view;
    QTest::newRow("nothing") << false << view;
}

void MenusTest::entriesAreAsListed()
{
    QFETCH(bool, offersAll);
    QStringList expected;
    QStringList icons;
    for (const char* const entry : entries) {
        QStringList fields = QString::fromLatin1(entry).split(QLatin1Char('|'));
        const QString otherFlags = fields.size() > 6 ? fields.takeLast() : fields.last();
        if (!offersAll)
            fields.last() = otherFlags;
        icons.append(fields.value(4));
        if (fields.last() != QLatin1String("!"))
            expected.append(fields.join(QLatin1Char('|')));
    }

    ShownWindow shown(offersAll, offersAll ? anyCommand & ~(bit("setup") | bit("pause") | bit("stop")) : 0);
    QStringList seen;
    listEntries(shown.window->menuBar(), {}, icons, seen);
    QStringList others;
    const QRegularExpression ours(QStringLiteral("^action"));
    for (const QAction* const action : shown.window->findChildren<QAction*>(ours)) {
        const QString row = described(action, icons);
        if (seen.filter(row).isEmpty())
            others.append(row);
    }
    others.sort();
    seen += others;
    for (int i = 0; i < qMin(seen.size(), expected.size()); ++i)
        QCOMPARE(seen[i], expected[i]);
    QCOMPARE(seen.size(), expected.size());

    QString toolBar;
    for (const QAction* const entry : shown.window->findChild<QToolBar*>()->actions())
        toolBar += entry->isSeparator() ? QStringLiteral("| ") : entry->objectName().mid(6) + QLatin1Char(' ');
    QTEST(toolBar, "toolBar");
}

void MenusTest::commandsRunOnceWhenTheyCan_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QByteArray>("way");
    for (int i = 0; i < int(std::size(commands)); ++i) {
        for (const char* const way : {"menu", "button", "key"}) {
            if (*commands[i].key || qstrcmp(way, "key") != 0)
                QTest::addRow("%s by %s", commands[i].call, way) << i << QByteArray(way);
        }
    }
}

void MenusTest::commandsRunOnceWhenTheyCan()
{
    QFETCH(int, index);
    QFETCH(QByteArray, way);
    const Command& command = commands[index];
    const bool isArrow = bit(command.call) == bit("setupMode") && way == "button";
    const bool isToggle = isArrow || (bit(command.call) & (bit("setup") | bit("cleanup")));
    const unsigned able = bit(command.call) | (isArrow ? bit("setup") : 0); // for the button that it is on
    ShownWindow shown;
    auto* const editor = shown.window->findChild<StartFixedEditor*>();
    const auto act = [&] {
        QMenu* const modes = shown.modes();
        if (way == "key") {
            QTest::keySequence(shown.window, QKeySequence(QLatin1String(command.key)));
        } else if (way == "menu") {
            shown.choose(command.action);
        } else if (QWidget* const button = shown.button(isToggle ? "actionSetup_Cleanup" : command.action)) {
            QTRY_VERIFY(button->isVisible());
            if (isArrow) { // its click waits until the menu is closed
                QTimer::singleShot(0, modes, [modes] {
                    if (modes->isVisible())
                        ShownWindow::click(modes, modes->actions()[0]);
                    modes->close();
                });
            }
            const int x = isArrow ? button->width() - 3 : 8;
            QTest::mouseClick(button, Qt::LeftButton, {}, {x, button->height() / 2});
        }
        if (editor->isVisible())
            QTest::mouseClick(editor->findChild<QPushButton*>(), Qt::LeftButton);
    };
    shown.offer(false, able); // hidden
    act();
    shown.offer(true, 0); // disabled
    act();
    // In its turn: all that was asked for before comes before it.
    shown.window->setUnconfigured();
    std::string expected = "cleanup";
    QTRY_COMPARE(shown.log->seen(), expected);
    shown.offer(true, able);
    QTRY_VERIFY(shown.action(command.action)->isEnabled());
    act();
    shown.window->setUnconfigured();
    expected += std::string(" ") + command.call + command.argument + " cleanup";
    QTRY_COMPARE(shown.log->seen(), expected);
}

void MenusTest::throwingQueryIsReported_data()
{
    QTest::addColumn<QByteArray>("query");
    for (const char* const query :
         {"canSetup",         "canSetupMode", "canCleanup",     "canTrigger",      "canStartSingleReverse",
          "canStartReverse",  "canStart",     "canStartFixed",  "canStartSingle",  "canPause",
          "canStop",          "isSetup",      "isStopped",      "isPaused",        "isRunningSingleReverse",
          "isRunningReverse", "isRunning",    "isRunningFixed", "isRunningSingle", "activeSetupMode",
          "frameRate",        "framesQueued", "framesFilled",   "framesDropped",   "framesDelivered",
          "uxClosed"})
        QTest::newRow(query) << QByteArray(query);
}

void MenusTest::throwingQueryIsReported()
{
    QFETCH(QByteArray, query);
    thrower = query.constData();
    {
        ShownWindow shown;
        shown.window->setConfigured();
        QTRY_COMPARE(shown.log->seen(), std::string("setup"));
        QVERIFY(shown.window->isVisible());
        QTest::keyClick(shown.window, Qt::Key_W, Qt::ControlModifier);
        QTRY_VERIFY(!shown.window);
    }
    QVERIFY(thrown > 0);
    QCOMPARE(reported.load(), thrown.load());
    QCOMPARE(reportedOther.load(), 0);
}

void MenusTest::modeNameReachesTheSourceAsBytes_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("long") << QByteArray(10000, 'm');
    QTest::newRow("no text in the local encoding") << QByteArray("\xFF\xFE");
}

void MenusTest::modeNameReachesTheSourceAsBytes()
{
    QFETCH(QByteArray, name);
    ShownWindow shown;
    const QSize before = shown.window->size();
    QVERIFY(shown.camera->addSetupMode(name, name));
    shown.offer(true, bit("setupMode"));
    QCOMPARE(shown.modes()->actions().size(), 2);
    QVERIFY(shown.modes()->actions()[1]->isChecked()); // the active one
    shown.log->gate.close();
    shown.choose("actionSetup_Mode");
    QTRY_VERIFY(shown.window->statusBar()->currentMessage().startsWith(QLatin1String("Acquisition setup (")));
    QCOMPARE(shown.window->size(), before);
    shown.log->gate.openForGood();
    QTRY_COMPARE(shown.log->seen(), "setupMode(" + name.toStdString() + ")");
}

void MenusTest::answersChangeWhileACommandRuns()
{
    ShownWindow shown;
    shown.log->gate.close();
    QTest::keyClick(shown.window, Qt::Key_F10);
    QTRY_COMPARE(shown.log->gate.arrived(), 1);
    QSignalSpy announced(shown.camera->signalHandler(), SIGNAL(featureSetChanged()));
    std::thread other([camera = shown.camera] {
        for (unsigned i = 0; i < 500; ++i) {
            camera->able = i % 2 ? anyCommand : 0u;
            camera->signalFeatureSetChange();
        }
    });
    other.join();
    QTRY_COMPARE(announced.size(), 500);
    QCoreApplication::processEvents();
    const auto areAll = [&](bool enabled) {
        bool are = shown.action("actionSetup_Cleanup")->isEnabled() == enabled &&
                   shown.modes()->actions()[0]->isEnabled() == enabled;
        for (const Command& command : commands)
            are = are && (shown.action(command.action)->menu() || shown.action(command.action)->isEnabled() == enabled);
        return are;
    };
    QVERIFY(areAll(false));
    shown.log->gate.openForGood();
    QTRY_VERIFY(areAll(true));
    QCOMPARE(shown.log->seen(), std::string("trigger"));
}

void MenusTest::windowGoesWhileACommandRuns_data()
{
    QTest::addColumn<bool>("isDeleted");
    QTest::addColumn<bool>("throws");
    for (const bool throws : {false, true}) {
        QTest::addRow("closed, the command %s", throws ? "throws" : "fails") << false << throws;
        QTest::addRow("deleted, the command %s", throws ? "throws" : "fails") << true << throws;
    }
}

void MenusTest::windowGoesWhileACommandRuns()
{
    QFETCH(bool, isDeleted);
    QFETCH(bool, throws);
    const std::string closed = isDeleted ? "" : "closed ";
    for (const Command& command : commands) {
        init();
        ShownWindow shown;
        thrower = throws ? command.call : nullptr;
        shown.log->success = false;
        shown.log->gate.close();
        QAction* const action = shown.action(command.action);
        (action->menu() ? shown.modes()->actions()[0] : action)->trigger();
        if (auto* const editor = shown.window->findChild<StartFixedEditor*>(); editor->isVisible())
            editor->findChild<QPushButton*>()->click();
        QTRY_COMPARE(shown.log->gate.arrived(), 1);
        if (isDeleted)
            delete shown.window;
        else
            shown.window->close();
        QTRY_VERIFY(!shown.window);
        QCOMPARE(QByteArray::fromStdString(shown.log->seen()), QByteArray::fromStdString(closed).trimmed());
        shown.log->gate.openForGood();
        QTRY_COMPARE(shown.log->seen(), closed + command.call + command.argument + " gone");
        QCOMPARE(reported.load(), throws ? 1 : 0);
        QCOMPARE(reportedOther.load(), 0);
    }
    // A command that does not return holds up no other window.
    ShownWindow blocked;
    blocked.log->gate.close();
    blocked.action("actionStart")->trigger();
    delete blocked.window;
    ShownWindow next;
    next.action("actionTrigger")->trigger();
    QTRY_COMPARE(next.log->seen(), std::string("trigger"));
}

void MenusTest::nothingPilesUp()
{
    ShownWindow shown;
    const TestFrame frame(4, 3, Mono8, 10);
    QSignalSpy published(shown.window->surfaceStream(), SIGNAL(imageUpdated()));
    shown.camera->push(frame.raw);
    QTRY_VERIFY(shown.action("actionSave_Image")->isEnabled());
    const auto objects = [&shown] {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return shown.window->findChildren<QObject*>().size();
    };
    const int before = objects();
    const int windows = QApplication::topLevelWidgets().size();
    const qint64 icon = shown.window->windowIcon().cacheKey();
    for (int i = 0; i < 1000; ++i) {
        shown.camera->push(frame.raw);
        QVERIFY(published.wait());
    }
    QCOMPARE(objects(), before);
    QCOMPARE(shown.window->windowIcon().cacheKey(), icon);
    for (int i = 0; i < 1000; ++i)
        shown.window->updateFeatureSet();
    QCOMPARE(objects(), before);
    QCOMPARE(QApplication::topLevelWidgets().size(), windows);
    QTest::mouseClick(shown.button("actionSetup_Cleanup"), Qt::LeftButton, {}, QPoint(8, 8));
    shown.window->setUnconfigured();
    QTRY_COMPARE(shown.log->seen(), std::string("cleanup cleanup"));
}

QTEST_MAIN(MenusTest)
#include "MenusTest.moc"
