// SPDX-License-Identifier: see LICENSE

#include "qxrefdata.h"

#include "qxlist.h"
#include "qxstring.h"

#include "qxtestsupport.h"

namespace
{

using Text = qxRefData<qxString>;

TEST(qxRefData, convertsToItsValue)
{
    Text text(qxString("a"));
    const qxString& value = text;
    EXPECT_STREQ(value.getString(), "a");
    EXPECT_EQ(&value, &text.getData());

    text = qxString("b");
    EXPECT_STREQ(value.getString(), "b");
    static_cast<qxString&>(text) += "c";
    EXPECT_STREQ(value.getString(), "bc");
    EXPECT_EQ(qxRefData<int>().getData(), 0);
}

TEST(qxRefData, copiedContainersCopyTheValue)
{
    qxRefList<Text> list;
    list.insert(new Text(qxString("a")));
    const qxRefList<Text> copy(list);
    list.getFirst()->getData() = "b";

    EXPECT_STREQ(copy.getFirst()->getData().getString(), "a");
}

TEST(qxRefData, cloningCopiesTheValueTheModeAndTheBase)
{
    class Base : public qxThreadSafeReference
    {
    public:
        int extra = 5;
    };
    using Box = qxRefData<double, Base>;
    const qxRefPointer<Box> box(new Box(1.5));
    box->setCopyMode(QX_COPY_SHARED);
    const qxRefPointer<Box> clone(box->clone());

    EXPECT_NE(clone.get(), box.get());
    EXPECT_EQ(clone->getData(), 1.5);
    EXPECT_EQ(clone->extra, 5);
    EXPECT_EQ(clone->getRef(), 1U);
    EXPECT_EQ(clone->getCopyMode(), QX_COPY_SHARED);
    EXPECT_STREQ(clone->getTypeName(), "qxReference");
}

} // namespace
