// SPDX-License-Identifier: see LICENSE

#include "qxconf.h"
#include "qxoutput.h"

#include "qxevent.h"
#include "qxguard.h"

#include <memory>
#include <utility>

namespace
{

constexpr unsigned int LOOK_MILLISECONDS = 100; // until the interrupt key is noticed

/// Collects changes for the thread that prints them.
class Changes final : public qxKeyReceiverInterface
{
public:
    /// With an empty name the changes of all keys.
    Changes(const qxConfKey& key, bool hasKey) : m_key(key), m_hasKey(hasKey) {}
    ~Changes() override { qxKeyDatabase::removeReceiver(this); }

    void onKeyChange(const qxKeyChange& change) override
    {
        if (m_hasKey && !isWanted(change)) return;
        const qxBodyGuard guard(*m_event);
        m_lines += confKeyText(change.path, change.name) + ": " +
                   confValueText(change.existed != 0, change.before) + " -> " +
                   confValueText(change.exists != 0, change.after) + "\n";
        m_event->fire();
    }

    /// What has come since the last call; waits a moment when nothing has.
    std::string take()
    {
        const qxBodyGuard guard(*m_event);
        if (m_lines.empty()) m_event->waitAndLock(LOOK_MILLISECONDS, 1);
        return std::exchange(m_lines, std::string());
    }

private:
    bool isWanted(const qxKeyChange& change) const
    {
        const qxString& path = m_key.path.isEmpty() ? m_standard : m_key.path;
        // A path may begin at any depth of the document.
        const bool isPath = change.path == path || change.path.isLast("/" + path);
        return isPath && change.name == m_key.name;
    }

    const qxConfKey m_key;
    const bool m_hasKey;
    const qxString m_standard = qxKeyDatabase::getDefaultRegistry();
    const std::unique_ptr<qxEvent> m_event = std::make_unique<qxEvent>(); // guards the lines
    std::string m_lines;
};

} // namespace

qxStatus runConfWatch(qxReport& report, const qxCommandLine& line)
{
    const bool hasKey = line.getArgumentCount() != 0;
    const qxConfKey key = hasKey ? parseConfKey(line.getArgumentText(0)) : qxConfKey();
    const qxStatus status = openSettings(report, line);
    if (status != qxStatus::DONE) return status;
    Changes changes(key, hasKey);
    if (!qxKeyDatabase::addReceiver(&changes)) throw qxFileError("the system can not watch files at present");
    report.printNote("watching '" + std::string(viewOf(qxKeyDatabase::getLocalRegistryURL())) + "'");
    while (!isInterrupted()) {
        writeOutput(changes.take());
        flushOutput();
    }
    return qxStatus::INTERRUPTED;
}
