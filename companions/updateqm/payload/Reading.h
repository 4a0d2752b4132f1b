#pragma once

#include <string>
#include <string_view>

namespace updateqm {

class RecordWriter;

// What a confined process does: it takes apart what others have made, and tells of it in records. Each raises a
// Failure.

/// A ZIP archive of one bundle: its name, then its folders, files and links.
void readArchive(std::string_view archive, const RecordWriter &records);

/// A flat installer package of one bundle: the path where it belongs, then its folders, files and links.
void readPackage(std::string_view package, const RecordWriter &records);

/// The description of a bundle, a property list: its version as a text, which is empty when it has none.
void readVersion(std::string_view description, const RecordWriter &records);

/// Raises a Failure for a path that could leave the folder.
void requirePlainPath(const std::string &path, const std::string &source);

} // namespace updateqm
