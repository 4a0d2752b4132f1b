#pragma once

#include "utils/Error.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quillmark {

// Launching applications and asking them to quit, by bundle identifier.

/// Codes of the errors made here, in kErrorDomain.
inline constexpr std::int32_t kLaunchFailed = -1;
inline constexpr std::int32_t kQuitEventNotBuilt = -1;
inline constexpr std::int32_t kQuitEventNotSent = -2;
inline constexpr std::int32_t kQuitTimedOut = -3;

/// The first record of the desktop's launched applications with that identifier, compared exactly.
std::optional<Dictionary> launchedApplication(const std::string &bundleIdentifier);

/// The error of an application that could not be launched. \param path its bundle.
Error launchFailed(const std::string &path);

bool isApplicationRunning(const std::string &bundleIdentifier);

/// \returns nothing on success.
std::optional<Error> launchApplication(const std::string &bundleIdentifier);

/// Asks an application to quit, if it runs, and when `wait` is set looks until it has ended or `timeOut` seconds have
/// passed. The time is counted in nominal intervals, of which only the whole seconds are slept.
/// \returns nothing on success.
std::optional<Error> quitApplication(const std::string &bundleIdentifier, bool wait, double timeOut);

/// Always absent.
std::optional<std::vector<std::string>> pathsToApplication();

} // namespace quillmark
