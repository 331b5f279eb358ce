// SPDX-License-Identifier: MIT
// A source that asks the test for each lock.
#pragma once

#include "support/FakeSources.h"

class AskingSource : public PullSource
{
public:
    explicit AskingSource(std::function<Vistrel::ScopedLock()> ask)
        : PullSource([](Vistrel::RawImage*, Vistrel::ScopedLock*) { return false; }), m_ask(std::move(ask))
    {
    }
    Vistrel::ScopedLock getFrameLock(const Vistrel::RawImage&) override { return m_ask(); }

private:
    std::function<Vistrel::ScopedLock()> m_ask;
};

/// A lock that keeps nothing.
class FreeLock : public Vistrel::AbstractLock
{
};
