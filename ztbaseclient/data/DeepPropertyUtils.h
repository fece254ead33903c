#pragma once

#include "tovin/iDataRecord.h"
#include "tovin/iNode.h"
#include "ztbaseclient/Export.h"

/// Properties of other nodes of a tree, addressed by path.
///
///     tovin::WideString path;
///     DeepPropertyUtils::NodeLocation(node, true, path);   // "/root/child[2]/"
///
/// - Shape: a location is a path query from the root, each step closed by '/'; a property is an attribute of
///   its node.
namespace DeepPropertyUtils {

/// The path that leads to a node: by names, with a position where siblings share one, or by positions only.
ZTBASECLIENT_API void NodeLocation(const tovin::iNode& node, bool useNames, tovin::WideString& path);

/// The node's position, from 0, among its parent's children, or among those of its own name.
ZTBASECLIENT_API unsigned GetChildIndex(const tovin::iNode& node, bool sameNameOnly);

/// True when no sibling has the node's name, and for a node without a parent.
ZTBASECLIENT_API bool IsUniquelyNamedChild(const tovin::iNode& node);

/// Writes a property name as a query can hold it: each space becomes "__white_space__".
ZTBASECLIENT_API void MassagePropertyName(tovin::WideString& name);
ZTBASECLIENT_API void MassagePropertyName(tovin::NarrowString& name);

/// Splits a hierarchical name at its last '/' into a location and the property's own name; without a '/' the
/// location is empty.
ZTBASECLIENT_API void SplitPropertyPath(const wchar_t* path, tovin::WideString& location,
                                        tovin::WideString& leaf);

/// Finds the nodes at a location, seen from the node that owns the collection.
/// \param location empty for that node itself, "/" for every node of the tree; may end in '/'. One that is no
/// path query is an error that quotes it.
/// \param leaf when given, only nodes that carry a property of that name are found.
/// \return false when the node itself was asked for and has no such property. True may come with an empty
/// set. "Cannot perform lookup on property collection without node owner".
ZTBASECLIENT_API bool LocationLookup(const tovin::iPropertyCollection* collection, const wchar_t* location,
                                     const wchar_t* leaf, tovin::NodeReferenceSet& nodes);

/// The same, but at least the first of the nodes: the others are not looked for where that can be helped.
ZTBASECLIENT_API bool FirstAtLocation(const tovin::iPropertyCollection* collection, const wchar_t* location,
                                      const wchar_t* leaf, tovin::NodeReferenceSet& nodes);

/// Finds the nodes that have the property of a record's property path, and gives the property's own name.
/// \param flag no meaning; callers pass what they like.
/// \return whether any node was found; false for a null record.
ZTBASECLIENT_API bool DecodePropertyPath(tovin::iDataRecord* record, const wchar_t* path, bool flag,
                                         tovin::NodeReferenceSet& nodes, tovin::WideString& name);

}  // namespace DeepPropertyUtils
