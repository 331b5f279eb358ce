// SPDX-License-Identifier: MIT
// Tests the main window's menus and tool bar against a table of all their entries.
#include "window/OfferingCamera.h"

#include <QtCore/QRegularExpression>

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
    void entriesAreAsListed_data();
    void entriesAreAsListed();
};

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

QTEST_MAIN(MenusTest)
#include "MenusTest.moc"
