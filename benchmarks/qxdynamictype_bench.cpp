// SPDX-License-Identifier: see LICENSE

#include "qxbench.h"

#include "qxdynamictypes.h"
#include "qxserializeadaptermemory.h"
#include "qxserializebinary.h"
#include "qxserializestring.h"
#include "qxvaruint64.h"

#include <any>
#include <memory>
#include <string>
#include <vector>
#if defined(QX_PEER_QT5)
#include <QtCore/QVariant>
#endif

namespace
{

constexpr unsigned int VALUES = 1000;
constexpr const char* TEXT = "a text of a usual length, neither short nor long";

template <class Value, class Source>
qxBenchWork makeAndCopy(Source source)
{
    return [source] {
        for (unsigned int i = 0; i < VALUES; ++i) {
            const Value value(source);
            qxBenchKeep(value);
            const Value copy(value);
            qxBenchKeep(copy);
        }
        return VALUES;
    };
}

void number(qxBenchCase& work)
{
    work.amount = VALUES;
    work.add("qxbase", makeAndCopy<qxDynamicType>(0.5));
    work.add("std::any", makeAndCopy<std::any>(0.5));
#if defined(QX_PEER_QT5)
    work.add("QVariant", makeAndCopy<QVariant>(0.5));
#endif
}
const qxBenchEntry NUMBER("dynamic/number", QX_BENCH_NANOSECONDS, number);

void text(qxBenchCase& work)
{
    work.amount = VALUES;
    work.add("qxbase", makeAndCopy<qxDynamicType>(qxString(TEXT)));
    work.add("std::any", makeAndCopy<std::any>(std::string(TEXT)));
#if defined(QX_PEER_QT5)
    work.add("QVariant", makeAndCopy<QVariant>(QString(TEXT)));
#endif
}
const qxBenchEntry MAKE_TEXT("dynamic/text", QX_BENCH_NANOSECONDS, text);

template <class Value>
qxBenchWork compare(const Value& left, const Value& right)
{
    return [left, right] {
        std::uint64_t equal = 0;
        for (unsigned int i = 0; i < VALUES; ++i) {
            qxBenchKeep(left);
            equal += left == right ? 1 : 0;
        }
        return equal;
    };
}

void compareTexts(qxBenchCase& work)
{
    work.amount = VALUES;
    work.add("qxbase", compare(qxDynamicType(TEXT), qxDynamicType(TEXT)));
    work.add("std::string", compare(std::string(TEXT), std::string(TEXT)));
#if defined(QX_PEER_QT5)
    work.add("QVariant", compare(QVariant(QString(TEXT)), QVariant(QString(TEXT))));
#endif
}
const qxBenchEntry COMPARE("dynamic/compare-text", QX_BENCH_NANOSECONDS, compareTexts);

/// The same bytes as values of known types.
struct Known {
    explicit Known(double value) : tag("num"), length(8), number(value) {}

    void write(qxSerializeAdapter* adapter)
    {
        tag.write(adapter);
        length.write(adapter);
        number.write(adapter);
    }

    void read(qxSerializeAdapter* adapter)
    {
        tag.read(adapter);
        length.read(adapter);
        number.read(adapter);
    }

    qxSerializeString tag;
    qxVarUInt64 length;
    qxSerializeBinary<double> number;
};

/// Room for the values on a stream.
struct Room {
    Room() : bytes(64 * VALUES), stream(bytes.data(), static_cast<unsigned int>(bytes.size())) {}

    std::vector<unsigned char> bytes;
    qxSerializeAdapterMemory stream;
};

template <class Value>
void writeAll(Room& room)
{
    Value value(0.5);
    room.stream.seek(0, QX_ORIGIN_START);
    for (unsigned int i = 0; i < VALUES; ++i) value.write(&room.stream);
}

template <class Value>
qxBenchWork write()
{
    return [room = std::make_shared<Room>()] {
        writeAll<Value>(*room);
        return VALUES;
    };
}

template <class Value>
qxBenchWork read()
{
    const auto room = std::make_shared<Room>();
    writeAll<Value>(*room);
    return [room] {
        Value value(0.0);
        room->stream.seek(0, QX_ORIGIN_START);
        for (unsigned int i = 0; i < VALUES; ++i) {
            value.read(&room->stream);
            qxBenchKeep(value);
        }
        return VALUES;
    };
}

void writeNumbers(qxBenchCase& work)
{
    work.amount = VALUES;
    work.add("qxbase", write<qxDynamicType>());
    work.add("of known type", write<Known>());
}
const qxBenchEntry WRITE("dynamic/write-number", QX_BENCH_NANOSECONDS, writeNumbers);

void readNumbers(qxBenchCase& work)
{
    work.amount = VALUES;
    work.add("qxbase", read<qxDynamicType>());
    work.add("of known type", read<Known>());
}
const qxBenchEntry READ("dynamic/read-number", QX_BENCH_NANOSECONDS, readNumbers);

} // namespace
