// SPDX-License-Identifier: see LICENSE

#include "qxruletest.h"

#include "qxmessage.h"
#include "qxtesttexts.h"

#include <algorithm>

namespace
{

TEST(qxRules, matchElements)
{
    expectRows(RuleRows(), //
               "'ab' \"c\" ~ abcd => OK |d", "'ab' ~ a => No Match |a", "'' ~  => OK |",
               "'a' /* b ; ' */ 'c' ~ ac => OK |", R"('\'' "\"\\" ~ '"\ => OK |)",
               R"('\x41\n\q' ~ A)"
               "\n"
               R"(\q => OK |)",
               "[a-c]+ ~ abcd => OK |d", "[^a-c]+ ~ xyc => OK |c", "[^] ~ xy => OK |y", "[^]* ~ a\nb => OK |",
               "[] ~ a => No Match |a", "[-a]+ ~ a-b => OK |b", "[a-]+ ~ a-b => OK |b",
               "[z-a] ~ m => No Match |m", "[a^]+ ~ ^ab => OK |b", "[^\\]+ ~ a\\b => OK |\\b",
               "[#x41-#x43#x5D]+ ~ AC]D => OK |D", "[#x41B] ~ \xD0\x9Bz => OK |z", "[#xz]+ ~ #xzy => OK |y",
               "#x41 #x411 ~ A\xD0\x91 => OK |", "[^] ~ \xF0\x9F\x98\x80z => OK |z",
               "[\xF0\x9F\x98\x80-\xF0\x9F\x98\x82]+ ~ \xF0\x9F\x98\x81z => OK |z",
               "[\xF0\x9F\x98\x80] ~ \xF0\x9F\x99\x80 => No Match |\xF0\x9F\x99\x80",
               "parseAlpha X ~ zF => OK |", "'\xC3\xA9' ~ \xC3\xA9 => OK |");
}

TEST(qxRules, repeat)
{
    expectRows(RuleRows(), //
               "'a'? 'b' ~ b => OK |", "'a'* ~ aaab => OK |b", "'a'* ~  => OK |", "'a'+ ~ b => No Match |b",
               "'a'+ ~ aab => OK |b", "[^]* 'x' ~ abx => No Match |abx", "(X)8 '-' ~ 0123abcD- => OK |",
               "(X)8 ~ 0123abc- => No Match |0123abc-", "X 8 ~ 01234567 => OK |", //
               "('ab')2 ~ abab => OK |", "('ab')2 ~ aba => No Match |aba",
               "('a' 'b'){1,2} ~ ababab => OK |ab", "'a'{2,3} ~ a => No Match |a",
               "'a'{ 2 , 3 } ~ aaaa => OK |a", "'a'0 'b' ~ b => OK |", "'a'{0,2} ~  => OK |",
               "('')2 ~  => No Match |", "('')2 ~ x => OK |x", "('a'?)* ~ aab => OK |b",
               "('a'*)+ 'b' ~ aab => OK |", "('a'|'b')* 'c' ~ abbac => OK |",
               "($ 'a' fPush){0,2} ~ aaa => OK [a] [a] |a", "(SP* 'a')* ~  a  a  => OK |  ",
               "('a' 'b')* ~ aba => OK |a", "'a' * ~ aa => OK |");
}
