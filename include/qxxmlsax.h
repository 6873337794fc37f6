// The XML reader and writer that work by calls.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxbasicparser.h"
#include "qxdict.h"
#include "qxrefdata.h"
#include "qxserializedata.h"
#include "qxstring.h"
#include "qxtype.h"

#include <cstddef>
#include <memory>
#include <string_view>

class qxDynamicType;
class qxObject;
class qxXmlBytes;
class qxXmlCustomDataInterface;
class qxXmlDynamicTypeInterface;
class qxXmlObjectInterface;
class qxXmlReaderState;
class qxXmlWriterState;
struct qxXmlStop;

/// What the reader reports, as bits of a mask.
typedef unsigned int qxXmlItemType;

constexpr qxXmlItemType QX_XML_ELEMENT = 1;
constexpr qxXmlItemType QX_XML_ELEMENT_CONTENTS = 2;
constexpr qxXmlItemType QX_XML_ATTRIBUTE = 4;
constexpr qxXmlItemType QX_XML_ATTRIBUTE_END = 8;
constexpr qxXmlItemType QX_XML_DECLARATION = 16;
constexpr qxXmlItemType QX_XML_CHARDATA = 32;
constexpr qxXmlItemType QX_XML_CDATA = 64;
constexpr qxXmlItemType QX_XML_COMMENT = 128;
constexpr qxXmlItemType QX_XML_PI = 256;
constexpr qxXmlItemType QX_XML_ENTITY_REFERENCE = 512;
constexpr qxXmlItemType QX_XML_CONTENTS_START = 1024;
constexpr qxXmlItemType QX_XML_CONTENTS_END = 2048;

/// The attributes of one element: name to value.
typedef qxRefDict<qxString, qxRefData<qxString>> qxXmlAttributeSet;

/// What check `number` of the reader expected, in words such as "a name"; null for a number that no check
/// has. The number stands as line in the error of a pure syntax failure: production x 100 + check.
QX_API const char* qxXmlCheckText(unsigned int number);

/// True for a check that refuses what is too long, not what is malformed; errors with a text of their own have
/// no number.
QX_API bool qxXmlIsLimitCheck(unsigned int number);

/// The numbers of all checks in rising order, ended by 0.
QX_API const unsigned int* qxXmlCheckNumbers();

/// Reads a document and calls an operation for each item in it, and writes documents item by item.
///
/// A subclass overrides the operations it wants; each returns true to go on. False ends the reading quietly.
/// Text and attribute values come as they stand in the document: references are reported by
/// onEntityReference and never replaced, line ends are not changed. The root element has the level 1.
///
/// Documents are UTF-8, or UTF-16 with a byte-order mark; every other encoding that a document declares means
/// one character a byte.
///
/// Lifetime: the adapter is held only while read and write run, and is not deleted by them.
/// Threads:  one object is used by one thread at a time; the registries have a lock of their own.
/// Errors:   bad input is stored with its line and column (hasError, getError) and sent as one warning; calls
///           made before it stay made. A misused write... operation stores its error and raises
///           qxParserException with the code 3.
class QX_API qxXmlSax : public qxBasicParser, public qxSerializeData, public qxTypeInterface
{
public:
    qxXmlSax();
    ~qxXmlSax() noexcept(false) override;

    // What was read. Strings are valid during the call.

    virtual unsigned char onVersion(const qxString& version);
    virtual unsigned char onEncoding(const qxString& encoding);
    virtual unsigned char onStandalone(unsigned char standalone);
    virtual unsigned char onElementStart(const qxString& name, unsigned int level);
    virtual unsigned char onElementAttributeEnd(const qxString& name, unsigned int level);

    /// `contents` is the raw text between the tags; not called for one that is too long for a string or for
    /// the largest push-back.
    virtual unsigned char onElementContents(const qxString& name, const qxString& contents,
                                            unsigned int level);
    virtual unsigned char onElementContentsStart(const qxString& name, unsigned int level);
    virtual unsigned char onElementContentsEnd(const qxString& name, unsigned int level);
    virtual unsigned char onElementEnd(const qxString& name, unsigned int level);

    /// References inside `value` were reported before this call.
    virtual unsigned char onAttribute(const qxString& name, const qxString& value, unsigned int level);
    virtual unsigned char onCharData(const qxString& text, unsigned int level);

    /// `name` is the text between "&" and ";": of an entity, or of a character such as "#65" and "#x41".
    virtual unsigned char onEntityReference(const qxString& name, unsigned int level,
                                            unsigned char inAttribute);
    virtual unsigned char onProcessingInstruction(const qxString& target, const qxString& data,
                                                  unsigned int level);
    virtual unsigned char onCDATA(const qxString& text, unsigned int level);
    virtual unsigned char onComment(const qxString& text, unsigned int level);

    /// Comes between the calls for the element in place of those for its content. `name` is the element's attribute
    /// "name", else the name of the element.
    virtual unsigned char onDynamicType(const qxDynamicType& value, const qxString& name, unsigned int level);

    /// The same for an object. It is held during the call.
    virtual unsigned char onObject(qxObject* object, const qxString& name, unsigned int level);

    /// The same for custom data; `name` is that of the element.
    virtual unsigned char onCustomData(qxReference* data, const qxString& name, unsigned int level);

    /// The text that takes the place of a text or attribute value "function:`argument`".
    virtual qxString onFunction(const qxString& argument, unsigned int level);

    /// Called by write: here a subclass writes its document.
    virtual unsigned char onWrite();

    QX_DECLARE_TYPE;

    // Reading

    /// Reads one document up to the end of the adapter's data. Refused with the error
    /// "Parser is busy reading" inside a callback of this object.
    void read(qxSerializeAdapter* adapter) override;

    /// The level of the open element, of the reader or of the writer; 0 outside the root.
    unsigned int getCurrentElementLevel() const;
    qxString getCurrentElementName() const;

    /// Empty for a level that is not open.
    qxString getElementName(unsigned int level) const;

    /// Empty when there is no such attribute.
    qxString getCurrentAttribute(const qxString& name) const;
    qxString getAttribute(unsigned int level, const qxString& name) const;
    bool hasCurrentAttribute(const qxString& name) const;
    bool hasAttribute(unsigned int level, const qxString& name) const;

    /// Copies of the attributes read so far at that level.
    qxXmlAttributeSet getCurrentAttributeSet() const;
    qxXmlAttributeSet getAttributeSet(unsigned int level) const;

    void enableNotifyItemType(qxXmlItemType type) { m_notifyMask |= type; }
    void disableNotifyItemType(qxXmlItemType type) { m_notifyMask &= ~type; }

    /// True when all bits of `type` are enabled and notifications are on.
    bool isNotifyingItemType(qxXmlItemType type) const
    {
        return (m_flags & FLAG_NOTIFY) != 0 && (m_notifyMask & type) == type;
    }

    const qxString& getVersion() const { return m_version; }
    void setVersion(const qxString& version) { m_version = version; }
    const qxString& getEncoding() const { return m_encoding; }
    void setEncoding(const qxString& encoding) { m_encoding = encoding; }
    bool isStandalone() const { return (m_flags & FLAG_STANDALONE) != 0; }
    void setStandalone(bool standalone) { setFlag(FLAG_STANDALONE, standalone); }

    /// The document type declaration, from "<!DOCTYPE" to its ">" as it stands. Reading keeps it where a class
    /// wants that, as document trees do; one that is too long for a string is left out, with a warning.
    const qxString& getDocumentType() const { return m_documentType; }
    void setDocumentType(const qxString& declaration) { m_documentType = declaration; }
    bool isPlainOutput() const { return (m_flags & FLAG_PLAIN) != 0; }

    /// Plain output is written without indentation.
    void setPlainOutput(bool plain) { setFlag(FLAG_PLAIN, plain); }

    /// How binary values are written: the current element's word ("b64" or "hex" in its attribute "encoding"),
    /// else the preference.
    bool useBase64() const;
    void useBase64(bool prefer) { setFlag(FLAG_PREFER_BASE64, prefer); }

    /// Elements of any name, and not only "qxDyn", are read as values of dynamic types where they are such; values
    /// are written as elements of their own names. At first off.
    bool useDynOnly() const { return (m_flags & FLAG_DYN_ONLY) != 0; }
    void useDynOnly(bool only) { setFlag(FLAG_DYN_ONLY, only); }

    /// The check that failed in a pure syntax failure; 0 for an error with a text of its own.
    unsigned int getErrorCheck() const { return m_errorCheck; }

    // Registries of the process: element name to handler; see qxxmlhandlers.h. They keep the pointer only.

    static void registerCustomDataInterface(const qxString& name, qxXmlCustomDataInterface* handler);
    static void registerDynamicTypeInterface(const qxString& name, qxXmlDynamicTypeInterface* handler);
    static void registerObjectInterface(const qxString& name, qxXmlObjectInterface* handler);

    /// Removes the handler from all names.
    static void unregisterCustomDataInterface(qxXmlCustomDataInterface* handler);
    static void unregisterDynamicTypeInterface(qxXmlDynamicTypeInterface* handler);
    static void unregisterObjectInterface(qxXmlObjectInterface* handler);

    /// Null when the name is not registered.
    static qxXmlCustomDataInterface* getCustomDataInterface(const qxString& name);
    static qxXmlDynamicTypeInterface* getDynamicTypeInterface(const qxString& name);
    static qxXmlObjectInterface* getObjectInterface(const qxString& name);

    // Writing

    /// Writes the header, then what onWrite writes. The encoding decides the bytes: "UTF-16" is written with
    /// a byte-order mark, "none" is UTF-8 without a header.
    void write(qxSerializeAdapter* adapter) override;
    void pushBack(qxSerializeAdapter* adapter) override;
    unsigned int getDataSize(qxSerializeAdapter* adapter) override;

    void writeXmlHeader();
    void writeElementStart(const qxString& name);

    /// Only behind writeElementStart. `value` is escaped, but for the five predefined references in it.
    void writeAttribute(const qxString& name, const qxString& value);
    void writeCharData(const qxString& text);
    void writeCharDataElement(const qxString& name, const qxString& text);
    void writeCDATA(const qxString& text);
    void writeComment(const qxString& text);
    void writePI(const qxString& target, const qxString& data);
    void writeEntityReference(const qxString& name);
    void writeElementEnd();

    /// Writes a value as an element "qxDyn", which has `name` as an attribute unless that is "qxDyn", too; with
    /// useDynOnly as an element `name`, where that can be the name of one. `name` is filled in with the arguments as in
    /// qxString::format when there are any. docs/xml-values.md shows the form; every value comes back from it, but
    /// without objects and addresses.
    template <class... Arguments>
    void writeDynamicType(const qxDynamicType& value, const qxString& name = "qxDyn",
                          const Arguments&... arguments)
    {
        putDynamicType(value, fillIn(name, arguments...));
    }

    /// Writes an object as an element "qxObj" with `name` as above; what stands in it is its handler's to say. Without
    /// a handler the element is empty, and a warning is sent.
    template <class... Arguments>
    void writeObject(qxObject* object, const qxString& name = "qxObj", const Arguments&... arguments)
    {
        putObject(object, fillIn(name, arguments...));
    }

    /// Writes custom data as an element `name`, in which its handler writes. With `isOpen` that element is open
    /// already, and stays so. Without a handler nothing is in it, and a warning is sent.
    void writeCustomData(const qxString& name, qxReference* data, unsigned char isOpen = 0);

    /// Writes `text` as it stands.
    void writeGenericString(const qxString& text);

    /// Closes an open start tag.
    void beginElementContents();

protected:
    // The productions of the XML 1.0 recommendation, fifth edition, by number. Each takes its construct and
    // returns QX_PARSE_OK, or takes nothing and returns QX_PARSE_NO_MATCH; a construct that begins right and goes
    // on wrong stores the error and raises qxParserException. 33 to 38 and 84 to 89 are those of the first
    // edition, which the fifth no longer has, over the fifth's table of name characters.

    qxParseResult XML_read_01();  ///< document
    qxParseResult XML_read_02();  ///< Char
    qxParseResult XML_read_03();  ///< S
    qxParseResult XML_read_04();  ///< NameStartChar
    qxParseResult XML_read_04a(); ///< NameChar
    qxParseResult XML_read_05();  ///< Name
    qxParseResult XML_read_06();  ///< Names
    qxParseResult XML_read_07();  ///< Nmtoken
    qxParseResult XML_read_08();  ///< Nmtokens
    qxParseResult XML_read_09();  ///< EntityValue
    qxParseResult XML_read_10();  ///< AttValue
    qxParseResult XML_read_11();  ///< SystemLiteral
    qxParseResult XML_read_12();  ///< PubidLiteral
    qxParseResult XML_read_13();  ///< PubidChar
    qxParseResult XML_read_14();  ///< CharData
    qxParseResult XML_read_15();  ///< Comment
    qxParseResult XML_read_16();  ///< PI
    qxParseResult XML_read_17();  ///< PITarget
    qxParseResult XML_read_18();  ///< CDSect
    qxParseResult XML_read_19();  ///< CDStart
    qxParseResult XML_read_20();  ///< CData
    qxParseResult XML_read_21();  ///< CDEnd
    qxParseResult XML_read_22();  ///< prolog
    qxParseResult XML_read_23();  ///< XMLDecl
    qxParseResult XML_read_24();  ///< VersionInfo, behind its white space
    qxParseResult XML_read_25();  ///< Eq
    qxParseResult XML_read_26();  ///< VersionNum
    qxParseResult XML_read_27();  ///< Misc
    qxParseResult XML_read_28();  ///< doctypedecl
    qxParseResult XML_read_28a(); ///< DeclSep
    qxParseResult XML_read_28b(); ///< intSubset
    qxParseResult XML_read_29();  ///< markupdecl
    qxParseResult XML_read_30();  ///< extSubset
    qxParseResult XML_read_31();  ///< extSubsetDecl
    qxParseResult XML_read_32();  ///< SDDecl, behind its white space
    qxParseResult XML_read_33();  ///< LanguageID
    qxParseResult XML_read_34();  ///< Langcode
    qxParseResult XML_read_35();  ///< ISO639Code
    qxParseResult XML_read_36();  ///< IanaCode
    qxParseResult XML_read_37();  ///< UserCode
    qxParseResult XML_read_38();  ///< Subcode
    qxParseResult XML_read_39();  ///< element
    qxParseResult XML_read_40();  ///< STag, without its end
    qxParseResult XML_read_41();  ///< Attribute
    qxParseResult XML_read_42();  ///< ETag
    qxParseResult
    XML_read_43(); ///< content, up to the end tag; elements inside it by a loop, not by recursion
    qxParseResult XML_read_44();        ///< the end of an EmptyElemTag
    qxParseResult XML_read_45();        ///< elementdecl
    qxParseResult XML_read_46();        ///< contentspec
    qxParseResult XML_read_47();        ///< children, behind the parenthesis
    qxParseResult XML_read_48();        ///< cp
    qxParseResult XML_read_49();        ///< choice, behind the parenthesis
    qxParseResult XML_read_50();        ///< seq, behind the parenthesis
    qxParseResult XML_read_51();        ///< Mixed, behind the parenthesis
    qxParseResult XML_read_52();        ///< AttlistDecl
    qxParseResult XML_read_53();        ///< AttDef, behind its white space
    qxParseResult XML_read_54();        ///< AttType
    qxParseResult XML_read_55();        ///< StringType
    qxParseResult XML_read_56();        ///< TokenizedType
    qxParseResult XML_read_57();        ///< EnumeratedType
    qxParseResult XML_read_58();        ///< NotationType
    qxParseResult XML_read_59();        ///< Enumeration
    qxParseResult XML_read_60();        ///< DefaultDecl
    qxParseResult XML_read_61();        ///< conditionalSect
    qxParseResult XML_read_62();        ///< includeSect, behind "<![" and white space
    qxParseResult XML_read_63();        ///< ignoreSect, behind "<![" and white space
    qxParseResult XML_read_64();        ///< ignoreSectContents
    qxParseResult XML_read_65();        ///< Ignore
    qxParseResult XML_read_66();        ///< CharRef
    qxParseResult XML_read_67();        ///< Reference
    qxParseResult XML_read_68();        ///< EntityRef
    qxParseResult XML_read_69();        ///< PEReference
    qxParseResult XML_read_70();        ///< EntityDecl
    qxParseResult XML_read_71();        ///< GEDecl, behind "<!ENTITY" and white space
    qxParseResult XML_read_72();        ///< PEDecl, behind "<!ENTITY" and white space
    qxParseResult XML_read_73();        ///< EntityDef
    qxParseResult XML_read_74();        ///< PEDef
    qxParseResult XML_read_75();        ///< ExternalID
    qxParseResult XML_read_76();        ///< NDataDecl, behind its white space
    qxParseResult XML_read_77();        ///< TextDecl
    qxParseResult XML_read_78();        ///< extParsedEnt
    qxParseResult XML_read_79();        ///< extPE
    qxParseResult XML_read_80();        ///< EncodingDecl, behind its white space
    qxParseResult XML_read_81();        ///< EncName
    qxParseResult XML_read_82();        ///< NotationDecl
    qxParseResult XML_read_83();        ///< PublicID
    qxParseResult XML_read_84();        ///< Letter
    qxParseResult XML_read_85();        ///< BaseChar
    qxParseResult XML_read_86();        ///< Ideographic
    qxParseResult XML_read_87();        ///< CombiningChar
    qxParseResult XML_read_88();        ///< Digit
    qxParseResult XML_read_89();        ///< Extender
    qxParseResult XML_read_91();        ///< the value of an element "qxDyn"
    qxParseResult XML_read_92();        ///< the object of an element "qxObj"
    qxParseResult XML_read_93();        ///< the data of an element that is registered for custom data
    qxParseResult XML_read_Test_ETag(); ///< looks whether an end tag stands next; takes nothing

    /// Reading keeps the document type declaration from now on, or not (the start).
    void keepDocumentType(bool keep) { m_keepsDocumentType = keep; }

    /// Switches all notifications off and on; read switches them on.
    void enableNotifications(bool on) { setFlag(FLAG_NOTIFY, on); }

private:
    friend class qxXmlWriterState;
    friend class qxXmlDom; // reads into a tree by a way shorter than the calls
    friend class qxXmlValueReader;
    friend class qxXmlValueDocument;

    enum Flag : unsigned char {
        FLAG_STANDALONE = 1,
        FLAG_VALUE_BASE64 = 2, // the current element's attribute "encoding" said "b64"
        FLAG_VALUE_HEX = 4,    // it said "hex"
        FLAG_PREFER_BASE64 = 8,
        FLAG_DYN_ONLY = 16,
        FLAG_PLAIN = 32,
        FLAG_IN_ATTRIBUTE = 64,
        FLAG_NOTIFY = 128
    };
    struct Name; // a piece of the window
    struct Run;  // a run of characters while it is read

    void setFlag(Flag flag, bool on)
    {
        m_flags = static_cast<unsigned char>(on ? m_flags | flag : m_flags & ~flag);
    }

    inline qxXmlReaderState& reader(); // for the sources of this class only
    class Reading;                     // what read does before and afterwards
    class Attempt;                     // reads what may have to be read once more

    [[noreturn]] void failCheck(unsigned int check);
    [[noreturn]] void failCheckAt(qxUInt64 position, unsigned int check);
    [[noreturn]] void failMarkup(unsigned int check);
    [[noreturn]] static void stop();
    static void goOn(unsigned char answer) // with the reading, unless a callback wants no more
    {
        if (!answer) stop();
    }

    bool startsName(unsigned int offset);
    Name scanName();
    Name scanNameSlowly(const char16_t* from);
    bool skipSpace();
    bool skipTo(const Run& run, const qxXmlStop& stop);
    bool copyTo(const Run& run, const qxXmlStop& stop, qxXmlBytes& text, std::size_t begin);
    bool skipPair();
    bool isEndOfText();
    std::size_t copyShortText(char* out);
    bool readPlainAttribute();
    bool isNextText(const char16_t* text);
    void expect(char16_t token, unsigned int check);
    void expectText(const char16_t* text, unsigned int check);
    void expectSpace(unsigned int check);
    void expectName(unsigned int check);
    const qxString& textSince(const Run& run);
    char16_t expectQuote(unsigned int check);

    bool openElement();
    void closeElement();
    bool readSpecialContent();
    static bool hasCustomDataInterface(); // of any name
    bool readValue(qxDynamicType& value);
    [[noreturn]] void failValue(const char* expected);
    template <class Take>
    bool offerContent(Take&& take);
    bool takeContent(qxArray<unsigned char>& bytes);
    void putDynamicType(const qxDynamicType& value, const qxString& name);
    void putObject(qxObject* object, const qxString& name);
    static const qxString& fillIn(const qxString& name) { return name; }
    template <class... Arguments>
    static qxString fillIn(const qxString& name, const Arguments&... arguments)
    {
        return qxString::str(name, arguments...);
    }
    void reportContents();
    void reportElementEnd();
    void reportText(std::string_view text);
    [[noreturn]] void failEndTag(const Name& found);
    void takeAttributeValue();
    void skipCData(const Run& run);
    bool beginDeclaration(const char16_t* start, const char16_t* rest, unsigned int check);
    void endDeclaration(unsigned int check);
    void storeDocumentType(qxUInt64 begin);
    void readSubset(bool isInternal, unsigned int depth);
    bool openIncludeSection();
    void readGroup(char16_t separator);
    void skipOccurrence();

    qxString m_version;
    qxString m_encoding;
    qxString m_documentType;
    qxXmlItemType m_notifyMask;
    unsigned char m_flags;
    bool m_keepsDocumentType = false;
    unsigned int m_errorCheck;
    std::unique_ptr<qxXmlReaderState> m_reader; // made by the first read
    std::unique_ptr<qxXmlWriterState> m_writer; // made by the first write... operation
};
