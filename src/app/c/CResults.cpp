// SPDX-License-Identifier: MIT
// Results in words, for C hosts.
#include <Vistrel/CInterface.h>

#include <cstdint>

const char* VTResultText(std::int32_t result)
{
    switch (result) {
    case VT_OK:
        return "Success.";
    case VT_ERROR_EXCEPTION:
        return "An exception was caught inside the call.";
    case VT_ERROR_NULL_POINTER:
        return "A required pointer is null.";
    case VT_ERROR_NULL_HANDLE:
        return "The handle is null.";
    case VT_ERROR_NULL_RESULT:
        return "The pointer that is to receive a handle is null.";
    case VT_ERROR_WRONG_HANDLE:
        return "The handle is of the wrong kind, or what it stood for has ended.";
    case VT_ERROR_NO_APPLICATION:
        return "No application has been created.";
    case VT_ERROR_WRONG_THREAD:
        return "The call does not come from the thread that created the application.";
    case VT_ERROR_APPLICATION_EXISTS:
        return "The application has been created already.";
    case VT_ERROR_APPLICATION_FAILED:
        return "The application could not be created.";
    case VT_ERROR_APPLICATION_BUSY:
        return "The event loop is running, or the call comes from within a callback.";
    case VT_ERROR_WINDOW_CLOSED:
        return "The window has been closed.";
    case VT_ERROR_SETUP_MODE:
        return "The setup mode has a null text, or a name that exists already.";
    case VT_ERROR_FILE_FORMAT:
        return "An extension of the file format is null, invalid or registered already.";
    case VT_ERROR_MESSAGE_KIND:
        return "There is no such kind of message box.";
    case VT_ERROR_MESSAGE_BUTTONS:
        return "There are no such buttons, or the default button is not one of them.";
    case VT_ERROR_NO_ANSWER:
        return "The message box ended without an answer.";
    case VT_ERROR_ACTION_ARGUMENT:
        return "There is no such place for an action, or a text is null or empty.";
    case VT_ERROR_ACTION_REFUSED:
        return "The window is closing and takes no more actions.";
    case VT_ERROR_UNKNOWN_PROPERTY:
        return "There is no such property.";
    case VT_ERROR_PROPERTY_TYPE:
        return "The property has another type.";
    case VT_ERROR_READ_ONLY:
        return "The property can only be read.";
    case VT_ERROR_WRITE_ONLY:
        return "The property can only be written.";
    case VT_ERROR_OUT_OF_RANGE:
        return "The property cannot have this value or size.";
    case VT_ERROR_BUFFER_TOO_SMALL:
        return "The buffer is too small.";
    case VT_ERROR_PROPERTY_REFUSED:
        return "The value was not accepted.";
    case VT_ERROR_UNKNOWN_FEATURE:
        return "There is no such feature.";
    case VT_ERROR_FEATURE_SIGNATURE:
        return "The feature is registered by another function.";
    case VT_ERROR_UNKNOWN_SIGNAL:
        return "There is no such signal.";
    default:
        return "Unknown result code.";
    }
}
