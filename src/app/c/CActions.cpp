// SPDX-License-Identifier: MIT
// Actions and message boxes, for C hosts.
#include "app/c/Calls.h"
#include "base/HostCall.h"
#include "base/UserInterfaceCall.h"

#include <Vistrel/Action.h>
#include <Vistrel/MessageBoxDialog.h>

#include <memory>
#include <utility>

using namespace Vistrel;

namespace {

using TriggeredCallback = void (*)(VTActionHandle action, bool checked, void* user);

class CallbackAction : public AbstractActionInterface
{
public:
    CallbackAction(std::shared_ptr<HostFunctions> functions, TriggeredCallback onTriggered, VTNotifyCallback gone,
                   void* user)
        : userData(user), m_functions(std::move(functions)), m_triggered(onTriggered), m_gone(gone)
    {
    }
    ~CallbackAction() override
    {
        if (m_gone && isAdded)
            hostCall("action gone", [this] { m_gone(userData); });
    }

    void uxDestroyed() override { handles().remove(action()); }
    void triggered(bool checked) override
    {
        if (m_triggered)
            m_triggered(reinterpret_cast<VTActionHandle>(action()), checked, userData);
    }

    void* const userData;
    bool isAdded = false; // `gone` is not called for an action that could not be added

private:
    const std::shared_ptr<HostFunctions> m_functions; // kept, so that VT_FEATURE_FINISHED comes after `gone`
    const TriggeredCallback m_triggered;
    const VTNotifyCallback m_gone;
};

bool isText(const char* text)
{
    return text && *text;
}

bool isSingleFlag(std::uint32_t flag)
{
    return flag != 0 && (flag & (flag - 1)) == 0;
}

constexpr std::uint32_t allButtons = 2u * VT_BUTTON_IGNORE - 1;

} // namespace

std::int32_t VTWindowAddAction(VTWindowHandle window, std::int32_t place, const char* menuTitle, const char* text,
                               void (*triggered)(VTActionHandle action, bool checked, void* user),
                               void (*gone)(void* user), void* user, VTActionHandle* result)
{
    return callOn<VTWindowWrapper>(
        window, VT_ERROR_NULL_RESULT, {result}, [=](VTWindowWrapper& wrapper) -> std::int32_t {
            const bool isPlace = place >= VT_PLACE_MENU && place <= VT_PLACE_INFORMATION;
            if (!isPlace || !isText(text) || (place == VT_PLACE_MENU && !isText(menuTitle)))
                return VT_ERROR_ACTION_ARGUMENT;
            const auto parts = wrapper.parts();
            if (parts->acquisition->isClosed())
                return VT_ERROR_ACTION_REFUSED;
            auto* const callback = new CallbackAction(parts->acquisition->functions(), triggered, gone, user);
            ScopedActionInterface command(callback);
            Window& itsWindow = parts->window;
            std::unique_ptr<Action> action(
                place == VT_PLACE_MENU       ? itsWindow.addMainMenuAction(std::move(command), menuTitle, text)
                : place == VT_PLACE_TOOL_BAR ? itsWindow.addToolBarAction(std::move(command), text)
                                             : itsWindow.addImageStatsAction(std::move(command), text));
            handles().add(action.get(), action.get(), window);
            callback->isAdded = true;
            *result = reinterpret_cast<VTActionHandle>(action.release());
            return VT_OK;
        });
}

std::int32_t VTActionDestroy(VTActionHandle action)
{
    return callOn<Action>(action, [=](Action& one) -> std::int32_t {
        handles().remove(action);
        delete &one;
        return VT_OK;
    });
}

std::int32_t VTActionGetUserData(VTActionHandle action, void** result)
{
    return callOn<Action>(action, VT_ERROR_NULL_POINTER, {result}, [=](Action& one) -> std::int32_t {
        *result = dynamic_cast<CallbackAction&>(*one.actionInterface()).userData;
        return VT_OK;
    });
}

std::int32_t VTMessageBoxDialogShow(VTWindowHandle window, std::int32_t kind, const char* title, const char* text,
                                    std::uint32_t buttons, std::uint32_t defaultButton, std::uint32_t* pressed)
{
    return guarded([&]() -> std::int32_t {
        constexpr decltype(&MessageBoxDialog::critical) kinds[] = {
            &MessageBoxDialog::critical, &MessageBoxDialog::warning, &MessageBoxDialog::information,
            &MessageBoxDialog::question};
        const std::int32_t refusal = firstChecks(window, VT_ERROR_NULL_POINTER, {title, text, pressed});
        if (refusal != VT_OK)
            return refusal;
        const std::shared_ptr<WindowGate> gate = handles().gate(window);
        if (!gate)
            return VT_ERROR_WRONG_HANDLE;
        if (kind < VT_MESSAGE_CRITICAL || kind > VT_MESSAGE_QUESTION)
            return VT_ERROR_MESSAGE_KIND;
        const std::uint32_t shown = buttons != 0 ? buttons : std::uint32_t{VT_BUTTON_OK};
        const bool isShown = isSingleFlag(defaultButton) && (shown & defaultButton) != 0;
        if (shown > allButtons || (defaultButton != 0 && !isShown))
            return VT_ERROR_MESSAGE_BUTTONS;
        if (!gate->isGood())
            return VT_ERROR_WINDOW_CLOSED;
        // The window may be destroyed before the box is shown and while it is shown.
        auto button = DialogButton::NoButton;
        callOnUserInterface(nullptr, [&](QWidget*) {
            VTWindowWrapper* const wrapper = handles().find<VTWindowWrapper>(window);
            if (!wrapper || !gate->isGood())
                return;
            Window* const itsWindow = &wrapper->parts()->window;
            button = kinds[kind - VT_MESSAGE_CRITICAL](itsWindow, title, text, DialogButtons(static_cast<int>(shown)),
                                                       static_cast<DialogButton>(defaultButton));
        });
        if (button == DialogButton::NoButton)
            return VT_ERROR_NO_ANSWER;
        *pressed = static_cast<std::uint32_t>(button);
        return VT_OK;
    });
}
