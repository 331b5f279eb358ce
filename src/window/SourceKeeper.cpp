// SPDX-License-Identifier: MIT
// Keeps the sources of windows alive while anything calls them.
#include "window/SourceKeeper.h"

#include "base/Log.h"

#include <QtCore/QObject>
#include <QtCore/QThread>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <set>
#include <utility>

namespace Vistrel {

namespace {

constexpr std::chrono::seconds patience{3}; // a camera may wait that long for its next frame

class SourceKeeper : public QObject
{
    Q_OBJECT

public:
    explicit SourceKeeper(ScopedAcquisitionInterface&& source);
    ~SourceKeeper() override;

    AbstractAcquisitionInterface* source() const { return m_source.get(); }
    void letGo();

    bool isReturned = false; // nobody calls the source any more; guarded by the list's mutex

public Q_SLOTS:
    void end();

private:
    ScopedAcquisitionInterface m_source;
};

struct KeeperList
{
    std::mutex mutex; // guards all below
    std::condition_variable returned;
    std::set<SourceKeeper*> keepers; // of the sources that are still to be deleted
};

KeeperList& keeperList()
{
    static KeeperList& list = *new KeeperList; // never freed: threads may still use it while the process ends
    return list;
}

SourceKeeper::SourceKeeper(ScopedAcquisitionInterface&& source) : m_source(std::move(source))
{
    KeeperList& list = keeperList();
    const std::lock_guard<std::mutex> guard(list.mutex);
    list.keepers.insert(this);
}

SourceKeeper::~SourceKeeper()
{
    KeeperList& list = keeperList();
    const std::lock_guard<std::mutex> guard(list.mutex);
    list.keepers.erase(this);
}

void SourceKeeper::letGo()
{
    if (QThread::currentThread() == thread()) {
        delete this;
        return;
    }
    KeeperList& list = keeperList();
    const std::lock_guard<std::mutex> guard(list.mutex);
    if (list.keepers.count(this) == 0)
        return;
    isReturned = true;
    list.returned.notify_all();
    // Posted under the mutex. The receiver takes it too, so it runs after the post is complete.
    QMetaObject::invokeMethod(this, "end", Qt::QueuedConnection);
}

void SourceKeeper::end()
{
    {
        const std::lock_guard<std::mutex> guard(keeperList().mutex);
    }
    delete this;
}

} // namespace

std::shared_ptr<AbstractAcquisitionInterface> keepSource(ScopedAcquisitionInterface&& source)
{
    auto* const keeper = new SourceKeeper(std::move(source));
    return {keeper->source(), [keeper](AbstractAcquisitionInterface*) { keeper->letGo(); }};
}

void leaveSources()
{
    KeeperList& list = keeperList();
    const auto deadline = std::chrono::steady_clock::now() + patience;
    std::unique_lock<std::mutex> guard(list.mutex);
    const auto returned = [&] {
        return std::find_if(list.keepers.begin(), list.keepers.end(),
                            [](const SourceKeeper* keeper) { return keeper->isReturned; });
    };
    while (!list.keepers.empty() &&
           list.returned.wait_until(guard, deadline, [&] { return returned() != list.keepers.end(); })) {
        SourceKeeper* const keeper = *returned();
        guard.unlock(); // the source is deleted without the mutex
        delete keeper;
        guard.lock();
    }
    for (std::size_t i = 0; i < list.keepers.size(); ++i)
        reportLine("Vistrel::Application: A source whose call has not returned is left alone.");
    list.keepers.clear();
}

} // namespace Vistrel

#include "SourceKeeper.moc"
