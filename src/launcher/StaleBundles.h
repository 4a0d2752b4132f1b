#pragma once

#include <QString>
#include <QStringList>

namespace quillmark {

class PropertyList;
class Workspace;

/// The older copies of the client that a move into the Applications folder would remove: what a search of the user's
/// and then the computer's Applications folder finds, then 24 fixed places, there or not. The fixed paths keep their
/// tilde, and a bundle that both steps name is listed twice; both are deliberate.
QStringList staleClientBundles(const QString &productName, const Workspace &workspace,
                               const PropertyList &propertyList);

} // namespace quillmark
