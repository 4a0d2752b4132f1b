#pragma once

#include <gio/gio.h>
#include <memory>

namespace quillmark {

/// Gives back what GIO hands out.
struct Release {
    void operator()(GDBusConnection *connection) const { g_object_unref(connection); }
    void operator()(GVariant *value) const { g_variant_unref(value); }
    void operator()(GError *error) const { g_error_free(error); }
};
using Connection = std::unique_ptr<GDBusConnection, Release>;
using Value = std::unique_ptr<GVariant, Release>;
using Problem = std::unique_ptr<GError, Release>;

} // namespace quillmark
