#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "ztservice/load/Arena.h"
#include "ztservice/load/Node.h"

namespace ztservice::parse {

// One file as its components. What means nothing to a reader of services (annotations, policies, elements of
// other namespaces) is checked to be XML and left out.
struct Document {
  // By what it is read, and what people are shown.
  std::string location;
  std::string shown;
  // Its bytes, where they are kept.
  std::string source;
  Arena arena;
  // Null for a root that means nothing.
  const Node* root = nullptr;
};

// Reads XML 1.0 with namespaces: UTF-8, UTF-16, ISO-8859-1, US-ASCII, and the encodings of Encoding.h. What
// a document type declares outside the document is not read.
// Errors: Error with line and column for what is no such XML.
void readDocument(Document& document, std::string_view bytes);

}  // namespace ztservice::parse
