// SPDX-License-Identifier: see LICENSE

#include "qxbench.h"

#include "qxserializeadaptermemory.h"
#include "qxserializebinary.h"
#include "qxserializestring.h"
#include "qxvaruint64.h"

#if defined(QX_PEER_BOOST_SERIALIZATION)
#include <boost/archive/binary_iarchive.hpp>
#include <boost/archive/binary_oarchive.hpp>
#endif

#if defined(QX_PEER_QT5)
#include <QtCore/QBuffer>
#include <QtCore/QByteArray>
#include <QtCore/QDataStream>
#endif

#include <bit>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace
{

constexpr unsigned int RECORDS = 1000; // in one call of the work: their bytes stay in the cache
constexpr unsigned int ROOM = 100 * RECORDS;

/// What is written and read, in plain types.
struct Sample {
    unsigned short kind;
    unsigned int id;
    double position;
    std::uint64_t count;
    std::string name;
    std::string comment;
};

Sample makeSample(unsigned int i)
{
    return {static_cast<unsigned short>(i * 7),
            i * 2654435761U,
            i * 0.37,
            std::uint64_t{1} << i % 40,
            "name-" + std::to_string(i),
            std::string(i * 11 % 40, static_cast<char>('a' + i % 26))};
}

// Equal for equal records, whatever their types.
template <class Text>
std::uint64_t sumOf(unsigned short kind, unsigned int id, double position, std::uint64_t count,
                    const Text& name, const Text& comment)
{
    return kind + id + std::bit_cast<std::uint64_t>(position) + count + name.length() * 3ULL +
           comment.length() * 5ULL;
}

/// The record as users of the library declare it.
struct OurRecord {
    OurRecord() = default;
    explicit OurRecord(const Sample& sample)
        : kind(sample.kind), id(sample.id), position(sample.position), count(sample.count),
          name(sample.name.c_str()), comment(sample.comment.c_str())
    {}

    void write(qxSerializeAdapter* adapter)
    {
        kind.write(adapter);
        id.write(adapter);
        position.write(adapter);
        count.write(adapter);
        name.write(adapter);
        comment.write(adapter);
    }

    void read(qxSerializeAdapter* adapter)
    {
        kind.read(adapter);
        id.read(adapter);
        position.read(adapter);
        count.read(adapter);
        name.read(adapter);
        comment.read(adapter);
    }

    std::uint64_t sum() const { return sumOf<qxString>(kind, id, position, count, name, comment); }

    qxSerializeBinary<unsigned short> kind;
    qxSerializeBinary<unsigned int> id;
    qxSerializeBinary<double> position;
    qxVarUInt64 count;
    qxSerializeString name;
    qxSerializeString comment;
};

/// The same bytes by hand: nothing is checked.
struct HandRecord : Sample {
    HandRecord() = default;
    explicit HandRecord(const Sample& sample) : Sample(sample) {}

    static unsigned char* putText(unsigned char* place, const std::string& text)
    {
        std::memcpy(place, text.c_str(), text.size() + 1);
        return place + text.size() + 1;
    }

    template <class T>
    static unsigned char* put(unsigned char* place, T swapped)
    {
        std::memcpy(place, &swapped, sizeof(T));
        return place + sizeof(T);
    }

    unsigned char* write(unsigned char* place) const
    {
        place = put(place, __builtin_bswap16(kind));
        place = put(place, __builtin_bswap32(id));
        place = put(place, __builtin_bswap64(std::bit_cast<std::uint64_t>(position)));
        std::uint64_t rest = count;
        for (; rest >= 0x80; rest >>= 7) *place++ = static_cast<unsigned char>(rest | 0x80);
        *place++ = static_cast<unsigned char>(rest);
        return putText(putText(place, name), comment);
    }

    static const unsigned char* takeText(const unsigned char* place, std::string& text)
    {
        const std::size_t length = std::strlen(reinterpret_cast<const char*>(place));
        text.assign(reinterpret_cast<const char*>(place), length);
        return place + length + 1;
    }

    template <class T>
    static T take(const unsigned char*& place)
    {
        T value;
        std::memcpy(&value, place, sizeof(T));
        place += sizeof(T);
        return value;
    }

    const unsigned char* read(const unsigned char* place)
    {
        kind = __builtin_bswap16(take<std::uint16_t>(place));
        id = __builtin_bswap32(take<std::uint32_t>(place));
        position = std::bit_cast<double>(__builtin_bswap64(take<std::uint64_t>(place)));
        count = 0;
        for (unsigned int shift = 0;; shift += 7) {
            const unsigned char byte = *place++;
            count |= static_cast<std::uint64_t>(byte & 0x7F) << shift;
            if (byte < 0x80) break;
        }
        return takeText(takeText(place, name), comment);
    }

    std::uint64_t sum() const { return sumOf(kind, id, position, count, name, comment); }
};

template <class Record>
std::vector<Record> makeRecords()
{
    std::vector<Record> records;
    for (unsigned int i = 0; i < RECORDS; ++i) records.emplace_back(makeSample(i));
    return records;
}

using Block = std::vector<unsigned char>;

void writeOurs(std::vector<OurRecord>& records, Block& block)
{
    qxSerializeAdapterMemory memory(block.data(), ROOM);
    for (OurRecord& record : records) record.write(&memory);
    qxBenchKeep(*block.data());
    if (memory.hasError()) std::abort();
}

void writeByHand(const std::vector<HandRecord>& records, Block& block)
{
    unsigned char* place = block.data();
    for (const HandRecord& record : records) place = record.write(place);
    qxBenchKeep(*block.data());
}

#if defined(QX_PEER_BOOST_SERIALIZATION)

/// Bytes in memory as the standard library's streams see them.
class MemoryBuffer final : public std::streambuf
{
public:
    explicit MemoryBuffer(Block& block)
    {
        char* const begin = reinterpret_cast<char*>(block.data());
        setp(begin, begin + block.size());
        setg(begin, begin, begin + block.size());
    }
};

struct BoostRecord : Sample {
    BoostRecord() = default;
    explicit BoostRecord(const Sample& sample) : Sample(sample) {}

    template <class Archive>
    void serialize(Archive& archive, unsigned int)
    {
        archive& kind& id& position& count& name& comment;
    }

    std::uint64_t sum() const { return sumOf(kind, id, position, count, name, comment); }
};

void writeBoost(std::vector<BoostRecord>& records, Block& block)
{
    MemoryBuffer buffer(block);
    boost::archive::binary_oarchive archive(buffer, boost::archive::no_header | boost::archive::no_codecvt);
    for (BoostRecord& record : records) record.serialize(archive, 0);
    qxBenchKeep(*block.data());
}

#endif

#if defined(QX_PEER_QT5)

struct QtRecord {
    struct Length { // as an unsigned number
        std::size_t length() const { return static_cast<std::size_t>(bytes.size()); }
        const QByteArray& bytes;
    };

    QtRecord() = default;
    explicit QtRecord(const Sample& sample)
        : kind(sample.kind), id(sample.id), position(sample.position), count(sample.count),
          name(QByteArray::fromStdString(sample.name)), comment(QByteArray::fromStdString(sample.comment))
    {}

    std::uint64_t sum() const { return sumOf(kind, id, position, count, Length{name}, Length{comment}); }

    quint16 kind;
    quint32 id;
    double position;
    quint64 count;
    QByteArray name;
    QByteArray comment;
};

void writeQt(const std::vector<QtRecord>& records, QByteArray& bytes)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QDataStream stream(&buffer);
    for (const QtRecord& record : records)
        stream << record.kind << record.id << record.position << record.count << record.name
               << record.comment;
}

#endif

void write(qxBenchCase& work)
{
    work.amount = RECORDS;
    const auto block = std::make_shared<Block>(ROOM);
    work.add("qxbase", [block, records = makeRecords<OurRecord>()]() mutable {
        writeOurs(records, *block);
        return records.size();
    });
    work.add("by hand", [block, records = makeRecords<HandRecord>()] {
        writeByHand(records, *block);
        return records.size();
    });
#if defined(QX_PEER_BOOST_SERIALIZATION)
    work.add("boost binary archive", [block, records = makeRecords<BoostRecord>()]() mutable {
        writeBoost(records, *block);
        return records.size();
    });
#endif
#if defined(QX_PEER_QT5)
    work.add("QDataStream", [bytes = QByteArray(), records = makeRecords<QtRecord>()]() mutable {
        writeQt(records, bytes);
        return records.size();
    });
#endif
}
const qxBenchEntry WRITE("values/write-record", QX_BENCH_NANOSECONDS, write);

void read(qxBenchCase& work)
{
    work.amount = RECORDS;
    const auto ours = std::make_shared<Block>(ROOM);
    auto records = makeRecords<OurRecord>();
    writeOurs(records, *ours);
    work.add("qxbase", [ours, record = OurRecord()]() mutable {
        std::uint64_t sum = 0;
        qxSerializeAdapterMemory memory(ours->data(), ROOM);
        for (unsigned int i = 0; i < RECORDS; ++i) {
            record.read(&memory);
            sum += record.sum();
        }
        return sum;
    });
    work.add("by hand", [ours, record = HandRecord()]() mutable {
        std::uint64_t sum = 0;
        const unsigned char* place = ours->data();
        for (unsigned int i = 0; i < RECORDS; ++i) {
            place = record.read(place);
            sum += record.sum();
        }
        return sum;
    });
#if defined(QX_PEER_BOOST_SERIALIZATION)
    const auto theirs = std::make_shared<Block>(ROOM);
    auto boostRecords = makeRecords<BoostRecord>();
    writeBoost(boostRecords, *theirs);
    work.add("boost binary archive", [theirs, record = BoostRecord()]() mutable {
        std::uint64_t sum = 0;
        MemoryBuffer buffer(*theirs);
        boost::archive::binary_iarchive archive(buffer,
                                                boost::archive::no_header | boost::archive::no_codecvt);
        for (unsigned int i = 0; i < RECORDS; ++i) {
            record.serialize(archive, 0);
            sum += record.sum();
        }
        return sum;
    });
#endif
#if defined(QX_PEER_QT5)
    QByteArray bytes;
    writeQt(makeRecords<QtRecord>(), bytes);
    work.add("QDataStream", [bytes, record = QtRecord()]() mutable {
        std::uint64_t sum = 0;
        QDataStream stream(bytes);
        for (unsigned int i = 0; i < RECORDS; ++i) {
            stream >> record.kind >> record.id >> record.position >> record.count >> record.name >>
                record.comment;
            sum += record.sum();
        }
        return sum;
    });
#endif
}
const qxBenchEntry READ("values/read-record", QX_BENCH_NANOSECONDS, read);

} // namespace
