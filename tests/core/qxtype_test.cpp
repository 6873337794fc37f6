// SPDX-License-Identifier: see LICENSE

#include "qxtype.h"

#include "qxreference.h"

#include "qxtestsupport.h"

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

TEST(qxType, isOfItsOwnAndItsAncestorsTypes)
{
    const Dog dog;

    EXPECT_TRUE(dog.isOfType(&Dog::s_type));
    EXPECT_TRUE(dog.isOfType(&Animal::s_type));
    EXPECT_FALSE(dog.isOfType(&qxReference::s_type));
    EXPECT_TRUE(dog.isExactType(&Dog::s_type));
    EXPECT_FALSE(dog.isExactType(&Animal::s_type));
    EXPECT_STREQ(dog.getTypeName(), "Dog");
}

TEST(qxType, anObjectWithoutARecordHasNoName)
{
    const Untyped object;

    EXPECT_EQ(object.getTypeName(), nullptr);
    EXPECT_FALSE(object.isOfType(&Animal::s_type));
}

TEST(qxType, aClassWithoutARecordAnswersItsAncestors)
{
    const qxThreadSafeReference object;

    EXPECT_STREQ(object.getTypeName(), "qxReference");
    EXPECT_EQ(object.getType(), qxReference::getClassType());
}

TEST(qxType, keepsTheFirst256BytesOfAName)
{
    const std::string name(400, 'n');
    for (const unsigned int length : {0U, 1U, 254U, 255U, 256U, 257U, 400U}) {
        SCOPED_TRACE(length);
        const std::string given = name.substr(0, length);
        const qxType type(nullptr, given.c_str());
        EXPECT_EQ(type.getName(), given.substr(0, 256)); // which reads up to a terminator
    }
}

TEST(qxType, takesNoMoreOfANameThanItHas)
{
    const std::unique_ptr<char[]> name(new char[3]{'a', 'b', 0}); // the sanitizer guards what is behind
    const qxType type(nullptr, name.get());

    EXPECT_STREQ(type.getName(), "ab");
}

TEST(qxType, keepsANullName)
{
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
    type = Dog::s_type;
    EXPECT_TRUE(type == Dog::s_type);

    qxType& same = type;
    type = same;
    EXPECT_STREQ(type.getName(), "Dog");
}

} // namespace
