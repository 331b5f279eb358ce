// SPDX-License-Identifier: MIT
// Tests the host's actions in a window, and every order in which they, the window and its source may end.
#include <Vistrel/Action.h>
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>

#include "window/OfferingCamera.h"

#include <QtWidgets/QMenuBar>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QToolButton>

namespace {

std::string trace;

class HostCommand : public AbstractActionInterface
{
public:
    explicit HostCommand(const char* name) : m_name(name) {}
    ~HostCommand() override { trace += m_name + "gone "; }
    void triggered(bool) override
    {
        enter("triggered");
        trace += m_name + "triggered "; // still there
    }
    void uxDestroyed() override
    {
        const Window* const window = action()->window();
        trace += m_name + (window && window->good() ? "destroyed too late " : "destroyed ");
        enter(m_name + "uxDestroyed");
    }

private:
    const std::string m_name;
};

struct Shown : ShownWindow
{
    Action* a = host->addMainMenuAction(new HostCommand("a"), "&Mill", "A");
    Action* b = host->addToolBarAction(new HostCommand("b"), "B");
    Action* c = host->addImageStatsAction(new HostCommand("c"), "C");
};

QString entries(const QWidget* bar)
{
    QStringList texts;
    for (const QAction* const entry : bar->actions())
        texts += entry->isSeparator() ? QStringLiteral("|") : entry->text();
    return texts.join(QLatin1Char(' '));
}

} // namespace

class UserActionsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void entriesComeAndGo();
    void endings();
};

void UserActionsTest::entriesComeAndGo()
{
    Shown shown;
    const auto* const bar = shown.window->menuBar();
    const QString before = entries(bar);
    QVERIFY(before.endsWith(QLatin1String("&Mill &Help")));
    const Action* const other = shown.host->addMainMenuAction(new HostCommand("o"), "Tools", "O");
    Action* const second = shown.host->addMainMenuAction(new HostCommand("s"), "&Mill", "S");
    QCOMPARE(entries(bar->actions()[bar->actions().size() - 3]->menu()), QStringLiteral("A S"));
    delete other;
    second->qt_handle()->setVisible(false);
    delete shown.a;
    QCOMPARE(entries(bar), before); // for the one that is hidden
    delete second;
    QVERIFY(!entries(bar).contains(QLatin1String("Mill")));

    const auto* const tools = shown.window->findChild<QToolBar*>();
    QVERIFY(entries(tools).endsWith(QLatin1String(" | B")));
    Action* const third = shown.host->addToolBarAction(new HostCommand("t"), "T");
    third->qt_handle()->setSeparator(true);
    QVERIFY(entries(tools).endsWith(QLatin1String(" | B |")));
    delete shown.b;
    delete third;
    QVERIFY(!entries(tools).endsWith(QLatin1Char('|')));

    QPointer<QToolButton> button;
    for (auto* const one : shown.window->statusBar()->findChildren<QToolButton*>()) {
        if (one->text() == QLatin1String("C"))
            button = one;
    }
    QVERIFY(button);
    moment = "triggered"; // by a click, which may end it
    act = [&] { delete shown.c; };
    button->click();
    moment = nullptr;
    QTRY_VERIFY(!button);
}

void UserActionsTest::endings()
{
    const std::string others = "bdestroyed bgone cdestroyed cgone ";
    const std::string all = "adestroyed agone " + others;
    const struct
    {
        const char* moment; // at which the host deletes its window, or (+) its action; none: outside its functions
        std::string trace;
    } rows[] = {
        {"", all},
        {"+", "agone " + others},
        {"triggered", "atriggered " + all},
        {"+triggered", "atriggered agone " + others},
        {"auxDestroyed", all},
        {"+buxDestroyed", all},
        {"close", all}, // by the user
        {"uxClosed", all},
        {"canStart", all},
        {"getFrameLock", all},
        {"imageUpdated", all}, // in the middle of a change of settings
    };
    for (const auto& row : rows) {
        trace.clear();
        Shown shown;
        shown.push(RGB8);
        connect(shown.host->surfaceStream(), &SurfaceStream::imageUpdated, [] { enter("imageUpdated"); });
        const bool isAction = *row.moment == '+';
        const QByteArray at = row.moment + (isAction ? 1 : 0);
        act = [&] {
            moment = nullptr;
            isAction ? delete (at[0] == 'b' ? shown.b : shown.a) : shown.host.reset();
        };
        moment = at.isEmpty() ? nullptr : row.moment + (isAction ? 1 : 0);
        if (at == "triggered")
            shown.a->qt_handle()->trigger();
        else if (at == "canStart")
            shown.camera->signalAcquisitionStateChange();
        else if (at == "getFrameLock")
            shown.host->setZoomLevel(1000), shown.window->surfaceScrollArea()->surface()->repaint();
        else if (at == "imageUpdated")
            shown.host->setRgbOrderReversed(true);
        else if (at.isEmpty())
            act();
        else
            shown.window->close();
        if (isAction || at.isEmpty())
            shown.host.reset();
        QTRY_VERIFY2(!shown.window, row.moment);
        QCOMPARE(shown.host && !shown.host->good(), at == "close");
        QVERIFY2(!moment || at == "close", row.moment);
        QCOMPARE(trace, row.trace);
    }
}

QTEST_MAIN(UserActionsTest)
#include "UserActionsTest.moc"
