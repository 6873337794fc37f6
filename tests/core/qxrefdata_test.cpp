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

TEST(qxRefData, cloningCopiesTheValueAndTheMode)
{
    const qxRefPointer<Text> source(new Text(qxString("a")));
    source->setCopyMode(QX_COPY_SHARED);
    const qxRefPointer<Text> clone(source->clone());

    EXPECT_STREQ(clone->getData().getString(), "a");
    EXPECT_NE(clone->getData().getString(), source->getData().getString());
    EXPECT_EQ(clone->getRef(), 1U);
    EXPECT_EQ(clone->getCopyMode(), QX_COPY_SHARED);
}

TEST(qxRefData, makesStringsItemsOfLists)
{
    qxRefList<Text> list;
    list.insert(new Text(qxString("a")));
    const qxRefList<Text> copy(list);
    list.getFirst()->getData() = "b";

    EXPECT_STREQ(copy.getFirst()->getData().getString(), "a");
}

TEST(qxRefData, takesItsCountFromItsBase)
{
    class Base : public qxThreadSafeReference
    {
    public:
        int extra = 5;
    };
    const qxRefPointer<qxRefData<double, Base>> box(new qxRefData<double, Base>(1.5));
    const qxRefPointer<qxReference> clone(box->clone());

    EXPECT_STREQ(box->getTypeName(), "qxReference");
    const auto* const same = dynamic_cast<qxRefData<double, Base>*>(clone.get());
    ASSERT_TRUE(same);
    EXPECT_EQ(same->getData(), 1.5);
    EXPECT_EQ(same->extra, 5);
}

} // namespace
