#include "launcher/StaleBundles.h"

#include "platform/Workspace.h"
#include "platform/files/BundleSearch.h"

namespace quillmark {

namespace {

/// The identifier of the client before it had a launcher.
constexpr const char *kClientIdentifier = "com.quillmark.quillmarkclient";

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
    for (const char *ending : {"", " Client"}) {
        for (const char *folder : {"~/Applications/", "/Applications/"}) {
            for (const char *number : {"", "-1", "-2", "-3", "-4", "-5"}) {
                paths.push_back(folder + productName + ending + number + ".app");
            }
        }
    }
    return paths;
}

} // namespace quillmark
