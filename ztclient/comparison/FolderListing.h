#pragma once

#include <string>
#include <vector>

#include "ztclient/comparison/Glob.h"

/// Something in a folder.
struct FolderEntry {
  enum class Kind {
    file,
    folder,
    /// A symbolic link to a folder that is not entered, because that one is listed already or lies around.
    link,
    /// What has no bytes to compare: a pipe, a socket, a device, a link that leads nowhere.
    other,
    /// What the system does not show.
    unreadable
  };

  /// From the folder that is listed, divided by '/', in the system's bytes; of a folder with one at its end.
  std::string path;
  Kind kind = Kind::file;
  /// Of a link where it leads, else why nothing is to be compared; of a folder nothing.
  std::string detail = {};
  /// Of a folder, where nothing says which files are wanted.
  bool isEmpty = false;
};

/// All that is wanted in a folder and below, in the order of the paths' bytes. Nothing is opened but folders.
///
/// - Links to files are files. A link to a folder is entered unless it leads to what is listed anyway, so
/// that
///   links in a ring come to an end and nothing is listed twice.
/// - Depth: a list, no recursion.
/// - Errors: "Unable to open folder %ls" for the folder itself; below it what cannot be read is an entry.
std::vector<FolderEntry> listFolder(const std::string& folder, const FileFilter& filter);
