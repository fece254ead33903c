#include "ztbaseclient/wsdl/XMLParser.h"

#include <expat.h>

#include <algorithm>
#include <climits>
#include <span>
#include <string>
#include <utility>

#include "tovinCore/Guard.h"
#include "ztbaseclient/node/NodeBuilder.h"
#include "ztcore/ztCompress.h"
#include "ztcore/ztFile.h"

using tovin::guarded;

namespace {

// What stays of a file behind a fault is a whole number of pieces of this size.
constexpr size_t keptPiece = 2048;

// A file is read in pieces of this size. expat scans a token that is not complete anew with each piece, so
// that within a longer token the pieces are as long as what it has of it: all of them together cost no more
// than a few scans.
constexpr size_t pieceSize = size_t{64} << 10;
constexpr size_t longestPiece = size_t{1} << 29;

// Whether expat has nothing against the beginning of a document.
bool beginsWell(std::span<const unsigned char> bytes) {
  const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> expat(XML_ParserCreate(nullptr),
                                                                           XML_ParserFree);
  if (!expat) throw tovin::MemoryException(1, sizeof(void*));
  return XML_Parse(expat.get(), reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()),
                   false) == XML_STATUS_OK;
}

constexpr wchar_t nullPointer[] = L"Cannot dereference a NULL pointer";

}  // namespace

CWsdlParser::XMLParser::XMLParser() : builder_(std::make_unique<NodeBuilder>()) {}

CWsdlParser::XMLParser::~XMLParser() {
  tovin::guardedDestruction("CWsdlParser::XMLParser", [&] { reset(); });
}

void CWsdlParser::XMLParser::reset() {
  freeExpat();
  ended_.reset();
  current_.reset();
  root_.reset();
  raw_ = {};
  failure_ = nullptr;
  added_ = 0;
  addsTooMuch_ = false;
  stoppedAt_ = 0;
  lastIndex_ = -1;
}

void CWsdlParser::XMLParser::freeExpat() noexcept {
  builder_->forget();
  if (expat_) XML_ParserFree(std::exchange(expat_, nullptr));
}

void CWsdlParser::XMLParser::prepare() {
  if (ended_) return;
  if (!expat_) expat_ = XML_ParserCreate(nullptr);
  if (!expat_) throw tovin::MemoryException(1, sizeof(void*));
  XML_SetUserData(expat_, this);
  XML_SetElementHandler(expat_, startElement, endElement);
  XML_SetCharacterDataHandler(expat_, charHandler);
}

// expat keeps a document that it was given whole, and is not needed any more.
void CWsdlParser::XMLParser::noteEnd() noexcept {
  XML_ParsingStatus status;
  XML_GetParsingStatus(expat_, &status);
  if (status.parsing != XML_FINISHED) return;
  ended_ = place();
  freeExpat();
}

CWsdlParser::XMLParser::Place CWsdlParser::XMLParser::place() const noexcept {
  if (ended_) return *ended_;
  return {static_cast<int64_t>(XML_GetCurrentLineNumber(expat_)),
          static_cast<int64_t>(XML_GetCurrentColumnNumber(expat_)) + 1};
}

void CWsdlParser::XMLParser::rethrowFailure() {
  if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
}

void CWsdlParser::XMLParser::throwParseError() const {
  const XML_Error code = ended_ ? XML_ERROR_FINISHED : XML_GetErrorCode(expat_);
  const char* fault = addsTooMuch_ ? "definitions and entities add too much" : XML_ErrorString(code);
  throw tovin::Exception(L"Parse error: %hs", fault)
      .setMayPass(code == XML_ERROR_NO_MEMORY)
      .setPlace(place().line, place().column);
}

// Feeds pieces until read(piece, size) gives none; what expat took is kept.
template <class Read>
tovin::iNode* CWsdlParser::XMLParser::parsePieces(Read&& read) {
  if (ended_) throwParseError();
  for (size_t count = 1; count > 0;) {
    const size_t size = std::clamp(incompleteBytes(), pieceSize, longestPiece);
    auto* piece = static_cast<unsigned char*>(XML_GetBuffer(expat_, static_cast<int>(size)));
    count = piece ? read(piece, static_cast<unsigned>(size)) : 0;
    const XML_Status status =
        piece ? XML_ParseBuffer(expat_, static_cast<int>(count), count == 0) : XML_STATUS_ERROR;
    const bool taken = status == XML_STATUS_OK && !failure_ && !addsTooMuch_;
    raw_.items().insert(raw_.end(), piece, piece + count);
    if (!taken && count > 0) cutRawBytes(raw_.getSize() - count);
    rethrowFailure();
    if (addsTooMuch_ || status != XML_STATUS_OK) throwParseError();
  }
  noteEnd();
  return root_.get();
}

// How much was fed of a token that is not complete.
size_t CWsdlParser::XMLParser::incompleteBytes() const noexcept {
  const XML_Index begin = XML_GetCurrentByteIndex(expat_);
  return raw_.getSize() - std::min(raw_.getSize(), static_cast<size_t>(std::max<XML_Index>(begin, 0)));
}

// Behind a fault, which lies somewhere behind the good bytes: keeps the whole pieces before the one in which
// expat, or what it calls, meets it. Where that is, expat does not tell; it is asked again with less.
void CWsdlParser::XMLParser::cutRawBytes(size_t good) {
  size_t kept = stoppedAt_ / keptPiece;
  if (stoppedAt_ == 0) {
    const size_t first = good / keptPiece, last = (raw_.getSize() + keptPiece - 1) / keptPiece;
    kept = first;
    for (size_t count = last - first; count > 1;) {
      const size_t half = count / 2;
      const bool parses = beginsWell(std::span(raw_).first((kept + half) * keptPiece));
      count = parses ? count - half : half;
      if (parses) kept += half;
    }
  }
  raw_.setSize(std::min(kept * keptPiece, raw_.getSize()));
}

tovin::iNode* CWsdlParser::XMLParser::parse(const wchar_t* fileName) {
  return parseFile(fileName, ztFile::ForReading);
}

tovin::iNode* CWsdlParser::XMLParser::parseRegular(const wchar_t* fileName) {
  return parseFile(fileName, ztFile::ForReadingRegular);
}

tovin::iNode* CWsdlParser::XMLParser::parseFile(const wchar_t* fileName, int mode) {
  return guarded({CWsdlParser::ClassName, "parse()"}, [&] {
    prepare();
    ztFile file;
    if (!file.Open(fileName, mode, ztFile::Encoding::Bytes, true)) {
      throw ztFile::OpenFailure(L"Unable to open file", fileName);
    }
    try {
      return parsePieces([&](unsigned char* piece, unsigned size) { return size_t{file.Read(piece, size)}; });
    } catch (tovin::Exception& e) {
      e.setFile(fileName);
      throw;
    }
  });
}

tovin::iNode* CWsdlParser::XMLParser::parse(tovin::iByteInputStream& stream) {
  return guarded({CWsdlParser::ClassName, "parse()"}, [&] {
    prepare();
    return parsePieces([&](unsigned char* piece, unsigned size) { return stream.take(piece, size); });
  });
}

tovin::iNode* CWsdlParser::XMLParser::parse(const tovin::Array<unsigned char>& bytes) {
  return guarded({CWsdlParser::ClassName, "parse()"}, [&] { return parseBytes(bytes); });
}

tovin::iNode* CWsdlParser::XMLParser::parseBytes(const tovin::Array<unsigned char>& bytes) {
  prepare();
  if (ended_) return root_.get();
  const auto* at = reinterpret_cast<const char*>(bytes.data());
  size_t left = bytes.getSize();
  XML_Status status = XML_STATUS_OK;
  // expat counts in int.
  for (; left > INT_MAX && status == XML_STATUS_OK; left -= INT_MAX, at += INT_MAX) {
    status = XML_Parse(expat_, at, INT_MAX, false);
  }
  if (status == XML_STATUS_OK) XML_Parse(expat_, at, static_cast<int>(left), true);
  noteEnd();
  rethrowFailure();
  return root_.get();
}

tovin::iNode* CWsdlParser::XMLParser::parseZippedWsdl(const tovin::Array<unsigned char>& bytes) {
  return guarded({CWsdlParser::ClassName, "parseZippedWsdl()"}, [&] {
    tovin::Array<unsigned char> document;
    ztCompress(1, true).Decompress(document, bytes);
    return parseBytes(document);
  });
}

bool CWsdlParser::XMLParser::getZippedWsdl(tovin::Array<unsigned char>& out) {
  return guarded({CWsdlParser::ClassName, "getZippedWsdl()"}, [&] {
    if (raw_.isEmpty()) return false;
    ztCompress(1, true).Compress(out, raw_);
    return true;
  });
}

// Runs a callback's work; what it throws waits outside the C parser, which stops.
template <class Body>
void CWsdlParser::XMLParser::protect(Body&& body) {
  if (!expat_) return body();
  if (failure_ || addsTooMuch_) return;
  try {
    body();
  } catch (...) {
    failure_ = std::current_exception();
    stop();
  }
}

void CWsdlParser::XMLParser::stop() {
  stoppedAt_ =
      static_cast<size_t>(XML_GetCurrentByteIndex(expat_) + std::max(XML_GetCurrentByteCount(expat_), 1)) - 1;
  XML_StopParser(expat_, false);
}

void CWsdlParser::XMLParser::startElement(void* userData, const char* name, const char** attributes) {
  auto* self = static_cast<XMLParser*>(userData);
  self->protect([&] { self->startElementImpl(name, attributes); });
}

void CWsdlParser::XMLParser::endElement(void* userData, const char* name) {
  auto* self = static_cast<XMLParser*>(userData);
  self->protect([&] { self->endElementImpl(name); });
}

void CWsdlParser::XMLParser::charHandler(void* userData, const char* text, int length) {
  static_cast<XMLParser*>(userData)->charHandlerImpl(text, length);
}

void CWsdlParser::XMLParser::startElementImpl(const char* name, const char** attributes) {
  if (root_ && !current_) throw tovin::Exception(nullPointer);
  builder_->look(name, attributes);
  if (expat_ && addsTooMuch()) return stop();
  tovin::Ptr<tovin::iNode> node = builder_->make();
  if (!root_)
    root_ = node;
  else
    NodeBuilder::append(*current_, *node);
  current_ = std::move(node);
}

// What is not written but comes from definitions (default values of attributes) or out of entities
// multiplies: a small document can ask for any amount of memory. Texts count, and what a property or a node
// takes beside them. All that comes out of an entity stands where its reference does.
bool CWsdlParser::XMLParser::addsTooMuch() {
  constexpr size_t besideTexts = 32;
  constexpr size_t alwaysAllowed = size_t{8} << 20;
  constexpr size_t allowedForByte = 10;
  const long long index = XML_GetCurrentByteIndex(expat_);
  const bool written = index != std::exchange(lastIndex_, index);
  const size_t attributes = builder_->attributeCount();
  const size_t specified = written ? static_cast<size_t>(XML_GetSpecifiedAttributeCount(expat_)) / 2 : 0;
  size_t size = builder_->textSize() + (written ? 0 : besideTexts + builder_->nameSize());
  // A name and a text.
  if (attributes > specified) size += 2 * besideTexts * (attributes - specified);
  const size_t there = written ? static_cast<size_t>(XML_GetCurrentByteCount(expat_)) : 0;
  if (size > there) added_ += size - there;
  addsTooMuch_ = added_ > alwaysAllowed + allowedForByte * static_cast<size_t>(std::max(index, 0LL));
  return addsTooMuch_;
}

void CWsdlParser::XMLParser::endElementImpl(const char*) {
  if (!current_) throw tovin::Exception(nullPointer);
  NodeBuilder::close(*current_);
  current_ = tovin::Ptr<tovin::iNode>(current_->findParent());
}

void CWsdlParser::XMLParser::charHandlerImpl(const char*, int) {}
