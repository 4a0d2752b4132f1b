#pragma once

#include "integrity/UnzipManager.h"

#include <minizip/unzip.h>

namespace quillmark::test {

/// An UnzipManager whose parts can be called and seen, and which closes its archive.
class OpenUnzipManager : public UnzipManager {
public:
    using UnzipManager::extractCurrentFile;
    using UnzipManager::makedir;
    using UnzipManager::mymkdir;
    using UnzipManager::outputPath;
    using UnzipManager::uf;
    using UnzipManager::UnzipManager;
    OpenUnzipManager(const OpenUnzipManager &) = delete;
    OpenUnzipManager &operator=(const OpenUnzipManager &) = delete;
    ~OpenUnzipManager() {
        unzClose(uf);
        uf = nullptr;
    }
};

} // namespace quillmark::test
