#pragma once

#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <xercesc/dom/DOMDocument.hpp>
#include <xercesc/dom/DOMException.hpp>
#include <xercesc/framework/LocalFileInputSource.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLEntityResolver.hpp>
#include <xercesc/util/XMLException.hpp>

#include "orvdiff/formats/OrvDiffCtxMetadataXmlFileEngine.h"
#include "orvdiff/formats/OrvDiffLayoutDataXmlFileEngine.h"
#include "orvdiff/formats/XmlValidation.h"
#include "orvdiff/registry/OrvDiffResult.h"
#include "tests/support/CapturedOutput.h"

constexpr const char* kComparedNamespace = "urn:l";
constexpr const char* kComparedSchemaFile = "l.xsd";

/// A schema with something of everything whose faults could be found in another place, or not at
/// all, by a parser that builds no tree: defaults with a prefix, identifiers, types by name.
constexpr const char* kComparedSchema = R"(<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema"
  xmlns:l="urn:l" targetNamespace="urn:l" elementFormDefault="qualified">
<xs:attribute name="role" type="xs:string"/>
<xs:complexType name="cell" mixed="true"><xs:choice minOccurs="0" maxOccurs="unbounded">
  <xs:element name="coord"/><xs:element name="filename" nillable="true"/>
  <xs:any namespace="##other" processContents="lax"/></xs:choice>
  <xs:attribute name="id" type="xs:ID"/><xs:attribute name="of" type="xs:IDREF"/>
  <xs:attribute name="kind" default="plain"><xs:simpleType><xs:restriction base="xs:string">
    <xs:pattern value="[a-z]+"/></xs:restriction></xs:simpleType></xs:attribute>
  <xs:attribute name="type" type="xs:QName"/></xs:complexType>
<xs:complexType name="wide"><xs:complexContent><xs:extension base="l:cell">
  <xs:attribute name="span" type="xs:int" use="required"/></xs:extension></xs:complexContent>
</xs:complexType>
<xs:element name="layout"><xs:complexType><xs:sequence>
  <xs:element name="cell" type="l:cell" maxOccurs="9"/>
  <xs:element name="role" minOccurs="0"><xs:complexType>
    <xs:attribute ref="l:role" default="none"/></xs:complexType></xs:element>
  </xs:sequence><xs:anyAttribute namespace="##other" processContents="skip"/></xs:complexType>
  <xs:unique name="u"><xs:selector xpath="l:cell"/><xs:field xpath="@kind"/></xs:unique>
</xs:element></xs:schema>)";

/// The slow and plain way to a document's fault: a `XercesDOMParser` that builds the tree, with
/// exactly the documented settings. Only what a document names outside itself does not exist.
class LiteralXmlParser : private xercesc::ErrorHandler, private xercesc::XMLEntityResolver {
 public:
  explicit LiteralXmlParser(bool validates) {
    m_parser.cacheGrammarFromParse(true);
    m_parser.useCachedGrammarInParse(true);
    m_parser.setDoNamespaces(true);
    m_parser.setIncludeIgnorableWhitespace(false);
    if (validates) {
      const std::string location = std::string(kComparedNamespace) + " " + kComparedSchemaFile;
      m_parser.setExternalSchemaLocation(location.c_str());
    }
    m_parser.setValidationScheme(validates ? xercesc::XercesDOMParser::Val_Always
                                           : xercesc::XercesDOMParser::Val_Never);
    m_parser.setDoSchema(validates);
    m_parser.setErrorHandler(this);
    m_parser.setXMLEntityResolver(this);
  }

  /// The block that a document's failure prints, or nothing.
  std::string blockFor(const std::string& name, const std::string& document) {
    std::string block;
    try {
      const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(document.data()),
                                              document.size(), "", false);
      m_parser.parse(source);
      xercesc::DOMDocument* const tree = m_parser.adoptDocument();
      if (tree != nullptr) {
        tree->release();
      }
    } catch (const xercesc::XMLException& e) {
      block = started("XML Exception", name, e.getMessage());
    } catch (const xercesc::SAXParseException& e) {
      block = started("Schema validation", name, e.getMessage()) +
              "Schema validation error at line " + std::to_string(e.getLineNumber()) +
              "\nSchema validation error at column number " + std::to_string(e.getColumnNumber()) +
              "\n";
    } catch (const xercesc::DOMException& e) {
      block = started("DOM Exception", name, e.getMessage());
    }
    m_parser.resetEntities();
    m_parser.resetDocumentPool();
    m_parser.resetErrors();
    m_parser.reset();
    return block.empty() ? block : block + std::string(57, '+') + "\n";
  }

 private:
  static std::string started(const std::string& kind, const std::string& name,
                             const XMLCh* message) {
    return std::string(57, '+') + "\n" + kind + " error for file: " + name + "\n" + kind +
           " error message: " + narrowXmlText(message) + "\n";
  }

  void warning(const xercesc::SAXParseException&) override {}
  void error(const xercesc::SAXParseException& e) override { throw xercesc::SAXParseException(e); }
  void fatalError(const xercesc::SAXParseException& e) override {
    if (narrowXmlText(e.getMessage()).find("Type:UTFDataFormatException") == std::string::npos) {
      throw xercesc::SAXParseException(e);
    }
  }
  void resetErrors() override {}

  xercesc::InputSource* resolveEntity(xercesc::XMLResourceIdentifier* resource) override {
    if (resource->getResourceIdentifierType() != resource->SchemaGrammar) {
      return new xercesc::MemBufInputSource(reinterpret_cast<const XMLByte*>(""), 0, "no:thing");
    }
    const bool isOurs = narrowXmlText(resource->getNameSpace()) == kComparedNamespace;
    return new xercesc::LocalFileInputSource(isOurs ? u"l.xsd" : u"no such file");
  }

  xercesc::XercesDOMParser m_parser;
};

/// Both engines beside the plain parser; in the working folder it writes a schema and documents.
class XmlComparison {
 public:
  XmlComparison() { std::ofstream(kComparedSchemaFile) << kComparedSchema; }

  /// What the engines and the plain parser say about a document where they differ, or nothing.
  std::string differenceOver(const std::string& document) {
    std::remove("x.xml");  // some file systems wait for the disk when a file is overwritten
    std::ofstream("x.xml", std::ios::binary) << document;
    return difference(m_wellFormed, m_plain, document) +
           difference(m_valid, m_plainValidating, document);
  }

 private:
  template <typename Engine>
  std::string difference(Engine& engine, LiteralXmlParser& parser, const std::string& document) {
    const CapturedOutput output;
    const std::unique_ptr<OrvDiffResult> result(engine.performDiff("no master", "x.xml", nullptr));
    // What is in order gets as far as the missing master.
    const bool isRefused = dynamic_cast<OrvDiffResultFailFileMissing*>(result.get()) == nullptr;
    const std::string expected = parser.blockFor("x.xml", document);
    if (isRefused == !expected.empty() && output.text() == expected) {
      return "";
    }
    return "engine: " + std::string(isRefused ? "fails\n" : "passes\n") + output.text() +
           "tree builder:\n" + expected;
  }

  OrvDiffCtxMetadataXmlFileEngine m_wellFormed{nullptr};
  OrvDiffLayoutDataXmlFileEngine m_valid{nullptr, kComparedNamespace, kComparedSchemaFile};
  LiteralXmlParser m_plain{false};
  LiteralXmlParser m_plainValidating{true};
};
