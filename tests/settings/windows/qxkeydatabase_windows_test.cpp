// SPDX-License-Identifier: see LICENSE

#include "qxkeydatabase.h"

#include "settings/qxsettingstest.h"

#include "platform/windows/qxwindows.h"

#include <string>

namespace
{

constexpr const char* PATH = "software/Norvale/QuaxoSDKTest";
constexpr const wchar_t* WIDE_PATH = L"software\\Norvale\\QuaxoSDKTest";

// The system's registry, under a path of the test's own.
class qxKeyDatabaseWindows : public Settings
{
protected:
    qxKeyDatabaseWindows()
    {
        qxKeyDatabase::setLocalRegistry("");
        qxKeyDatabase::enableSystemRegistry(1);
        qxKeyDatabase::setDefaultRegistry(PATH);
    }
    ~qxKeyDatabaseWindows() override
    {
        for (const HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE})
            RegDeleteKeyExW(root, WIDE_PATH, KEY_WOW64_64KEY, 0);
        qxKeyDatabase::setDefaultRegistry("software/Norvale/QuaxoSDK");
        qxKeyDatabase::enableSystemRegistry(0);
    }

    static void plant(const wchar_t* name, DWORD type, const void* data, DWORD size)
    {
        HKEY key = nullptr;
        ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, WIDE_PATH, 0, nullptr, 0,
                                  KEY_SET_VALUE | KEY_WOW64_64KEY, nullptr, &key, nullptr),
                  ERROR_SUCCESS);
        EXPECT_EQ(RegSetValueExW(key, name, 0, type, static_cast<const BYTE*>(data), size), ERROR_SUCCESS);
        RegCloseKey(key);
    }
};

TEST_F(qxKeyDatabaseWindows, keepsTextsInTheRegistryOfTheSystem)
{
    const std::string values[] = {
        "text", "", " blanks ", "\xC3\xA9\xF0\x9F\x98\x80", "\x01\n", std::string(65535, 'x')};
    for (const std::string& value : values) {
        SCOPED_TRACE(value.substr(0, 40));
        ASSERT_TRUE(qxKeyDatabase::setUserKey("a key", value.c_str()));
        EXPECT_EQ(qxKeyDatabase::getUserKey("a key"), value.c_str());
        EXPECT_TRUE(qxKeyDatabase::existUserKey("a key"));
        EXPECT_FALSE(qxKeyDatabase::existUserKey("a key", QX_KEY_GLOBAL));
    }
    EXPECT_EQ(get("\\software\\Norvale/QuaxoSDKTest/", "a key"), values[5]);
    EXPECT_TRUE(qxKeyDatabase::removeUserKey("a key"));
    EXPECT_FALSE(qxKeyDatabase::removeUserKey("a key"));
    EXPECT_FALSE(qxKeyDatabase::existUserKey("a key"));
    EXPECT_EQ(qxKeyDatabase::getDefaultUserKey("a key", "missing"), "missing");
}

TEST_F(qxKeyDatabaseWindows, keepsGlobalKeysInTheTreeOfTheMachine)
{
    ASSERT_TRUE(qxKeyDatabase::setGlobalKey("password", "secret"));
    EXPECT_EQ(qxKeyDatabase::getGlobalKey("password"), "secret");
    EXPECT_FALSE(qxKeyDatabase::existUserKey("password", QX_KEY_GLOBAL)); // scrambled
    EXPECT_TRUE(qxKeyDatabase::setUserKey("plain", "as it stands", QX_KEY_GLOBAL));
    EXPECT_EQ(qxKeyDatabase::getGlobalKey("plain"), "as it stands");
    EXPECT_TRUE(qxKeyDatabase::removeGlobalKey("password"));
    EXPECT_FALSE(qxKeyDatabase::existGlobalKey("password"));
}

TEST_F(qxKeyDatabaseWindows, readsEveryTypeAsText)
{
    const DWORD number = 4000000000U;
    const unsigned long long large = 18446744073709551615ULL;
    const unsigned char bytes[] = {0, 0x1F, 0xFF};
    plant(L"text", REG_SZ, L"unended", 14);
    plant(L"expand", REG_EXPAND_SZ, L"%PATH%", 14);
    plant(L"bytes", REG_BINARY, bytes, sizeof(bytes));
    plant(L"nothing", REG_BINARY, nullptr, 0);
    plant(L"number", REG_DWORD, &number, sizeof(number));
    plant(L"large", REG_QWORD, &large, sizeof(large));
    plant(L"short", REG_QWORD, bytes, sizeof(bytes));
    plant(L"other", REG_MULTI_SZ, L"a\0b\0", 10);
    const struct {
        const char* name;
        const char* value;
    } rows[] = {{"text", "unended"},
                {"expand", "%PATH%"},
                {"bytes", "001FFF"},
                {"nothing", ""},
                {"number", "4000000000"},
                {"large", "18446744073709551615"},
                {"short", ""},
                {"other", ""}};
    for (const auto& row : rows) EXPECT_EQ(get("", row.name), row.value) << row.name;
}

TEST_F(qxKeyDatabaseWindows, theDocumentIsAskedFirstAndTheRegistryIsSet)
{
    ASSERT_TRUE(
        use("<r><software><Norvale><QuaxoSDKTest><x>local</x></QuaxoSDKTest></Norvale></software></r>"));
    const std::string before = content();
    ASSERT_TRUE(qxKeyDatabase::setUserKey("x", "system"));
    ASSERT_TRUE(qxKeyDatabase::setUserKey("y", "system"));
    EXPECT_EQ(qxKeyDatabase::getUserKey("x"), "local"); // deliberate: a document overrides
    EXPECT_EQ(qxKeyDatabase::getUserKey("y"), "system");
    EXPECT_EQ(content(), before);

    qxKeyDatabase::enableSystemRegistry(0);
    EXPECT_FALSE(qxKeyDatabase::existUserKey("y"));
    ASSERT_TRUE(qxKeyDatabase::setUserKey("x", "changed"));
    EXPECT_EQ(qxKeyDatabase::getUserKey("x"), "changed");
}

} // namespace
