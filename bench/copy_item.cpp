/// Copies an item as the launcher does: bench_copy_item SOURCE TARGET.

#include "utils/FileManager.h"

#include <cstdlib>

int main(int count, char **arguments) {
    const bool isCopied = count == 3 && !quillmark::FileManager().copyItem(arguments[1], arguments[2]);
    return isCopied ? EXIT_SUCCESS : EXIT_FAILURE;
}
