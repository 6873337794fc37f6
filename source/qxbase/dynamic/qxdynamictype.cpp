// SPDX-License-Identifier: see LICENSE

#include "qxdynamictype.h"

#include "core/qxneverdestroyed.h"
#include "dynamic/qxdynamicparts.h"
#include "qxerror.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

using Parts = qxDynamicParts;

namespace
{

template <class... Floats>
void putFloats(qxDynamicType& value, qxDynamicKind kind, Floats... floats)
{
    unsigned char* place = Parts::prepare(value, kind, sizeof...(floats) * sizeof(float));
    ((qxPutBigEndian(place, std::bit_cast<unsigned int>(floats)), place += sizeof(float)), ...);
}

void putText(qxDynamicType& value, const char* text, std::size_t length)
{
    std::memcpy(Parts::prepare(value, QX_DYNAMIC_STR, length), text, length);
}

// All texts of failed conversions are formats, which stand whole where they are given.
void require(const qxDynamicType& value, qxDynamicKind kind, const char* format)
{
    if (Parts::kind(value) != kind) qxExceptionThrows::qxThrowFatal(format, Parts::tag(value).text.data());
}

} // namespace

QX_DEFINE_ROOT_TYPE(qxDynamicType)

qxDynamicType::qxDynamicType(double number)
{
    m_content.tag = qxDynamicTag::get(QX_DYNAMIC_NUM);
    m_content.size = sizeof number;
    qxPutBigEndian(m_content.data.inside, std::bit_cast<qxUInt64>(number));
}

qxDynamicType::qxDynamicType(const qxString& text)
{
    putText(*this, text.getString(), text.length());
}

qxDynamicType::qxDynamicType(const char* text) : qxDynamicType(qxString(text)) {}

qxDynamicType::qxDynamicType(const qxGUID& guid)
{
    const qxGUIDRecord& record = guid.getConstGUID();
    unsigned char* const place = Parts::prepare(*this, QX_DYNAMIC_GUID, sizeof record);
    qxPutBigEndian(place, static_cast<unsigned int>(record.Data1));
    qxPutBigEndian(place + 4, record.Data2);
    qxPutBigEndian(place + 6, record.Data3);
    std::copy_n(record.Data4, 8, place + 8);
}

qxDynamicType::qxDynamicType(const qxVec2& vector)
{
    putFloats(*this, QX_DYNAMIC_VEC2, vector.x, vector.y);
}

qxDynamicType::qxDynamicType(const qxVec3& vector)
{
    putFloats(*this, QX_DYNAMIC_VEC3, vector.x, vector.y, vector.z);
}

qxDynamicType::qxDynamicType(const qxVec4& vector)
{
    putFloats(*this, QX_DYNAMIC_VEC4, vector.x, vector.y, vector.z, vector.w);
}

qxDynamicType::qxDynamicType(void* pointer)
{
    const qxUInt64 address = reinterpret_cast<std::uintptr_t>(pointer);
    qxPutBigEndian(Parts::prepare(*this, QX_DYNAMIC_PTR, sizeof address), address);
}

qxDynamicType::qxDynamicType(qxReference* object)
{
    // The block is empty, so that values of different objects are equal.
    Parts::prepare(*this, QX_DYNAMIC_REF, 0);
    qxDynRefList objects;
    if (object) objects.insert(object);
    Parts::setReferences(*this, std::move(objects));
}

qxString qxDynamicType::getDynamicType() const
{
    const std::string_view text = Parts::tag(*this).text;
    return {text.data(), text.size()};
}

bool qxDynamicType::is(const char* tag) const
{
    return tag && Parts::tag(*this).text == tag;
}

bool qxDynamicType::is(const qxString& tag) const
{
    return Parts::tag(*this).text == std::string_view(tag.getString(), tag.length());
}

qxArray<unsigned char> qxDynamicType::getDynamicData() const
{
    return {getDataBytes(), getDataLength()};
}

const qxDynRefList& qxDynamicType::getDynamicReferences() const
{
    static qxNeverDestroyed<qxDynRefList> none;
    return m_content.references ? m_content.references->list : none.get();
}

double qxDynamicType::getNumber() const
{
    if (Parts::kind(*this) == QX_DYNAMIC_LLNUM)
        return static_cast<double>(static_cast<qxInt64>(qxGetBigEndian<qxUInt64>(getDataBytes())));
    require(*this, QX_DYNAMIC_NUM, "Can not convert dynamic argument type '%s' to number type !!");
    return qxGetDouble(getDataBytes());
}

qxString qxDynamicType::getString() const
{
    require(*this, QX_DYNAMIC_STR, "Can not convert dynamic argument type '%s' to string type !!");
    return {reinterpret_cast<const char*>(getDataBytes()), getDataLength()};
}

qxVec2 qxDynamicType::getVec2() const
{
    require(*this, QX_DYNAMIC_VEC2, "Can not convert dynamic argument type '%s' to Vec2 type !!");
    const unsigned char* const bytes = getDataBytes();
    return {qxGetFloat(bytes), qxGetFloat(bytes + 4)};
}

qxVec3 qxDynamicType::getVec3() const
{
    require(*this, QX_DYNAMIC_VEC3, "Can not convert dynamic argument type '%s' to Vec3 type !!");
    const unsigned char* const bytes = getDataBytes();
    return {qxGetFloat(bytes), qxGetFloat(bytes + 4), qxGetFloat(bytes + 8)};
}

qxVec4 qxDynamicType::getVec4() const
{
    require(*this, QX_DYNAMIC_VEC4, "Can not convert dynamic argument type '%s' to Vec4 type !!");
    const unsigned char* const bytes = getDataBytes();
    return {qxGetFloat(bytes), qxGetFloat(bytes + 4), qxGetFloat(bytes + 8), qxGetFloat(bytes + 12)};
}

qxGUID qxDynamicType::getGUID() const
{
    require(*this, QX_DYNAMIC_GUID, "Can not convert dynamic argument type '%s' to GUID type !!");
    return qxGetGUID(getDataBytes());
}

void* qxDynamicType::getPointer() const
{
    require(*this, QX_DYNAMIC_PTR, "Can not convert dynamic argument type '%s' to pointer type !!");
    if (m_content.isForeign) return nullptr;
    return reinterpret_cast<void*>(static_cast<std::uintptr_t>(qxGetBigEndian<qxUInt64>(getDataBytes())));
}

qxReference* qxDynamicType::getReference() const
{
    require(*this, QX_DYNAMIC_REF, "Can not convert dynamic argument type '%s' to reference type !!");
    return getDynamicReferences().getFirst();
}

void qxDynamicType::share(const Content& content) noexcept
{
    if (content.tag) content.tag->ref();
    if (content.size > Content::ROOM)
        content.data.outside.block->holders.fetch_add(1, std::memory_order_relaxed);
    if (content.references) content.references->holders.fetch_add(1, std::memory_order_relaxed);
}

void qxDynamicType::drop(const Content& content)
{
    if (content.tag) content.tag->unref();
    if (content.size > Content::ROOM) content.data.outside.block->unref();
    if (content.references) content.references->unref(); // last: objects may raise errors
}

bool qxDynamicType::hasSameTag(const qxDynamicType& other) const
{
    return Parts::kind(*this) == QX_DYNAMIC_CUSTOM && Parts::kind(other) == QX_DYNAMIC_CUSTOM &&
           m_content.tag->text == other.m_content.tag->text;
}
