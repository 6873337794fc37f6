// SPDX-License-Identifier: see LICENSE

#include "core/qxheap.h"

#include "platform/qxplatformmemory.h"
#include "qxmemory.h"

#include "qxtestthreads.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <random>
#include <string_view>
#include <utility>
#include <vector>

namespace
{

constexpr std::size_t PAGES = 64; // of the heaps here
constexpr unsigned char ABSENT = 0xDD;

/// Stands in for the operating system: one range at a time, whose bytes must keep their value while no memory is said
/// to lie behind them.
class System
{
public:
    static constexpr std::size_t PAGE = 4096;

    void* reserve(std::size_t size)
    {
        if (isRefusing) return nullptr;
        range.assign(size + 2 * PAGE, ABSENT);
        isCommitted.assign(size / PAGE, false);
        const std::size_t beyond = reinterpret_cast<std::uintptr_t>(range.data()) % PAGE;
        start = range.data() + PAGE - beyond;
        return start;
    }

    bool commit(void* address, std::size_t size)
    {
        if (isRefusing) return false;
        change(address, size, true);
        return true;
    }

    void decommit(void* address, std::size_t size) { change(address, size, false); }

    std::size_t committedBytes()
    {
        const std::lock_guard guard(lock);
        return static_cast<std::size_t>(std::count(isCommitted.begin(), isCommitted.end(), true)) * PAGE;
    }

    bool isRefusing = false;

private:
    void change(void* address, std::size_t size, bool commits)
    {
        const std::lock_guard guard(lock);
        unsigned char* const bytes = static_cast<unsigned char*>(address);
        const std::size_t first = static_cast<std::size_t>(bytes - start) / PAGE;
        for (std::size_t page = first; page < first + size / PAGE; ++page) {
            if (isCommitted.at(page) == commits) ADD_FAILURE() << "page " << page << " changed twice";
            isCommitted[page] = commits;
        }
        const bool isUntouched = bytes[0] == ABSENT && std::memcmp(bytes, bytes + 1, size - 1) == 0;
        if (commits && !isUntouched) ADD_FAILURE() << "page " << first << " written while absent";
        std::memset(bytes, commits ? 0 : ABSENT, size);
    }

    std::mutex lock;
    std::vector<unsigned char> range;
    std::vector<bool> isCommitted;
    unsigned char* start = nullptr;
};

System* theSystem = nullptr;

/// A heap of 64 pages with the system beneath it, and what a user does with it.
class qxHeapTest : public testing::Test
{
protected:
    qxHeapTest() { theSystem = &system; }
    ~qxHeapTest() override { theSystem = nullptr; }

    /// Takes blocks of one size until there are no more, at most `count`.
    std::vector<void*> take(qxHeapThread* thread, std::size_t size, std::size_t count = SIZE_MAX)
    {
        std::vector<void*> blocks;
        while (blocks.size() < count) {
            void* const block = thread->take(size);
            if (!block) break;
            blocks.push_back(std::memset(block, 0x11, size));
        }
        return blocks;
    }

    void giveBack(qxHeapThread* thread, const std::vector<void*>& blocks)
    {
        for (void* block : blocks) qxHeapThread::giveBack(heap, thread, block);
    }

    System system;
    static constexpr std::size_t KEPT = 4;
    qxHeap heap{PAGES, KEPT};
};

std::vector<void*> shuffled(std::vector<void*> blocks)
{
    std::shuffle(blocks.begin(), blocks.end(), std::mt19937(7));
    return blocks;
}

std::vector<void*> sorted(std::vector<void*> blocks)
{
    std::sort(blocks.begin(), blocks.end());
    return blocks;
}

TEST_F(qxHeapTest, blocksAreAlignedAndHoldTheirSize)
{
    qxHeapThread* const thread = qxHeapThread::enter(heap);
    std::vector<unsigned char*> blocks;
    for (std::size_t size = 0; size <= QX_HEAP_LARGEST; ++size) {
        SCOPED_TRACE(size);
        for (int i = 0; i < 3; ++i) {
            void* const block = thread->take(size);
            ASSERT_TRUE(heap.contains(block));
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0U);
            const std::size_t room = heap.getBlockSize(block);
            EXPECT_TRUE(size <= room && room <= std::max<std::size_t>(size + 15, 16)) << room;
            blocks.push_back(static_cast<unsigned char*>(block));
            std::memset(block, static_cast<int>(blocks.size() % 251), room);
        }
    }
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        const std::size_t room = heap.getBlockSize(blocks[i]);
        EXPECT_EQ(std::count(blocks[i], blocks[i] + room, (i + 1) % 251), static_cast<int>(room));
    }
}

TEST_F(qxHeapTest, knowsItsBlocksFromOtherMemory)
{
    const char local = 0;
    EXPECT_FALSE(heap.contains(&local)); // nor before it has any
    EXPECT_FALSE(heap.contains(nullptr));

    const char* const block = static_cast<char*>(qxHeapThread::enter(heap)->take(256));
    EXPECT_TRUE(heap.contains(block));
    constexpr std::size_t all = PAGES * QX_HEAP_PAGE;
    for (const char* other : {&local, static_cast<const char*>(nullptr), block - all, block + all})
        EXPECT_FALSE(heap.contains(other));
}

TEST_F(qxHeapTest, freePagesServeBlocksOfAnySizeAndGiveTheirMemoryBackButForAFew)
{
    qxHeapThread* const thread = qxHeapThread::enter(heap);
    for (const std::size_t size : {16U, 256U, 112U, 48U, 256U}) {
        SCOPED_TRACE(size);
        const std::vector<void*> blocks = take(thread, size);
        // The thread lives in a page, and keeps one for each of the other sizes.
        EXPECT_GE(blocks.size(), (PAGES - 4) * (QX_HEAP_PAGE / size));
        EXPECT_EQ(heap.countUsedPages(), PAGES);
        EXPECT_GE(system.committedBytes(), PAGES * QX_HEAP_PAGE);

        giveBack(thread, shuffled(blocks));
        EXPECT_LE(heap.countUsedPages(), 1U + 4U);
        const std::size_t records = 1;
        EXPECT_EQ(system.committedBytes(), (heap.countUsedPages() + KEPT + records) * QX_HEAP_PAGE);
    }
}

TEST_F(qxHeapTest, freedAtRandomAPageIsFilledInOrderAgain)
{
    qxHeapThread* const thread = qxHeapThread::enter(heap);
    giveBack(thread, shuffled(take(thread, 128, 10000)));

    std::vector<void*> blocks = take(thread, 128, 10000);
    std::size_t steps = 0;
    for (std::size_t i = 1; i < blocks.size(); ++i) {
        steps += static_cast<char*>(blocks[i]) == static_cast<char*>(blocks[i - 1]) + 128;
    }
    EXPECT_GT(steps, 9000U);
}

TEST_F(qxHeapTest, aPageIsUsedAgainOnceAnEighthOfItIsFree)
{
    qxHeapThread* const thread = qxHeapThread::enter(heap);
    constexpr std::size_t inPage = QX_HEAP_PAGE / 64;
    std::vector<void*> blocks = take(thread, 64, 10 * inPage);
    const std::size_t pages = heap.countUsedPages();

    // Of the second page an eighth less one, of the third an eighth.
    giveBack(thread, {blocks.begin() + inPage, blocks.begin() + inPage + inPage / 8 - 1});
    const std::vector<void*> returned(blocks.begin() + 2 * inPage, blocks.begin() + 2 * inPage + inPage / 8);
    giveBack(thread, returned);
    const std::vector<void*> again = take(thread, 64, inPage / 8);
    EXPECT_TRUE(sorted(again) == returned);
    EXPECT_EQ(heap.countUsedPages(), pages);

    take(thread, 64, 1);
    EXPECT_EQ(heap.countUsedPages(), pages + 1);
}

TEST_F(qxHeapTest, withoutMemoryThereIsNoBlockUntilThereIsMemoryAgain)
{
    system.isRefusing = true;
    EXPECT_EQ(qxHeapThread::enter(heap), nullptr);
    system.isRefusing = false;
    qxHeapThread* const thread = qxHeapThread::enter(heap);
    ASSERT_NE(thread, nullptr);

    for (int pass = 0; pass < 2; ++pass) { // the second with pages whose memory was given back
        SCOPED_TRACE(pass);
        std::vector<void*> blocks = take(thread, 256, 4000);
        system.isRefusing = true;
        const std::vector<void*> last = take(thread, 256);
        EXPECT_LT(last.size(), 16U * 256U);
        EXPECT_EQ(thread->take(16), nullptr);
        system.isRefusing = false;
        const std::vector<void*> more = take(thread, 256);
        EXPECT_EQ(heap.countUsedPages(), PAGES);
        for (const std::vector<void*>& part : {blocks, last, more}) giveBack(thread, part);
    }
}

TEST_F(qxHeapTest, noBlockIsLostWhoeverGivesItBack)
{
    qxHeapThread* const owner = qxHeapThread::enter(heap);
    qxHeapThread* const other = qxHeapThread::enter(heap);
    std::vector<void*> blocks = shuffled(take(owner, 96));
    blocks.resize(blocks.size() / 4 * 3); // those left out keep the pages in use
    const std::pair<qxHeapThread*, qxHeapThread*> rows[] = {
        {other, other}, {nullptr, nullptr}, {owner, other}, {other, owner}, {other, nullptr},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        const auto middle = blocks.begin() + static_cast<std::ptrdiff_t>(blocks.size() / 2);
        giveBack(row.first, {blocks.begin(), middle});
        giveBack(row.second, {middle, blocks.end()});
        const std::vector<void*> again = take(owner, 96);
        EXPECT_TRUE(sorted(again) == sorted(blocks));
    }
}

TEST_F(qxHeapTest, anOwnerThatOnlyGivesBackLearnsWhatOthersDid)
{
    qxHeapThread* const owner = qxHeapThread::enter(heap);
    constexpr std::ptrdiff_t inPage = QX_HEAP_PAGE / 256;
    const std::vector<void*> blocks = take(owner, 256, 10 * inPage);

    giveBack(nullptr, {blocks.begin(), blocks.begin() + 8 * inPage});
    EXPECT_EQ(heap.countUsedPages(), 1U + 10U);
    giveBack(owner, {blocks.begin() + 8 * inPage, blocks.begin() + 9 * inPage});
    EXPECT_EQ(heap.countUsedPages(), 1U + 1U);
}

TEST_F(qxHeapTest, allPagesReturnHoweverTheirBlocksDo)
{
    // l: the owner leaves; o, x and n: it, another thread or none gives back a third of the blocks.
    const char* const rows[] = {"lxxx", "lnnn", "olxx", "olnx", "xlnx", "xoln",
                                "oxlx", "xxln", "xnxl", "xxol", "onnl", "oool"};
    qxHeapThread* const other = qxHeapThread::enter(heap);
    for (const std::size_t size : {48U, 256U}) {
        for (const std::string_view row : rows) {
            SCOPED_TRACE(testing::Message() << "size " << size << " row " << row);
            qxHeapThread* const owner = qxHeapThread::enter(heap);
            std::vector<void*> blocks = shuffled(take(owner, size, 6000));
            for (const char step : row) {
                if (step == 'l') {
                    owner->leave();
                    continue;
                }
                giveBack(step == 'o'   ? owner
                         : step == 'x' ? other
                                       : nullptr,
                         {blocks.end() - 2000, blocks.end()});
                blocks.resize(blocks.size() - 2000);
            }
            EXPECT_EQ(heap.countUsedPages(), 2U); // those in which the two live
        }
    }
}

TEST_F(qxHeapTest, aNewThreadGoesOnWhereOneHasLeft)
{
    qxHeapThread* const first = qxHeapThread::enter(heap);
    const std::vector<void*> blocks = take(first, 32, 10);
    first->leave();
    const std::size_t pages = heap.countUsedPages();

    qxHeapThread* const second = qxHeapThread::enter(heap);
    take(second, 32, 10);
    EXPECT_EQ(heap.countUsedPages(), pages);
}

/// Places for blocks, each filled with one value, that threads take from each other.
class Exchange
{
public:
    static constexpr std::size_t PLACES = 3000;

    explicit Exchange(qxHeap& theHeap) : heap(theHeap) {}

    /// Puts a block in a place and gives back the one that was there.
    void put(qxHeapThread* thread, std::size_t place, void* block)
    {
        void* const old = places[place].exchange(block, std::memory_order_acq_rel);
        if (!old) return;
        const unsigned char* const bytes = static_cast<unsigned char*>(old);
        const auto room = static_cast<std::ptrdiff_t>(heap.getBlockSize(old));
        EXPECT_EQ(std::count(bytes, bytes + room, bytes[0]), room);
        qxHeapThread::giveBack(heap, thread, old);
    }

private:
    qxHeap& heap;
    std::array<std::atomic<void*>, PLACES> places{};
};

TEST_F(qxHeapTest, threadsExchangeBlocksAndAllPagesReturn)
{
    Exchange exchange(heap);
    onThreads(4, [&](unsigned int number) {
        std::mt19937 random(number);
        for (int life = 0; life < 5; ++life) {
            qxHeapThread* const thread = qxHeapThread::enter(heap);
            for (int i = 0; i < 2000; ++i) {
                void* const block = thread->take(random() % (QX_HEAP_LARGEST + 1));
                if (block) std::memset(block, i % 251, heap.getBlockSize(block));
                exchange.put(thread, random() % Exchange::PLACES, block);
            }
            thread->leave();
        }
    });
    for (std::size_t place = 0; place < Exchange::PLACES; ++place) exchange.put(nullptr, place, nullptr);
    EXPECT_LE(heap.countUsedPages(), 4U); // those in which the threads lived
}

/// Uses the library heap while the variables of its thread are destroyed, and before and after main.
struct LateUser {
    ~LateUser()
    {
        qx_free(memory);
        void* const more = qx_malloc(24);
        std::memset(more, 1, 24);
        qx_free(more);
    }
    void* memory = qx_malloc(24);
};

LateUser afterMain;

TEST(qxMalloc, worksWhileTheThreadsVariablesAreDestroyed)
{
    onThreads(3, [] {
        thread_local LateUser before; // made before the thread's pages are, so it is destroyed after them
        std::memset(before.memory, 2, 24);
    });
    EXPECT_NE(afterMain.memory, nullptr);
}

TEST(qxMalloc, hasRoomForManySmallBlocks)
{
    std::vector<unsigned char*> blocks(320000); // over 64 MiB
    for (unsigned char*& block : blocks) {
        block = static_cast<unsigned char*>(qx_malloc(256));
        ASSERT_NE(block, nullptr);
        *block = static_cast<unsigned char>(&block - blocks.data());
    }
    for (unsigned char*& block : blocks) {
        ASSERT_EQ(*block, static_cast<unsigned char>(&block - blocks.data()));
        qx_free(block);
    }
}

} // namespace

std::size_t qxPlatformMemoryPageSize()
{
    return System::PAGE;
}

void* qxPlatformMemoryReserve(std::size_t size)
{
    return theSystem ? theSystem->reserve(size) : nullptr;
}

bool qxPlatformMemoryCommit(void* address, std::size_t size)
{
    return theSystem->commit(address, size);
}

void qxPlatformMemoryDecommit(void* address, std::size_t size)
{
    theSystem->decommit(address, size);
}
