// SPDX-License-Identifier: see LICENSE

#include "settings/qxkeywatch.h"

#include "qxguard.h"
#include "qxthread.h"

#include "core/qxmessage_state.h"
#include "core/qxneverdestroyed.h"
#include "core/qxuserkey.h"
#include "platform/qxplatformfolder.h"
#include "settings/qxkeystore.h"

#include <algorithm>
#include <tuple>

namespace
{

// Milliseconds until the file is looked at without being told: some file systems tell nothing.
constexpr unsigned int LONGEST_WAIT = 1000;
constexpr unsigned int FOREVER = 0xFFFFFFFF;

int compareKeys(const qxKeyRow& left, const qxKeyRow& right)
{
    const auto leftKey = std::tie(left.path, left.name);
    const auto rightKey = std::tie(right.path, right.name);
    return leftKey < rightKey ? -1 : leftKey == rightKey ? 0 : 1;
}

qxKeyChange changeOf(const qxKeyRow* before, const qxKeyRow* after)
{
    const qxKeyRow& key = before ? *before : *after;
    const auto valueOf = [](const qxKeyRow* row) {
        return row ? qxString(row->value.data(), row->value.size()) : qxString();
    };
    return {key.path.c_str(), key.name.c_str(),  valueOf(before),
            valueOf(after),   before != nullptr, after != nullptr};
}

// Both are sorted by their keys.
std::vector<qxKeyChange> differences(const std::vector<qxKeyRow>& before, const std::vector<qxKeyRow>& after)
{
    std::vector<qxKeyChange> changes;
    std::size_t i = 0;
    std::size_t k = 0;
    while (i < before.size() || k < after.size()) {
        const int order = i == before.size() ? 1 : k == after.size() ? -1 : compareKeys(before[i], after[k]);
        const qxKeyRow* const left = order <= 0 ? &before[i++] : nullptr;
        const qxKeyRow* const right = order >= 0 ? &after[k++] : nullptr;
        if (!left || !right || left->value != right->value) changes.push_back(changeOf(left, right));
    }
    return changes;
}

// One call of a receiver, with the reports of a thread's body.
class Call final : public qxProgramExecution
{
public:
    Call(qxKeyReceiverInterface& receiver, const qxKeyChange& change) : m_receiver(receiver), m_change(change)
    {}

protected:
    void onProgramExecution() override { m_receiver.onKeyChange(m_change); }

private:
    qxKeyReceiverInterface& m_receiver;
    const qxKeyChange& m_change;
};

} // namespace

// The thread, and what it has told so far.
class qxKeyWatch::Worker final : public qxThread
{
public:
    explicit Worker(qxKeyWatch& owner) : m_owner(owner)
    {
        m_watch = openWatch(); // before the values are taken, so that no change is missed between the two
        takeValues();
    }
    ~Worker() noexcept(false) override
    {
        qxThread::stop(1);
        qxPlatformFolderWatchClose(m_watch);
    }

    bool isReady() const { return m_watch != nullptr; }

    /// With the owner's lock held.
    void wake(bool isOther)
    {
        m_isOther = m_isOther || isOther;
        if (m_watch) qxPlatformFolderWatchWake(m_watch);
    }

protected:
    void process() override
    {
        while (waitForChange()) {
            qxKeyStore::get().refresh();
            if (m_version == qxUserKeyVersion()) continue;
            const std::vector<qxKeyRow> before = std::move(m_values);
            takeValues();
            for (const qxKeyChange& change : differences(before, m_values)) m_owner.tell(change);
        }
    }

private:
    static qxPlatformFolderWatch* openWatch()
    {
        int error;
        return qxPlatformFolderWatchOpen(qxKeyStore::get().getFile().c_str(), error);
    }

    void takeValues()
    {
        qxKeyStore::get().refresh();
        m_version = qxUserKeyVersion(); // before the values: at worst they are compared once more
        m_values = qxKeyStore::get().getRows();
    }

    // False when it is time to end.
    bool waitForChange()
    {
        if (m_watch)
            qxPlatformFolderWatchWait(m_watch, LONGEST_WAIT);
        else
            qxDelayFunction(LONGEST_WAIT); // the system has no watch to give at present
        bool isOther;
        {
            const qxBodyGuard guard(m_owner.m_change);
            if (!m_owner.isAtWork(*this)) return false;
            isOther = m_isOther || !m_watch || qxPlatformFolderWatchIsBroken(m_watch);
            m_isOther = false;
        }
        if (isOther) exchangeWatch();
        return true;
    }

    void exchangeWatch()
    {
        qxPlatformFolderWatch* watch = openWatch();
        {
            const qxBodyGuard guard(m_owner.m_change);
            std::swap(watch, m_watch);
        }
        qxPlatformFolderWatchClose(watch);
    }

    qxKeyWatch& m_owner;
    qxPlatformFolderWatch* m_watch = nullptr; // exchanged with the owner's lock held
    bool m_isOther = false;                   // guarded by the owner's lock
    unsigned int m_version = 0;
    std::vector<qxKeyRow> m_values; // as they were told
};

qxKeyReceiverInterface::~qxKeyReceiverInterface()
{
    qxKeyWatch::get().remove(this);
}

qxKeyWatch& qxKeyWatch::get()
{
    static qxNeverDestroyed<qxKeyWatch> watch;
    return watch.get();
}

bool qxKeyWatch::isRegistered(const qxKeyReceiverInterface* receiver) const
{
    return std::find(m_receivers.begin(), m_receivers.end(), receiver) != m_receivers.end();
}

bool qxKeyWatch::add(qxKeyReceiverInterface* receiver)
{
    std::unique_ptr<Worker> ended; // waits for its thread when it goes, without the locks
    const qxMessageLock messages;  // the worker asks the store
    const qxBodyGuard guard(m_change);
    if (!receiver || isRegistered(receiver)) return receiver != nullptr;
    if (!m_receivers.empty()) {
        m_receivers.push_back(receiver);
        return true;
    }
    ended = std::move(m_worker);
    auto worker = std::make_unique<Worker>(*this);
    if (!worker->isReady()) return false;
    m_receivers.push_back(receiver);
    m_worker = std::move(worker);
    m_worker->run(0);
    return true;
}

void qxKeyWatch::remove(qxKeyReceiverInterface* receiver)
{
    std::unique_ptr<Worker> ended;
    const qxBodyGuard guard(m_change);
    std::erase(m_receivers, receiver);
    const bool isSelf = m_callingThread == qxThread::getThreadID();
    while (m_calling == receiver && receiver && !isSelf) m_change.waitAndLock(FOREVER, 1);
    if (!m_receivers.empty() || !m_worker) return;
    m_worker->wake(false);
    if (!isSelf) ended = std::move(m_worker); // or else the next one that adds takes it away
}

void qxKeyWatch::lookAgain()
{
    const qxBodyGuard guard(m_change);
    if (m_worker) m_worker->wake(true);
}

void qxKeyWatch::tell(const qxKeyChange& change)
{
    std::vector<qxKeyReceiverInterface*> receivers;
    {
        const qxBodyGuard guard(m_change);
        receivers = m_receivers;
    }
    for (qxKeyReceiverInterface* const receiver : receivers) call(receiver, change);
}

void qxKeyWatch::call(qxKeyReceiverInterface* receiver, const qxKeyChange& change)
{
    {
        const qxBodyGuard guard(m_change);
        if (!isRegistered(receiver)) return;
        m_calling = receiver;
        m_callingThread = qxThread::getThreadID();
    }
    Call(*receiver, change).execute();
    const qxBodyGuard guard(m_change);
    m_calling = nullptr;
    m_callingThread = 0;
    m_change.fire();
}
