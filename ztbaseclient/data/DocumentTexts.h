#pragma once

#include "tovin/iNode.h"
#include "ztbaseclient/Export.h"

/// Makes characters of what the reader of XML keeps as one wide character a byte.
///
///     tovin::Ptr<tovin::iNode> root(parser.parse(stream));
///     DocumentTexts::makeCharacters(*root);
///
/// Names and texts that are no UTF-8, or have other characters already, stay as they are. Most documents are
/// ASCII: of them nothing is touched, and no property becomes an object.
namespace DocumentTexts {

/// \param root of the tree or of a part of it; to be called once.
ZTBASECLIENT_API void makeCharacters(tovin::iNode& root);

}  // namespace DocumentTexts
