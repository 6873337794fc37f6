// SPDX-License-Identifier: see LICENSE

#include "qxguid.h"

#include "qxmessage.h"
#include "qxthread.h"
#include "qxtime.h"
#include "serialize/qxguidtimestamps.h"

#include "platform/qxplatformerror.h"
#include "platform/qxplatformmachine.h"

#include <string>

namespace
{

constexpr unsigned int TIME_BASED = 0x1000; // version
constexpr unsigned int RANDOM_BASED = 0x4000;
constexpr unsigned int SORTABLE = 0x7000;
constexpr unsigned char VARIANT = 0x80;

// Time-based identifiers count steps of 100 ns from 1582-10-15 on.
constexpr double STEPS_PER_SECOND = 1e7;
constexpr double SECONDS_FROM_1582_TO_1970 = 12219292800.0;

// Sortable ones count milliseconds from 1970 on, and here the 4096th parts of one in the next twelve bits.
constexpr double PARTS_PER_SECOND = 1000.0 * 4096.0;

constinit qxGuidTimestamps s_timestamps;
constinit qxGrowingNumber s_sortable;

qxUInt64 takeTimestamp(unsigned int threadID)
{
    const double now = (qxTime::systemSeconds() + SECONDS_FROM_1582_TO_1970) * STEPS_PER_SECOND;
    return s_timestamps.take(qxThread::getThreadEnum(), threadID, static_cast<qxUInt64>(now));
}

// 48 bits from the identity of the machine, mixed so that it cannot be read from them. The highest byte says that this
// is no address of a network device, so the whole is never 0.
qxUInt64 makeNode()
{
    qxUInt64 node = 0xCBF29CE484222325;
    for (const char c : qxPlatformMachineIdentity()) {
        node = (node ^ static_cast<unsigned char>(c)) * 0x100000001B3;
        node ^= node >> 29;
    }
    return node | qxUInt64{1} << 40;
}

qxUInt64 getNode()
{
    static const qxUInt64 node = makeNode();
    return node;
}

unsigned char byteOf(qxUInt64 value, unsigned int shift)
{
    return static_cast<unsigned char>(value >> shift & 0xFF);
}

// False, after a warning, when the system has none.
bool fillRandomly(void* bytes, std::size_t count)
{
    int error = 0;
    if (qxPlatformRandomBytes(bytes, count, error)) return true;
    qxMessage::message(QX_LEVEL_WARNING, "qxGUID could not get random bytes (%s)",
                       qxPlatformErrorText(error).c_str());
    return false;
}

unsigned short versioned(unsigned int bits, unsigned int version)
{
    return static_cast<unsigned short>((bits & 0x0FFF) | version);
}

} // namespace

void qxGUID::generate()
{
    *this = generateGUID();
}

qxGUID qxGUID::generateGUID()
{
    const unsigned int threadID = qxThread::getThreadID();
    const qxUInt64 timestamp = takeTimestamp(threadID);
    const qxUInt64 node = getNode();
    return {static_cast<unsigned int>(timestamp & 0xFFFFFFFF),
            static_cast<unsigned short>(timestamp >> 32 & 0xFFFF),
            versioned(static_cast<unsigned int>(timestamp >> 48), TIME_BASED),
            qxGUIDBytes(byteOf((threadID & qxGuidTimestamps::SEQUENCE_MASK) | VARIANT << 8, 8),
                        byteOf(threadID, 0), byteOf(node, 40), byteOf(node, 32), byteOf(node, 24),
                        byteOf(node, 16), byteOf(node, 8), byteOf(node, 0))};
}

qxGUID qxGUID::generateGUID4()
{
    qxGUIDRecord record;
    if (!fillRandomly(&record, sizeof record)) return {};
    record.Data3 = versioned(record.Data3, RANDOM_BASED);
    record.Data4[0] = static_cast<unsigned char>((record.Data4[0] & 0x3F) | VARIANT);
    return record;
}

qxGUID qxGUID::generateGUID7()
{
    qxGUIDRecord record;
    if (!fillRandomly(&record.Data4, sizeof record.Data4)) return {};
    const qxUInt64 time =
        s_sortable.takeFrom(static_cast<qxUInt64>(qxTime::systemSeconds() * PARTS_PER_SECOND));
    record.Data1 = static_cast<unsigned int>(time >> 28 & 0xFFFFFFFF);
    record.Data2 = static_cast<unsigned short>(time >> 12 & 0xFFFF);
    record.Data3 = versioned(static_cast<unsigned int>(time & 0x0FFF), SORTABLE);
    record.Data4[0] = static_cast<unsigned char>((record.Data4[0] & 0x3F) | VARIANT);
    return record;
}

qxTime qxGUID::getGenerationTime() const
{
    if (!isTimeBased()) return qxTime(0.0);
    qxUInt64 timestamp;
    qxUInt64 rest;
    getGUID(timestamp, rest);
    timestamp &= 0x0FFFFFFFFFFFFFFF;
    return qxTime(static_cast<double>(timestamp) / STEPS_PER_SECOND - SECONDS_FROM_1582_TO_1970);
}
