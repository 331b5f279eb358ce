// SPDX-License-Identifier: MIT
// What a C host cannot do by itself: be the user, and run out of memory.
#include "UserHand.h"

#include <QtWidgets/QApplication>
#include <QtWidgets/QWidget>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <new>

// Not under the race detector, which would take the toolkit's own deletes for this program's.
#if !defined(_WIN32) && !defined(__SANITIZE_THREAD__)
#define VISTREL_CAN_FAIL
#endif

namespace {

#ifdef VISTREL_CAN_FAIL
constexpr bool canFail = true;
#else
constexpr bool canFail = false;
#endif

std::atomic<int> warnings{0};
thread_local int allocationsLeft = 0; // the last of which fails; 0: all are served

void countWarnings(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    std::printf("%s\n", qPrintable(text));
    const bool isOfSystem =
        text.startsWith(QLatin1String("This plugin ")) || text.contains(QLatin1String("_RUNTIME_DIR"));
    if (type != QtDebugMsg && type != QtInfoMsg && !isOfSystem)
        ++warnings;
}

void watchWarnings()
{
    qInstallMessageHandler(countWarnings);
}

Q_COREAPP_STARTUP_FUNCTION(watchWarnings)

} // namespace

void closeByUser(VTWindowHandle window)
{
    void* native = nullptr;
    VTWindowGetNativeHandle(window, &native);
    QWidget::find(reinterpret_cast<WId>(native))->close();
}

int toolkitWarnings()
{
    return warnings;
}

bool failAllocation(int nth)
{
    allocationsLeft = nth;
    return canFail;
}

#ifdef VISTREL_CAN_FAIL
void* operator new(std::size_t size)
{
    if (allocationsLeft > 0 && --allocationsLeft == 0)
        throw std::bad_alloc();
    if (void* const memory = std::malloc(size > 0 ? size : 1))
        return memory;
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return std::malloc(size > 0 ? size : 1);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
#endif
