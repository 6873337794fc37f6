// SPDX-License-Identifier: see LICENSE

#include "qxtype.h"

#include "qxreference.h"

#include "qxtestsupport.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>

namespace
{

class Animal : public qxTypeInterface
{
public:
    virtual ~Animal() = default;
    static qxType s_type;
    qxType* getType() const override { return &s_type; }
};

class Dog : public Animal
{
public:
    static qxType s_type;
    qxType* getType() const override { return &s_type; }
};

class Untyped final : public qxTypeInterface
{
public:
    qxType* getType() const override { return nullptr; }
};

qxType Dog::s_type(&Animal::s_type, "Dog"); // before its parent: records take it by address
qxType Animal::s_type(nullptr, "Animal");

TEST(qxType, isDerivedFromItsAncestorsOnly)
{
    qxType puppy(&Dog::s_type, "Puppy");

    EXPECT_TRUE(puppy.isDerivedFrom(&Dog::s_type));
    EXPECT_TRUE(puppy.isDerivedFrom(&Animal::s_type));
    EXPECT_FALSE(puppy.isDerivedFrom(&puppy));
    EXPECT_FALSE(Animal::s_type.isDerivedFrom(&puppy));
    EXPECT_FALSE(puppy.isDerivedFrom(nullptr));
}

TEST(qxType, objectsAnswerWithTheirOwnRecordOrTheirAncestors)
{
    const Dog dog;
    EXPECT_TRUE(dog.isOfType(&Dog::s_type));
    EXPECT_TRUE(dog.isOfType(&Animal::s_type));
    EXPECT_FALSE(dog.isOfType(&qxReference::s_type));
    EXPECT_TRUE(dog.isExactType(&Dog::s_type));
    EXPECT_FALSE(dog.isExactType(&Animal::s_type));
    EXPECT_STREQ(dog.getTypeName(), "Dog");

    const qxThreadSafeReference undeclared;
    EXPECT_STREQ(undeclared.getTypeName(), "qxReference");
    EXPECT_EQ(undeclared.getType(), qxReference::getClassType());
    EXPECT_EQ(Untyped().getTypeName(), nullptr);
    EXPECT_FALSE(Untyped().isOfType(&Animal::s_type));
}

TEST(qxType, keepsTheFirst256BytesOfAName)
{
    const std::string name(400, 'n');
    for (const unsigned int length : {0U, 1U, 254U, 255U, 256U, 257U, 400U}) {
        SCOPED_TRACE(length);
        const std::unique_ptr<char[]> given(new char[length + 1]{}); // the sanitizer guards what is behind
        name.copy(given.get(), length);
        const qxType type(nullptr, given.get());
        EXPECT_EQ(type.getName(), name.substr(0, std::min(length, 256U))); // which reads up to a terminator
    }
    EXPECT_EQ(qxType(&Animal::s_type, nullptr).getName(), nullptr);
}

TEST(qxType, aCopySharesTheNameButHashesDifferently)
{
    const qxType copy(Dog::s_type);

    EXPECT_EQ(copy.getName(), Dog::s_type.getName());
    EXPECT_EQ(copy.getParent(), &Animal::s_type);
    EXPECT_TRUE(copy == Dog::s_type);
    EXPECT_NE(copy.hash(), Dog::s_type.hash());
    EXPECT_EQ(copy.hash(), static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(&copy)));
    EXPECT_FALSE(qxType(&Animal::s_type, "Dog") == Dog::s_type); // an equal text is another name
}

TEST(qxType, assignmentLetsTheOwnNameGo)
{
    qxType type(nullptr, "a name of its own, which the leak check would miss");
    const qxType& same = type;
    type = same;
    EXPECT_STREQ(type.getName(), "a name of its own, which the leak check would miss");

    type = Dog::s_type;
    EXPECT_TRUE(type == Dog::s_type);
}

} // namespace
