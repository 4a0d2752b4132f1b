#pragma once

#include "platform/Authorization.h"
#include "utils/Error.h"

#include <QStringList>
#include <functional>
#include <optional>

namespace quillmark {

/// The domain of the errors made here. Their codes: -1 the run failed, -2 it succeeded and something was written to
/// standard error; in the privileged form the platform's status.
inline constexpr QLatin1StringView kTaskErrorDomain("com.apple.NSTask.OneLineTasksWithOutput");
inline constexpr qint32 kTaskFailed = -1;
inline constexpr qint32 kTaskWroteToStandardError = -2;

/// Keys of the errors' user info besides the two common ones.
inline constexpr QLatin1StringView kTaskStandardErrorKey("standardError");
inline constexpr QLatin1StringView kTaskTerminationStatusKey("terminationStatus");

using OnCreatedBlock = std::function<void(qint32 processIdentifier)>;

/// Runs a program to its end, as TaskOutputReader does. \returns its standard output, untrimmed; null when the program
/// could not be launched or printed what is not UTF-8. An error does not take the output away.
/// \param error receives what went wrong, or nothing; may be null.
QString stringByLaunchingPath(const QString &path, const QStringList &arguments, const OnCreatedBlock &onCreatedDoBlock,
                              std::optional<Error> *error);

/// Runs a program with administrator rights. \returns its standard output, null on failure. Nobody learns its exit
/// status. \param onCreatedDoBlock is accepted and never called.
QString stringByLaunchingPath(const QString &path, const QStringList &arguments,
                              Authorization::Reference &authorization, const OnCreatedBlock &onCreatedDoBlock,
                              std::optional<Error> *error);

} // namespace quillmark
