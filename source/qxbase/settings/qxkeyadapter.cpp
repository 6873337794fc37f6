// SPDX-License-Identifier: see LICENSE

#include "qxkeydatabase.h"
#include "qxmessage.h"
#include "qxserializeadapter.h"

#include "serialize/qxcuttext.h"
#include "serialize/qxurlschemes.h"
#include "settings/qxkeynames.h"

#include <algorithm>
#include <exception>
#include <string>
#include <string_view>

namespace
{

constexpr unsigned int MAX_SHOWN = 16384; // bytes of a URL in a message, which must fit a string

struct Key {
    qxString path;
    qxString name;
};

int digitOf(char c)
{
    constexpr std::string_view DIGITS = "0123456789abcdef";
    const std::size_t digit = DIGITS.find(c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c);
    return digit == std::string_view::npos ? -1 : static_cast<int>(digit);
}

// With the characters for their %HH.
qxString decoded(std::string_view text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int high = text[i] == '%' && text.size() - i > 2 ? digitOf(text[i + 1]) : -1;
        const int low = high >= 0 ? digitOf(text[i + 2]) : -1;
        if (low >= 0) i += 2;
        result += low >= 0 ? static_cast<char>(high << 4 | low) : text[i];
    }
    return qxString(result.data(), result.size());
}

// "reg:NAME" is a key of the default path, "reg:PATH/NAME" another; what stands behind "?" is not part of it.
Key keyOf(const qxString& url)
{
    std::string_view text(url.getString(), url.length());
    text.remove_prefix(std::min(text.find(':') + 1, text.size()));
    text = text.substr(0, text.find('?'));
    const std::string way = qxNormalKeyPath(text);
    const std::size_t end = way.rfind('/');
    if (end == std::string::npos) return {qxString(), decoded(way)};
    return {decoded(std::string_view(way).substr(0, end)), decoded(std::string_view(way).substr(end + 1))};
}

// The value of a key as bytes: what it is when the adapter is made, or what it becomes when the adapter goes.
class KeyAdapter final : public qxSerializeAdapter
{
public:
    KeyAdapter(const qxString& url, qxSerializeAction action)
        : m_key(keyOf(url)), m_action(action == QX_SERIALIZE_APPEND ? QX_SERIALIZE_OUTPUT : action)
    {
        setName(url);
        if (action == QX_SERIALIZE_OUTPUT) return;
        const qxString value = qxKeyDatabase::getRegKey(QX_KEY_USER, m_key.path, m_key.name);
        m_bytes.assign(value.getString(), value.length());
        if (action == QX_SERIALIZE_APPEND) return;
        if (value.isEmpty() && !qxKeyDatabase::existRegKey(QX_KEY_USER, m_key.path, m_key.name))
            setError("There is no such key");
        const auto* const start = reinterpret_cast<const unsigned char*>(m_bytes.data());
        m_window = {start, start + m_bytes.size(), nullptr};
    }

    ~KeyAdapter() noexcept(false) override
    {
        const bool isUnwinding = std::uncaught_exceptions() > 0;
        try {
            finish();
        } catch (...) { // a receiver of messages raised
            if (!isUnwinding) throw;
        }
    }

    unsigned char supportAction(qxSerializeAction action) override { return action == m_action; }

protected:
    unsigned int read_imp(unsigned char* buffer, unsigned int count) override
    {
        const unsigned int size = std::min(count, static_cast<unsigned int>(length_imp()));
        std::copy_n(m_window.next, size, buffer);
        m_window.next += size;
        return size;
    }
    unsigned char read_imp() override
    {
        unsigned char byte = 0;
        read_imp(&byte, 1);
        return byte;
    }
    qxUInt64 length_imp() override { return static_cast<qxUInt64>(m_window.end - m_window.next); }

    void write_imp(unsigned char byte) override { write_imp(&byte, 1); }
    void write_imp(unsigned char* bytes, unsigned int count) override
    {
        if (m_action != QX_SERIALIZE_OUTPUT) return setError("The key is open for reading");
        if (count > qxString::MAX_LENGTH - m_bytes.size()) return setError("Too many characters in qxString");
        m_bytes.append(reinterpret_cast<const char*>(bytes), count);
    }

private:
    void finish()
    {
        if (m_action != QX_SERIALIZE_OUTPUT) return;
        const qxString value(m_bytes.data(), m_bytes.size());
        if (!hasError() && qxKeyDatabase::setRegKey(QX_KEY_USER, m_key.path, m_key.name, value)) return;
        qxMessage::message(QX_LEVEL_WARNING, "Could not set '%s'", qxCutText(getName(), MAX_SHOWN));
    }

    const Key m_key;
    const qxSerializeAction m_action;
    std::string m_bytes;
};

qxRefPointer<qxSerializeAdapter> openKey(const qxString& url, qxSerializeAction action)
{
    return new KeyAdapter(url, action);
}

[[maybe_unused]] const bool s_isAdded = qxAddURLScheme("reg", openKey);

} // namespace
