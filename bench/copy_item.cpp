/// Copies an item as the launcher does: bench_copy_item SOURCE TARGET.

#include "utils/FileManager.h"

#include <QFile>
#include <cstdlib>

int main(int count, char **arguments) {
    const bool isCopied = count == 3 && !quillmark::FileManager().copyItem(QFile::decodeName(arguments[1]),
                                                                           QFile::decodeName(arguments[2]));
    return isCopied ? EXIT_SUCCESS : EXIT_FAILURE;
}
