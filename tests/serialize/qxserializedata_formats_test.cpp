// SPDX-License-Identifier: see LICENSE

#include "qxserializebinary.h"
#include "qxserializeguid.h"
#include "qxserializestring.h"
#include "qxserializevector.h"
#include "qxvaruint64.h"

#include "qxtestvalues.h"

#include <filesystem>
#include <fstream>
#include <regex>
#include <vector>

namespace
{

// Sets the members to 1, 2, 3 and so on.
template <class Vector>
Vector counted(Vector vector)
{
    for (unsigned int i = 0; i < vector.SIZE / 4; ++i) vector[i] = static_cast<float>(i + 1);
    return vector;
}

template <class Data>
std::string line(const char* expression, Data data)
{
    return std::string(expression) + ": " + wireOf(data);
}

#define LINE(expression) line(#expression, expression)

// The drawings of the document, a line each: the expression above it and the bytes in its cells.
std::vector<std::string> readDrawings()
{
    const auto home = std::filesystem::path(QX_TEST_DATA).parent_path().parent_path();
    std::ifstream document(home / "docs/formats.md");
    const std::regex expression("`(.*)`");
    const std::regex cell("\\| ([0-9A-F]{2}) (?=\\|)");
    std::vector<std::string> drawings;
    std::string last;
    bool isDrawing = false;
    for (std::string text; std::getline(document, text);) {
        std::smatch match;
        if (text.starts_with("```")) {
            isDrawing = !isDrawing;
            if (isDrawing) drawings.push_back(last + ":");
        } else if (isDrawing) {
            for (std::sregex_iterator i(text.begin(), text.end(), cell); i != std::sregex_iterator(); ++i)
                drawings.back() += " " + i->str(1);
        } else if (std::regex_match(text, match, expression)) {
            last = match.str(1);
        }
    }
    return drawings;
}

TEST(qxSerializeData, hasTheFormsThatTheDocumentDraws)
{
    const std::vector<std::string> written = {
        LINE(qxSerializeBinary<unsigned char>(161)),
        LINE(qxSerializeBinary<unsigned short>(4660)),
        LINE(qxSerializeBinary<unsigned short>(4660, 0)),
        LINE(qxSerializeBinary<wchar_t>(L'\u20AC')),
        LINE(qxSerializeBinary<unsigned int>(0x12345678)),
        LINE(qxSerializeBinary<unsigned int>(0x12345678, 0)),
        LINE(qxSerializeBinary<qxUInt64>(0x123456789ABCDEF0)),
        LINE(qxSerializeBinary<float>(-1.5F)),
        LINE(qxSerializeBinary<double>(0.1)),
        LINE(qxSerializeBinary<qxSerializeAction>(QX_SERIALIZE_INPUT)),
        LINE(qxVarUInt64(0)),
        LINE(qxVarUInt64(127)),
        LINE(qxVarUInt64(128)),
        LINE(qxVarUInt64(300)),
        LINE(qxVarUInt64(16384)),
        LINE(qxVarUInt64(1ULL << 63)),
        LINE(qxSerializeString("abc")),
        LINE(qxSerializeString("\u20AC", 10)),
        LINE(qxSerializeString()),
        LINE(qxSerializeGUID(qxGUID("{00112233-4455-6677-8899-AABBCCDDEEFF}"))),
        LINE(counted(qxSerializeVec2())),
        LINE(counted(qxSerializeVec3())),
        LINE(counted(qxSerializeVec3(0))),
        LINE(counted(qxSerializeVec4())),
        LINE(counted(qxSerializeMatrix3())),
        LINE(counted(qxSerializeMatrix4())),
    };
    EXPECT_EQ(readDrawings(), written);
}

} // namespace
