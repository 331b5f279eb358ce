// SPDX-License-Identifier: MIT
// Windows and their features, for C hosts.
#include "app/c/Calls.h"

#include <memory>
#include <utility>

using namespace Vistrel;

namespace {

// Part of a feature's number.
enum Signature { Command = 1, Count, Name, Query, Text, Double, Size, NextFrame, Released, Notify, Load, Save };

constexpr std::int32_t signatureFactor = 100;

template <typename Callback>
std::int32_t setFeature(VTWindowHandle window, Signature signature, std::int32_t feature, Callback callback) noexcept
{
    return callOn<VTWindowWrapper>(window, [=](VTWindowWrapper& wrapper) -> std::int32_t {
        const auto index = featureIndex(feature);
        if (!index)
            return VT_ERROR_UNKNOWN_FEATURE;
        if (feature / signatureFactor != signature)
            return VT_ERROR_FEATURE_SIGNATURE;
        const auto parts = wrapper.parts();
        CallbackAcquisition& acquisition = *parts->acquisition;
        acquisition.functions()->set(*index, reinterpret_cast<HostFunctions::Any>(callback));
        if (const auto setCapability = featureAt(*index).setCapability)
            (acquisition.*setCapability)(callback != nullptr);
        if (feature >= VT_FEATURE_IS_SETUP && feature <= VT_FEATURE_IS_STOPPED)
            acquisition.send(VT_SIGNAL_ACQUISITION_STATE_CHANGED);
        acquisition.send(VT_SIGNAL_FEATURE_SET_CHANGED);
        return VT_OK;
    });
}

} // namespace

// Windows -------------------------------------------------------------------------------------------------------------

std::int32_t VTWindowCreate(VTAppHandle app, VTWindowHandle* result, void* userData)
{
    return guarded([&]() -> std::int32_t {
        if (!handles().hasApplication())
            return VT_ERROR_NO_APPLICATION;
        if (!handles().find<Application>(app))
            return VT_ERROR_WRONG_HANDLE;
        if (!result)
            return VT_ERROR_NULL_RESULT;
        if (!handles().isUserInterfaceThread())
            return VT_ERROR_WRONG_THREAD;
        auto wrapper = std::make_unique<VTWindowWrapper>(userData);
        handles().add(wrapper.get(), wrapper.get());
        *result = reinterpret_cast<VTWindowHandle>(wrapper.release());
        return VT_OK;
    });
}

std::int32_t VTWindowDestroy(VTWindowHandle window)
{
    return callOn<VTWindowWrapper>(window, [=](VTWindowWrapper& wrapper) -> std::int32_t {
        handles().remove(window);
        delete &wrapper;
        return VT_OK;
    });
}

bool VTWindowIsGood(VTWindowHandle window)
{
    bool isGood = false;
    callOnGate(window, [&](WindowGate& gate) -> std::int32_t {
        isGood = gate.isGood();
        return VT_OK;
    });
    return isGood;
}

std::int32_t VTWindowGetNativeHandle(VTWindowHandle window, void** result)
{
    return callOn<VTWindowWrapper>(window, VT_ERROR_NULL_POINTER, {result},
                                   [=](VTWindowWrapper& wrapper) -> std::int32_t {
                                       *result = wrapper.parts()->window.native_handle();
                                       return VT_OK;
                                   });
}

std::int32_t VTWindowGetUserData(VTWindowHandle window, void** result)
{
    return callOn<VTWindowWrapper>(window, VT_ERROR_NULL_POINTER, {result},
                                   [=](VTWindowWrapper& wrapper) -> std::int32_t {
                                       wrapper.parts();
                                       *result = wrapper.userData();
                                       return VT_OK;
                                   });
}

std::int32_t VTWindowSetNextFrame(VTWindowHandle window, const VTRawImage* image)
{
    return guarded([&]() -> std::int32_t {
        const PushScope scope;
        return callOnGate(window, [=](WindowGate& gate) -> std::int32_t {
            gate.push(image);
            return VT_OK;
        });
    });
}

std::int32_t VTWindowAddSetupMode(VTWindowHandle window, const char* name, const char* description)
{
    return callOn<VTWindowWrapper>(window, [=](VTWindowWrapper& wrapper) -> std::int32_t {
        const auto parts = wrapper.parts();
        if (!parts->acquisition->addSetupMode(name, description))
            return VT_ERROR_SETUP_MODE;
        parts->acquisition->send(VT_SIGNAL_FEATURE_SET_CHANGED);
        return VT_OK;
    });
}

std::int32_t VTWindowClearSetupModes(VTWindowHandle window)
{
    return callOn<VTWindowWrapper>(window, [](VTWindowWrapper& wrapper) -> std::int32_t {
        const auto parts = wrapper.parts();
        parts->acquisition->clearSetupModes();
        parts->acquisition->send(VT_SIGNAL_FEATURE_SET_CHANGED);
        return VT_OK;
    });
}

std::int32_t VTWindowAddFileFormat(VTWindowHandle window, const char* extension, const char* extensions,
                                   const char* description)
{
    return callOn<VTWindowWrapper>(window, [=](VTWindowWrapper& wrapper) -> std::int32_t {
        const auto parts = wrapper.parts();
        return parts->window.fileInterface()->addFormat(extension, extensions, description) ? VT_OK
                                                                                            : VT_ERROR_FILE_FORMAT;
    });
}

std::int32_t VTWindowClearFileFormats(VTWindowHandle window)
{
    return callOn<VTWindowWrapper>(window, [](VTWindowWrapper& wrapper) -> std::int32_t {
        wrapper.parts()->window.fileInterface()->clearFormats();
        return VT_OK;
    });
}

// Features and signals ------------------------------------------------------------------------------------------------

#define VISTREL_SET_FEATURE(kind)                                                                                      \
    std::int32_t VTSetFeature##kind(VTWindowHandle window, std::int32_t feature, VT##kind##Callback callback)          \
    {                                                                                                                  \
        return setFeature(window, kind, feature, callback);                                                            \
    }

VISTREL_SET_FEATURE(Command)
VISTREL_SET_FEATURE(Count)
VISTREL_SET_FEATURE(Name)
VISTREL_SET_FEATURE(Query)
VISTREL_SET_FEATURE(Text)
VISTREL_SET_FEATURE(Double)
VISTREL_SET_FEATURE(Size)
VISTREL_SET_FEATURE(NextFrame)
VISTREL_SET_FEATURE(Released)
VISTREL_SET_FEATURE(Notify)
VISTREL_SET_FEATURE(Load)
VISTREL_SET_FEATURE(Save)

#undef VISTREL_SET_FEATURE

std::int32_t VTIsFeatureSet(VTWindowHandle window, std::int32_t feature, bool* set)
{
    return callOn<VTWindowWrapper>(window, VT_ERROR_NULL_POINTER, {set}, [=](VTWindowWrapper& wrapper) -> std::int32_t {
        if (!featureIndex(feature))
            return VT_ERROR_UNKNOWN_FEATURE;
        *set = wrapper.parts()->acquisition->functions()->isSet(feature);
        return VT_OK;
    });
}

std::int32_t VTSendSignal(VTWindowHandle window, std::int32_t signal)
{
    return callOnGate(window, [=](WindowGate& gate) -> std::int32_t {
        if (signal < VT_SIGNAL_ACQUISITION_STATE_CHANGED || signal > VT_SIGNAL_GET_FRAME_NOW)
            return VT_ERROR_UNKNOWN_SIGNAL;
        gate.send(static_cast<VTSignal>(signal));
        return VT_OK;
    });
}
