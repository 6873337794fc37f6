// Holders, ours and one written by hand, for the benchmarks of counted objects.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxbench.h"

#include "qxreference.h"

namespace // a copy for each file: what a compiler takes without a call depends on the classes that it sees there
{

constexpr unsigned int TIMES = 10000;

// What somebody would write by hand: a count behind two virtual operations, plain or guarded.
class HandCounted
{
public:
    virtual ~HandCounted() = default;
    virtual void ref() { ++m_count; }
    virtual void unref()
    {
        if (--m_count == 0) delete this;
    }

private:
    unsigned int m_count = 0;
};

template <class Object>
class HandHolder
{
public:
    explicit HandHolder(Object* object) : m_object(object) { m_object->ref(); }
    HandHolder(const HandHolder& other) : m_object(other.m_object) { m_object->ref(); }
    HandHolder& operator=(const HandHolder&) = delete;
    ~HandHolder() { m_object->unref(); }

private:
    Object* m_object;
};

template <class Holder>
qxBenchWork copyAndDestroy(const Holder& original)
{
    return [original] {
        for (unsigned int i = 0; i < TIMES; ++i) {
            qxBenchKeep(original);
            const Holder copy(original);
            qxBenchKeep(copy);
        }
        return std::uint64_t{TIMES};
    };
}

template <class Object>
qxRefPointer<Object> shared()
{
    qxRefPointer<Object> holder(new Object);
    holder->setCopyMode(QX_COPY_SHARED);
    return holder;
}

/// Enters a plain object held beside one that is counted by hand, behind calls that `Other` keeps virtual.
template <class Other>
void comparePlainHolders(qxBenchCase& work)
{
    work.amount = TIMES;
    work.add("qxbase", copyAndDestroy(shared<qxReference>()));
    work.add("virtual calls by hand", copyAndDestroy(HandHolder<HandCounted>(new HandCounted)));
    HandHolder<HandCounted> other(new Other);
    qxBenchKeep(other);
}

} // namespace
