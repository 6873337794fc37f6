// SPDX-License-Identifier: see LICENSE

#include "qxbench.h"

#include "qxstring.h"

#include <codecvt>
#include <locale>
#include <string>
#include <vector>

namespace
{

constexpr unsigned int LONG_TEXT = 60000; // bytes: near the most that a qxString holds
constexpr unsigned int STRINGS = 1000;

const std::string FORTY_BYTES = "the quick brown fox jumps over 13 dogs..";

std::uint64_t checksum(const std::string& text)
{
    return qxBenchChecksum(text.data(), text.length());
}

std::uint64_t checksum(const qxString& text)
{
    return qxBenchChecksum(text.getString(), text.length());
}

template <class String>
std::uint64_t appendEach()
{
    String text;
    for (unsigned int i = 0; i < LONG_TEXT; ++i) text += static_cast<char>('a' + i % 23);
    return checksum(text);
}

void append(qxBenchCase& work)
{
    work.amount = LONG_TEXT;
    work.add("qxbase", appendEach<qxString>);
    work.add("std::string", appendEach<std::string>);
}
const qxBenchEntry APPEND("strings/append", QX_BENCH_NANOSECONDS, append);

template <class String>
std::uint64_t copyEach(const String& original)
{
    std::uint64_t bytes = 0;
    for (unsigned int i = 0; i < STRINGS; ++i) {
        const String copy(original);
        qxBenchKeep(copy);
        bytes += copy.length();
    }
    return bytes;
}

void copy(qxBenchCase& work)
{
    work.amount = STRINGS;
    work.add("qxbase", [text = qxString(FORTY_BYTES.c_str())] { return copyEach(text); });
    work.add("std::string", [text = FORTY_BYTES] { return copyEach(text); });
}
const qxBenchEntry COPY("strings/copy-40-bytes", QX_BENCH_NANOSECONDS, copy);

// Texts of 40 bytes that differ in the last two.
template <class String>
std::vector<String> makeTexts(unsigned int first)
{
    std::vector<String> texts;
    for (unsigned int i = 0; i < STRINGS; ++i) {
        std::string text = FORTY_BYTES;
        text[38] = static_cast<char>('0' + (first + i) % 64);
        text[39] = static_cast<char>('0' + (first + i) / 64 % 64);
        texts.push_back(text.c_str());
    }
    return texts;
}

template <class String>
std::uint64_t countEqual(const std::vector<String>& left, const std::vector<String>& right)
{
    std::uint64_t equal = 0;
    for (unsigned int i = 0; i < STRINGS; ++i) {
        qxBenchKeep(left[i]);
        equal += left[i] == right[i] ? 1 : 0;
    }
    return equal;
}

template <class String>
qxBenchWork equality(unsigned int shift)
{
    return
        [left = makeTexts<String>(0), right = makeTexts<String>(shift)] { return countEqual(left, right); };
}

void equal(qxBenchCase& work)
{
    work.amount = STRINGS;
    work.add("qxbase", equality<qxString>(0));
    work.add("std::string", equality<std::string>(0));
}
const qxBenchEntry EQUAL("strings/equality-same", QX_BENCH_NANOSECONDS, equal);

void unequal(qxBenchCase& work)
{
    work.amount = STRINGS;
    work.add("qxbase", equality<qxString>(1));
    work.add("std::string", equality<std::string>(1));
}
const qxBenchEntry UNEQUAL("strings/equality-different", QX_BENCH_NANOSECONDS, unequal);

// A text of 1,000 bytes in which what is sought stands near the end.
std::string haystack()
{
    std::string text;
    while (text.length() < 950) text += "abcdefgh ijklmno npq needless ";
    return text + "needle#" + std::string(993 - text.length(), 'x');
}

template <class String, class Find>
qxBenchWork findRepeatedly(Find find)
{
    return [text = String(haystack().c_str()), find] {
        std::uint64_t sum = 0;
        for (unsigned int i = 0; i < STRINGS; ++i) {
            qxBenchKeep(text);
            sum += find(text);
        }
        return sum;
    };
}

void findCharacter(qxBenchCase& work)
{
    work.amount = STRINGS;
    work.add("qxbase", findRepeatedly<qxString>([](const qxString& text) { return text.find('#'); }));
    work.add("std::string",
             findRepeatedly<std::string>([](const std::string& text) { return text.find('#'); }));
}
const qxBenchEntry FIND_CHARACTER("strings/find-character", QX_BENCH_NANOSECONDS, findCharacter);

void findText(qxBenchCase& work)
{
    work.amount = STRINGS;
    work.add("qxbase", findRepeatedly<qxString>([needle = qxString("needle#")](const qxString& text) {
                 unsigned short position = 0;
                 return text.contains(needle, 0, true, &position) ? position : 0U;
             }));
    work.add("std::string",
             findRepeatedly<std::string>(
                 [needle = std::string("needle#")](const std::string& text) { return text.find(needle); }));
}
const qxBenchEntry FIND_TEXT("strings/find-text", QX_BENCH_NANOSECONDS, findText);

std::string asciiText()
{
    std::string text;
    while (text.length() < LONG_TEXT) text += FORTY_BYTES;
    return text;
}

void wideAndBack(qxBenchCase& work)
{
    work.amount = LONG_TEXT;
    work.add("qxbase",
             [text = qxString(asciiText().c_str()), buffer = std::vector<wchar_t>(LONG_TEXT + 1)]() mutable {
                 const unsigned int units = text.getWideString(buffer.data());
                 const qxString back(buffer.data(), units);
                 return checksum(back);
             });
    work.add("std::codecvt_utf8", [text = asciiText()] {
        std::wstring_convert<std::codecvt_utf8<wchar_t>> converter;
        const std::wstring wide = converter.from_bytes(text);
        const std::string back = converter.to_bytes(wide);
        return checksum(back);
    });
}
const qxBenchEntry WIDE_AND_BACK("strings/ascii-to-wide-and-back", QX_BENCH_NANOSECONDS, wideAndBack);

} // namespace
