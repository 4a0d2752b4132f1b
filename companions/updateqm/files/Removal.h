#pragma once

namespace updateqm {

/// Removes what there is in a folder, however deep; links are not followed, and other file systems not entered. A file
/// that can be run with its owner's rights loses its mode first: somebody may have it open, or know it by another name.
/// What can't be removed stays.
void removeContents(int folder);

} // namespace updateqm
