// SPDX-License-Identifier: see LICENSE

#include "qxobject.h"

#include "qxtestsupport.h"

namespace
{

TEST(qxObject, isUserDataThatCanBeCloned)
{
    const qxRefPointer<qxUserData> object(new qxObject);
    EXPECT_STREQ(object->getTypeName(), "qxObject");
    EXPECT_TRUE(object->isOfType(qxUserData::getClassType()));
    EXPECT_TRUE(object->isOfType(qxReference::getClassType()));

    object->setCopyMode(QX_COPY_SHARED);
    const qxRefPointer<qxUserData> clone(object->clone());
    EXPECT_NE(clone.get(), object.get());
    EXPECT_STREQ(clone->getTypeName(), "qxObject");
    EXPECT_EQ(clone->getCopyMode(), QX_COPY_SHARED);
}

} // namespace
