// SPDX-License-Identifier: see LICENSE

#include "qxname.h"

#include "qxtestsupport.h"

namespace
{

TEST(qxNameInterface, anEmptyNameIsNoName)
{
    const qxNameInterface none;
    const qxNameInterface empty((qxString()));
    qxNameInterface object("name");
    EXPECT_TRUE(object.hasName());
    EXPECT_STREQ(object.getName().getString(), "name");
    EXPECT_EQ(object.getDataSize(nullptr), 5U);

    object.setName("");
    for (const qxNameInterface* nameless : {&none, &empty, static_cast<const qxNameInterface*>(&object)}) {
        EXPECT_FALSE(nameless->hasName());
        EXPECT_STREQ(nameless->getName().getString(), "");
        EXPECT_EQ(nameless->getDataSize(nullptr), 1U);
    }
}

TEST(qxNameInterface, aCopyHasANameOfItsOwn)
{
    qxNameInterface source("first");
    const qxNameInterface copy(source);
    qxNameInterface assigned;
    assigned = source;
    source.setName("second");
    const qxNameInterface& same = source;
    source = same;

    EXPECT_STREQ(source.getName().getString(), "second");
    EXPECT_STREQ(copy.getName().getString(), "first");
    EXPECT_STREQ(assigned.getName().getString(), "first");
    assigned = qxNameInterface();
    EXPECT_FALSE(assigned.hasName());
}

// What trees of items do with the names of their items.
class Sharer : public qxNameInterface
{
public:
    explicit Sharer(qxSharedName* name) : qxNameInterface(name) {}
    qxSharedName* getShared() const { return getSharedName(); }
};

TEST(qxNameInterface, sharersKeepOneTextUntilTheyGetTheirOwn)
{
    Sharer first(new qxSharedName("name"));
    const Sharer second(first.getShared());
    first.setName("other");

    EXPECT_STREQ(first.getName().getString(), "other");
    EXPECT_STREQ(second.getName().getString(), "name");
    const Sharer copy(second);
    EXPECT_NE(copy.getShared(), second.getShared());
    EXPECT_STREQ(copy.getName().getString(), "name");
}

TEST(qxNameInterface, aPermanentTextIsSharedByCopies)
{
    qxSharedName name("name"); // on the stack: nobody may delete it
    name.makePermanent();
    const Sharer first(&name);
    const Sharer copy(first);
    EXPECT_EQ(copy.getShared(), &name);
}

} // namespace
