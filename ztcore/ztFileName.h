#pragma once

#include "tovin/BaseString.h"
#include "ztcore/Export.h"

/// The name of a file, taken apart. Both '/' and '\' separate folders, on every platform.
///
///     ztFileName name(L"services/orders.wsdl");
///     name.GetLeaf(leaf);            // orders.wsdl
///     name.GetExtension(extension);  // wsdl
///
/// - A part that begins with '?' is a query, no file: the name has no leaf then, like one that ends in a
///   separator.
/// - A location with a scheme (http://host/a.xsd) is an absolute name of a file that will not be found.
/// - Nothing but GetCanonicalName asks the system, and that only for the current folder.
class ZTCORE_API ztFileName {
 public:
  /// \param folder the whole name is a folder's, with or without a separator at its end: it has no leaf.
  explicit ztFileName(const wchar_t* name = nullptr, bool folder = false);

  void SetName(const wchar_t* name, bool folder);
  /// As it was set.
  void GetName(tovin::WideString& name) const;
  /// The folder, without the last separator; empty when the name says none.
  void GetPath(tovin::WideString& path) const;
  /// What follows the last separator.
  void GetLeaf(tovin::WideString& leaf) const;
  /// What follows the last '.' of the leaf, unless that begins the leaf; empty if there is none.
  void GetExtension(tovin::WideString& extension) const;
  /// Begins with a separator, a drive or a scheme.
  bool IsAbsolute() const;
  bool IsRelative() const { return !IsAbsolute(); }
  /// One text for all names of a file: absolute against the current folder, '/' between the parts, without
  /// "." and "..". Links are not followed; a name with a scheme stays as it is.
  tovin::WideString GetCanonicalName() const;

  /// The folder of a file name, so that a '/' and another leaf may follow: "." when the name says none.
  static void ExtractPathname(const tovin::WideString& name, tovin::WideString& path);

 private:
  size_t leafStart() const;
  bool hasScheme() const;

  tovin::WideString name_;
  bool folder_ = false;
};
