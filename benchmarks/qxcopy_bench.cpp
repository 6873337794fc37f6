// SPDX-License-Identifier: see LICENSE

#include "qxbench.h"

#include "qxserializeadaptercompress.h"
#include "qxserializeadapterencode.h"
#include "qxserializeadapterfile.h"
#include "qxserializeadaptermemory.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <unistd.h>
#include <zlib.h>

#ifdef QX_PEER_QT5
#include <QtCore/QByteArray>
#endif

namespace
{

constexpr std::size_t FILE_BYTES = 1'000'000'000;
constexpr unsigned int BLOCK_BYTES = 1048576; // so many pass by the queues

using Bytes = std::vector<unsigned char>;

// A file and its copy, in memory where the system has room there: the disk would drown what is measured.
class Files
{
public:
    Files()
    {
        std::error_code error;
        const std::filesystem::path memory = "/dev/shm";
        const bool hasRoom =
            std::filesystem::space(memory, error).available > 2 * FILE_BYTES + FILE_BYTES / 10;
        const std::filesystem::path folder =
            !error && hasRoom ? memory : std::filesystem::temp_directory_path();
        from = folder / ("qxbench" + std::to_string(getpid()));
        to = from + "-copy";
        std::FILE* const file = std::fopen(from.c_str(), "wb");
        Bytes block(1'000'000);
        for (std::size_t i = 0; i < block.size(); ++i)
            block[i] = static_cast<unsigned char>(i * 2654435761U >> 24);
        for (std::size_t done = 0; done < FILE_BYTES; done += block.size())
            std::fwrite(block.data(), 1, block.size(), file);
        std::fclose(file);
    }
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;
    ~Files()
    {
        std::filesystem::remove(from);
        std::filesystem::remove(to);
    }

    /// Copies, and returns a few bytes of the copy as a checksum.
    template <class Copy>
    std::uint64_t run(Copy copy) const
    {
        std::filesystem::remove(to);
        copy();
        std::ifstream file(to, std::ios::binary | std::ios::ate);
        const auto size = static_cast<std::uint64_t>(file.tellg());
        file.seekg(-1000, std::ios::end);
        char end[1000];
        file.read(end, sizeof(end));
        return qxBenchChecksum(end, sizeof(end), size);
    }

    std::string from;
    std::string to;
};

void copyFile(qxBenchCase& work)
{
    work.amount = FILE_BYTES;
    const auto files = std::make_shared<Files>();
    const std::string names = "'" + files->from + "' '" + files->to + "'";
    work.add("qxbase", [files] { // closing waits until the bytes are on the disk
        return files->run([&] {
            qxSerializeAdapterFile from(files->from.c_str());
            qxSerializeAdapterFile to(files->to.c_str(), QX_SERIALIZE_OUTPUT);
            Bytes block(BLOCK_BYTES);
            while (const unsigned int count = from.qxSerializeAdapter::read(block.data(), BLOCK_BYTES))
                to.qxSerializeAdapter::write(block.data(), count);
        });
    });
    work.add("cp", [files, names] {
        return files->run([&] {
            if (std::system(("cp " + names).c_str()) != 0) std::abort();
        });
    });
    work.add("cp and sync", [files, names] {
        return files->run([&] {
            if (std::system(("cp " + names + " && sync '" + files->to + "'").c_str()) != 0) std::abort();
        });
    });
    work.add("fread and fwrite", [files] {
        return files->run([&] {
            std::FILE* const from = std::fopen(files->from.c_str(), "rb");
            std::FILE* const to = std::fopen(files->to.c_str(), "wb");
            Bytes block(65536);
            while (const std::size_t count = std::fread(block.data(), 1, block.size(), from))
                std::fwrite(block.data(), 1, count, to);
            std::fclose(from);
            std::fclose(to);
        });
    });
}
const qxBenchEntry COPY("copy/1-GB-file", QX_BENCH_MEGABYTES, copyFile);

// Text that compresses as text does.
Bytes sampleText(std::size_t size)
{
    const char* const words[] = {"stream ", "adapter ", "of ",       "bytes ",
                                 "that ",   "is ",      "written, ", "read.\n"};
    Bytes bytes;
    bytes.reserve(size + 16);
    for (unsigned int value = 1; bytes.size() < size;) {
        value = value * 69069U + 1U;
        const char* const word = words[value >> 29];
        bytes.insert(bytes.end(), word, word + std::strlen(word));
        if ((value >> 20) % 4 == 0) bytes.push_back(static_cast<unsigned char>('0' + (value >> 10) % 10));
    }
    bytes.resize(size);
    return bytes;
}

constexpr unsigned int TEXT_BYTES = 20'000'000;

using Stream = qxRefPointer<qxSerializeAdapter>;

/// What a filter makes of `bytes`, written to memory.
template <class Filter>
Bytes encoded(const Bytes& bytes, std::size_t room)
{
    Bytes result(room);
    auto* const memory = new qxSerializeAdapterMemory(result.data(), static_cast<unsigned int>(room));
    Filter filter(memory, QX_SERIALIZE_OUTPUT);
    filter.qxSerializeAdapter::write(bytes.data(), static_cast<unsigned int>(bytes.size()));
    filter.close();
    result.resize(memory->getCurrentPos());
    return result;
}

/// What it reads from `bytes`.
template <class Filter>
Bytes decoded(const Bytes& bytes, std::size_t room)
{
    Bytes result(room);
    Bytes copy = bytes;
    Filter filter(new qxSerializeAdapterMemory(copy.data(), static_cast<unsigned int>(copy.size())),
                  QX_SERIALIZE_INPUT);
    result.resize(filter.qxSerializeAdapter::read(result.data(), static_cast<unsigned int>(room)));
    return result;
}

std::uint64_t checksumOf(const Bytes& bytes)
{
    return qxBenchChecksum(bytes.data(), bytes.size());
}

void base64Encode(qxBenchCase& work)
{
    work.amount = TEXT_BYTES;
    const auto bytes = std::make_shared<Bytes>(sampleText(TEXT_BYTES));
    work.add("qxbase", [bytes] {
        return checksumOf(encoded<qxSerializeAdapterBase64>(*bytes, bytes->size() / 3 * 4 + 8));
    });
#ifdef QX_PEER_QT5
    work.add("Qt", [bytes] {
        const auto text =
            QByteArray::fromRawData(reinterpret_cast<const char*>(bytes->data()), TEXT_BYTES).toBase64();
        return qxBenchChecksum(text.constData(), static_cast<std::size_t>(text.size()));
    });
#endif
}
const qxBenchEntry BASE64_ENCODE("copy/base64-encode", QX_BENCH_MEGABYTES, base64Encode);

void base64Decode(qxBenchCase& work)
{
    work.amount = TEXT_BYTES;
    const auto bytes = std::make_shared<Bytes>(
        encoded<qxSerializeAdapterBase64>(sampleText(TEXT_BYTES), TEXT_BYTES / 3 * 4 + 8));
    work.add("qxbase", [bytes] { return checksumOf(decoded<qxSerializeAdapterBase64>(*bytes, TEXT_BYTES)); });
#ifdef QX_PEER_QT5
    work.add("Qt", [bytes] {
        const auto text = QByteArray::fromBase64(QByteArray::fromRawData(
            reinterpret_cast<const char*>(bytes->data()), static_cast<int>(bytes->size())));
        return qxBenchChecksum(text.constData(), static_cast<std::size_t>(text.size()));
    });
#endif
}
const qxBenchEntry BASE64_DECODE("copy/base64-decode", QX_BENCH_MEGABYTES, base64Decode);

void hexEncode(qxBenchCase& work)
{
    work.amount = TEXT_BYTES;
    const auto bytes = std::make_shared<Bytes>(sampleText(TEXT_BYTES));
    work.add("qxbase", [bytes] {
        return checksumOf(encoded<qxSerializeAdapterHex>(*bytes, std::size_t{2} * TEXT_BYTES));
    });
}
const qxBenchEntry HEX_ENCODE("copy/hex-encode", QX_BENCH_MEGABYTES, hexEncode);

void hexDecode(qxBenchCase& work)
{
    work.amount = TEXT_BYTES;
    const auto bytes = std::make_shared<Bytes>(
        encoded<qxSerializeAdapterHex>(sampleText(TEXT_BYTES), std::size_t{2} * TEXT_BYTES));
    work.add("qxbase", [bytes] { return checksumOf(decoded<qxSerializeAdapterHex>(*bytes, TEXT_BYTES)); });
}
const qxBenchEntry HEX_DECODE("copy/hex-decode", QX_BENCH_MEGABYTES, hexDecode);

// As much zlib as there is, in one call.

constexpr int GZIP_WINDOW = MAX_WBITS + 16;

std::uint64_t zlibDeflated(const Bytes& bytes)
{
    Bytes result(bytes.size());
    z_stream stream = {};
    deflateInit2(&stream, 6, Z_DEFLATED, GZIP_WINDOW, 8, Z_DEFAULT_STRATEGY);
    stream.next_in = const_cast<unsigned char*>(bytes.data());
    stream.avail_in = static_cast<unsigned int>(bytes.size());
    stream.next_out = result.data();
    stream.avail_out = static_cast<unsigned int>(result.size());
    deflate(&stream, Z_FINISH);
    const std::uint64_t size = stream.total_out;
    deflateEnd(&stream);
    return size;
}

void gzipEncode(qxBenchCase& work)
{
    work.amount = TEXT_BYTES;
    const auto bytes = std::make_shared<Bytes>(sampleText(TEXT_BYTES));
    work.add("qxbase", [bytes] {
        return std::uint64_t{encoded<qxSerializeAdapterCompress>(*bytes, TEXT_BYTES).size()};
    });
    work.add("zlib", [bytes] { return zlibDeflated(*bytes); });
}
const qxBenchEntry GZIP_ENCODE("copy/gzip-encode", QX_BENCH_MEGABYTES, gzipEncode);

void gzipDecode(qxBenchCase& work)
{
    work.amount = TEXT_BYTES;
    const auto bytes =
        std::make_shared<Bytes>(encoded<qxSerializeAdapterCompress>(sampleText(TEXT_BYTES), TEXT_BYTES));
    work.add("qxbase",
             [bytes] { return checksumOf(decoded<qxSerializeAdapterCompress>(*bytes, TEXT_BYTES)); });
    work.add("zlib", [bytes] {
        Bytes result(TEXT_BYTES);
        z_stream stream = {};
        inflateInit2(&stream, GZIP_WINDOW);
        stream.next_in = bytes->data();
        stream.avail_in = static_cast<unsigned int>(bytes->size());
        stream.next_out = result.data();
        stream.avail_out = TEXT_BYTES;
        inflate(&stream, Z_FINISH);
        inflateEnd(&stream);
        return checksumOf(result);
    });
}
const qxBenchEntry GZIP_DECODE("copy/gzip-decode", QX_BENCH_MEGABYTES, gzipDecode);

} // namespace
