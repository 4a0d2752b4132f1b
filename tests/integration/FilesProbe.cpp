/// Moves and copies files as its arguments say, and prints what came of it:
///   FilesProbe recycle NAME FOLDER     "trashed" or "stays"
///   FilesProbe copy SOURCE TARGET      "copied", or "NUMBER at PATH" of the error

#include "platform/Platform.h"
#include "platform/Workspace.h"
#include "utils/FileManager.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

int main(int count, char **arguments) {
    if (count != 4) {
        return EXIT_FAILURE;
    }
    const std::string first = arguments[2];
    const std::string second = arguments[3];
    if (std::strcmp(arguments[1], "recycle") == 0) {
        std::puts(quillmark::platform().workspace.recycle(first, second) ? "trashed" : "stays");
    } else if (const auto error = quillmark::FileManager().copyItem(first, second)) {
        std::printf("%d %s\n", error->code, error->failureReason().value_or("").c_str());
    } else {
        std::puts("copied");
    }
    return EXIT_SUCCESS;
}
