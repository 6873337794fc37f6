// Reads any bytes as values, the kinds of which the first bytes choose: from memory, byte by byte, and after all was
// written or given back, which must make no difference.
// SPDX-License-Identifier: see LICENSE

#include "qxmessage.h"
#include "qxserializeadaptermemory.h"
#include "qxserializebinary.h"
#include "qxserializeguid.h"
#include "qxserializestring.h"
#include "qxserializevector.h"
#include "qxvaruint64.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <vector>

namespace
{

using Bytes = std::vector<unsigned char>;
using Values = std::vector<std::unique_ptr<qxSerializeData>>;

enum Kind : unsigned int { FIRST_KIND };

void require(bool condition)
{
    if (!condition) std::abort();
}

/// A stream of single bytes that ends as memory does.
class SingleBytes final : public qxSerializeAdapter
{
public:
    explicit SingleBytes(const Bytes& bytes) : m_bytes(bytes) {}

    Bytes written;

protected:
    using qxSerializeAdapter::read_imp;
    using qxSerializeAdapter::write_imp;
    void write_imp(unsigned char byte) override { written.push_back(byte); }
    unsigned char read_imp() override
    {
        if (m_next < m_bytes.size()) return m_bytes[m_next++];
        setError("the end");
        return 0;
    }
    unsigned char hasData_imp() override { return m_next < m_bytes.size(); }

private:
    const Bytes& m_bytes;
    std::size_t m_next = 0;
};

template <class T>
std::unique_ptr<qxSerializeData> number(unsigned char bigEndian)
{
    return std::make_unique<qxSerializeBinary<T>>(T(), bigEndian);
}

template <class T>
std::unique_ptr<qxSerializeData> value(unsigned char argument)
{
    return std::make_unique<T>(argument);
}

std::unique_ptr<qxSerializeData> integer(unsigned char)
{
    return std::make_unique<qxVarUInt64>();
}

std::unique_ptr<qxSerializeData> guid(unsigned char)
{
    return std::make_unique<qxSerializeGUID>();
}

using Maker = std::unique_ptr<qxSerializeData> (*)(unsigned char argument);
const Maker MAKERS[] = {
    number<unsigned char>,
    number<unsigned short>,
    number<wchar_t>,
    number<unsigned int>,
    number<qxUInt64>,
    number<float>,
    number<double>,
    number<Kind>,
    integer,
    value<qxSerializeString>,
    guid,
    value<qxSerializeVec2>,
    value<qxSerializeVec3>,
    value<qxSerializeVec4>,
    value<qxSerializeMatrix3>,
    value<qxSerializeMatrix4>,
};

// One value for each byte: its low half the kind, its high half the byte order or the terminator.
Values makeValues(const Bytes& choices)
{
    Values values;
    for (const unsigned char choice : choices)
        values.push_back(MAKERS[choice % std::size(MAKERS)](static_cast<unsigned char>(choice >> 4)));
    // Only the last text may go without a terminator: what follows it would be part of it.
    auto* const last = values.empty() ? nullptr : dynamic_cast<qxSerializeString*>(values.back().get());
    if (last && last->getTerminator() == 15) last->useTerminator(0);
    return values;
}

void readValues(const Values& values, qxSerializeAdapter& adapter)
{
    for (const auto& one : values) one->read(&adapter);
}

Bytes writeValues(const Values& values)
{
    unsigned int size = 0;
    for (const auto& one : values) size += one->getDataSize(nullptr);
    Bytes bytes(size);
    qxSerializeAdapterMemory memory(bytes.data(), size);
    SingleBytes single(bytes);
    for (const auto& one : values) {
        one->write(&memory);
        one->write(&single);
    }
    require(!memory.hasError());
    bytes.resize(memory.getCurrentPos());
    require(bytes == single.written);
    return bytes;
}

// Integers with the top bit do not come back.
bool comeBack(const Values& values)
{
    return std::none_of(values.begin(), values.end(), [](const auto& one) {
        const auto* const integer = dynamic_cast<const qxVarUInt64*>(one.get());
        return integer && *integer >> 63 != 0;
    });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qxMessage::setMessageLevel(QX_LEVEL_ALWAYS);
    const std::size_t count = size == 0 ? 0 : std::min<std::size_t>(data[0] % 32U, size - 1);
    if (count == 0) return 0;
    const Bytes choices(data + 1, data + 1 + count);
    Bytes content(data + 1 + count, data + size);

    const Values values = makeValues(choices);
    qxSerializeAdapterMemory memory(content.data(), static_cast<unsigned int>(content.size()));
    readValues(values, memory);
    const Bytes bytes = writeValues(values);

    const Values others = makeValues(choices);
    SingleBytes single(content);
    readValues(others, single);
    require(writeValues(others) == bytes);
    require(single.hasData() == memory.hasData());
    if (!comeBack(values)) return 0;

    const Values again = makeValues(choices);
    Bytes copy = bytes;
    qxSerializeAdapterMemory written(copy.data(), static_cast<unsigned int>(copy.size()));
    readValues(again, written);
    require(writeValues(again) == bytes && !written.hasError() && !written.hasData());

    qxSerializeAdapterMemory target(nullptr, 0);
    for (auto one = values.rbegin(); one != values.rend(); ++one) (*one)->pushBack(&target);
    const Values givenBack = makeValues(choices);
    readValues(givenBack, target);
    require(writeValues(givenBack) == bytes && !target.hasData());
    return 0;
}
