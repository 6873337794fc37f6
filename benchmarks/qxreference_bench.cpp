// SPDX-License-Identifier: see LICENSE

#include "qxholders.h"

namespace
{

class HandCountedTwice : public HandCounted
{
public:
    void ref() override { m_count += 2; }
    void unref() override
    {
        if ((m_count -= 2) == 0) delete this;
    }

private:
    unsigned int m_count = 0;
};

const qxBenchEntry PLAIN("holder/plain", QX_BENCH_NANOSECONDS, comparePlainHolders<HandCountedTwice>);

} // namespace
