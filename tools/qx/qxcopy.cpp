// SPDX-License-Identifier: see LICENSE

#include "qxcommands.h"
#include "qxoutput.h"
#include "qxprogressbar.h"

#include "qxserializeadaptercompress.h"
#include "qxserializeadapterencode.h"
#include "qxserializeadapterreplace.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <memory>

#include <zlib.h>

namespace
{

typedef qxRefPointer<qxSerializeAdapter> Stream;

constexpr unsigned int BLOCK = 1048576; // bytes; so many pass by the queues of files
constexpr unsigned long long NO_LIMIT = std::numeric_limits<unsigned long long>::max();
const char FORMS[] = "b64|hex|gz";

/// The stream failed while it was read or written; the text says how.
class Failure : public std::runtime_error
{
public:
    Failure(qxStatus code, const std::string& text) : std::runtime_error(text), status(code) {}

    const qxStatus status;
};

/// A URL could not be opened; the library has said why.
class NotOpened : public std::exception
{};

std::string errorOf(qxSerializeAdapter& stream)
{
    return std::string(viewOf(stream.getError()));
}

qxString urlOf(const std::string& word)
{
    if (word.size() > qxString::MAX_LENGTH) throw qxUsageError("a URL is too long");
    const qxString url = word == "-" ? qxString("con:") : qxString(word.data(), word.size());
    if (qxSerializeAdapter::getURLScheme(url) == "mem")
        throw qxUsageError("'" + word + "' names memory of another program");
    return url;
}

Stream open(const qxString& url, qxSerializeAction action)
{
    const Stream stream = qxSerializeAdapter::getURLAdapter(url, action);
    if (!stream) throw NotOpened();
    return stream;
}

/// Encodes what is written to `stream`, or decodes what is read from it.
Stream addForm(const Stream& stream, std::string_view form, qxSerializeAction action)
{
    if (form == "b64") return new qxSerializeAdapterBase64(stream, action);
    if (form == "hex") return new qxSerializeAdapterHex(stream, action);
    if (form == "gz") return new qxSerializeAdapterCompress(stream, action);
    return stream;
}

/// What `stream` decodes or encodes, null when it does not.
qxSerializeAdapter* streamOf(const Stream& stream)
{
    const auto* const filter = dynamic_cast<const qxSerializeAdapterFilter*>(stream.get());
    return filter ? filter->getStream() : nullptr;
}

Stream streamBeneath(Stream stream)
{
    while (qxSerializeAdapter* const other = streamOf(stream)) stream = other;
    return stream;
}

/// Raises Failure when reading `stream` failed: what only a decoder finds fault with is malformed.
void checkRead(const std::string& name, const Stream& stream)
{
    if (!stream->hasError()) return;
    const bool isSound = streamBeneath(stream)->hasError() == 0;
    if (isSound) throw Failure(qxStatus::MALFORMED, name + ": " + errorOf(*stream));
    throw Failure(qxStatus::NO_FILE, errorOf(*stream));
}

/// Closes all the filters of `stream`, the outer ones first.
void closeFilters(Stream stream)
{
    while (auto* const filter = dynamic_cast<qxSerializeAdapterFilter*>(stream.get())) {
        if (!filter->close()) throw Failure(qxStatus::NO_FILE, errorOf(*filter));
        stream = filter->getStream();
    }
}

/// What a copy is written to. A file is replaced as a whole when all was written.
class Target
{
public:
    Target(const qxString& url, std::string_view form)
    {
        const qxString path = qxSerializeAdapter::getURLPath(url);
        if (!path.isEmpty() && qxSerializeAdapterReplace::canReplace(path)) {
            m_file = new qxSerializeAdapterReplace(path);
            m_stream = m_file.get();
            const qxString encoding = qxSerializeAdapter::getURLBaseEncoding(url);
            m_stream = addForm(m_stream, viewOf(encoding), QX_SERIALIZE_OUTPUT);
            if (!encoding.isEmpty() && m_stream == m_file.get())
                throw qxUsageError("unknown encoding '" + std::string(viewOf(encoding)) + "'");
            check();
        } else {
            m_stream = open(url, QX_SERIALIZE_OUTPUT);
        }
        m_stream = addForm(m_stream, form, QX_SERIALIZE_OUTPUT);
    }

    /// Without commit nothing is kept, where that can be said of the target.
    ~Target() noexcept(false)
    {
        if (m_isCommitted) return;
        for (Stream stream = m_stream;
             stream;) { // what has an error hands nothing on, and says nothing any more
            stream->setError("given up");
            const auto* const filter = dynamic_cast<qxSerializeAdapterFilter*>(stream.get());
            stream = filter ? filter->getStream() : nullptr;
        }
    }
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

    std::string getTemporaryName() const
    {
        return m_file ? std::string(viewOf(m_file->getTemporaryName())) : std::string();
    }

    void write(const std::string& bytes)
    {
        m_stream->write(bytes.data(), static_cast<unsigned int>(bytes.size()));
        check();
    }

    /// Makes what was written reach those who wait for it, where a file's readers do not.
    void handOn()
    {
        if (!m_file) m_stream->flush();
    }

    void commit()
    {
        closeFilters(m_stream);
        if (!m_file) m_stream->flush();
        check();
        if (m_file && !m_file->commit()) throw Failure(qxStatus::NO_FILE, errorOf(*m_file));
        m_isCommitted = true;
    }

private:
    void check()
    {
        if (m_stream->hasError()) throw Failure(qxStatus::NO_FILE, errorOf(*m_stream));
    }

    qxRefPointer<qxSerializeAdapterReplace> m_file; // null when it is no file that can be replaced
    Stream m_stream;
    bool m_isCommitted = false;
};

/// What a copy is read from.
class Source
{
public:
    Source(const std::string& name, std::string_view form)
        : m_name(name), m_stream(addForm(open(urlOf(name), QX_SERIALIZE_INPUT), form, QX_SERIALIZE_INPUT)),
          m_raw(streamBeneath(m_stream)), m_size(m_raw->length())
    {}

    /// The next bytes, as soon as there are some; false at the end.
    bool read(std::string& block)
    {
        const bool hasMore = m_stream->hasData() != 0;
        const qxUInt64 there = hasMore ? std::clamp<qxUInt64>(m_stream->length(), 1, BLOCK) : 0;
        block.resize(static_cast<std::size_t>(there));
        block.resize(
            m_stream->read(reinterpret_cast<unsigned char*>(block.data()), static_cast<unsigned int>(there)));
        if (block.empty()) checkRead(m_name, m_stream);
        report();
        return !block.empty();
    }

    /// True when the next bytes may have to be waited for.
    bool mustWait() { return m_size == 0 && m_stream->length() == 0; }

private:
    void report()
    {
        if (m_size == 0) return;
        const auto left = static_cast<double>(std::min(m_raw->length(), m_size));
        const double part = 1.0 - left / static_cast<double>(m_size);
        qxProgress::report(m_name.c_str(), static_cast<unsigned int>(part * 100.0));
    }

    const std::string m_name;
    const Stream m_stream;
    const Stream m_raw;    // what is read before anything is decoded
    const qxUInt64 m_size; // of that; 0 when it cannot be told
};

/// The size of "--limit": a number, with K, M or G for 1,024 bytes and more.
unsigned long long sizeOf(std::string text)
{
    const std::string whole = text;
    unsigned int shift = 0;
    const std::size_t unit = text.empty() ? std::string::npos : std::string("KMG").find(text.back() & ~0x20);
    if (unit != std::string::npos) {
        shift = 10 * static_cast<unsigned int>(unit + 1);
        text.pop_back();
    }
    const auto number = parseNumber<unsigned long long>(text, "size");
    if (number > NO_LIMIT >> shift) throw qxUsageError("'" + whole + "' is no size");
    return number << shift;
}

/// What a copy tells when it is done.
class Tally
{
public:
    void add(const std::string& bytes)
    {
        m_bytes += bytes.size();
        m_crc = crc32_z(m_crc, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    }

    unsigned long long getBytes() const { return m_bytes; }

    std::string getText() const
    {
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - m_start;
        const double rate = static_cast<double>(m_bytes) / std::max(time.count(), 1e-6) / 1e6;
        return qxString::str("%d bytes, %.1f MB/s, CRC-32 %08X", m_bytes, rate,
                             static_cast<unsigned int>(m_crc))
            .getString();
    }

private:
    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    unsigned long long m_bytes = 0;
    unsigned long m_crc = 0;
};

/// Copies all; false when an interrupt came between.
bool copyAll(Source& source, Target& target, Tally& tally, unsigned long long limit)
{
    const qxProgressBar bar;
    for (std::string block; source.read(block);) {
        if (isInterrupted()) return false;
        tally.add(block);
        if (tally.getBytes() > limit)
            throw Failure(qxStatus::LIMIT, "More than " + std::to_string(limit) + " bytes");
        target.write(block);
        if (source.mustWait()) target.handOn();
    }
    return !isInterrupted();
}

qxStatus copy(qxReport& report, const qxCommandLine& line)
{
    const unsigned long long limit =
        line.hasOption("--limit") ? sizeOf(line.getOptionText("--limit")) : NO_LIMIT;
    const qxString to = urlOf(line.getArgumentText(1));
    auto source = std::make_unique<Source>(line.getArgumentText(0), line.getOptionText("--decode"));
    Target target(to, line.getOptionText("--encode"));
    Tally tally;
    const qxQuickEnd quickEnd(target.getTemporaryName());
    if (!copyAll(*source, target, tally, limit)) return qxStatus::INTERRUPTED;
    source.reset(); // it may be the file that is replaced, which some systems refuse as long as it is open
    target.commit();
    report.printNote(tally.getText());
    return qxStatus::DONE;
}

void show(const std::string& name, qxSerializeAdapter& output)
{
    Source source(name, "");
    for (std::string block; !isInterrupted() && source.read(block);) {
        output.write(block.data(), static_cast<unsigned int>(block.size()));
        if (source.mustWait()) output.flush();
        if (output.hasError()) throw qxFileError(errorOf(output));
    }
    output.flush();
    if (output.hasError()) throw qxFileError(errorOf(output));
}

qxStatus runCopy(qxReport& report, const qxCommandLine& line)
{
    try {
        return copy(report, line);
    } catch (const Failure& failure) {
        report.printError(failure.what());
        return failure.status;
    } catch (const NotOpened&) {
        return qxStatus::NO_FILE;
    }
}

qxStatus runCat(qxReport& report, const qxCommandLine& line)
{
    qxStatus status = qxStatus::DONE;
    const qxQuickEnd quickEnd("");
    const Stream output = open("con:", QX_SERIALIZE_OUTPUT);
    for (const std::string& name : argumentsFrom(line, 0)) {
        try {
            show(name, *output);
        } catch (const Failure& failure) {
            report.printError(failure.what());
            status = std::max(status, failure.status);
        } catch (const NotOpened&) {
            status = std::max(status, qxStatus::NO_FILE);
        }
    }
    return status;
}

} // namespace

void declareCopy(qxTool& tool)
{
    tool.add("cat", "prints what URLs name, one behind the other", runCat)
        .addArgument("URL", "a file, or what docs/urls.md tells", QX_ARGUMENT_SOME);
    tool.add("copy", "copies from any URL to any other", runCopy)
        .addArgument("FROM", "what is read")
        .addArgument("TO", "what is written; a file is replaced when all of it is there")
        .addOption("--decode", FORMS, "what FROM is decoded from")
        .addOption("--encode", FORMS, "what TO is encoded as, behind the decoding")
        .addOption("--limit", "SIZE", "bytes at most, as they are decoded; with K, M or G times 1,024");
}
