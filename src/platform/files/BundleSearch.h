#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quillmark {

class PropertyList;

/// Adds the path of every application bundle below a folder whose identifier is the given one, folder by folder in the
/// order of the names. Links to folders are followed; bundles are not looked into. What can't be read is passed over.
/// \param foundPaths receives the paths; a list is made for the first one when there is none. Null: nothing is
/// recorded.
void pathsForIdent(const std::string &identifier, const std::string &fromPath,
                   std::optional<std::vector<std::string>> *foundPaths, const PropertyList &propertyList);

} // namespace quillmark
