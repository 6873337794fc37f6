// SPDX-License-Identifier: see LICENSE

#include "serialize/qxterminatedtext.h"

#include "core/qxstringrefill.h"
#include "serialize/qxadapterbytes.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

namespace
{

constexpr unsigned int BEHIND = 15; // bytes behind a text that setting a string may read

using Bytes = std::span<const unsigned char>;

thread_local std::vector<char> t_scratch;

/// Collects a text. The thread's buffer is taken out meanwhile: reading a stream may lead here again.
class Collector
{
public:
    explicit Collector(unsigned int maximum) : m_maximum(maximum), m_bytes(std::exchange(t_scratch, {}))
    {
        m_bytes.clear();
    }
    ~Collector() { t_scratch = std::move(m_bytes); }
    Collector(const Collector&) = delete;
    Collector& operator=(const Collector&) = delete;

    void add(Bytes bytes)
    {
        const std::size_t kept = std::min(bytes.size(), m_maximum - m_bytes.size());
        m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(kept));
        m_isCut = m_isCut || kept < bytes.size();
    }

    /// Sets `text` and tells whether that is all of it.
    bool finish(qxString& text)
    {
        const std::size_t count = m_bytes.size();
        m_bytes.resize(count + BEHIND);
        qxStringRefill::set(text, m_bytes.data(), count);
        return !m_isCut;
    }

private:
    const std::size_t m_maximum;
    std::vector<char> m_bytes;
    bool m_isCut = false;
};

// Index of the terminator, or the number of bytes.
std::size_t findTerminator(Bytes bytes, int terminator)
{
    if (bytes.empty() || terminator == QX_NO_TERMINATOR) return bytes.size();
    const void* const hit = std::memchr(bytes.data(), terminator, bytes.size());
    return hit ? static_cast<std::size_t>(static_cast<const unsigned char*>(hit) - bytes.data())
               : bytes.size();
}

void collect(qxSerializeAdapter& adapter, int terminator, Collector& collected)
{
    for (;;) {
        const Bytes bytes = qxAdapterBytes::peek(adapter);
        if (bytes.empty()) {
            if (!adapter.hasData()) return;
            const unsigned char byte = adapter.read();
            if (byte == terminator) return;
            collected.add({&byte, 1});
            continue;
        }
        const std::size_t count = findTerminator(bytes, terminator);
        collected.add(bytes.first(count));
        const bool isEnd = count < bytes.size();
        qxAdapterBytes::consume(adapter, static_cast<unsigned int>(count + (isEnd ? 1 : 0)));
        if (isEnd) return;
    }
}

} // namespace

bool qxReadTerminatedText(qxSerializeAdapter& adapter, int terminator, unsigned int maximum, qxString& text)
{
    const Bytes bytes = qxAdapterBytes::peek(adapter);
    const std::size_t count = findTerminator(bytes, terminator);
    if (count <= maximum && count + BEHIND <= bytes.size()) { // mostly: the whole text lies there
        qxStringRefill::set(text, reinterpret_cast<const char*>(bytes.data()), count);
        qxAdapterBytes::consume(adapter, static_cast<unsigned int>(count + 1));
        return true;
    }
    Collector collected(maximum);
    collect(adapter, terminator, collected);
    return collected.finish(text);
}
