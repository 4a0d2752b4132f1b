#pragma once

#include "texts/LocalizedStrings.h"

#include <optional>
#include <string>
#include <vector>

namespace quillmark {

// Moves the application into the Applications folder when the user wants it, removes older copies on the way, and
// starts it again from there.
//
// Concurrency: the main thread only. Questions and the administrator's programs are waited for.

/// \name Settings of the next move
/// What each one means stands beside its variable in MoveOffer.h.
void PFAlsoRemoveBundles(const std::vector<std::string> &paths);
void PFAltDstBundleName(const std::optional<std::string> &name);
void PFAltDstBundleParentPath(const std::optional<std::string> &path);
void PFAltSrcBundlePath(const std::optional<std::string> &path);

/// Offers the move unless the application lies in an Applications folder or the user asked not to be asked again. It
/// begins by taking back the alternative source and folder: deliberately, these count for a call of PFMove() alone.
void PFMoveToApplicationsFolderIfNecessary(LocalizedStrings &strings = LocalizedStrings::sharedManager());

/// Asks the user and moves. Ends the process when the application was moved; comes back when it stays where it is.
void PFMove(LocalizedStrings &strings = LocalizedStrings::sharedManager());

/// Moves one item to the Trash. \returns false when it stays in its place.
bool Trash(const std::string &path);

} // namespace quillmark
