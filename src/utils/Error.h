#pragma once

#include <QString>
#include <QVariantMap>

namespace quillmark {

/// The domain of the errors that this program makes itself.
inline constexpr QLatin1StringView kErrorDomain("com.quillmark.Quillmark.Quillmark-Client");

/// The domain of the system's own errors; their codes are those of `errno`.
inline constexpr QLatin1StringView kPosixErrorDomain("NSPOSIXErrorDomain");

/// Keys of Error::userInfo, with the texts that the platform gives them.
inline constexpr QLatin1StringView kLocalizedDescriptionKey("NSLocalizedDescription");
inline constexpr QLatin1StringView kLocalizedFailureReasonKey("NSLocalizedFailureReason");

/// A failure handed back as a result.
struct Error {
    QString domain;
    qint32 code = 0;
    QVariantMap userInfo;

    /// Null when the error carries none.
    QString failureReason() const { return userInfo.value(kLocalizedFailureReasonKey).toString(); }
    QString description() const { return userInfo.value(kLocalizedDescriptionKey).toString(); }
};

} // namespace quillmark
