// SPDX-License-Identifier: see LICENSE

#include "qxprogress.h"

#include "core/qxneverdestroyed.h"
#include "core/qxprocessguard.h"

#include <algorithm>
#include <atomic>
#include <cstdio>

namespace
{

std::atomic<qxProgressInterface*> s_receiver{nullptr};

// Held while the receiver is called, so that it can be removed safely.
const qxMutex& receiverLock()
{
    static qxNeverDestroyed<qxMutex> s_lock;
    return s_lock.get();
}

class qxDefaultProgressReceiver final : public qxProgressInterface
{
public:
    void onProgress(const qxString&, unsigned int, const char* line) override
    {
        std::printf("%s", line);
        std::fflush(stdout);
    }
};

} // namespace

void qxProgress::setReceiver(qxProgressInterface* receiver)
{
    const qxProcessGuard guard(receiverLock());
    s_receiver.store(receiver);
}

qxProgressInterface* qxProgress::getReceiver()
{
    return s_receiver.load();
}

qxProgressInterface* qxProgress::getDefaultReceiver()
{
    static qxNeverDestroyed<qxDefaultProgressReceiver> s_default;
    return &s_default.get();
}

void qxProgress::report(const qxString& text, unsigned int percent)
{
    if (!s_receiver.load(std::memory_order_relaxed)) return;

    const qxProcessGuard guard(receiverLock());
    qxProgressInterface* const receiver = s_receiver.load();
    if (!receiver) return;
    percent = std::min(percent, 100U);
    const qxString line = qxString::str("\r%s:Progress %d%%\t\t", text, percent);
    receiver->onProgress(text, percent, line.getString());
}
