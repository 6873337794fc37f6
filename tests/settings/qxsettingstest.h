// Settings for tests.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxkeydatabase.h"

#include "qxtestfolder.h"
#include "qxtestsupport.h"

#include <string>

/// A settings document in a fresh folder; the system's registry is off.
class Settings : public testing::Test
{
protected:
    Settings()
    {
        qxKeyDatabase::enableSystemRegistry(0);
        EXPECT_TRUE(qxKeyDatabase::openLocalRegistry(url().c_str()));
    }
    ~Settings() override { qxKeyDatabase::setLocalRegistry(""); }

    std::string url(const char* name = "test.reg") const { return folder.name(name); }

    /// Writes the document and puts it in force.
    bool use(const std::string& content) const
    {
        folder.write("test.reg", content);
        return qxKeyDatabase::setLocalRegistry(url().c_str()) != 0;
    }

    std::string content() const { return folder.read("test.reg"); }

    /// The value; "(none)" when there is none.
    static std::string get(const char* path, const char* name)
    {
        if (!qxKeyDatabase::existRegKey(QX_KEY_USER, path, name)) return "(none)";
        const qxString value = qxKeyDatabase::getRegKey(QX_KEY_USER, path, name);
        return {value.getString(), value.length()};
    }

    static bool set(const char* path, const char* name, const std::string& value)
    {
        return qxKeyDatabase::setRegKey(QX_KEY_USER, path, name, qxString(value.data(), value.size())) != 0;
    }

    static bool remove(const char* path, const char* name)
    {
        return qxKeyDatabase::removeRegKey(QX_KEY_USER, path, name) != 0;
    }

    const TestFolder folder;
};

/// What every document of these tests begins with when the library has written it.
inline const std::string HEADER = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\" ?>\n";
