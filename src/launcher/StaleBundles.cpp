#include "launcher/StaleBundles.h"

#include "platform/BundleSearch.h"
#include "platform/Workspace.h"
#include "utils/FormattedText.h"

namespace quillmark {

namespace {

/// The identifier of the client before it had a launcher.
constexpr const char *kClientIdentifier = "com.quillmark.quillmarkclient";

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

std::vector<std::string> staleClientBundles(const std::string &productName, const Workspace &workspace,
                                            const PropertyList &propertyList) {
    std::optional<std::vector<std::string>> found;
    for (const auto domain : {Workspace::Domain::User, Workspace::Domain::Local}) {
        const std::vector<std::string> folders = workspace.applicationsFolders(domain);
        if (!folders.empty()) {
            pathsForIdent(kClientIdentifier, folders.back(), &found, propertyList);
        }
    }
    std::vector<std::string> paths = found.value_or(std::vector<std::string>());
    for (const char *path : kFixedPaths) {
        paths.push_back(formatted(path, productName));
    }
    return paths;
}

} // namespace quillmark
