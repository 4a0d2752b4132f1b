#pragma once

#include "utils/Error.h"

#include <QStringList>
#include <optional>

namespace quillmark {

// Launching applications and asking them to quit, by bundle identifier.

/// Codes of the errors made here, in kErrorDomain.
inline constexpr qint32 kLaunchFailed = -1;
inline constexpr qint32 kQuitEventNotBuilt = -1;
inline constexpr qint32 kQuitEventNotSent = -2;
inline constexpr qint32 kQuitTimedOut = -3;

/// The first record of the desktop's launched applications with that identifier, compared exactly.
std::optional<QVariantMap> launchedApplication(const QString &bundleIdentifier);

/// The error of an application that could not be launched. \param path its bundle.
Error launchFailed(const QString &path);

bool isApplicationRunning(const QString &bundleIdentifier);

/// \returns nothing on success.
std::optional<Error> launchApplication(const QString &bundleIdentifier);

/// Asks an application to quit, if it runs, and when `wait` is set looks until it has ended or `timeOut` seconds have
/// passed. The time is counted in nominal intervals, of which only the whole seconds are slept.
/// \returns nothing on success.
std::optional<Error> quitApplication(const QString &bundleIdentifier, bool wait, double timeOut);

/// Always null.
std::optional<QStringList> pathsToApplication();

} // namespace quillmark
