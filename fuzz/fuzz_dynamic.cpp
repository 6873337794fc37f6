// Reads any bytes as a dynamic value or, behind a first byte 'J' or 'X', as JSON or XML. What is taken is gone through
// with all that is in it and comes back from all forms.
// SPDX-License-Identifier: see LICENSE

#include "qxdynamictypecontainer.h"
#include "qxdynamictypes.h"
#include "qxmessage.h"
#include "qxserializeadaptermemory.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace
{

void require(bool condition)
{
    if (!condition) std::abort();
}

/// A stream of single bytes.
class SingleBytes final : public qxSerializeAdapter
{
public:
    explicit SingleBytes(std::string bytes = {}) : content(std::move(bytes)) {}

    std::string content;
    std::string written;

protected:
    using qxSerializeAdapter::read_imp;
    using qxSerializeAdapter::write_imp;
    void write_imp(unsigned char byte) override { written += static_cast<char>(byte); }
    unsigned char read_imp() override
    {
        return m_next < content.size() ? static_cast<unsigned char>(content[m_next++]) : 0xEE;
    }
    unsigned char hasData_imp() override { return m_next < content.size(); }

private:
    std::size_t m_next = 0;
};

qxArray<qxDynamicType> itemsOf(const qxDynamicType& value)
{
    if (value.is("array")) return qxDynamicTypeArray(value).getArray();
    if (value.is("chain")) return qxDynamicTypeChain(value).getArray();
    if (value.is("cont")) return qxDynamicTypeContainer(value).getValues();
    if (!value.is("ttag")) return {};
    const qxDynamicType data = qxDynamicTypeTimeTagged(value).getData();
    return {&data, 1};
}

void askPlain(const qxDynamicType& value)
{
    if (value.is("num") || value.is("llnum")) value.getNumber();
    if (value.is("str")) require(qxDynamicType(value.getString()) == value);
    if (value.is("error")) require(qxDynamicTypeError(qxDynamicTypeError(value).getError()) == value);
    if (value.is("vec4")) value.getVec4();
    if (value.is("guid")) require(qxDynamicType(value.getGUID()) == value);
    if (value.is("ptr")) require(value.getPointer() == nullptr);
    if (value.is("ref")) require(value.getReference() == nullptr);
}

void goThrough(const qxDynamicType& whole)
{
    std::vector<qxDynamicType> left(1, whole);
    while (!left.empty()) {
        const qxDynamicType value = std::move(left.back());
        left.pop_back();
        askPlain(value);
        for (const qxDynamicType& item : itemsOf(value)) left.push_back(item);
    }
}

std::string writtenForm(qxDynamicType value)
{
    std::string bytes(value.getDataSize(nullptr), '?');
    qxSerializeAdapterMemory memory(bytes.data(), static_cast<unsigned int>(bytes.size()));
    value.write(&memory);
    require(!memory.hasError() && memory.getCurrentPos() == bytes.size());
    SingleBytes single;
    value.write(&single);
    require(single.written == bytes);
    return bytes;
}

std::string jsonOf(const qxDynamicType& value)
{
    SingleBytes single;
    value.asJSON(&single);
    return single.written;
}

void checkXML(const qxDynamicType& value)
{
    SingleBytes single;
    value.asXML(&single);
    SingleBytes text(single.written);
    bool isValue = false;
    require(qxDynamicType::fromXML(&text, &isValue, true) == value && isValue);
}

void check(const qxDynamicType& value)
{
    goThrough(value);
    checkXML(value);
    SingleBytes single(writtenForm(value));
    qxDynamicType again;
    again.read(&single);
    require(again == value && !single.hasError() && !single.hasData());

    const std::string text = jsonOf(value);
    if (!again.fromJSON(text.data(), text.size())) { // texts of it may have grown when they were made UTF-8
        require(text.find("\xEF\xBF\xBD") != text.npos);
        return;
    }
    require(jsonOf(again) == text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qxMessage::setMessageLevel(QX_LEVEL_ALWAYS);
    std::string bytes(data, data + size);
    qxDynamicType value;
    if (size > 0 && data[0] == 'J') {
        qxDynamicType fromStream;
        SingleBytes single(bytes.substr(1));
        const bool isValue = value.fromJSON(bytes.data() + 1, size - 1);
        require(fromStream.fromJSON(&single) == isValue && fromStream == value);
        if (isValue) check(value);
        return 0;
    }
    if (size > 0 && data[0] == 'X') {
        bool isValue = false;
        SingleBytes single(bytes.substr(1));
        value = qxDynamicType::fromXML(&single, &isValue, true);
        require(isValue || value.is("error"));
        check(value);
        return 0;
    }
    qxSerializeAdapterMemory memory(bytes.data(), static_cast<unsigned int>(size));
    value.read(&memory);
    SingleBytes single(bytes);
    qxDynamicType other(1.0);
    other.read(&single);
    require(other == value && single.hasError() == memory.hasError());
    if (memory.hasError())
        require(value.is("void"));
    else
        check(value);
    return 0;
}
