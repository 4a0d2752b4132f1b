#pragma once

#include "platform/values/Key.h"
#include "platform/values/Value.h"

#include <cstdint>
#include <optional>
#include <string>

namespace quillmark {

/// The domain of the errors that this program makes itself.
inline constexpr const char *kErrorDomain = "com.quillmark.Quillmark.Quillmark-Client";

/// The domain of the system's own errors; their codes are those of `errno`.
inline constexpr const char *kPosixErrorDomain = "NSPOSIXErrorDomain";

/// Keys of Error::userInfo, with the texts that the platform gives them.
inline constexpr Key kLocalizedDescriptionKey{"NSLocalizedDescription"};
inline constexpr Key kLocalizedFailureReasonKey{"NSLocalizedFailureReason"};

/// A failure handed back as a result.
struct Error {
    std::string domain;
    std::int32_t code = 0;
    Dictionary userInfo;

    /// Absent when the error carries none.
    std::optional<std::string> failureReason() const { return valueOf(userInfo, kLocalizedFailureReasonKey).text(); }
    std::optional<std::string> description() const { return valueOf(userInfo, kLocalizedDescriptionKey).text(); }
};

} // namespace quillmark
