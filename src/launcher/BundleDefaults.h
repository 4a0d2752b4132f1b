#pragma once

namespace quillmark {

/// Registers what the bundle's resource "Defaults" holds as the settings of a user who has not chosen others. Without
/// the resource nothing is registered.
void registerBundleDefaults();

} // namespace quillmark
