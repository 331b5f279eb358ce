// SPDX-License-Identifier: MIT
// Tests the host's actions in a window, and every order in which they, the window and its source may end.
#include <Vistrel/Action.h>
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>
#include <Vistrel/Window.h>
#include <Vistrel/WindowQt.h>

#include "support/FakeSources.h"

#include <QtTest/QtTest>
#include <QtWidgets/QAction>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QToolBar>
#include <QtWidgets/QToolButton>

using namespace Vistrel;

namespace {

/// What the host does, once, in the first of its functions that has this name.
struct Host
{
    void enter(const std::string& function)
    {
        if (act && function == moment)
            std::exchange(act, nullptr)();
    }

    std::string moment;
    std::function<void()> act;
    std::string trace;
};

class Command : public AbstractActionInterface
{
public:
    Command(Host& host, const char* name) : m_host(host), m_name(name) {}
    ~Command() override { m_host.trace += m_name + "gone "; }
    void triggered(bool checked) override
    {
        m_host.trace += m_name + (checked ? "checked " : "triggered ");
        m_host.enter("triggered");
        m_host.trace += m_name; // still there
    }
    void uxDestroyed() override
    {
        const Window* const window = action()->window();
        m_host.trace += m_name + (window && window->good() ? "destroyed too late " : "destroyed ");
        m_host.enter(m_name + "uxDestroyed");
    }

private:
    Host& m_host;
    const std::string m_name;
};

class Source : public PushSource
{
public:
    explicit Source(Host& host) : m_host(host) { setHasStart(true); }
    bool canStart() const override { return m_host.enter("canStart"), true; }
    void uxClosed() override { m_host.enter("uxClosed"); }
    ScopedLock getFrameLock(const RawImage& frame) override
    {
        if (QThread::currentThread() == qApp->thread())
            m_host.enter("getFrameLock");
        return PushSource::getFrameLock(frame);
    }

private:
    Host& m_host;
};

struct Shown
{
    explicit Shown(Host& itsHost) : host(itsHost)
    {
        window->show();
        a = window->addMainMenuAction(command("a"), "&Mill", "A");
        b = window->addToolBarAction(command("b"), "B");
        c = window->addImageStatsAction(command("c"), "C");
    }
    ScopedActionInterface command(const char* name) { return ScopedActionInterface(new Command(host, name)); }
    template <typename Child>
    Child* child(const char* name) const
    {
        return window->qt_handle()->findChild<Child*>(QLatin1String(name));
    }
    static QString entries(const QWidget* bar, QAction* after = nullptr)
    {
        QStringList texts;
        for (const QAction* const entry : bar->actions().mid(bar->actions().indexOf(after) + 1))
            texts += entry->isSeparator() ? QStringLiteral("|") : entry->text();
        return texts.join(QLatin1Char(' '));
    }

    Host& host;
    Source* source = new Source(host);
    std::unique_ptr<Window> window = std::make_unique<Window>(ScopedAcquisitionInterface(source));
    Action* a;
    Action* b;
    Action* c;
};

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
    Host host;
    Shown shown(host);
    const auto* const bar = shown.child<QMenuBar>("menuBar");
    const auto menus = [&] { return Shown::entries(bar); };
    const QString before = menus();
    QVERIFY(before.endsWith(QLatin1String("&Mill &Help")));
    Action* const other = shown.window->addMainMenuAction(shown.command("o"), "Tools", "O");
    Action* const second = shown.window->addMainMenuAction(shown.command("s"), "&Mill", "S");
    QCOMPARE(Shown::entries(bar->actions()[bar->actions().size() - 3]->menu()), QStringLiteral("A S"));
    second->setCheckable(true);
    second->qt_handle()->trigger();
    second->qt_handle()->trigger();
    QCOMPARE(host.trace, std::string("schecked sstriggered s"));
    delete other;
    second->qt_handle()->setVisible(false);
    delete shown.a;
    QCOMPARE(menus(), before); // for the one that is hidden
    delete second;
    QVERIFY(!menus().contains(QLatin1String("Mill")));

    const auto* const tools = shown.child<QToolBar>("acquisitionToolBar");
    const auto behind = [&] { return Shown::entries(tools, shown.child<QAction>("actionQuick_View")); };
    Action* const separator = shown.window->addToolBarAction(shown.command("s"), "S");
    separator->qt_handle()->setSeparator(true);
    const Action* const third = shown.window->addToolBarAction(shown.command("t"), "T");
    QCOMPARE(behind(), QStringLiteral("| B | T"));
    delete separator;
    QCOMPARE(behind(), QStringLiteral("| B T"));
    delete shown.b;
    delete third;
    QCOMPARE(behind(), QString());

    const auto button = [&]() -> QToolButton* {
        for (auto* const one : shown.child<QStatusBar>("statusBar")->findChildren<QToolButton*>()) {
            if (one->text() == QLatin1String("C"))
                return one;
        }
        return nullptr;
    };
    QVERIFY(button());
    host.moment = "triggered"; // by a click, which may end it
    host.act = [&] { delete shown.c; };
    button()->click();
    QVERIFY(!host.act);
    QTRY_VERIFY(!button());
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
        {"triggered", "atriggered a" + all},
        {"+triggered", "atriggered aagone " + others},
        {"auxDestroyed", all},
        {"+buxDestroyed", all},
        {"close", all}, // by the user
        {"uxClosed", all},
        {"canStart", all},
        {"getFrameLock", all},
    };
    for (const auto& row : rows) {
        Host host;
        Shown shown(host);
        const QPointer<QWidget> widget = shown.window->qt_handle();
        TestFrame frame(16, 16, Mono8, 10);
        shown.source->push(frame.raw);
        QTRY_VERIFY(shown.child<QAction>("actionSave_Image")->isEnabled());
        const bool isAction = *row.moment == '+';
        host.moment = row.moment + (isAction ? 1 : 0);
        host.act = [&] {
            if (isAction)
                delete (host.moment[0] == 'b' ? shown.b : shown.a);
            else
                shown.window.reset();
        };
        if (host.moment == "triggered")
            shown.a->qt_handle()->trigger();
        else if (host.moment == "canStart")
            shown.source->setSetup(true);
        else if (host.moment == "getFrameLock")
            shown.window->setZoomLevel(1000), shown.window->surfaceScrollArea()->surface()->repaint();
        else if (host.moment.empty())
            host.enter("");
        else
            shown.window->qt_handle()->close();
        if (isAction || host.moment.empty())
            shown.window.reset();
        QTRY_VERIFY2(!widget, row.moment);
        QCOMPARE(shown.window && !shown.window->good(), host.moment == "close");
        QVERIFY2(!host.act || host.moment == "close", row.moment);
        QCOMPARE(host.trace, row.trace);
    }
}

QTEST_MAIN(UserActionsTest)
#include "UserActionsTest.moc"
