#include "fakes/FakePlatform.h"

namespace quillmark::test {

// Here, and not in the header: otherwise the compiler writes all fakes down once more for every test file.
FakePlatform::FakePlatform() { installPlatform(&platform); }
FakePlatform::~FakePlatform() { installPlatform(nullptr); }

FakePlatform &immortalPlatform() {
    static auto &instance = *new FakePlatform;
    installPlatform(&instance.platform);
    return instance;
}

} // namespace quillmark::test
