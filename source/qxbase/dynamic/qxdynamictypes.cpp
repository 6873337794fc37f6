// SPDX-License-Identifier: see LICENSE

#include "qxdynamictypes.h"

#include "dynamic/qxdynamicelements.h"
#include "qxerror.h"

#include <algorithm>

using Parts = qxDynamicParts;

namespace
{

// All texts of failed conversions are formats, which stand whole where they are given.
void require(const qxDynamicType& value, qxDynamicKind kind, const char* format)
{
    if (Parts::kind(value) != kind) qxExceptionThrows::qxThrowFatal(format, Parts::tag(value).text.data());
}

void requireInt64(const qxDynamicType& value)
{
    require(value, QX_DYNAMIC_LLNUM, "Can not convert dynamic argument type '%s' to qxDynamicTypeInt64 !!");
}

void requireArray(const qxDynamicType& value)
{
    require(value, QX_DYNAMIC_ARRAY, "Can not convert dynamic argument type '%s' to qxDynamicTypeArray !!");
}

void requireChain(const qxDynamicType& value)
{
    require(value, QX_DYNAMIC_CHAIN, "Can not convert dynamic argument type '%s' to qxDynamicTypeChain !!");
}

void requireTimeTagged(const qxDynamicType& value)
{
    require(value, QX_DYNAMIC_TTAG,
            "Can not convert dynamic argument type '%s' to qxDynamicTypeTimeTagged !!");
}

} // namespace

qxDynamicTypeVoid::qxDynamicTypeVoid(const qxDynamicType& value) : qxDynamicType(value)
{
    require(value, QX_DYNAMIC_VOID, "Can not convert dynamic argument type '%s' to qxDynamicTypeVoid !!");
}

qxDynamicTypeInt64::qxDynamicTypeInt64(qxInt64 number)
{
    qxPutBigEndian(Parts::prepare(*this, QX_DYNAMIC_LLNUM, sizeof number), static_cast<qxUInt64>(number));
}

qxDynamicTypeInt64::qxDynamicTypeInt64(const qxDynamicType& value) : qxDynamicType(value)
{
    requireInt64(value);
}

qxInt64 qxDynamicTypeInt64::getInt64() const
{
    requireInt64(*this);
    return static_cast<qxInt64>(qxGetBigEndian<qxUInt64>(getDataBytes()));
}

qxDynamicTypeError::qxDynamicTypeError(const qxString& text)
{
    std::copy_n(text.getString(), text.length(), Parts::prepare(*this, QX_DYNAMIC_ERROR, text.length()));
}

qxDynamicTypeError::qxDynamicTypeError(const char* text) : qxDynamicTypeError(qxString(text)) {}

bool qxDynamicTypeError::isError() const
{
    return Parts::kind(*this) == QX_DYNAMIC_ERROR;
}

qxString qxDynamicTypeError::getError() const
{
    require(*this, QX_DYNAMIC_ERROR, "Can not convert dynamic argument type '%s' to qxDynamicTypeError !!");
    return {reinterpret_cast<const char*>(getDataBytes()), getDataLength()};
}

qxDynamicTypeArray::qxDynamicTypeArray(const qxDynamicType* items, std::size_t count)
{
    qxPutDynamicElements(*this, QX_DYNAMIC_ARRAY, items, count);
}

qxDynamicTypeArray::qxDynamicTypeArray(const qxArray<qxDynamicType>& items)
    : qxDynamicTypeArray(items.getData(), items.entries())
{}

qxDynamicTypeArray::qxDynamicTypeArray(const qxDynamicType& value) : qxDynamicType(value)
{
    requireArray(value);
}

qxArray<qxDynamicType> qxDynamicTypeArray::getArray() const
{
    requireArray(*this);
    return qxGetDynamicElements(*this);
}

qxDynamicTypeChain::qxDynamicTypeChain(const qxDynamicType* items, std::size_t count)
{
    qxPutDynamicElements(*this, QX_DYNAMIC_CHAIN, items, count);
}

qxDynamicTypeChain::qxDynamicTypeChain(const qxArray<qxDynamicType>& items)
    : qxDynamicTypeChain(items.getData(), items.entries())
{}

qxDynamicTypeChain::qxDynamicTypeChain(const qxDynamicType& value) : qxDynamicType(value)
{
    requireChain(value);
}

qxArray<qxDynamicType> qxDynamicTypeChain::getArray() const
{
    requireChain(*this);
    return qxGetDynamicElements(*this);
}

qxDynamicTypeTimeTagged::qxDynamicTypeTimeTagged(const qxDynamicType& data, double timeTag)
{
    const qxDynamicTag& tag = Parts::tag(data);
    const unsigned int length = data.getDataLength();
    qxDynRefList objects = data.getDynamicReferences();
    unsigned char* const place =
        Parts::prepare(*this, QX_DYNAMIC_TTAG, QX_DYNAMIC_TIME_SIZE + qxDynamicFormSize(tag, length));
    qxPutBigEndian(place, std::bit_cast<qxUInt64>(timeTag));
    std::copy_n(data.getDataBytes(), length, qxPutDynamicHead(place + QX_DYNAMIC_TIME_SIZE, tag, length));
    Parts::setReferences(*this, std::move(objects));
    Parts::setForeign(*this, Parts::isForeign(data));
}

qxDynamicTypeTimeTagged::qxDynamicTypeTimeTagged(const qxDynamicType& value) : qxDynamicType(value)
{
    requireTimeTagged(value);
}

qxDynamicType qxDynamicTypeTimeTagged::getData() const
{
    requireTimeTagged(*this);
    qxDynamicCursor cursor(Parts::bytes(*this));
    qxDynamicElement element;
    cursor.skip(QX_DYNAMIC_TIME_SIZE);
    cursor.takeForm(element);
    qxDynamicType data = Parts::cut(*this, qxDynamicTag::make(element.tag), element.data);
    Parts::setReferences(data, qxDynRefList(getDynamicReferences()));
    return data;
}

double qxDynamicTypeTimeTagged::getTimeTag() const
{
    requireTimeTagged(*this);
    return qxGetDouble(getDataBytes());
}

qxDynamicTypeCustom::qxDynamicTypeCustom(const qxString& tag, const unsigned char* bytes, std::size_t count,
                                         const qxDynRefList& references)
{
    const std::string_view text(tag.getString(), tag.length());
    if (!qxDynamicTag::isPossible(text) || qxDynamicTag::find(text))
        qxExceptionThrows::qxThrowFatal("qxDynamicTypeCustom needs a tag of its own, not '%s'",
                                        tag.getString());
    qxDynRefList objects = references;
    std::copy_n(bytes, count, Parts::prepare(*this, qxDynamicTag::make(text), count));
    Parts::setReferences(*this, std::move(objects));
}

qxDynamicTypeCustom::qxDynamicTypeCustom(const qxString& tag, const qxDynamicType& value)
    : qxDynamicType(value)
{
    if (!value.is(tag))
        qxExceptionThrows::qxThrowFatal(
            "Can not convert dynamic argument type '%s' to qxDynamicTypeCustom type '%s'!!",
            Parts::tag(value).text.data(), tag);
}
