// SPDX-License-Identifier: see LICENSE

#include "xml/qxxmlchecks.h"

#include "qxxmlsax.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace
{

struct Check {
    unsigned int number; // production x 100 + check; numbers are part of the interface and never change
    const char* expected;
    const char* ownText;
    bool isLimit = false; // what is too long, not malformed
};

constexpr Check CHECKS[] = {
    {101, "the root element", nullptr},
    {102, "only comments, processing instructions and white space behind the root element", nullptr},
    {201, "a character that XML allows", nullptr},
    {202, "bytes that are a character in the document's encoding", nullptr},
    {502, "a name of at most 65,535 bytes", nullptr, true},
    {901, "the closing quotation mark of an entity value", nullptr},
    {902, "no parameter reference inside a declaration of the internal subset", nullptr},
    {1001, "no \"<\" in an attribute value", nullptr},
    {1002, "the closing quotation mark of an attribute value", nullptr},
    {1003, "an attribute value of at most 65,535 bytes", nullptr, true},
    {1101, "the closing quotation mark of a system identifier", nullptr},
    {1201, "a character of a public identifier or its closing quotation mark", nullptr},
    {1401, "no \"]]>\" in text", nullptr},
    {1402, "a text of at most 65,535 bytes", "Too large 'CharData' is notified", true},
    {1501, "\"<!--\" to begin a comment", nullptr},
    {1502, "\"-->\" to end a comment", nullptr},
    {1503, "no \"--\" inside a comment", nullptr},
    {1504, "a comment of at most 65,535 bytes", "Too large 'Comment' is notified", true},
    {1601, "the target of a processing instruction", nullptr},
    {1602, "white space or \"?>\" behind the target of a processing instruction", nullptr},
    {1603, "\"?>\" to end a processing instruction", nullptr},
    {1604, "instruction data of at most 65,535 bytes", nullptr, true},
    {1701, "a target other than \"xml\", which is only for the declaration at the start", nullptr},
    {1801, "\"]]>\" to end a CDATA section", nullptr},
    {1802, "a CDATA section of at most 65,535 bytes", "Too large 'CData' is notified", true},
    {1901, "\"<![CDATA[\" to begin a CDATA section", nullptr},
    {2301, "white space and \"version\" in the XML declaration", nullptr},
    {2302, "\"encoding\", \"standalone\" or \"?>\", in this order, in the XML declaration", nullptr},
    {2401, "the quotation mark before the version", nullptr},
    {2402, "the quotation mark behind the version", nullptr},
    {2501, "\"=\"", nullptr},
    {2601, "a version number such as 1.0", nullptr},
    {2602, "a version number of at most 65,535 digits", nullptr, true},
    {2801, "\"<!DOCTYPE\"", nullptr},
    {2802, "white space behind \"<!DOCTYPE\"", nullptr},
    {2803, "the name of the document type", nullptr},
    {2804, "a declaration or \"]\" to end the internal subset", nullptr},
    {2805, "an external identifier, \"[\" or \">\" in the document type declaration", nullptr},
    {2901, "a declaration, comment or processing instruction", nullptr},
    {2902, "\"<!ELEMENT\" or \"<!ENTITY\"", nullptr},
    {3201, "\"standalone\"", nullptr},
    {3202, "the quotation mark before the value of \"standalone\"", nullptr},
    {3203, "\"yes\" or \"no\"", nullptr},
    {3204, "the quotation mark behind the value of \"standalone\"", nullptr},
    {3301, "a subcode of a language", nullptr},
    {3601, "letters behind \"i-\"", nullptr},
    {3701, "letters behind \"x-\"", nullptr},
    {4001, "white space, \">\" or \"/>\" in a start tag", nullptr},
    {4002, "an attribute, \">\" or \"/>\" in a start tag", nullptr},
    {4101, "an attribute value in quotation marks", nullptr},
    {4102, "each attribute of a tag only once", nullptr},
    {4201, "an end tag", nullptr},
    {4202, "the name of an end tag", nullptr},
    {4203, "\">\" to end an end tag", nullptr},
    {4301, "text, a reference or markup", nullptr},
    {4401, "\"/>\" to end an empty element", nullptr},
    {4501, "\"<!ELEMENT\"", nullptr},
    {4502, "white space behind \"<!ELEMENT\"", nullptr},
    {4503, "the name of the declared element", nullptr},
    {4504, "white space behind the name of the declared element", nullptr},
    {4505, "\">\" to end an element declaration", nullptr},
    {4601, "\"EMPTY\", \"ANY\" or a content model in parentheses", nullptr},
    {4801, "a name or \"(\" in a content model", nullptr},
    {4901, "\")\" or the separator of this group in a content model", nullptr},
    {5101, "\"#PCDATA\"", nullptr},
    {5102, "a name in mixed content", nullptr},
    {5103, "\"|\" or \")\" in mixed content", nullptr},
    {5104, "\"*\" behind mixed content that has names", nullptr},
    {5201, "\"<!ATTLIST\"", nullptr},
    {5202, "white space behind \"<!ATTLIST\"", nullptr},
    {5203, "the name of the element of an attribute list", nullptr},
    {5204, "an attribute definition behind white space, or \">\"", nullptr},
    {5301, "white space behind the name of a defined attribute", nullptr},
    {5302, "white space behind an attribute type", nullptr},
    {5401, "an attribute type", nullptr},
    {5801, "white space behind \"NOTATION\"", nullptr},
    {5802, "\"(\" before the names of notations", nullptr},
    {5803, "the name of a notation", nullptr},
    {5804, "\"|\" or \")\" behind the name of a notation", nullptr},
    {5901, "a name token in an enumeration", nullptr},
    {5902, "\"|\" or \")\" in an enumeration", nullptr},
    {6001, "\"#REQUIRED\", \"#IMPLIED\", \"#FIXED\" or a default value", nullptr},
    {6002, "white space behind \"#FIXED\"", nullptr},
    {6003, "a default value in quotation marks", nullptr},
    {6101, "\"INCLUDE\" or \"IGNORE\" behind \"<![\"", nullptr},
    {6201, "\"[\" behind \"INCLUDE\"", nullptr},
    {6202, "a declaration or \"]]>\" to end an included section", nullptr},
    {6301, "\"[\" behind \"IGNORE\"", nullptr},
    {6302, "\"]]>\" to end an ignored section", nullptr},
    {6601, "digits in a character reference", nullptr},
    {6602, "a digit or \";\" in a character reference", nullptr},
    {6603, "a reference to a character that XML allows", nullptr},
    {6604, "a character reference of at most 65,535 digits", nullptr, true},
    {6801, "the name of an entity, or \"#\", behind \"&\"", nullptr},
    {6802, "\";\" to end an entity reference", nullptr},
    {6901, "the name of a parameter entity behind \"%\"", nullptr},
    {6902, "\";\" to end a parameter reference", nullptr},
    {7001, "\"<!ENTITY\"", nullptr},
    {7002, "white space behind \"<!ENTITY\"", nullptr},
    {7101, "the name of an entity, or \"%\"", nullptr},
    {7102, "white space behind the name of an entity", nullptr},
    {7103, "an entity value or an external identifier", nullptr},
    {7104, "\">\", or \"NDATA\" behind white space, to end an entity declaration", nullptr},
    {7201, "white space behind \"%\"", nullptr},
    {7202, "the name of a parameter entity", nullptr},
    {7203, "white space behind the name of a parameter entity", nullptr},
    {7204, "the value of a parameter entity or an external identifier", nullptr},
    {7205, "\">\" to end a parameter entity declaration", nullptr},
    {7501, "\"SYSTEM\"", nullptr},
    {7502, "white space before a system identifier", nullptr},
    {7503, "a system identifier in quotation marks", nullptr},
    {7601, "\"NDATA\"", nullptr},
    {7602, "white space behind \"NDATA\"", nullptr},
    {7603, "the name of a notation behind \"NDATA\"", nullptr},
    {7701, "white space and \"encoding\" in a text declaration", nullptr},
    {7702, "\"?>\" to end a text declaration", nullptr},
    {8001, "\"encoding\"", nullptr},
    {8002, "the quotation mark before the encoding", nullptr},
    {8003, "the quotation mark behind the encoding", nullptr},
    {8101, "the name of an encoding", nullptr},
    {8102, "an encoding name of at most 65,535 characters", nullptr, true},
    {8201, "\"<!NOTATION\"", nullptr},
    {8202, "white space behind \"<!NOTATION\"", nullptr},
    {8203, "the name of the declared notation", nullptr},
    {8204, "white space behind the name of the declared notation", nullptr},
    {8205, "\"SYSTEM\" or \"PUBLIC\"", nullptr},
    {8206, "\">\" to end a notation declaration", nullptr},
    {8301, "\"PUBLIC\"", nullptr},
    {8302, "white space behind \"PUBLIC\"", nullptr},
    {8303, "a public identifier in quotation marks", nullptr},
};

static_assert(std::ranges::is_sorted(CHECKS, {}, &Check::number));

const Check* findCheck(unsigned int number)
{
    const Check* const found = std::ranges::lower_bound(CHECKS, number, {}, &Check::number);
    return found != std::end(CHECKS) && found->number == number ? found : nullptr;
}

constexpr auto makeNumbers()
{
    std::array<unsigned int, std::size(CHECKS) + 1> numbers{};
    for (std::size_t i = 0; i < std::size(CHECKS); ++i) numbers[i] = CHECKS[i].number;
    return numbers;
}

constexpr auto NUMBERS = makeNumbers();

} // namespace

bool qxXmlIsLimitCheck(unsigned int number)
{
    const Check* const check = findCheck(number);
    return check && check->isLimit;
}

const char* qxXmlCheckText(unsigned int number)
{
    const Check* const check = findCheck(number);
    return check ? check->expected : nullptr;
}

const unsigned int* qxXmlCheckNumbers()
{
    return NUMBERS.data();
}

const char* qxXmlCheckOwnText(unsigned int number)
{
    const Check* const check = findCheck(number);
    return check ? check->ownText : nullptr;
}
