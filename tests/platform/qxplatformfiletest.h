// The fixture of the tests about files.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "platform/qxplatformfile.h"

#include "qxtestfolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace fs = std::filesystem;

// A fresh folder, one open file in it, and the error number of the last call.
class qxPlatformFileTest : public testing::Test
{
protected:
    ~qxPlatformFileTest() override { close(); }

    std::string path(const char* name) const { return folder.name(name); }

    bool open(const std::string& name, qxPlatformFileMode mode)
    {
        close();
        file = qxPlatformFileOpen(name.c_str(), mode, error);
        return file != nullptr;
    }

    void close()
    {
        int ignored = 0;
        EXPECT_TRUE(qxPlatformFileClose(file, ignored));
        file = nullptr;
    }

    std::size_t write(const std::string& text)
    {
        return qxPlatformFileWrite(file, text.data(), text.size(), error);
    }

    std::string read(std::size_t count)
    {
        std::string text(count, '?');
        text.resize(qxPlatformFileRead(file, text.data(), count, error));
        return text;
    }

    // Replaces `target` by a new file that holds "new".
    bool replace(const std::string& target)
    {
        std::string temporary;
        close();
        file = qxPlatformFileTemporary(target.c_str(), temporary, error);
        if (!file) return false;
        write("new");
        qxPlatformFileSync(file, error);
        close();
        return qxPlatformFileReplace(temporary.c_str(), target.c_str(), error);
    }

    const TestFolder folder;
    qxPlatformFile* file = nullptr;
    int error = -1;
};
