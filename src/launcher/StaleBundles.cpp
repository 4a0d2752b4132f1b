#include "launcher/StaleBundles.h"

#include "platform/BundleSearch.h"
#include "platform/Workspace.h"
#include "utils/FormattedText.h"

namespace quillmark {

namespace {

/// The identifier of the client before it had a launcher.
constexpr QLatin1StringView kClientIdentifier("com.quillmark.quillmarkclient");

constexpr const char *kFixedPaths[] = {
    "~/Applications/%@.app",          "~/Applications/%@-1.app",        "~/Applications/%@-2.app",
    "~/Applications/%@-3.app",        "~/Applications/%@-4.app",        "~/Applications/%@-5.app",
    "/Applications/%@.app",           "/Applications/%@-1.app",         "/Applications/%@-2.app",
    "/Applications/%@-3.app",         "/Applications/%@-4.app",         "/Applications/%@-5.app",
    "~/Applications/%@ Client.app",   "~/Applications/%@ Client-1.app", "~/Applications/%@ Client-2.app",
    "~/Applications/%@ Client-3.app", "~/Applications/%@ Client-4.app", "~/Applications/%@ Client-5.app",
    "/Applications/%@ Client.app",    "/Applications/%@ Client-1.app",  "/Applications/%@ Client-2.app",
    "/Applications/%@ Client-3.app",  "/Applications/%@ Client-4.app",  "/Applications/%@ Client-5.app",
};

} // namespace

QStringList staleClientBundles(const QString &productName, const Workspace &workspace,
                               const PropertyList &propertyList) {
    std::optional<QStringList> paths(std::in_place);
    for (const auto domain : {Workspace::Domain::User, Workspace::Domain::Local}) {
        const QStringList folders = workspace.applicationsFolders(domain);
        if (!folders.isEmpty()) {
            pathsForIdent(kClientIdentifier, folders.last(), &paths, propertyList);
        }
    }
    for (const char *path : kFixedPaths) {
        paths->append(formatted(path, productName));
    }
    return *paths;
}

} // namespace quillmark
