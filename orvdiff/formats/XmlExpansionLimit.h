#pragma once

#include <algorithm>
#include <xercesc/framework/MemoryManager.hpp>
#include <xercesc/internal/XMLReader.hpp>
#include <xercesc/sax/Locator.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/BinMemInputStream.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/validators/DTD/DTDEntityDecl.hpp>
#include <xercesc/validators/DTD/DocTypeHandler.hpp>

/// A parser's memory, which ends the parse of a document whose entities expand without measure.
///
/// The limit that the parser has of its own leaves out parameter entities and the default values of
/// attributes, where a few lines expand for hours just as well. But for whatever it expands, the
/// parser makes a reader, and nothing else that it makes has that size. So this counts readers.
class XmlExpansionLimit : public xercesc::MemoryManager {
 public:
  /// The parse of a document; outside of one there is no limit.
  class Document {
   public:
    /// `length` counts bytes; `locator` tells where the parser stands.
    Document(XmlExpansionLimit& limit, XMLSize_t length, const xercesc::Locator& locator)
        : m_limit(limit) {
      m_limit.m_locator = &locator;
      m_limit.m_budget = std::max(kLeastBudget, kBudgetPerByte * length);
      m_limit.m_readersLeft = kMostReaders;
    }
    ~Document() { m_limit.m_locator = nullptr; }
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

   private:
    XmlExpansionLimit& m_limit;
  };

  /// The document declares an entity of `length` characters. Whatever refers to other entities is
  /// expanded by further readers, so readers times the longest entity bounds the whole.
  void noteEntity(XMLSize_t length) {
    m_readersLeft = std::min(m_readersLeft, m_budget / std::max<XMLSize_t>(length, 1));
  }

  /// Throws `SAXParseException` when an entity would get one reader too many: already for the
  /// stream that the reader is to read, since the parser loses that when there is no memory for a
  /// reader.
  void* allocate(XMLSize_t size) override {
    const bool isForReader = size == m_readerSize || size == m_streamSize;
    if (isForReader && m_readersLeft == 0 && m_locator != nullptr) {
      throw xercesc::SAXParseException(u"entities expand to too much", *m_locator);
    }
    m_readersLeft -= size == m_readerSize && m_readersLeft > 0 ? 1 : 0;
    return m_memory.allocate(size);
  }
  void deallocate(void* block) override { m_memory.deallocate(block); }
  MemoryManager* getExceptionMemoryManager() override { return &m_memory; }

 private:
  static constexpr XMLSize_t kLeastBudget = 100'000'000;  ///< characters
  static constexpr XMLSize_t kBudgetPerByte = 10;
  static constexpr XMLSize_t kMostReaders = 50'000;

  /// An object that Xerces creates is preceded by a pointer to its memory manager.
  static XMLSize_t sizeWithManager(XMLSize_t size) {
    return size + xercesc::XMLPlatformUtils::alignPointerForNewBlockAllocation(sizeof(void*));
  }

  const XMLSize_t m_readerSize = sizeWithManager(sizeof(xercesc::XMLReader));
  const XMLSize_t m_streamSize = sizeWithManager(sizeof(xercesc::BinMemInputStream));

  xercesc::MemoryManager& m_memory = *xercesc::XMLPlatformUtils::fgMemoryManager;
  const xercesc::Locator* m_locator = nullptr;  ///< null: no document is being parsed
  XMLSize_t m_budget = 0;
  XMLSize_t m_readersLeft = 0;
};

/// Tells a limit of the entities that a document declares, and ignores what else is in its DTD.
class XmlEntityWatch : public xercesc::DocTypeHandler {
 public:
  explicit XmlEntityWatch(XmlExpansionLimit& limit) : m_limit(limit) {}

  void entityDecl(const xercesc::DTDEntityDecl& entity, bool, bool) override {
    m_limit.noteEntity(entity.getValueLen());
  }

  void attDef(const xercesc::DTDElementDecl&, const xercesc::DTDAttDef&, bool) override {}
  void doctypeComment(const XMLCh*) override {}
  void doctypeDecl(const xercesc::DTDElementDecl&, const XMLCh*, const XMLCh*, bool,
                   bool) override {}
  void doctypePI(const XMLCh*, const XMLCh*) override {}
  void doctypeWhitespace(const XMLCh*, XMLSize_t) override {}
  void elementDecl(const xercesc::DTDElementDecl&, bool) override {}
  void endAttList(const xercesc::DTDElementDecl&) override {}
  void endIntSubset() override {}
  void endExtSubset() override {}
  void resetDocType() override {}
  void notationDecl(const xercesc::XMLNotationDecl&, bool) override {}
  void startAttList(const xercesc::DTDElementDecl&) override {}
  void startIntSubset() override {}
  void startExtSubset() override {}
  void TextDecl(const XMLCh*, const XMLCh*) override {}

 private:
  XmlExpansionLimit& m_limit;
};
