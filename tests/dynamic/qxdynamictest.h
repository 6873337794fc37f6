// What the tests of dynamic values share.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxdynamictypecontainer.h"
#include "qxdynamictypes.h"

#include "qxtestobject.h"
#include "qxtestsupport.h"
#include "qxtestvalues.h"

#include <initializer_list>

inline qxDynamicType arrayOf(std::initializer_list<qxDynamicType> items)
{
    return qxDynamicTypeArray(items.begin(), items.size());
}

/// `depth` arrays, one in the other.
inline qxDynamicType nested(unsigned int depth)
{
    qxDynamicType value = arrayOf({});
    for (unsigned int i = 1; i < depth; ++i) value = qxDynamicTypeArray(&value, 1);
    return value;
}

/// A value for each tag, in the order of the tags' table, and one with a tag of its own.
inline const std::vector<qxDynamicType>& oneOfEach()
{
    static int target = 0;
    static const qxDynamicType items[] = {qxDynamicType(1.5), qxDynamicType("one, two"),
                                          qxDynamicTypeInt64(-1)};
    static const qxString names[] = {"size", "", "third"};
    static const std::vector<qxDynamicType> values = {
        qxDynamicType(),
        qxDynamicType(0.1),
        qxDynamicTypeInt64(9007199254740993),
        qxDynamicType("a text of more than sixteen bytes"),
        qxDynamicType(qxVec2{1.5F, -2.0F}),
        qxDynamicType(qxVec3{1.5F, -2.0F, 0.25F}),
        qxDynamicType(qxVec4{1.5F, -2.0F, 0.25F, 8.0F}),
        qxDynamicType(qxGUID("{00112233-4455-6677-8899-AABBCCDDEEFF}")),
        qxDynamicType(static_cast<void*>(&target)),
        qxDynamicType(static_cast<qxReference*>(nullptr)),
        qxDynamicTypeError("it broke"),
        qxDynamicTypeArray(items, std::size(items)),
        qxDynamicTypeChain(items, std::size(items)),
        qxDynamicTypeContainer(names, items, std::size(items)),
        qxDynamicTypeTimeTagged(qxDynamicType("then"), 12.5),
        qxDynamicTypeCustom("color", reinterpret_cast<const unsigned char*>("\xFF\x80"), 3),
    };
    return values;
}

inline std::string tagOf(const qxDynamicType& value)
{
    return value.getDynamicType().getString();
}

inline std::string written(qxDynamicType value)
{
    return fromHex(wireOf(value));
}

/// The value that is read from `bytes`, which it must use up.
inline qxDynamicType readFrom(const std::string& bytes)
{
    TestStream stream(bytes);
    qxDynamicType value("before");
    value.read(&stream);
    EXPECT_STREQ(stream.getError(), "");
    EXPECT_EQ(stream.content, "");
    return value;
}
