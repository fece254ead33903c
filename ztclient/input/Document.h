#pragma once

#include <functional>
#include <string>

#include "tovin/Ptr.h"
#include "tovin/iNode.h"
#include "ztbaseclient/wsdl/CWsdlParser.h"

/// The tree of an XML document or of a node record, which its first byte tells apart: 1 to 3 begins a record.
/// Its texts and names are real text: those of XML, which the reader keeps as bytes, become characters here;
/// what is no UTF-8 stays one character a byte. Read as it comes, so that the first fault ends it.
///
/// - Errors: those of Source; "Parse error: %hs" with line and column; those of records; "%d bytes stand
/// behind the
///   record". All name the file.
/// \param file "-" for standard input.
tovin::Ptr<tovin::iNode> readDocument(const std::string& file);

/// Calls visit(node, depth) for a node and everything below it, in document order, without recursion.
void walk(const tovin::iNode& root, const std::function<void(const tovin::iNode& node, size_t depth)>& visit);

/// Reads a WSDL document, or standard input for "-".
void loadWsdl(CWsdlParser& parser, const std::string& file);

/// An exception about a document with its texts, which are bytes there, as characters.
tovin::Exception withCharacters(const tovin::Exception& e);
