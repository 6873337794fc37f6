// SPDX-License-Identifier: see LICENSE

#include "qxbench.h"

#include "qxserializeadapterfile.h"

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <unistd.h>

namespace
{

constexpr std::size_t FILE_BYTES = 200'000'000;
constexpr unsigned int BLOCK_BYTES = 65536;

using Block = std::vector<unsigned char>;

// A file in memory where the system has such a place: the disk would drown what is measured.
class SampleFile
{
public:
    SampleFile()
    {
        const bool hasMemory = std::filesystem::is_directory("/dev/shm");
        const std::filesystem::path folder = hasMemory ? "/dev/shm" : std::filesystem::temp_directory_path();
        m_name = folder / ("qxbench" + std::to_string(getpid()));
    }
    SampleFile(const SampleFile&) = delete;
    SampleFile& operator=(const SampleFile&) = delete;
    ~SampleFile() { std::filesystem::remove(m_name); }

    const char* name() const { return m_name.c_str(); }

    void fill() const
    {
        std::FILE* const file = std::fopen(name(), "wb");
        for (std::size_t i = 0; i < FILE_BYTES; ++i)
            putc_unlocked(static_cast<int>(i * 2654435761U >> 24), file);
        std::fclose(file);
    }

private:
    std::string m_name;
};

std::shared_ptr<SampleFile> filledFile()
{
    auto file = std::make_shared<SampleFile>();
    file->fill();
    return file;
}

// Reads through `readSome(buffer, count)` up to the end. A few bytes of each block and their number tell whether all came.
template <class Read>
std::uint64_t readBlocks(Read readSome)
{
    Block buffer(BLOCK_BYTES);
    std::uint64_t sum = 0;
    while (const std::size_t count = readSome(buffer.data(), BLOCK_BYTES))
        sum = sum * 31 + count + buffer[0] + buffer[count / 2] * 7U + buffer[count - 1] * 11U;
    return sum;
}

void blocks(qxBenchCase& work)
{
    work.amount = FILE_BYTES;
    const auto sample = filledFile();
    work.add("qxbase", [sample] {
        qxSerializeAdapterFile file(sample->name());
        return readBlocks([&](unsigned char* buffer, unsigned int count) {
            return file.qxSerializeAdapter::read(buffer, count);
        });
    });
    work.add("fread", [sample] {
        std::FILE* const file = std::fopen(sample->name(), "rb");
        const std::uint64_t sum = readBlocks(
            [&](unsigned char* buffer, unsigned int count) { return std::fread(buffer, 1, count, file); });
        std::fclose(file);
        return sum;
    });
}
const qxBenchEntry BLOCKS("files/read-64-KB-blocks", QX_BENCH_MEGABYTES, blocks);

// As code that is given a stream reads it, in functions of their own: inside the whole the two loops differ by luck.

[[gnu::noinline]] std::uint64_t addBytes(qxSerializeAdapter& stream)
{
    std::uint64_t sum = 0;
    for (qxUInt64 left = stream.length(); left > 0; --left) sum += stream.read();
    return sum;
}

[[gnu::noinline]] std::uint64_t addBytes(std::FILE* stream)
{
    std::uint64_t sum = 0;
    for (int byte = getc_unlocked(stream); byte != EOF; byte = getc_unlocked(stream))
        sum += static_cast<unsigned int>(byte);
    return sum;
}

void bytes(qxBenchCase& work)
{
    work.amount = FILE_BYTES;
    const auto sample = filledFile();
    work.add("qxbase", [sample] {
        qxSerializeAdapterFile file(sample->name());
        return addBytes(file);
    });
    work.add("getc_unlocked", [sample] {
        std::FILE* const file = std::fopen(sample->name(), "rb");
        const std::uint64_t sum = addBytes(file);
        std::fclose(file);
        return sum;
    });
}
const qxBenchEntry BYTES("files/read-byte-by-byte", QX_BENCH_MEGABYTES, bytes);

// Writes through `writeSome(bytes, count)`.
template <class Write>
void writeBlocks(Write writeSome)
{
    const Block block(BLOCK_BYTES, 'x');
    for (std::size_t left = FILE_BYTES; left > 0;) {
        const auto count = static_cast<unsigned int>(std::min<std::size_t>(left, BLOCK_BYTES));
        writeSome(block.data(), count);
        left -= count;
    }
}

std::uint64_t writtenWithStdio(const SampleFile& sample, bool isSynced)
{
    std::FILE* const file = std::fopen(sample.name(), "wb");
    writeBlocks([&](const unsigned char* block, unsigned int count) { std::fwrite(block, 1, count, file); });
    std::fflush(file);
    if (isSynced) fsync(fileno(file));
    std::fclose(file);
    return std::filesystem::file_size(sample.name());
}

void written(qxBenchCase& work)
{
    work.amount = FILE_BYTES;
    const auto sample = std::make_shared<SampleFile>();
    work.add("qxbase", [sample] { // closing waits until the bytes are on the disk
        {
            qxSerializeAdapterFile file(sample->name(), QX_SERIALIZE_OUTPUT);
            writeBlocks([&](const unsigned char* block, unsigned int count) {
                file.qxSerializeAdapter::write(block, count);
            });
        }
        return std::uint64_t{std::filesystem::file_size(sample->name())};
    });
    work.add("fwrite", [sample] { return writtenWithStdio(*sample, false); });
    work.add("fwrite and fsync", [sample] { return writtenWithStdio(*sample, true); });
}
const qxBenchEntry WRITTEN("files/write-64-KB-blocks", QX_BENCH_MEGABYTES, written);

} // namespace
