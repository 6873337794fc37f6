// SPDX-License-Identifier: see LICENSE

#include "qxmemory.h"

#include "qxtestsupport.h"

#include <cstdint>
#include <cstring>
#include <memory>

namespace
{

// Sizes that no heap can give. Volatile, since the compiler warns where it sees such a size.
volatile std::size_t hugeSizes[] = {PTRDIFF_MAX, std::size_t{PTRDIFF_MAX} + 1, SIZE_MAX - 1, SIZE_MAX};

bool isAligned(const void* address, std::size_t alignment)
{
    return reinterpret_cast<std::uintptr_t>(address) % alignment == 0;
}

/// What `body` writes to standard error.
template <class Body>
std::string errorOutput(Body&& body)
{
    testing::internal::CaptureStderr();
    body();
    return testing::internal::GetCapturedStderr();
}

class Plain : public qxSharedMemory
{
public:
    explicit Plain(bool fails = false)
    {
        if (fails) throw 1;
    }
    long long value = 7;
};

class alignas(256) OverAligned : public Plain
{
    using Plain::Plain;
};

TEST(qxMemory, sizeZeroGivesDistinctPointers)
{
    void* const first = qx_malloc(0);
    void* const second = qx_realloc(qx_malloc(100), 0); // still a block of the caller's

    EXPECT_TRUE(first && second && first != second);
    qx_free(first);
    qx_free(second);
}

TEST(qxMemory, reallocationKeepsTheContentAlsoWhenItIsRefused)
{
    char* memory = static_cast<char*>(qx_realloc(nullptr, 4));
    std::memcpy(memory, "abc", 4);
    for (const std::size_t size : {4U, 100U, 100000U, 200000U, 100U, 4U}) {
        memory = static_cast<char*>(qx_realloc(memory, size));
        EXPECT_STREQ(memory, "abc");
    }
    for (const std::size_t size : hugeSizes) EXPECT_EQ(qx_realloc(memory, size), nullptr);
    EXPECT_STREQ(memory, "abc");
    qx_free(memory);
}

TEST(qxMemory, refusesSizesThatNoHeapHas)
{
    qxMemoryControl::enableReports(false);
    for (const std::size_t size : hugeSizes) {
        SCOPED_TRACE(size);
        EXPECT_EQ(qx_malloc(size), nullptr);
        EXPECT_EQ(qx_malloc(size, std::align_val_t{64}), nullptr);
        EXPECT_THROW(qx_new(size), std::bad_alloc);
        EXPECT_THROW(qx_new(size, "tag"), std::bad_alloc);
        EXPECT_THROW(qx_new(size, std::align_val_t{64}), std::bad_alloc);
    }
    qxMemoryControl::enableReports(true);
}

TEST(qxMemory, alignsAsAsked)
{
    for (std::size_t alignment = 1; alignment <= 65536; alignment *= 2) {
        void* const memory = qx_new(10, std::align_val_t{alignment});
        EXPECT_TRUE(isAligned(memory, alignment));
        std::memset(memory, 1, 10);
        qx_delete(memory, std::align_val_t{alignment});
    }
    qx_delete(nullptr, std::align_val_t{64});
}

TEST(qxMemoryControl, reportsOneLineEach)
{
    const std::string text(2000, 'x');
    EXPECT_EQ(errorOutput([] { EXPECT_THROW(qxThrowBadAlloc("a.cpp", 7), std::bad_alloc); }),
              "Bad Alloc:File: a.cpp  Line: 7  Ver: 2.10.1\n");
    const std::string own = errorOutput([] { EXPECT_THROW(qx_new(hugeSizes[0]), std::bad_alloc); });
    EXPECT_NE(own.find("source/qxbase/core/qxmemory.cpp  Line: "), std::string::npos) << own;
    EXPECT_EQ(own.find("File: /"), std::string::npos) << own; // not where it was built
    EXPECT_EQ(errorOutput([] { qxMemoryControl::memprintf(false, "plain", "c"); }), "plain\n");
    EXPECT_EQ(errorOutput([&] { qxMemoryControl::memprintf(true, "<%s>", text.c_str()); }),
              "<" + std::string(1022, 'x') + "\n"); // cut at its buffer
    qxMemoryControl::enableReports(false);
    EXPECT_EQ(errorOutput([] {
                  qxMemoryControl::memprintf(false, "dropped %s", "a");
                  qxMemoryControl::memprintf(true, "forced %s!", "b");
              }),
              "forced b!\n");
    qxMemoryControl::enableReports(true);
}

TEST(qxMemoryControl, countsTheAllocationsOfATag)
{
    static const std::string sameText = "counted"; // tags live as long as the program
    [[maybe_unused]] const std::size_t before = qxMemoryControl::getTagCount("counted");
    qx_delete(qx_new(1, "counted"));
    delete new (sameText.c_str()) Plain;
    delete[] new ("counted") OverAligned[2];
    delete new ("other") Plain;

#if defined(NDEBUG)
    EXPECT_EQ(qxMemoryControl::getTagCount("counted"), 0U);
#else
    EXPECT_EQ(qxMemoryControl::getTagCount("counted"), before + 3);
#endif
    EXPECT_EQ(qxMemoryControl::getTagCount("unknown"), 0U);
}

TEST(qxSharedMemory, alignsClassesInEveryForm)
{
    // Repeated, since an unaligned heap gives an aligned address now and then.
    for (int i = 0; i < 20; ++i) {
        const std::unique_ptr<OverAligned> plain(new OverAligned);
        const std::unique_ptr<OverAligned> tagged(new ("tag") OverAligned);
        const std::unique_ptr<OverAligned> quiet(new (std::nothrow) OverAligned);
        const std::unique_ptr<OverAligned[]> many(new OverAligned[2]);
        const std::unique_ptr<OverAligned[]> manyQuiet(new (std::nothrow) OverAligned[2]);
        const std::unique_ptr<OverAligned[]> manyTagged(new ("tag") OverAligned[2]);

        for (const OverAligned* object :
             {plain.get(), tagged.get(), quiet.get(), &many[1], &manyQuiet[1], &manyTagged[1]})
            EXPECT_TRUE(isAligned(object, alignof(OverAligned)));
    }
}

TEST(qxSharedMemory, givesMemoryBackWhenAConstructorThrows)
{
    // The leak check finds a form whose delete does not match.
    EXPECT_THROW(new Plain(true), int);
    EXPECT_THROW(new ("tag") Plain(true), int);
    EXPECT_THROW(new (std::nothrow) Plain(true), int);
    EXPECT_THROW(new OverAligned(true), int);
    EXPECT_THROW(new ("tag") OverAligned(true), int);
    EXPECT_THROW(new (std::nothrow) OverAligned(true), int);
}

TEST(qxSharedMemory, buildsInGivenRoom)
{
    alignas(Plain) unsigned char room[sizeof(Plain)];
    EXPECT_EQ(static_cast<void*>(new (room) Plain), static_cast<void*>(room));
}

} // namespace
