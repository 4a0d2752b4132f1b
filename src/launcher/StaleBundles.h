#pragma once

#include <string>
#include <vector>

namespace quillmark {

class PropertyList;
class Workspace;

/// The older copies of the client that a move into the Applications folder would remove: what a search of the user's
/// and then the computer's Applications folder finds, then 24 fixed places, there or not. The fixed paths keep their
/// tilde, and a bundle that both steps name is listed twice; both are deliberate.
std::vector<std::string> staleClientBundles(const std::string &productName, const Workspace &workspace,
                                            const PropertyList &propertyList);

} // namespace quillmark
