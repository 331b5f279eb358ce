// SPDX-License-Identifier: MIT
// Tests message boxes, asked for on either side of the threads, and how they end without an answer.
#include <Vistrel/Application.h>
#include <Vistrel/MessageBoxDialog.h>
#include <Vistrel/Window.h>

#include <QtCore/QTimer>
#include <QtTest/QtTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>

#include <functional>
#include <memory>
#include <thread>

using namespace Vistrel;

Q_CORE_EXPORT unsigned qGlobalPostedEventsCount(); // of the calling thread

namespace {

const char* const commandLine[] = {"program"};

/// A call from inside the event loop or, meanwhile, from another thread. `act` gets the box when it is up.
DialogButton ask(bool isWorker, const std::function<void(QMessageBox&)>& act, const std::function<DialogButton()>& call)
{
    QTimer watch;
    watch.callOnTimeout([&] {
        if (auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
            watch.stop(), act(*box);
    });
    watch.start();
    DialogButton button = DialogButton::Help;
    std::thread worker;
    const auto run = [&] { button = call(), Application::global()->exit(0); };
    QTimer::singleShot(0, qApp, [&] { isWorker ? void(worker = std::thread(run)) : run(); });
    Application::global()->exec();
    if (isWorker)
        worker.join();
    return button;
}

} // namespace

class MessageBoxTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void boxShowsWhatIsAsked();
    void endsWithoutAnswer();
    void workerDoesNotHang();
};

void MessageBoxTest::boxShowsWhatIsAsked()
{
    using Box = QMessageBox;
    const Application application(1, commandLine);
    Window window{ScopedAcquisitionInterface()};
    const Box::StandardButton buttons[] = {Box::Ok,       Box::Open,    Box::Save,
                                           Box::Cancel,   Box::Close,   Box::Discard,
                                           Box::Apply,    Box::Reset,   Box::RestoreDefaults,
                                           Box::Help,     Box::SaveAll, Box::Yes,
                                           Box::YesToAll, Box::No,      Box::NoToAll,
                                           Box::Abort,    Box::Retry,   Box::Ignore};
    const decltype(&MessageBoxDialog::critical) kinds[] = {MessageBoxDialog::information, MessageBoxDialog::warning,
                                                           MessageBoxDialog::critical, MessageBoxDialog::question};
    QSignalSpy lastWindowClosed(qApp, &QGuiApplication::lastWindowClosed);
    for (int i = 0; i < 18; ++i) {
        const int flag = 1 << i;
        const int both = flag | 1 << (i + 1) % 18;
        const bool isOneDefault = i % 5 != 0;
        Window* const parent = i % 3 ? &window : nullptr;
        const auto press = [&](Box& box) {
            const auto click = qScopeGuard([&] { box.button(buttons[i])->click(); });
            QVERIFY(box.icon() == i % 4 + 1 && box.windowTitle() == QString::fromLocal8Bit("caf\xc3\xa9"));
            QCOMPARE(box.parentWidget(), parent ? window.qt_handle() : nullptr);
            QCOMPARE(box.standardButtons(), buttons[i] | buttons[(i + 1) % 18]);
            QCOMPARE(box.defaultButton(), isOneDefault ? box.button(buttons[i]) : nullptr);
        };
        const DialogButton pressed = ask(i / 4 % 2, press, [&] {
            return kinds[i % 4](parent, "caf\xc3\xa9", nullptr, DialogButtons(both | 0x40000),
                                static_cast<DialogButton>(isOneDefault ? flag : both));
        });
        QCOMPARE(int(pressed), flag);
    }
    QVERIFY(lastWindowClosed.isEmpty());
}

void MessageBoxTest::endsWithoutAnswer()
{
    for (const char end : {'d', 'c', 'l'}) { // by deleting the window, by closing it, by leaving the event loop
        for (const bool isWorker : {false, true}) {
            Application application(1, commandLine);
            application.setQuitOnLastWindowClosed(false);
            auto window = std::make_unique<Window>(ScopedAcquisitionInterface());
            const auto call = [asked = window.get()] { return MessageBoxDialog::warning(asked, "", "", {}, {}); };
            const auto act = [&](QMessageBox& box) {
                if (!box.parentWidget()) // the window has been closed
                    box.button(QMessageBox::Ok)->click();
                else if (end == 'l')
                    application.exit(0);
                else
                    end == 'd' ? window.reset() : void(window->qt_handle()->close());
            };
            QCOMPARE(ask(isWorker, act, call), DialogButton::NoButton);
            if (end == 'c')
                QCOMPARE(ask(isWorker, act, call), DialogButton::Ok);
        }
    }
}

void MessageBoxTest::workerDoesNotHang()
{
    enum End { ApplicationGoes, LoopEnds, WindowIsDeleted, WindowQtIsDeleted };
    for (const End end : {ApplicationGoes, LoopEnds, WindowIsDeleted, WindowQtIsDeleted}) {
        DialogButton button = DialogButton::Help;
        std::thread worker;
        auto application = std::make_unique<Application>(1, commandLine);
        auto window = std::make_unique<Window>(ScopedAcquisitionInterface());
        const auto call = [&, asked = end == LoopEnds ? nullptr : window.get()] {
            button = MessageBoxDialog::critical(asked, "", "", DialogButton::Ok, {});
        };
        const auto start = [&] {
            const unsigned posted = qGlobalPostedEventsCount();
            worker = std::thread(call);
            while (qGlobalPostedEventsCount() == posted) // until the call is there; messages of the system do not count
                std::this_thread::yield();
        };
        QCoreApplication::processEvents();
        if (end == LoopEnds) {
            // In a timer's event, after which the loop serves no more posts.
            QTimer::singleShot(1, qApp, [&] { start(), application->exit(0); });
            application->exec();
        } else {
            start();
            if (end == ApplicationGoes)
                application.reset();
            else
                end == WindowIsDeleted ? window.reset() : delete window->qt_handle();
        }
        worker.join();
        QCOMPARE(button, DialogButton::NoButton);
        if (end != WindowIsDeleted)
            application.reset();
        button = DialogButton::Help, call();
        QCOMPARE(button, DialogButton::NoButton);
    }
}

QTEST_APPLESS_MAIN(MessageBoxTest)
#include "MessageBoxTest.moc"
