// SPDX-License-Identifier: see LICENSE

#include "qxbench.h"

#include "qxreference.h"

#include <memory>
#include <mutex>

namespace
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

class HandCountedGuarded : public HandCounted
{
public:
    void ref() override
    {
        const std::lock_guard guard(m_lock);
        ++m_count;
    }
    void unref() override
    {
        if (countDown() == 0) delete this;
    }

private:
    unsigned int countDown()
    {
        const std::lock_guard guard(m_lock);
        return --m_count;
    }

    std::mutex m_lock; // guards the count
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

void plain(qxBenchCase& work)
{
    work.amount = TIMES;
    work.add("qxbase", copyAndDestroy(shared<qxReference>()));
    work.add("virtual calls by hand", copyAndDestroy(HandHolder<HandCounted>(new HandCounted)));
}
const qxBenchEntry PLAIN("holder/plain", QX_BENCH_NANOSECONDS, plain);

void threadSafe(qxBenchCase& work)
{
    work.amount = TIMES;
    work.add("qxbase", copyAndDestroy(shared<qxThreadSafeReference>()));
    work.add("count guarded by std::mutex", copyAndDestroy(HandHolder<HandCounted>(new HandCountedGuarded)));
    work.add("std::shared_ptr", copyAndDestroy(std::make_shared<int>(0))); // an atomic count
}
const qxBenchEntry THREAD_SAFE("holder/thread-safe", QX_BENCH_NANOSECONDS, threadSafe);

} // namespace
