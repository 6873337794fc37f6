// SPDX-License-Identifier: see LICENSE

#include "qxbench.h"

#include "qxguid.h"

#include <string>
#include <thread>
#include <vector>
#if defined(QX_PEER_LIBUUID)
#include <uuid/uuid.h>
#endif
#if defined(QX_PEER_POCO)
#include <Poco/UUIDGenerator.h>
#endif
#if defined(QX_PEER_QT5)
#include <QtCore/QUuid>
#endif

namespace
{

constexpr unsigned int IDS = 1000;
constexpr unsigned int DIGITS_START = 1; // behind the brace
constexpr std::size_t BARE_LENGTH = 36;

void generate(qxBenchCase& work)
{
    work.amount = IDS;
    work.add("qxbase", [] {
        for (unsigned int i = 0; i < IDS; ++i) qxBenchKeep(qxGUID::generateGUID());
        return IDS;
    });
#if defined(QX_PEER_POCO)
    work.add("POCO", [&generator = Poco::UUIDGenerator::defaultGenerator()] {
        for (unsigned int i = 0; i < IDS; ++i) qxBenchKeep(generator.create());
        return IDS;
    });
#endif
#if defined(QX_PEER_LIBUUID)
    work.add("libuuid", [] {
        for (unsigned int i = 0; i < IDS; ++i) {
            uuid_t id;
            uuid_generate_time(id);
            qxBenchKeep(id);
        }
        return IDS;
    });
#endif
}
const qxBenchEntry GENERATE("guid/by-time", QX_BENCH_NANOSECONDS, generate);

template <class Generate>
std::uint64_t generateOnTwoThreads(Generate generate)
{
    const auto many = [&generate] {
        for (unsigned int i = 0; i < 100 * IDS; ++i) qxBenchKeep(generate());
    };
    std::thread other(many);
    many();
    other.join();
    return IDS;
}

void generateTwice(qxBenchCase& work)
{
    work.amount = 200 * IDS;
    work.add("qxbase", [] { return generateOnTwoThreads([] { return qxGUID::generateGUID(); }); });
#if defined(QX_PEER_POCO)
    work.add("POCO", [&generator = Poco::UUIDGenerator::defaultGenerator()] {
        return generateOnTwoThreads([&generator] { return generator.create(); });
    });
#endif
}
const qxBenchEntry GENERATE_TWICE("guid/by-time-on-two-threads", QX_BENCH_NANOSECONDS, generateTwice);

std::vector<qxGUID> makeIds()
{
    std::vector<qxGUID> ids;
    for (qxUInt64 i = 1; i <= IDS; ++i) ids.push_back(qxGUID(i * 0x9E3779B97F4A7C15, i * 0xC2B2AE3D27D4EB4F));
    return ids;
}

std::vector<std::string> makeTexts()
{
    std::vector<std::string> texts;
    for (const qxGUID& id : makeIds()) texts.push_back(id.asString().getString());
    return texts;
}

// Only a few of the characters: a checksum of all would cost as much as the writing.
std::uint64_t sample(const char* bare)
{
    return static_cast<unsigned char>(bare[0]) + static_cast<unsigned char>(bare[16]) * 3U +
           static_cast<unsigned char>(bare[35]) * 7U;
}

void writeText(qxBenchCase& work)
{
    work.amount = IDS;
    work.add("qxbase", [ids = makeIds()] {
        std::uint64_t sum = 0;
        for (const qxGUID& id : ids) {
            const qxString text = id.asString();
            sum += sample(text.getString() + DIGITS_START);
        }
        return sum;
    });
#if defined(QX_PEER_LIBUUID)
    std::vector<std::vector<unsigned char>> ids(IDS, std::vector<unsigned char>(16));
    const std::vector<std::string> texts = makeTexts();
    for (unsigned int i = 0; i < IDS; ++i)
        uuid_parse(texts[i].substr(DIGITS_START, BARE_LENGTH).c_str(), ids[i].data());
    work.add("libuuid, into a buffer", [ids] {
        std::uint64_t sum = 0;
        for (const std::vector<unsigned char>& id : ids) {
            char text[BARE_LENGTH + 1];
            uuid_unparse_upper(id.data(), text);
            sum += sample(text);
        }
        return sum;
    });
#endif
}
const qxBenchEntry WRITE_TEXT("guid/text-out", QX_BENCH_NANOSECONDS, writeText);

void readText(qxBenchCase& work)
{
    work.amount = IDS;
    work.add("qxbase", [texts = makeTexts()] {
        std::uint64_t sum = 0;
        for (const std::string& text : texts) {
            const qxGUID id(text.c_str(), text.size());
            sum += id.getConstGUID().Data1 + id.getConstGUID().Data4[7];
        }
        return sum;
    });
#if defined(QX_PEER_QT5)
    work.add("QUuid", [texts = makeTexts()] {
        std::uint64_t sum = 0;
        for (const std::string& text : texts) {
            const QUuid id = QUuid::fromString(QLatin1String(text.c_str(), static_cast<int>(text.size())));
            sum += id.data1 + id.data4[7];
        }
        return sum;
    });
#endif
#if defined(QX_PEER_LIBUUID)
    std::vector<std::string> bare;
    for (const std::string& text : makeTexts()) bare.push_back(text.substr(DIGITS_START, BARE_LENGTH));
    work.add("libuuid", [bare] {
        std::uint64_t sum = 0;
        for (const std::string& text : bare) {
            uuid_t id;
            uuid_parse(text.c_str(), id);
            sum += (static_cast<unsigned int>(id[0]) << 24 | static_cast<unsigned int>(id[1]) << 16 |
                    static_cast<unsigned int>(id[2]) << 8 | id[3]) +
                   id[15];
        }
        return sum;
    });
#endif
}
const qxBenchEntry READ_TEXT("guid/text-in", QX_BENCH_NANOSECONDS, readText);

} // namespace
