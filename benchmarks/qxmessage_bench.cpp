// SPDX-License-Identifier: see LICENSE

#include "qxbench.h"

#include "qxmessage.h"

#include <atomic>
#if defined(QX_PEER_SPDLOG)
#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>
#endif

namespace
{

constexpr int TIMES = 10000;

// Takes every message and does nothing with it, as the peer's null sink.
class EmptyReceiver : public qxMessageReceiverInterface
{
public:
    void onMessage(const qxString&, qxMessageLevel, const char*) override {}
};

void installEmptyReceiver()
{
    static EmptyReceiver receiver; // keeps the default receiver away, which would write to standard output
    qxMessage::addMessageReceiver(&receiver);
    qxMessage::setMessageLevel(QX_LEVEL_NOTICE);
}

#if defined(QX_PEER_SPDLOG)
spdlog::logger& nullLogger()
{
    static spdlog::logger logger("bench", std::make_shared<spdlog::sinks::null_sink_mt>());
    return logger;
}
#endif

void dropped(qxBenchCase& work)
{
    installEmptyReceiver();
    work.amount = TIMES;
    work.add("qxbase", [] {
        for (int i = 0; i < TIMES; ++i) qxMessage::message(QX_LEVEL_DEBUG, "entry %d of %s", i, "table");
        return std::uint64_t{TIMES};
    });
    work.add("load and compare", [] {
        static std::atomic<unsigned int> level{QX_LEVEL_NOTICE};
        unsigned int sent = 0;
        for (int i = 0; i < TIMES; ++i) {
            if (level.load(std::memory_order_relaxed) <= QX_LEVEL_DEBUG) ++sent;
            qxBenchKeep(sent);
        }
        return std::uint64_t{TIMES} + sent;
    });
#if defined(QX_PEER_SPDLOG)
    work.add("spdlog", [] {
        for (int i = 0; i < TIMES; ++i) nullLogger().debug("entry {} of {}", i, "table");
        return std::uint64_t{TIMES};
    });
#endif
}
const qxBenchEntry DROPPED("message/dropped", QX_BENCH_NANOSECONDS, dropped);

void sent(qxBenchCase& work)
{
    installEmptyReceiver();
    work.amount = TIMES;
    work.add("qxbase", [] {
        for (int i = 0; i < TIMES; ++i) qxMessage::message(QX_LEVEL_WARNING, "entry %d of %s", i, "table");
        return std::uint64_t{TIMES};
    });
#if defined(QX_PEER_SPDLOG)
    work.add("spdlog null sink", [] {
        for (int i = 0; i < TIMES; ++i) nullLogger().warn("entry {} of {}", i, "table");
        return std::uint64_t{TIMES};
    });
#endif
}
const qxBenchEntry SENT("message/into-empty-receiver", QX_BENCH_NANOSECONDS, sent);

} // namespace
