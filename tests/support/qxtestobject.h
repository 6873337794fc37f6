// A counted object whose life tests can follow.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxreference.h"

#include <functional>

/// Can be cloned, counts how many of its kind there are, and tells when it goes.
///
/// Threads: one test's thread only.
class TestObject : public qxReference
{
public:
    explicit TestObject(int number = 0) : value(number) { ++alive; }
    TestObject(const TestObject& other) : qxReference(other), value(other.value) { ++alive; }
    ~TestObject() noexcept(false) override
    {
        --alive;
        if (onDelete) onDelete();
    }

    TestObject* clone() const override { return new TestObject(*this); }

    /// An object that holders share when they are copied.
    static TestObject* shared(int number = 0)
    {
        TestObject* const object = new TestObject(number);
        object->setCopyMode(QX_COPY_SHARED);
        return object;
    }

    /// An object that takes a holder when it goes, which raises DELETED_WHILE_HELD.
    static TestObject* faulty(int number = 0)
    {
        TestObject* const object = new TestObject(number);
        object->onDelete = [object] { object->ref(); };
        return object;
    }

    static constexpr const char* DELETED_WHILE_HELD =
        "REFERENCE MISMATCH ! Deleted referenced object with nonzero reference count";

    const int value;
    std::function<void()> onDelete; // not copied

    inline static int alive = 0;
};
