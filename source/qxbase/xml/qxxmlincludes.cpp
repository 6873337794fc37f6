// SPDX-License-Identifier: see LICENSE

#include "xml/qxxmlincludes.h"

#include "qxguard.h"
#include "qxmutex.h"

#include <vector>

namespace
{

constexpr std::size_t MAX_NUMBER = 0xFFFFFF;

struct Instruction {
    qxString data;
    std::size_t holders;
};

struct Instructions {
    qxMutex lock;                     // guards the fields below
    std::vector<Instruction> entries; // number n at n - 1
    std::vector<unsigned int> free;   // numbers
};

Instructions& instructions()
{
    static Instructions* const all = new Instructions; // stays: trees may go after the library's statics
    return *all;
}

} // namespace

unsigned int qxXmlIncludes::enter(const qxString& data)
{
    Instructions& all = instructions();
    qxBodyGuard guard(all.lock);
    if (!all.free.empty()) {
        const unsigned int number = all.free.back();
        all.entries[number - 1] = {data, 1};
        all.free.pop_back();
        return number;
    }
    if (all.entries.size() == MAX_NUMBER) return 0;
    all.free.reserve(all.entries.size() + 1); // so that release needs no memory
    all.entries.push_back({data, 1});
    return static_cast<unsigned int>(all.entries.size());
}

void qxXmlIncludes::hold(unsigned int number)
{
    if (number == 0) return;
    Instructions& all = instructions();
    qxBodyGuard guard(all.lock);
    ++all.entries[number - 1].holders;
}

void qxXmlIncludes::release(unsigned int number)
{
    if (number == 0) return;
    Instructions& all = instructions();
    qxBodyGuard guard(all.lock);
    Instruction& entry = all.entries[number - 1];
    if (--entry.holders != 0) return;
    entry.data.clear();
    all.free.push_back(number);
}

qxString qxXmlIncludes::getData(unsigned int number)
{
    if (number == 0) return qxString();
    Instructions& all = instructions();
    qxBodyGuard guard(all.lock);
    return all.entries[number - 1].data;
}
