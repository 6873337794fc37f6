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

    const int value;
    std::function<void()> onDelete; // not copied

    inline static int alive = 0;
};
