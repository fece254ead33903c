#pragma once

#include <exception>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "ztbaseclient/wsdl/CWsdlParser.h"
#include "ztbaseclient/wsdl/ExternalSchemaRecord.h"
#include "ztbaseclient/wsdl/NodeSearch.h"
#include "ztbaseclient/wsdl/SchemaSet.h"
#include "ztbaseclient/wsdl/TypeBuilder.h"
#include "ztbaseclient/wsdl/XMLParser.h"

// Roots of schema files by the folded names of the files.
using FilesByName = std::unordered_map<std::wstring, tovin::Ptr<tovin::iNode>>;

// An element or type of a schema, the namespace that it was asked for in (null if in none), and its name. An
// atomic type has no node.
struct CWsdlParser::Definition {
  tovin::iNode* node;
  tovin::WideString space;
  tovin::WideString name;
};

// Counts what one question copies out of the same places of a document again and again: that multiplies, and
// a small document could ask for any amount of memory.
class SharedReading {
 public:
  void start() {
    met_.clear();
    count_ = 0;
  }
  /// \param items values read from the source, free the first time; \param characters copied into them.
  void add(const tovin::iNode* source, size_t items, size_t characters, const tovin::WideString& name) {
    constexpr size_t charactersAnItem = 256;
    constexpr size_t most = 250'000;
    const bool again = !met_.insert(source).second;
    count_ += (again ? items : 0) + characters / charactersAnItem;
    if (count_ > most) throw tovin::Exception(L"Too much is shared, at %ls", name);
  }

 private:
  std::unordered_set<const tovin::iNode*> met_;
  size_t count_ = 0;
};

// A fault of the document, which meets every later question too. What only lacked memory, or what a file was
// opened or read with, may be tried again.
class RememberedFault {
 public:
  // From a handler: whether it is such a fault.
  bool keep() {
    try {
      throw;
    } catch (const tovin::MemoryException&) {
      return false;
    } catch (const tovin::Exception& e) {
      if (e.mayPass()) return false;
      for (const tovin::CatchEntry& entry : e.getTrail()) {
        if (entry.catchClass == tovin::CatchClass::severe) return false;
      }
      first_ = e;
      fault_ = std::current_exception();
      return true;
    } catch (...) {
      return false;
    }
  }

  // As it was the first time, class and trail.
  void rethrow() const {
    if (!fault_) return;
    try {
      std::rethrow_exception(fault_);
    } catch (tovin::Exception& e) {
      e = first_;
      throw;
    }
  }

  void forget() noexcept { fault_ = nullptr; }

 private:
  tovin::Exception first_;
  std::exception_ptr fault_;
};

// What the reader holds, its sources being several.
struct CWsdlParser::State {
  XMLParser xml;
  tovin::Ptr<tovin::iNode> root;
  tovin::WideString wsdlUrl;
  bool hasParsed = false;
  Style style = RPC;
  bool backwardCompatible = false;
  NodeSearch search;
  // Of the root; made when it is first asked for.
  std::unique_ptr<NamedChildren> definitions;
  tovin::Array<ExternalSchemaRecord> externalSchemas;
  // The files of these records.
  FilesByName heldFiles;
  SharedReading shared;
  SchemaSet schemas;
  RememberedFault schemaFault;
  // Of the schemas; made when they are first asked about.
  std::unique_ptr<TypeBuilder> types;
  tovin::WideString lastAtomicType;

  // Forgets all that was read from the document; another one takes its place, or none.
  void replaceDocument(tovin::iNode* next) {
    search.clearSoapPrefixes();
    definitions.reset();
    externalSchemas.clear();
    heldFiles.clear();
    lastAtomicType = L"";
    types.reset();
    schemas = SchemaSet(next);
    schemaFault.forget();
    root = tovin::Ptr<tovin::iNode>(next);
  }
};
