// Reads any bytes as a settings document and asks it for a key, which the first two lines are, then sets the key to the text
// of the third line: what is set must be found again, also after the document was saved and read, and nothing else may
// change.
// SPDX-License-Identifier: see LICENSE

#include "qxkeydatabase.h"
#include "qxmessage.h"
#include "qxserializeadapter.h"
#include "qxurlmanager.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>

namespace
{

void require(bool condition)
{
    if (!condition) std::abort();
}

std::string s_document;

/// The document as a stream.
class Stream final : public qxSerializeAdapter
{
public:
    explicit Stream(qxSerializeAction action)
    {
        if (action == QX_SERIALIZE_OUTPUT) s_document.clear();
    }

protected:
    unsigned int read_imp(unsigned char* buffer, unsigned int count) override
    {
        const auto size =
            static_cast<unsigned int>(std::min<std::size_t>(count, s_document.size() - m_position));
        std::copy_n(s_document.data() + m_position, size, buffer);
        m_position += size;
        return size;
    }
    unsigned char read_imp() override
    {
        unsigned char byte = 0;
        read_imp(&byte, 1);
        return byte;
    }
    qxUInt64 length_imp() override { return s_document.size() - m_position; }
    void write_imp(unsigned char byte) override { s_document += static_cast<char>(byte); }
    void write_imp(unsigned char* bytes, unsigned int count) override
    {
        s_document.append(reinterpret_cast<const char*>(bytes), count);
    }

private:
    std::size_t m_position = 0;
};

class Manager final : public qxURLManagerInterface
{
public:
    qxRefPointer<qxSerializeAdapter> onGetURLAdapter(const qxString&, qxSerializeAction action) override
    {
        return new Stream(action);
    }
};

bool start()
{
    qxMessage::setMessageLevel(QX_LEVEL_ALWAYS); // hostile documents have much to warn of
    qxKeyDatabase::enableSystemRegistry(0);
    return qxSerializeAdapter::registerURLManager("fuzz", new Manager);
}

qxString takeLine(std::string_view& rest)
{
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    return qxString(line.data(), std::min<std::size_t>(line.size(), qxString::MAX_LENGTH));
}

typedef std::map<std::string, std::string> Values;

Values values()
{
    Values all;
    for (const qxKeyEntry& entry : qxKeyDatabase::getLocalKeys())
        all[std::string(entry.path) + "\n" + entry.name.getString()] = entry.value.getString();
    return all;
}

/// True when of all values at most those of one name differ.
bool differInOneName(const Values& before, const Values& after)
{
    std::map<std::string, int> names;
    const auto note = [&names](const Values& some, const Values& others) {
        for (const auto& [key, value] : some) {
            const auto other = others.find(key);
            if (other == others.end() || other->second != value) ++names[key.substr(key.rfind('\n') + 1)];
        }
    };
    note(before, after);
    note(after, before);
    return names.size() <= 1;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool isStarted = start();
    require(isStarted);
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    const qxString path = takeLine(rest);
    const qxString name = takeLine(rest);
    const qxString value = takeLine(rest);
    s_document = rest;

    if (!qxKeyDatabase::setLocalRegistry("fuzz:document")) {
        require(!qxKeyDatabase::existRegKey(QX_KEY_USER, path, name));
        qxKeyDatabase::setLocalRegistry("");
        return 0;
    }
    const bool wasThere = qxKeyDatabase::existRegKey(QX_KEY_USER, path, name) != 0;
    require(wasThere || qxKeyDatabase::getRegKey(QX_KEY_USER, path, name).isEmpty());
    const Values before = values();
    const std::string document = s_document;
    const bool isSet = qxKeyDatabase::setRegKey(QX_KEY_USER, path, name, value) != 0;
    require(isSet || s_document == document);
    require(isSet || values() == before);
    for (int i = 0; isSet && i < 2; ++i) { // as it was set, then as it is read
        require(qxKeyDatabase::getRegKey(QX_KEY_USER, path, name) == value);
        require(differInOneName(before, values()));
        require(i == 1 || qxKeyDatabase::setLocalRegistry("fuzz:document"));
    }
    if (isSet && qxKeyDatabase::removeRegKey(QX_KEY_USER, path, name))
        require(!qxKeyDatabase::existRegKey(QX_KEY_USER, path, name));
    qxKeyDatabase::setLocalRegistry("");
    return 0;
}
