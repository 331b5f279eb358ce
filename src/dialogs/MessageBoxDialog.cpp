// SPDX-License-Identifier: MIT
// Message boxes over a display window, from any thread.
#include <Vistrel/MessageBoxDialog.h>

#include "base/UserInterfaceCall.h"

#include <QtCore/QPointer>
#include <QtWidgets/QMessageBox>

#include <algorithm>
#include <iterator>

namespace Vistrel {

namespace {

// In the order of the flags, from the lowest bit on.
constexpr QMessageBox::StandardButton toolkitButtons[] = {
    QMessageBox::Ok,       QMessageBox::Open,    QMessageBox::Save,
    QMessageBox::Cancel,   QMessageBox::Close,   QMessageBox::Discard,
    QMessageBox::Apply,    QMessageBox::Reset,   QMessageBox::RestoreDefaults,
    QMessageBox::Help,     QMessageBox::SaveAll, QMessageBox::Yes,
    QMessageBox::YesToAll, QMessageBox::No,      QMessageBox::NoToAll,
    QMessageBox::Abort,    QMessageBox::Retry,   QMessageBox::Ignore,
};
constexpr int buttonCount = static_cast<int>(std::size(toolkitButtons));
static_assert(static_cast<int>(DialogButton::Ignore) == 1 << (buttonCount - 1));

QMessageBox::StandardButtons toToolkit(const DialogButtons& buttons)
{
    QMessageBox::StandardButtons result = QMessageBox::NoButton;
    for (int bit = 0; bit < buttonCount; ++bit) {
        if (buttons.value & (1 << bit))
            result |= toolkitButtons[bit];
    }
    return result;
}

DialogButton fromToolkit(QMessageBox::StandardButton button)
{
    const auto* const found = std::find(std::begin(toolkitButtons), std::end(toolkitButtons), button);
    return found != std::end(toolkitButtons) ? DialogButton(1 << (found - toolkitButtons)) : DialogButton::NoButton;
}

DialogButton ask(QMessageBox::Icon icon, Window* window, const char* title, const char* text,
                 const DialogButtons& buttons, DialogButton defaultButton)
{
    DialogButton answer = DialogButton::NoButton;
    callOnUserInterface(window, [&](QWidget* parent) {
        const QPointer<QMessageBox> box = new QMessageBox(icon, QString::fromLocal8Bit(title),
                                                          QString::fromLocal8Bit(text), toToolkit(buttons), parent);
        // Several flags name no button, so they set no default.
        box->setDefaultButton(QMessageBox::StandardButton(int(toToolkit(defaultButton))));
        box->setAttribute(Qt::WA_QuitOnClose, false); // a box is not the host's last window
        box->exec();
        if (box) // otherwise it was deleted with its parent
            answer = fromToolkit(box->standardButton(box->clickedButton()));
        delete box;
    });
    return answer;
}

} // namespace

DialogButton MessageBoxDialog::critical(Window* const window, const char* const title, const char* const text,
                                        const DialogButtons& buttons, DialogButton defaultButton)
{
    return ask(QMessageBox::Critical, window, title, text, buttons, defaultButton);
}

DialogButton MessageBoxDialog::warning(Window* const window, const char* const title, const char* const text,
                                       const DialogButtons& buttons, DialogButton defaultButton)
{
    return ask(QMessageBox::Warning, window, title, text, buttons, defaultButton);
}

DialogButton MessageBoxDialog::information(Window* const window, const char* const title, const char* const text,
                                           const DialogButtons& buttons, DialogButton defaultButton)
{
    return ask(QMessageBox::Information, window, title, text, buttons, defaultButton);
}

DialogButton MessageBoxDialog::question(Window* const window, const char* const title, const char* const text,
                                        const DialogButtons& buttons, DialogButton defaultButton)
{
    return ask(QMessageBox::Question, window, title, text, buttons, defaultButton);
}

} // namespace Vistrel
