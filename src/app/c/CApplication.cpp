// SPDX-License-Identifier: MIT
// The application, for C hosts.
#include "app/c/Calls.h"
#include "base/HostCall.h"

#include <QtCore/QThread>

#include <memory>
#include <utility>

using namespace Vistrel;

namespace {

// As `callOn`, but a null handle is a wrong one.
template <typename Work>
std::int32_t callOnApplication(VTAppHandle app, Work&& work) noexcept
{
    return guarded([&]() -> std::int32_t {
        if (!handles().hasApplication())
            return VT_ERROR_NO_APPLICATION;
        Application* const application = handles().find<Application>(app);
        if (!application)
            return VT_ERROR_WRONG_HANDLE;
        if (!handles().isUserInterfaceThread())
            return VT_ERROR_WRONG_THREAD;
        return work(*application);
    });
}

bool isBusy()
{
    return QThread::currentThread()->loopLevel() > 0 || isInHostCall();
}

VTAppHandle handleOf(Application* application)
{
    return reinterpret_cast<VTAppHandle>(application);
}

} // namespace

std::int32_t VTAppCreate(int argc, const char* const* argv, VTAppHandle* result)
{
    return guarded([&]() -> std::int32_t {
        Handles& all = handles();
        const std::lock_guard<std::mutex> guard(all.mutex); // of two concurrent calls, the second is refused
        if (all.application)
            return VT_ERROR_APPLICATION_EXISTS;
        if (!argv)
            return VT_ERROR_NULL_POINTER;
        if (!result)
            return VT_ERROR_NULL_RESULT;
        if (all.isEnding)
            return VT_ERROR_APPLICATION_FAILED;
        try {
            auto application = std::make_unique<Application>(argc, argv);
            all.live.insert_or_assign(application.get(), Handles::Entry{application.get(), nullptr});
            all.thread = std::this_thread::get_id();
            all.application = application.release();
        } catch (...) {
            reportException("VTAppCreate"); // the code alone does not say what is missing
            return VT_ERROR_APPLICATION_FAILED;
        }
        *result = handleOf(all.application);
        return VT_OK;
    });
}

std::int32_t VTAppDestroy(VTAppHandle app)
{
    return callOnApplication(app, [](Application& application) -> std::int32_t {
        if (isBusy())
            return VT_ERROR_APPLICATION_BUSY;
        Handles& all = handles();
        decltype(all.live) live;
        {
            const std::lock_guard<std::mutex> guard(all.mutex);
            all.application = nullptr; // calls from host functions are refused from now on
            all.isEnding = true;
            live.swap(all.live);
        }
        for (const auto& [handle, entry] : live) {
            if (!entry.window) // windows delete their actions
                delete dynamic_cast<VTWindowWrapper*>(entry.object);
        }
        delete &application;
        all.waitForPushes(); // they also release frames
        all.endFinishedCalls();
        return VT_OK;
    });
}

std::int32_t VTAppExec(VTAppHandle app, int* exitCode)
{
    return callOnApplication(app, [=](Application& application) -> std::int32_t {
        if (isBusy())
            return VT_ERROR_APPLICATION_BUSY;
        const int code = application.exec();
        if (exitCode)
            *exitCode = code;
        return VT_OK;
    });
}

std::int32_t VTAppExit(VTAppHandle app, int returnCode)
{
    return guarded([&]() -> std::int32_t {
        Handles& all = handles();
        const std::lock_guard<std::mutex> guard(all.mutex); // the application stays meanwhile
        if (!all.application)
            return VT_ERROR_NO_APPLICATION;
        if (app != handleOf(all.application))
            return VT_ERROR_WRONG_HANDLE;
        all.application->exit(returnCode);
        return VT_OK;
    });
}

std::int32_t VTAppGetGlobal(VTAppHandle* result)
{
    return guarded([&]() -> std::int32_t {
        Handles& all = handles();
        const std::lock_guard<std::mutex> guard(all.mutex);
        if (!all.application)
            return VT_ERROR_NO_APPLICATION;
        if (!result)
            return VT_ERROR_NULL_RESULT;
        *result = handleOf(all.application);
        return VT_OK;
    });
}

std::int32_t VTAppAddIdleMethod(VTAppHandle app, void (*method)(void*), void* userData)
{
    return callOnApplication(app, [=](Application& application) -> std::int32_t {
        application.addIdleMethod(method, userData);
        return VT_OK;
    });
}
