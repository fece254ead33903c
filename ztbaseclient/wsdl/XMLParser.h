#pragma once

#include <exception>
#include <memory>
#include <optional>

#include "tovin/Array.h"
#include "tovin/Ptr.h"
#include "tovin/iNode.h"
#include "ztbaseclient/wsdl/CWsdlParser.h"

struct XML_ParserStruct;
class NodeBuilder;

/// Builds a node tree from an XML document: elements become nodes, attributes properties, all else is passed
/// over.
///
///     CWsdlParser::XMLParser parser;
///     tovin::Ptr<tovin::iNode> root(parser.parse(L"service.wsdl"));
///
/// - Shape: names and attribute texts are the document's UTF-8, each byte one wide character.
/// - Ownership: holds one reference to the root until reset(); parse() lends it.
/// - Attributes whose names differ by ASCII case only refuse the document: "Property %ls already exists\n".
/// - What is not written but comes from definitions and entities is bounded: beyond, the document is refused.
/// - Errors: "Unable to open file", "Parse error: %hs" from a file, with file, line and column. Bytes that
/// are no XML raise nothing: what
///   was built before the fault is the answer, null if that is nothing.
/// - One document: a second parse needs a reset() in between.
class ZTBASECLIENT_API CWsdlParser::XMLParser {
 public:
  XMLParser();
  XMLParser(const XMLParser&) = delete;
  XMLParser& operator=(const XMLParser&) = delete;
  ~XMLParser();

  tovin::iNode* parse(const wchar_t* fileName);
  /// The same of files of bytes only: no device and no pipe is waited for or read.
  tovin::iNode* parseRegular(const wchar_t* fileName);
  tovin::iNode* parse(const tovin::Array<unsigned char>& bytes);
  /// From where the stream stands to its end, with the errors of a file.
  tovin::iNode* parse(tovin::iByteInputStream& stream);
  /// Bytes as getZippedWsdl gives them; errors of ztCompress.
  tovin::iNode* parseZippedWsdl(const tovin::Array<unsigned char>& bytes);
  /// The bytes of the file that was read, compressed; false when there are none.
  bool getZippedWsdl(tovin::Array<unsigned char>& out);
  void reset();

  /// The bytes of the file that was read, in reading order; none after bytes were parsed. After a fault the
  /// pieces of 2048 bytes before it.
  const tovin::Array<unsigned char>& getRawBytes() const noexcept { return raw_; }

  static void startElement(void* userData, const char* name, const char** attributes);
  static void endElement(void* userData, const char* name);
  static void charHandler(void* userData, const char* text, int length);

 private:
  struct Place {
    int64_t line;
    int64_t column;
  };

  void prepare();
  void noteEnd() noexcept;
  void freeExpat() noexcept;
  Place place() const noexcept;
  tovin::iNode* parseFile(const wchar_t* fileName, int mode);
  tovin::iNode* parseBytes(const tovin::Array<unsigned char>& bytes);
  template <class Read>
  tovin::iNode* parsePieces(Read&& read);
  size_t incompleteBytes() const noexcept;
  void cutRawBytes(size_t good);
  void stop();
  void rethrowFailure();
  [[noreturn]] void throwParseError() const;
  template <class Body>
  void protect(Body&& body);
  bool addsTooMuch();
  void startElementImpl(const char* name, const char** attributes);
  void endElementImpl(const char* name);
  void charHandlerImpl(const char* text, int length);

  XML_ParserStruct* expat_ = nullptr;
  // Where the document ended; expat is gone from then on.
  std::optional<Place> ended_;
  tovin::Ptr<tovin::iNode> root_;
  tovin::Ptr<tovin::iNode> current_;
  tovin::Array<unsigned char> raw_;
  std::unique_ptr<NodeBuilder> builder_;
  // What a callback threw: it must not pass through the C parser.
  std::exception_ptr failure_;
  // About how many bytes of the document are not written in it, and where the last element stood.
  size_t added_ = 0;
  long long lastIndex_ = -1;
  // The last byte of the token at which a callback gave up; 0 for none.
  size_t stoppedAt_ = 0;
  bool addsTooMuch_ = false;
};
