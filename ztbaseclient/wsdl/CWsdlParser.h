#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_set>

#include "tovin/Array.h"
#include "tovin/BaseString.h"
#include "tovin/Ptr.h"
#include "tovin/iNode.h"
#include "tovinCore/LeakDetector.h"
#include "ztbaseclient/Export.h"

struct Origin;

/// Reads WSDL 1.1 documents and answers questions about them: the service with its ports, bindings and
/// operations, the messages with their parts, and the types of the parts as their XML Schemas define them.
///
///     CWsdlParser parser;
///     parser.Parse(L"orders.wsdl");
///     parser.GetDefinitionsInfo(targetNamespace);
///     parser.GetServiceInfo(service, ports);
///     for (CWsdlParser::CPort& port : ports)
///       parser.GetOperationInfoFromPortType(port.binding.type, port.binding.operations);
///     CWsdlParser::CCustomType type;
///     if (parser.GetCustomTypeInfoDoc(part, type)) use(type.elements);
///
/// - Order: a parse, the definitions, everything else; Reset() before the next document.
/// - Ownership: owns the document; values that were read share its nodes and may outlive the reader.
/// - Shape: texts are the document's UTF-8, each byte one wide character. The document must not be changed
///   while it is asked.
/// - External schemas are files; nothing is fetched. The first question that needs schemas loads them; when
///   that fails, every later one fails alike.
/// - Errors: framework exceptions with the texts told at the methods; "Cannot dereference a NULL pointer"
///   when there is no document.
/// - Threads: one thread at a time.
class ZTBASECLIENT_API CWsdlParser {
 public:
  static constexpr const char* ClassName = "CWsdlParser";
  /// Categories of the leak detector that no value class has.
  static tovin::LeakDetector m_attributeLeakDetector;
  static tovin::LeakDetector m_nodeLeakDetector;

  class XMLParser;
  class CNamespaceHolder;
  class CNodeHolder;
  class CNamespace;
  class CSchema;
  class CElement;
  class CPart;
  class CMsg;
  class COperation;
  class CBinding;
  class CPort;
  class CCustomType;
  struct ExternalSchemaRecord;

  /// What the last type question was for: an RPC call or a document.
  enum Style : int32_t { RPC = 0, DOC = 1 };
  enum CustomTypeKind : int32_t {
    KindUnresolved = -1,
    KindArray = 0,
    KindComplex = 1,
    KindEnumeration = 2,
    KindSimple = 3
  };

  CWsdlParser();
  CWsdlParser(const CWsdlParser&) = delete;
  CWsdlParser& operator=(const CWsdlParser&) = delete;
  virtual ~CWsdlParser();

  /// \name Loading
  /// A file or a stream: "Unable to open file", "Parse error: %hs". Bytes that are no XML raise nothing; what
  /// was built before the fault is the document. A second parse without Reset() fails, of bytes: changes
  /// nothing.
  ///@{
  void Parse(const tovin::WideString& fileName);
  void Parse(const tovin::Array<unsigned char>& bytes);
  void Parse(tovin::iByteInputStream& stream);
  /// Bytes as GetZippedWsdl gives them.
  void ParseZippedWsdl(const tovin::Array<unsigned char>& bytes);
  /// The bytes of the file that was read, compressed; false after bytes were parsed.
  bool GetZippedWsdl(tovin::Array<unsigned char>& out);
  /// Forgets the document. Keeps the url, the style and the backward-compatible flag.
  void Reset();
  /// True after a file was read.
  bool HasParsedWsdl() const noexcept;
  /// Where relative locations of schemas start from: the file that was read last, unless set otherwise.
  void setWsdlUrl(const wchar_t* url);
  const wchar_t* getWsdlUrl() const noexcept;
  /// Whether arrays of document-style types are KindArray, as in RPC style.
  bool IsBackwardCompatible70() const noexcept;
  void SetBackwardCompatible70(bool compatible) noexcept;
  /// In the order in which loading them finished.
  const tovin::Array<ExternalSchemaRecord>& GetExternalSchemas() const noexcept;
  /// The document's root; null without one.
  const tovin::iNode* GetRoot() const noexcept;
  /// Whether the schema has children at all.
  bool importExternalSchemaElements(const CSchema& schema);
  ///@}

  /// \name Services
  ///@{
  /// "missing targetNamespace". Records the prefixes of the SOAP binding namespace, so it comes first.
  void GetDefinitionsInfo(tovin::WideString& targetNamespace);
  /// The last service and its ports, one for each binding; warns "ignoring port %ls with shared binding %ls".
  /// "missing service", "Can't find binding %ls", "Unable to find soap addresses. This WSDL may not have soap
  /// methods." A port whose binding fails is the last of the ports.
  void GetServiceInfo(tovin::WideString& serviceName, tovin::Array<CPort>& ports);
  /// Completes a binding's operations; those of one name pair in document order. "Couldn't find portType",
  /// "Couldn't find operation", "Couldn't find message"; "Too much is shared, at %ls" for values that are out
  /// of all proportion to the document, here and for the service.
  void GetOperationInfoFromPortType(const tovin::WideString& portTypeName,
                                    tovin::Array<COperation>& operations);
  /// In place of what the message held before. "Couldn't find message".
  void GetMessageInfo(const tovin::WideString& messageName, CMsg& message);
  /// The first operation that fits; without message names any of the name. Null fits only an empty text.
  bool FindOperation(const wchar_t* portTypeName, const wchar_t* operationName,
                     const wchar_t* inputMessageName, const wchar_t* outputMessageName,
                     COperation& operation);
  /// Whether another operation beside it has the same name.
  bool OpHasOverloads(const COperation& operation);
  bool IsRPCStyle() const noexcept;
  bool IsDOCStyle() const noexcept;
  ///@}

  /// \name Types
  ///@{
  /// All schemas, those of external files last; their elements get the properties "scope", "required" and
  /// "form".
  const tovin::Array<CSchema>& GetSchemaInfo();
  /// "Can't find schema with targetNamespace=%ls".
  const CSchema& GetSchemaByTargetNS(const wchar_t* uri);
  /// "Cannot find a schema with targetNamespace = %ls and element = %ls".
  const CSchema& FindSchemaContainingElement(const wchar_t* uri, const wchar_t* name);
  /// "Cannot find a schema with targetNamespace=%ls and customType=%ls".
  const CSchema& FindSchemaContainingCustomType(const wchar_t* uri, const wchar_t* name);
  /// The URI that a prefix means at a node; of no prefix the default namespace, empty if none.
  /// "Can't find namespace %ls\n".
  tovin::WideString FindDefiningNamespace(const tovin::iNode* node, const wchar_t* prefix);
  /// What the definitions element binds the prefix to.
  CNamespace FindNamespaceInDefinitions(const wchar_t* prefix);
  /// The URI that a member's type belongs to; empty where there is none or the type is no reference.
  tovin::WideString FindTypeNamespace(const CElement& element);
  /// The target namespace that encloses a node; empty if none. Of a schema that several namespaces include
  /// the first one.
  tovin::WideString FindTargetNamespace(const tovin::iNode* node);
  /// A type's namespace as the document writes it.
  tovin::WideString FindTargetNamespace(const CCustomType& type);
  /// The global element that a part names.
  CElement GetSchemaElement_Doc(const CPart& part);
  const CSchema& GetSchemaForPartDoc(const CPart& part);
  /// The global element of a schema: the errors of FindSchemaContainingElement.
  CElement GetMatchingSchemaElementDoc(const CSchema& schema, const wchar_t* name);

  /// Whether the type is one of the list of atomic types; both styles resolve names alike.
  bool IsOfAtomicType(const CElement& element, Style style);
  bool IsOfAtomicType(const CPart& part);
  /// The list's entry.
  const tovin::WideString& GetLastAtomicTypeQueried() const noexcept;

  /// The type of a part or member. False when it is atomic: the type then is KindSimple under the list's
  /// entry.
  bool GetCustomTypeInfoRPC(const CPart& part, CCustomType& type);
  bool GetCustomTypeInfoDoc(const CPart& part, CCustomType& type);
  bool GetElementsCustomType(const CElement& element, CCustomType& type);
  /// What defines a part's type, without reading its members, and the type's namespace; null for an atomic
  /// type. The errors of the questions above that have to do with names.
  tovin::iNode* FindTypeDefinition(const CPart& part, CNamespace& typeNamespace);
  /// A type of one schema. "Unknown node type defines type with name %ls".
  void GetCustomTypeOutOfSchema(const CSchema& schema, const tovin::WideString& typeName, CCustomType& type);
  /// Whether the schema defines the type; takes the array suffix off the name.
  bool IsCustomTypeInSchema(const CSchema& schema, tovin::WideString& typeName);
  /// Whether the element of a schema may occur more than once.
  bool IsArrayType(tovin::iNode* element);
  /// Removes the first "[]".
  static void StripArrayFromTypeName(tovin::WideString& typeName);
  ///@}

 protected:
  void loadExternalSchemata(const wchar_t* wsdlFileName, tovin::iNode* typesNode, tovin::iNode* schemaNode);
  tovin::WideString buildExternalSchemaFilename(const wchar_t* wsdlFileName, const wchar_t* location);
  void GetBindingInfo(const wchar_t* bindingName, CPort& port);
  bool IsNewBinding(const wchar_t* bindingName, const tovin::Array<CPort>& ports);
  bool isInAtomicTypeList(const wchar_t* localName);

 private:
  struct State;
  struct Definition;
  class SchemaLoader;
  class SchemasBefore;

  void adopt(tovin::iNode* root);
  tovin::iNode* requireRoot() const;
  tovin::iNode* findDefinition(const wchar_t* element, const wchar_t* name);
  void recordSoapPrefixes(const tovin::iNode* definitions);
  void readPort(tovin::iNode* node, tovin::Array<CPort>& ports, std::unordered_set<std::wstring>& bindings);
  void readBinding(const wchar_t* bindingName, CPort& port);
  void readMessage(const wchar_t* direction, tovin::WideString& name, CMsg& message,
                   const COperation& operation);
  void buildSchemas(tovin::iNode* types);
  void annotateElements(tovin::iNode* root);
  void requireSearchable(const CSchema& schema);
  Definition requireElement(const CPart& part);
  bool isOfAtomicType(const Origin& origin, const tovin::WideString& typeName);
  bool resolvePart(Style style, const CPart& part, CCustomType& type);
  Definition definitionOf(const CPart& part);
  Definition definitionOfElement(tovin::iNode* element, const tovin::WideString& space);
  Definition definitionOfType(const Origin& origin, const tovin::WideString& typeName,
                              const tovin::WideString& space);
  bool resolve(const Definition& definition, CCustomType& type);
  tovin::WideString namespaceAround(const Definition& definition);

  std::unique_ptr<State> state_;
};
