// SPDX-License-Identifier: see LICENSE

#include "platform/qxplatformregistry.h"

#include "platform/windows/qxwindows.h"

#include <cstring>
#include <vector>

namespace
{

constexpr int MOST_TRIES = 8; // a value may grow between the question for its size and that for its bytes

HKEY rootOf(bool isUser)
{
    return isUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
}

class Key
{
public:
    Key(bool isUser, const char* path, REGSAM access)
    {
        if (RegOpenKeyExW(rootOf(isUser), qxWideText(path).c_str(), 0, access | KEY_WOW64_64KEY, &m_key) !=
            ERROR_SUCCESS)
            m_key = nullptr;
    }
    explicit Key(HKEY key) : m_key(key) {}
    ~Key()
    {
        if (m_key) RegCloseKey(m_key);
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    bool isOpen() const { return m_key != nullptr; }
    HKEY get() const { return m_key; }

private:
    HKEY m_key = nullptr;
};

bool query(HKEY key, const std::wstring& name, DWORD& type, std::vector<unsigned char>& data)
{
    for (int tries = 0; tries < MOST_TRIES; ++tries) {
        DWORD size = 0;
        if (RegQueryValueExW(key, name.c_str(), nullptr, &type, nullptr, &size) != ERROR_SUCCESS)
            return false;
        data.resize(size);
        const LONG result =
            RegQueryValueExW(key, name.c_str(), nullptr, &type, size != 0 ? data.data() : nullptr, &size);
        if (result == ERROR_MORE_DATA) continue;
        data.resize(size);
        return result == ERROR_SUCCESS;
    }
    return false;
}

// The terminator, which is usual, does not count; nor does half a character.
std::string textOf(const std::vector<unsigned char>& data)
{
    std::wstring text(data.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), data.data(), text.size() * sizeof(wchar_t));
    while (!text.empty() && text.back() == L'\0') text.pop_back();
    return qxNarrowText(text);
}

template <class Number>
std::string numberOf(const std::vector<unsigned char>& data)
{
    Number number = 0;
    if (data.size() != sizeof(number)) return {};
    std::memcpy(&number, data.data(), sizeof(number));
    return std::to_string(number);
}

std::string bytesOf(const std::vector<unsigned char>& data)
{
    constexpr char DIGITS[] = "0123456789ABCDEF";
    std::string text;
    for (const unsigned char byte : data) {
        text += DIGITS[byte >> 4];
        text += DIGITS[byte & 15];
    }
    return text;
}

std::string convert(DWORD type, const std::vector<unsigned char>& data)
{
    switch (type) {
    case REG_SZ:
    case REG_EXPAND_SZ:
        return textOf(data);
    case REG_BINARY:
        return bytesOf(data);
    case REG_DWORD:
        return numberOf<unsigned long>(data);
    case REG_QWORD:
        return numberOf<unsigned long long>(data);
    default:
        return {};
    }
}

} // namespace

bool qxPlatformRegistryIsThere()
{
    return true;
}

bool qxPlatformRegistryGet(bool isUser, const char* path, const char* name, std::string& text)
{
    const Key key(isUser, path, KEY_QUERY_VALUE);
    DWORD type = REG_NONE;
    std::vector<unsigned char> data;
    if (!key.isOpen() || !query(key.get(), qxWideText(name), type, data)) return false;
    text = convert(type, data);
    return true;
}

bool qxPlatformRegistrySet(bool isUser, const char* path, const char* name, const char* text)
{
    HKEY made = nullptr;
    if (RegCreateKeyExW(rootOf(isUser), qxWideText(path).c_str(), 0, nullptr, 0,
                        KEY_SET_VALUE | KEY_WOW64_64KEY, nullptr, &made, nullptr) != ERROR_SUCCESS)
        return false;
    const Key key(made);
    const std::wstring wide = qxWideText(text);
    const auto size = static_cast<DWORD>((wide.size() + 1) * sizeof(wchar_t)); // with the terminator
    return RegSetValueExW(key.get(), qxWideText(name).c_str(), 0, REG_SZ,
                          reinterpret_cast<const BYTE*>(wide.c_str()), size) == ERROR_SUCCESS;
}

bool qxPlatformRegistryRemove(bool isUser, const char* path, const char* name)
{
    const Key key(isUser, path, KEY_SET_VALUE);
    return key.isOpen() && RegDeleteValueW(key.get(), qxWideText(name).c_str()) == ERROR_SUCCESS;
}
