#include "utils/UUIDString.h"

#include <gmock/gmock.h>

namespace quillmark {
namespace {

TEST(UUID, IsNewEachTimeInCanonicalUpperCase) {
    const std::string uuid = UUIDString();
    EXPECT_THAT(uuid, testing::MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
    EXPECT_NE(UUIDString(), uuid);
}

} // namespace
} // namespace quillmark
