// SPDX-License-Identifier: MIT
// Message boxes over a display window, from any thread.
#include <Vistrel/MessageBoxDialog.h>

#include "base/UserInterfaceCall.h"

#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtWidgets/QMessageBox>

namespace Vistrel {

namespace {

constexpr struct
{
    DialogButton button;
    QMessageBox::StandardButton toolkitButton;
} buttonTable[] = {
    {DialogButton::NoButton, QMessageBox::NoButton},
    {DialogButton::Ok, QMessageBox::Ok},
    {DialogButton::Open, QMessageBox::Open},
    {DialogButton::Save, QMessageBox::Save},
    {DialogButton::Cancel, QMessageBox::Cancel},
    {DialogButton::Close, QMessageBox::Close},
    {DialogButton::Discard, QMessageBox::Discard},
    {DialogButton::Apply, QMessageBox::Apply},
    {DialogButton::Reset, QMessageBox::Reset},
    {DialogButton::RestoreDefaults, QMessageBox::RestoreDefaults},
    {DialogButton::Help, QMessageBox::Help},
    {DialogButton::SaveAll, QMessageBox::SaveAll},
    {DialogButton::Yes, QMessageBox::Yes},
    {DialogButton::YesToAll, QMessageBox::YesToAll},
    {DialogButton::No, QMessageBox::No},
    {DialogButton::NoToAll, QMessageBox::NoToAll},
    {DialogButton::Abort, QMessageBox::Abort},
    {DialogButton::Retry, QMessageBox::Retry},
    {DialogButton::Ignore, QMessageBox::Ignore},
};

QMessageBox::StandardButtons toToolkit(const DialogButtons& buttons)
{
    QMessageBox::StandardButtons toolkitButtons = QMessageBox::NoButton;
    for (const auto& row : buttonTable) {
        if (buttons.value & static_cast<int>(row.button))
            toolkitButtons |= row.toolkitButton;
    }
    return toolkitButtons;
}

QMessageBox::StandardButton toToolkit(DialogButton button)
{
    for (const auto& row : buttonTable) {
        if (row.button == button)
            return row.toolkitButton;
    }
    return QMessageBox::NoButton;
}

DialogButton fromToolkit(QMessageBox::StandardButton toolkitButton)
{
    for (const auto& row : buttonTable) {
        if (row.toolkitButton == toolkitButton)
            return row.button;
    }
    return DialogButton::NoButton;
}

class MessageBoxDialogSignalBox : public QObject
{
    Q_OBJECT

Q_SIGNALS:
    void critical();
    void warning();
    void information();
    void question();
};

} // namespace

/// One call, on the user-interface thread.
class MessageBoxDialog::PrivateData : public QObject
{
    Q_OBJECT

public:
    using Signal = void (MessageBoxDialogSignalBox::*)();

    static DialogButton ask(Signal signal, Window* window, const char* title, const char* text,
                            const DialogButtons& buttons, DialogButton defaultButton);

private Q_SLOTS:
    void doCritical() { show(QMessageBox::Critical); }
    void doWarning() { show(QMessageBox::Warning); }
    void doInformation() { show(QMessageBox::Information); }
    void doQuestion() { show(QMessageBox::Question); }

private:
    PrivateData(QWidget* parent, const char* title, const char* text, const DialogButtons& buttons,
                DialogButton defaultButton);

    void show(QMessageBox::Icon icon);

    QWidget* m_parent;
    QString m_title;
    QString m_text;
    QMessageBox::StandardButtons m_buttons;
    QMessageBox::StandardButton m_defaultButton;
    QMessageBox::StandardButton m_result = QMessageBox::NoButton;
    MessageBoxDialogSignalBox m_signalBox;
};

MessageBoxDialog::PrivateData::PrivateData(QWidget* parent, const char* title, const char* text,
                                           const DialogButtons& buttons, DialogButton defaultButton)
    : m_parent(parent),
      m_title(QString::fromLocal8Bit(title)),
      m_text(QString::fromLocal8Bit(text)),
      m_buttons(toToolkit(buttons)),
      m_defaultButton(toToolkit(defaultButton))
{
    connect(&m_signalBox, SIGNAL(critical()), this, SLOT(doCritical()));
    connect(&m_signalBox, SIGNAL(warning()), this, SLOT(doWarning()));
    connect(&m_signalBox, SIGNAL(information()), this, SLOT(doInformation()));
    connect(&m_signalBox, SIGNAL(question()), this, SLOT(doQuestion()));
}

void MessageBoxDialog::PrivateData::show(QMessageBox::Icon icon)
{
    const QPointer<QMessageBox> box = new QMessageBox(icon, m_title, m_text, m_buttons, m_parent);
    box->setDefaultButton(m_defaultButton);
    box->setAttribute(Qt::WA_QuitOnClose, false); // a box is not the host's last window
    box->exec();
    if (box) // otherwise it went with its parent
        m_result = box->standardButton(box->clickedButton());
    delete box;
}

DialogButton MessageBoxDialog::PrivateData::ask(Signal signal, Window* window, const char* title, const char* text,
                                                const DialogButtons& buttons, DialogButton defaultButton)
{
    DialogButton answer = DialogButton::NoButton;
    callOnUserInterface(window, [&](QWidget* parent) {
        PrivateData data(parent, title, text, buttons, defaultButton);
        Q_EMIT(data.m_signalBox.*signal)();
        answer = fromToolkit(data.m_result);
    });
    return answer;
}

DialogButton MessageBoxDialog::critical(Window* const window, const char* const title, const char* const text,
                                        const DialogButtons& buttons, DialogButton defaultButton)
{
    return PrivateData::ask(&MessageBoxDialogSignalBox::critical, window, title, text, buttons, defaultButton);
}

DialogButton MessageBoxDialog::warning(Window* const window, const char* const title, const char* const text,
                                       const DialogButtons& buttons, DialogButton defaultButton)
{
    return PrivateData::ask(&MessageBoxDialogSignalBox::warning, window, title, text, buttons, defaultButton);
}

DialogButton MessageBoxDialog::information(Window* const window, const char* const title, const char* const text,
                                           const DialogButtons& buttons, DialogButton defaultButton)
{
    return PrivateData::ask(&MessageBoxDialogSignalBox::information, window, title, text, buttons, defaultButton);
}

DialogButton MessageBoxDialog::question(Window* const window, const char* const title, const char* const text,
                                        const DialogButtons& buttons, DialogButton defaultButton)
{
    return PrivateData::ask(&MessageBoxDialogSignalBox::question, window, title, text, buttons, defaultButton);
}

} // namespace Vistrel

#include "MessageBoxDialog.moc"
