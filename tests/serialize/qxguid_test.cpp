// SPDX-License-Identifier: see LICENSE

#include "qxguid.h"

#include "qxtestrows.h"
#include "qxtestsupport.h"

#include <cstdint>
#include <cstring>
#include <string>

namespace
{

const char TEXT[] = "{01234567-89AB-CDEF-1032-547698BADCFE}";
const qxGUID KNOWN(0x01234567, 0x89AB, 0xCDEF, qxGUIDBytes(0x10, 0x32, 0x54, 0x76, 0x98, 0xBA, 0xDC, 0xFE));

// What became of a text: the GUID it gave and the message it sent.
template <class Text>
std::string reading(const Text& text)
{
    const MessageRecorder recorder;
    std::string result = qxGUID(text).asString().getString();
    for (const RecordedMessage& message : recorder.messages()) {
        EXPECT_EQ(message.level, 16384U);
        result += " " + message.text;
    }
    return result;
}

TEST(qxGUID, writesItsText)
{
    EXPECT_EQ(KNOWN.asString(), TEXT);
    EXPECT_EQ(qxGUID().asString(), "{00000000-0000-0000-0000-000000000000}");
}

TEST(qxGUID, readsBothFormsInEitherCase)
{
    const MessageRecorder recorder;
    for (const char* const text :
         {TEXT, "01234567-89AB-CDEF-1032-547698BADCFE", "{01234567-89ab-cdef-1032-547698badcfe}",
          "01234567-89aB-cDeF-1032-547698BadCFe"}) {
        SCOPED_TRACE(text);
        const std::size_t length = std::strlen(text);
        const std::wstring wide(text, text + length);
        EXPECT_EQ(qxGUID(text), KNOWN);
        EXPECT_EQ(qxGUID(qxString(text)), KNOWN);
        EXPECT_EQ(qxGUID(wide.c_str()), KNOWN);
        EXPECT_EQ(qxGUID((std::string(text) + "}-0").c_str(), length), KNOWN);
        EXPECT_EQ(qxGUID((wide + L"}-0").c_str(), length), KNOWN);
    }
    EXPECT_TRUE(recorder.texts().empty());
}

TEST(qxGUID, warnsOfTheFirstFaultInAText)
{
    const std::string null = "{00000000-0000-0000-0000-000000000000} Malformed qxGUID ";
    const auto read = [&](const std::string& text) {
        const std::string result = reading(text.c_str());
        EXPECT_EQ(reading(std::wstring(text.begin(), text.end()).c_str()), result);
        if (!text.empty()) {
            EXPECT_EQ(reading(qxString(text.c_str())), result);
        }
        return result.starts_with(null) ? result.substr(null.size()) : result;
    };
    const std::string form = " => {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}";
    for (const char* const text :
         {"", "{}", "01234567-89AB-CDEF-1032-547698BADCFE}", "{01234567-89AB-CDEF-1032-547698BADCFE",
          "[01234567-89AB-CDEF-1032-547698BADCFE}", "{01234567-89AB-CDEF-1032-547698BADCFE]",
          "01234567-89AB-CDEF-1032-547698BADCF", "0123456-789AB-CDEF-1032-547698BADCFE",
          "G1234567-89AB0CDEF-1032-547698BADCFE", "01234567-89AB-CDEF01032-547698BADCFE",
          "01234567-89AB-CDEF-10320547698BADCFE", " {01234567-89AB-CDEF-1032-547698BADCFE}",
          "{{01234567-89AB-CDEF-1032-547698BADCFE}}"})
        expectRows(read, text + form);
    const std::string first = "{????????"
                              "-XXXX-XXXX-XXXX-XXXXXXXXXXXX}";
    const std::string fourth = "{XXXXXXXX-XXXX-XXXX-????"
                               "-????????????}";
    expectRows(read, "G1234567-89AB-CDEF-1032-547698BADCFE => " + first,
               "{0123456-ABCD-CDEF-1032-547698BADCFE-} => {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}",
               "0123456--G9AB-CDEF-1032-547698BADCFE => " + first,
               "01234567-G9AB-CDxF-1032-547698BADCFE => {XXXXXXXX-????"
               "-XXXX-XXXX-XXXXXXXXXXXX}",
               "01234567-89AB-CD F-1032-547698BADCFx => {XXXXXXXX-XXXX-????"
               "-XXXX-XXXXXXXXXXXX}",
               "{01234567-89AB-CDEF-103g-547698BADCFE} => " + fourth,
               "{01234567-89AB-CDEF-1032-547698BADCF/} => " + fourth);
}

TEST(qxGUID, takesWholeUnitsOfWideTexts)
{
    std::wstring text(TEXT, TEXT + 38);
    text[1] = 0x130; // its low byte is a "0"
    EXPECT_EQ(reading(text.c_str()), "{00000000-0000-0000-0000-000000000000} Malformed qxGUID {????????"
                                     "-XXXX-XXXX-XXXX-XXXXXXXXXXXX}");
    text[1] = 0x17B; // and a "{"
    std::swap(text[0], text[1]);
    EXPECT_EQ(reading(text.c_str()), "{00000000-0000-0000-0000-000000000000} "
                                     "Malformed qxGUID {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}");
}

TEST(qxGUID, onlyAnEmptyStringIsSilent)
{
    const std::string null = "{00000000-0000-0000-0000-000000000000}";
    const std::string warned = null + " Malformed qxGUID {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}";
    EXPECT_EQ(reading(qxString()), null);
    EXPECT_EQ(reading(static_cast<const char*>(nullptr)), warned);
    EXPECT_EQ(reading(static_cast<const wchar_t*>(nullptr)), warned);
    EXPECT_EQ(reading(std::string(70000, '0').c_str()), warned);
}

TEST(qxGUID, showsItsHalvesAndWords)
{
    constexpr std::uint64_t first = 0xCDEF89AB01234567;
    constexpr std::uint64_t second = 0xFEDCBA9876543210;
    std::uint64_t halves[2];
    KNOWN.getGUID(halves[0], halves[1]);
    EXPECT_EQ(halves[0], first);
    EXPECT_EQ(halves[1], second);
    EXPECT_EQ(qxGUID(first, second), KNOWN);

    unsigned int words[4];
    KNOWN.getGUID(words[0], words[1], words[2], words[3]);
    EXPECT_EQ(words[0], 0x01234567U);
    EXPECT_EQ(words[1], 0xCDEF89ABU);
    EXPECT_EQ(words[2], 0x76543210U);
    EXPECT_EQ(words[3], 0xFEDCBA98U);
    EXPECT_EQ(qxGUID(words[0], words[1], words[2], words[3]), KNOWN);
    EXPECT_EQ(KNOWN.hash(), words[0] ^ words[1] ^ words[2] ^ words[3]);
}

TEST(qxGUID, isThePlatformsRecord)
{
    const qxGUIDRecord& record = KNOWN;
    EXPECT_EQ(record.Data1, 0x01234567U);
    EXPECT_EQ(record.Data3, 0xCDEF);
    EXPECT_EQ(qxGUID(record), KNOWN);
    EXPECT_TRUE(KNOWN == record && record == KNOWN);

    qxGUID other(record);
    other.getGUID().Data4[7] = 0;
    EXPECT_EQ(other.getConstGUID().Data4[7], 0);
    EXPECT_TRUE(other != record && record != other && other != KNOWN);
    other.reset();
    EXPECT_TRUE(other.isNull());
    EXPECT_FALSE(KNOWN.isNull());
}

TEST(qxGUID, ordersByHalves)
{
    EXPECT_LT(qxGUID(0, 1), qxGUID(1, 0));
    EXPECT_FALSE(qxGUID(1, 0) < qxGUID(0, 1));
    EXPECT_LT(qxGUID(1, 0x7FFFFFFFFFFFFFFF), qxGUID(1, 0x8000000000000000));
    EXPECT_FALSE(KNOWN < KNOWN);
    // The second field counts more than the first, unlike in the text.
    EXPECT_LT(qxGUID(2, 0, 0, qxGUIDBytes(0, 0, 0, 0, 0, 0, 0, 0)),
              qxGUID(1, 1, 0, qxGUIDBytes(0, 0, 0, 0, 0, 0, 0, 0)));
}

TEST(qxGUID, tellsHowItWasMade)
{
    const auto kind = [](const std::string& version) {
        const qxGUID guid(("00000000-0000-" + version + "FFF-8000-000000000000").c_str());
        std::string result;
        if (guid.isTimeBased()) result += "time";
        if (guid.isNameBased()) result += "name";
        if (guid.isRandomBased()) result += "random";
        if (guid.isStandardDCE()) result += "DCE";
        return result;
    };
    expectRows(kind, "0 => ", "1 => time", "2 => ", "3 => name", "4 => random", "5 => ", "7 => ", "F => ");
}

} // namespace
